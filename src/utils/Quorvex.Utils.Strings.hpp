// gString: the library's toolbox of string operations (joining, splitting,
// quoting, clipping, hexadecimal, and human-readable byte counts, rates
// and distances) with the unit words kept in one shared TStringLocals.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>

#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Strings.hpp"
#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::Utils::Strings {

using Rtl::Strings::TStringDynArray;
using Rtl::Strings::UnicodeString;
using Rtl::Strings::UnicodeStringView;
using TStringSpan = std::span<const UnicodeString>;

namespace Locals {

// The unit words of the formatters, read in one place. Built once when the
// unit loads and read-only afterwards, so any thread may read it.
class QXRTL_API TStringLocals : public Rtl::Objects::TObject {
  QX_CLASS(TStringLocals, Rtl::Objects::TObject, "Quorvex.Utils.Strings.Locals")
 public:
  TStringLocals();

  const UnicodeString& Bytes() const { return FBytes; }
  const UnicodeString& KBytes() const { return FKBytes; }
  const UnicodeString& MBytes() const { return FMBytes; }
  const UnicodeString& GBytes() const { return FGBytes; }
  const UnicodeString& TBytes() const { return FTBytes; }
  const UnicodeString& BitsPerSec() const { return FBitsPerSec; }
  const UnicodeString& KBitsPerSec() const { return FKBitsPerSec; }
  const UnicodeString& MBitsPerSec() const { return FMBitsPerSec; }
  const UnicodeString& GBitsPerSec() const { return FGBitsPerSec; }
  const UnicodeString& TBitsPerSec() const { return FTBitsPerSec; }
  const UnicodeString& BytesPerSec() const { return FBytesPerSec; }
  const UnicodeString& KBytesPerSec() const { return FKBytesPerSec; }
  const UnicodeString& MBytesPerSec() const { return FMBytesPerSec; }
  const UnicodeString& GBytesPerSec() const { return FGBytesPerSec; }
  const UnicodeString& TBytesPerSec() const { return FTBytesPerSec; }
  const UnicodeString& Millimeters() const { return FMillimeters; }
  const UnicodeString& Meters() const { return FMeters; }
  const UnicodeString& Kilometers() const { return FKilometers; }

 private:
  UnicodeString FBytes, FKBytes, FMBytes, FGBytes, FTBytes;
  UnicodeString FBitsPerSec, FKBitsPerSec, FMBitsPerSec, FGBitsPerSec, FTBitsPerSec;
  UnicodeString FBytesPerSec, FKBytesPerSec, FMBytesPerSec, FGBytesPerSec, FTBytesPerSec;
  UnicodeString FMillimeters, FMeters, FKilometers;
};

}  // namespace Locals

// The unit's start-up record (creates the shared TStringLocals).
extern QXRTL_API Rtl::Units::TUnit StringsUnit;

struct QXRTL_API gString {
  gString() = delete;

  // Appends `value` to `s` after `delimiter`; an empty value leaves `s`
  // alone, and an empty `s` becomes `value` with no delimiter.
  static void Add(UnicodeString& s, UnicodeStringView value, UnicodeStringView delimiter);
  // As Add, but an empty value still adds the delimiter to a non-empty `s`.
  static void AddWithEmpties(UnicodeString& s, UnicodeStringView value, UnicodeStringView delimiter);
  // The items joined with Add: empty items are skipped.
  static UnicodeString Join(TStringSpan items, UnicodeStringView delimiter);
  // The items joined with AddWithEmpties: leading empty items vanish,
  // later ones each add a delimiter ("", "a", "" give "a,").
  static UnicodeString JoinWithEmpties(TStringSpan items, UnicodeStringView delimiter);
  // `s` repeated `count` times; empty for a count of 0 or less.
  static UnicodeString StringOf(UnicodeStringView s, int32_t count);
  // All elements of all arrays, in order.
  static TStringDynArray Concat(std::span<const TStringDynArray> arrays);
  static TStringDynArray Concat(std::initializer_list<TStringDynArray> arrays);
  // The sum of the arrays' element counts; raises EIntOverflow (or
  // ERangeError for one array) past 2^31-1.
  static int32_t TotalLength(std::span<const TStringDynArray> arrays);

