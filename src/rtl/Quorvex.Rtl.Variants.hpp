// The runtime's variant: a small value that is empty, null, a Boolean, an
// integer, a float or a string, with conversions between them. Values read
// from text (documents, settings) travel as variants before they meet the
// type they are stored in.
#pragma once

#include <cstdint>
#include <variant>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Variants {

using Strings::UnicodeString;
using Strings::UnicodeStringView;

enum class TVarType : uint8_t { varEmpty, varNull, varBoolean, varInt64, varDouble, varString };

class QXRTL_API TVariant {
 public:
  // An empty (unassigned) variant.
  TVariant() = default;
  TVariant(bool value) : FValue(value) {}                                 // NOLINT(google-explicit-constructor)
  TVariant(int value) : FValue(int64_t{value}) {}                         // NOLINT(google-explicit-constructor)
  TVariant(int64_t value) : FValue(value) {}                              // NOLINT(google-explicit-constructor)
  TVariant(double value) : FValue(static_cast<long double>(value)) {}     // NOLINT(google-explicit-constructor)
  TVariant(long double value) : FValue(value) {}                          // NOLINT(google-explicit-constructor)
  TVariant(UnicodeString value) : FValue(std::move(value)) {}             // NOLINT(google-explicit-constructor)
  TVariant(const char16_t* value) : FValue(UnicodeString(value)) {}       // NOLINT(google-explicit-constructor)
  // The null variant (a value known to be missing, unlike an empty one).
  static TVariant Null();

  TVarType VarType() const { return static_cast<TVarType>(FValue.index()); }
  bool IsEmpty() const { return VarType() == TVarType::varEmpty; }
  bool IsNull() const { return VarType() == TVarType::varNull; }
  // "Empty", "Null", "Boolean", "Int64", "Double" or "UnicodeString".
  UnicodeString TypeName() const;

  // Conversions. Empty converts to 0, false or ""; null, and text that does
  // not parse, raise Exceptions::EVariantTypeCastError naming `target` as the type.
  // Text takes the runtime's integer form, or a float that is rounded to
  // the nearest integer (halves to even); floats use the locale's format.
  int64_t AsInt64(UnicodeStringView target = u"Int64") const;
  long double AsDouble(UnicodeStringView target = u"Double") const;
  bool AsBoolean(UnicodeStringView target = u"Boolean") const;
  // Booleans as "True"/"False", numbers as FloatToStr/IntToStr give them.
  UnicodeString AsString(UnicodeStringView target = u"UnicodeString") const;

  friend bool operator==(const TVariant&, const TVariant&) = default;

 private:
  struct TNull {
    friend bool operator==(TNull, TNull) { return true; }
  };
  [[noreturn]] void RaiseCastError(UnicodeStringView target) const;
  int64_t TextToInt64(UnicodeStringView target) const;

  std::variant<std::monostate, TNull, bool, int64_t, long double, UnicodeString> FValue;
};

}  // namespace Quorvex::Rtl::Variants
