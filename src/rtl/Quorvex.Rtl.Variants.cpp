#include "Quorvex.Rtl.Variants.hpp"

#include <cmath>

#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Variants {

TVariant TVariant::Null() {
  TVariant result;
  result.FValue = TNull{};
  return result;
}

UnicodeString TVariant::TypeName() const {
  static constexpr const char16_t* kNames[] = {u"Empty", u"Null", u"Boolean", u"Int64", u"Double", u"UnicodeString"};
  return kNames[FValue.index()];
}

void TVariant::RaiseCastError(UnicodeStringView target) const {
  const UnicodeString text = VarType() == TVarType::varString ? u"\"" + std::get<UnicodeString>(FValue) + u"\" " : u"";
  throw Exceptions::EVariantTypeCastError(Strings::Format(u"Could not convert variant %sof type (%s) into type (%s)", text,
                                              TypeName(), target));
}

namespace {

// Rounds halves to even, as the runtime's Round does; false when the result
// does not fit in 64 bits.
bool RoundToInt64(long double value, int64_t& result) {
  const long double rounded = std::nearbyint(value);
  if (!(rounded >= -0x1p63L && rounded < 0x1p63L)) return false;
  result = static_cast<int64_t>(rounded);
  return true;
}

}  // namespace

int64_t TVariant::TextToInt64(UnicodeStringView target) const {
  const UnicodeString& text = std::get<UnicodeString>(FValue);
  int64_t result;
  long double real;
  if (Strings::TryStrToInt64(text, result)) return result;
  if (Strings::TryStrToFloat(text, real) && RoundToInt64(real, result)) return result;
  RaiseCastError(target);
}

int64_t TVariant::AsInt64(UnicodeStringView target) const {
  int64_t result = 0;
  switch (VarType()) {
    case TVarType::varEmpty: return 0;
    case TVarType::varBoolean: return std::get<bool>(FValue) ? 1 : 0;
    case TVarType::varInt64: return std::get<int64_t>(FValue);
    case TVarType::varDouble:
      if (RoundToInt64(std::get<long double>(FValue), result)) return result;
      break;
    case TVarType::varString: return TextToInt64(target);
    case TVarType::varNull: break;
  }
  RaiseCastError(target);
}

long double TVariant::AsDouble(UnicodeStringView target) const {
  long double result = 0;
  switch (VarType()) {
    case TVarType::varEmpty: return 0;
    case TVarType::varBoolean: return std::get<bool>(FValue) ? 1 : 0;
    case TVarType::varInt64: return static_cast<long double>(std::get<int64_t>(FValue));
    case TVarType::varDouble: return std::get<long double>(FValue);
    case TVarType::varString:
      if (Strings::TryStrToFloat(std::get<UnicodeString>(FValue), result)) return result;
      break;
    case TVarType::varNull: break;
  }
  RaiseCastError(target);
}

bool TVariant::AsBoolean(UnicodeStringView target) const {
  switch (VarType()) {
    case TVarType::varEmpty: return false;
    case TVarType::varBoolean: return std::get<bool>(FValue);
    case TVarType::varInt64: return std::get<int64_t>(FValue) != 0;
    case TVarType::varDouble: return std::get<long double>(FValue) != 0;
    case TVarType::varString: {
      const UnicodeString& text = std::get<UnicodeString>(FValue);
      if (Strings::SameText(text, u"True")) return true;
      if (Strings::SameText(text, u"False")) return false;
      return AsInt64(target) != 0;
    }
    case TVarType::varNull: break;
  }
  RaiseCastError(target);
}

UnicodeString TVariant::AsString(UnicodeStringView target) const {
  switch (VarType()) {
    case TVarType::varEmpty: return u"";
    case TVarType::varBoolean: return std::get<bool>(FValue) ? u"True" : u"False";
    case TVarType::varInt64: return Strings::IntToStr(std::get<int64_t>(FValue));
    case TVarType::varDouble: return Strings::FloatToStr(std::get<long double>(FValue));
    case TVarType::varString: return std::get<UnicodeString>(FValue);
    case TVarType::varNull: break;
  }
  RaiseCastError(target);
}

}  // namespace Quorvex::Rtl::Variants