  // Splits at every occurrence of `delimiter`, keeping empty pieces ("" gives
  // one empty element). Raises EArgumentException for an empty delimiter.
  static TStringDynArray Split(UnicodeStringView s, UnicodeStringView delimiter);
  // The trimmed text before the first `delimiter`; "" when there is none.
  static UnicodeString KeyOf(UnicodeStringView s, UnicodeStringView delimiter);
  // The trimmed text from one character after the start of the first
  // `delimiter` (the rest of a longer delimiter stays); "" when absent.
  static UnicodeString ValueOf(UnicodeStringView s, UnicodeStringView delimiter);
  // The items that differ from `value` (case-sensitive), in order.
  static TStringDynArray Delete(TStringSpan items, UnicodeStringView value);
  static TStringDynArray DeleteEmpties(TStringSpan items);

  // Equality; without case sensitivity only ASCII letters are folded.
  static bool Eq(UnicodeStringView a, UnicodeStringView b, bool caseSensitive);
  // Element-wise equality. Two empty arrays are deliberately not equal.
  static bool Eq(TStringSpan a, TStringSpan b, bool caseSensitive);

  // True when the first and last characters are double quotes (a lone
  // quote counts). Raises ERangeError for an empty string.
  static bool IsQuoted(UnicodeStringView s);
  // `s` in double quotes; with `onlyIfUnquoted`, quoted text is returned as
  // is (and an empty `s` raises ERangeError through IsQuoted).
  static UnicodeString Quote(UnicodeStringView s, bool onlyIfUnquoted);
  // Shortens a text longer than `maxLength`: the head keeps
  // maxLength - length(suffix) - 1 characters and `suffix` follows; when
  // maxLength - length(suffix) is below 1, the whole text comes before it.
  static UnicodeString Clip(UnicodeStringView s, int32_t maxLength, UnicodeStringView suffix);
  // CR LF pairs become blanks, runs of blanks one blank, ends trimmed.
  static UnicodeString SpaceCompress(UnicodeStringView s);

  // Each character's code as upper-case hex, at least two digits.
  static UnicodeString StringToHex(UnicodeStringView s);
  // Hex text (optional trailing "H") to a number; 0 for a non-hex
  // character. Raises ERangeError for "" or more than 255 digits and
  // EIntOverflow when the sum overflows.
  static int64_t HexToInt(UnicodeStringView s);

  // The list's strings in order.
  static TStringDynArray ToArray(const Rtl::Classes::TStrings& strings);
  static TStringDynArray ToArray(TStringSpan items);
  // A new string list holding the items; the caller owns it.
  static std::unique_ptr<Rtl::Classes::TStringList> ToStrings(TStringSpan items);

  // "1.5 KB", "1023 bytes": steps of 1024 up to TB. Below the first step
  // the exact count; above, the exact quotient rounded once, half away from
  // zero, to at most two decimals in the user's decimal separator.
  static UnicodeString FormatBytes(int64_t value);
  // "1.5 KB/s", "512 B/s": as FormatBytes.
  static UnicodeString FormatBytesPerSec(int64_t value);
  // "1.5 Mb/s": steps of 1000 up to Tb/s, rounded as FormatBytes.
  static UnicodeString FormatBitsPerSec(int64_t value);
  // "999 m", "1.5 km": kilometres from 1000 m on, to one decimal.
  static UnicodeString FormatMeters(int64_t value);

  // The shared unit words (owned by the unit, not by the caller).
  static const Locals::TStringLocals& GetLocals();
};

}  // namespace Quorvex::Utils::Strings
