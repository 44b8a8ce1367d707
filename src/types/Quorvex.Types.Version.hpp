// TVersionValue: the four-part version number of file version resources,
// parsed from text or from its floating form, formatted, packed into an
// integer and ordered through its floating form.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Types::Version {

using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;

struct QXRTL_API TVersionValue {
  uint16_t Major = 0;
  uint16_t Minor = 0;
  uint16_t Release = 0;
  uint16_t Build = 0;

  // The fields in order from the dot-separated parts of `AVersion`, each
  // read by GetNextStrPart: missing parts give 0, parts after the fourth
  // are ignored. Never raises.
  static TVersionValue FromString(UnicodeStringView AVersion);

  // The inverse of AsFloat: each of Major, Minor and Release is the integer
  // part of the value, which then becomes its fraction times 100000; Build
  // is the integer part left. A value just below the exact one can give a
  // field one lower. Raises ERangeError when a part is outside 0..65535.
  static TVersionValue FromFloat(long double AVersion);

  // Takes the text before the first "." of `S` (all of it when there is no
  // dot) and leaves `S` holding the text after that dot. Returns the low 16
  // bits of the part read as a 32-bit integer, 0 when it is not one.
  static uint16_t GetNextStrPart(UnicodeString& S);

  // "Major.Minor.Release.Build", e.g. "1.2.3.4".
  UnicodeString AsString() const;

  // "Major.Minor.Release build Build", e.g. "1.2.3 build 4".
  UnicodeString AsLongString() const;

  // Major * 10000 + Minor * 100 + Release; Build is left out and fields of
  // 100 or more overlap their neighbours. Raises EIntOverflow on overflow
  // (which 16-bit fields cannot reach).
  int32_t AsInteger() const;

  // Major + Minor / 10^5 + Release / 10^10 + Build / 10^15 in extended
  // precision; for a large Major the lowest Build digits are lost.
  long double AsFloat() const;

  // AsFloat, so a version reads as a number wherever one is expected.
  operator long double() const { return AsFloat(); }

  // Orderings compare AsFloat of both sides, never field by field, so they
  // share its precision limits.
  friend QXRTL_API bool operator==(const TVersionValue& A, const TVersionValue& B);
  friend QXRTL_API bool operator!=(const TVersionValue& A, const TVersionValue& B);
  friend QXRTL_API bool operator<(const TVersionValue& A, const TVersionValue& B);
  friend QXRTL_API bool operator>(const TVersionValue& A, const TVersionValue& B);
  // `<` or `=`.
  friend QXRTL_API bool operator<=(const TVersionValue& A, const TVersionValue& B);
  // `>` or `=`.
  friend QXRTL_API bool operator>=(const TVersionValue& A, const TVersionValue& B);
};

}  // namespace Quorvex::Types::Version
