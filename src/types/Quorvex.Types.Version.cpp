#include "Quorvex.Types.Version.hpp"

#include <cmath>

#include "Quorvex.Rtl.Checked.hpp"

namespace Quorvex::Types::Version {

namespace {

// The weight between neighbouring fields of the floating form: five
// decimal places per field, enough for any 16-bit value.
constexpr long double kFieldScale = 100000;

// The integer part of `value` as a field, which `value` then gives up
// (keeping its fraction scaled up to the next field). Raises ERangeError
// when the integer part is not a 16-bit unsigned value.
uint16_t TakeField(long double& value) {
  const long double whole = std::trunc(value);
  // Negated so that NaN, which fails every comparison, is refused too.
  if (!(whole >= 0 && whole <= UINT16_MAX)) Rtl::Exceptions::RaiseRangeError();
  value = (value - whole) * kFieldScale;
  return static_cast<uint16_t>(whole);
}

}  // namespace

TVersionValue TVersionValue::FromString(UnicodeStringView AVersion) {
  UnicodeString rest(AVersion);
  TVersionValue result;
  result.Major = GetNextStrPart(rest);
  result.Minor = GetNextStrPart(rest);
  result.Release = GetNextStrPart(rest);
  result.Build = GetNextStrPart(rest);
  return result;
}

TVersionValue TVersionValue::FromFloat(long double AVersion) {
  TVersionValue result;
  result.Major = TakeField(AVersion);
  result.Minor = TakeField(AVersion);
  result.Release = TakeField(AVersion);
  result.Build = TakeField(AVersion);
  return result;
}

uint16_t TVersionValue::GetNextStrPart(UnicodeString& S) {
  const size_t dot = S.find(u'.');
  const UnicodeStringView part = UnicodeStringView(S).substr(0, dot);
  int32_t value = 0;
  // Out-of-range parts keep only their low 16 bits ("70000" is 4464).
  const uint16_t result = Rtl::Strings::TryStrToInt(part, value) ? static_cast<uint16_t>(value) : 0;
  S.erase(0, dot == UnicodeString::npos ? S.size() : dot + 1);
  return result;
}

UnicodeString TVersionValue::AsString() const {
  return Rtl::Strings::Format(u"%d.%d.%d.%d", Major, Minor, Release, Build);
}

UnicodeString TVersionValue::AsLongString() const {
  return Rtl::Strings::Format(u"%d.%d.%d build %d", Major, Minor, Release, Build);
}

int32_t TVersionValue::AsInteger() const {
  using Rtl::Checked::Add;
  using Rtl::Checked::Mul;
  return Add(Add(Mul<int32_t>(Major, 10000), Mul<int32_t>(Minor, 100)), static_cast<int32_t>(Release));
}

long double TVersionValue::AsFloat() const {
  // Each division stands on its own, in this order: the rounding of every
  // step is part of the value that versions are ordered by.
  return Major + Minor / kFieldScale + Release / kFieldScale / kFieldScale +
         Build / kFieldScale / kFieldScale / kFieldScale;
}

bool operator==(const TVersionValue& A, const TVersionValue& B) { return A.AsFloat() == B.AsFloat(); }

bool operator!=(const TVersionValue& A, const TVersionValue& B) { return A.AsFloat() != B.AsFloat(); }

bool operator<(const TVersionValue& A, const TVersionValue& B) { return A.AsFloat() < B.AsFloat(); }

bool operator>(const TVersionValue& A, const TVersionValue& B) { return A.AsFloat() > B.AsFloat(); }

bool operator<=(const TVersionValue& A, const TVersionValue& B) { return A < B || A == B; }

bool operator>=(const TVersionValue& A, const TVersionValue& B) { return A > B || A == B; }

}  // namespace Quorvex::Types::Version
