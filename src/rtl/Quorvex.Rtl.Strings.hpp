// The runtime's string toolkit: UTF-16 strings, conversions, trimming,
// searching, integer parsing and the Format/FormatFloat formatters.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "Quorvex.Rtl.Export.hpp"

namespace Quorvex::Rtl::Strings {

using UnicodeString = std::u16string;
using UnicodeStringView = std::u16string_view;
using Char = char16_t;
using TStringDynArray = std::vector<UnicodeString>;

// Converts UTF-8 to UTF-16. Malformed sequences become U+FFFD.
QXRTL_API UnicodeString Utf8ToUtf16(std::string_view text);

// Converts UTF-16 to UTF-8. Unpaired surrogates become U+FFFD.
QXRTL_API std::string Utf16ToUtf8(UnicodeStringView text);

// Shorthand for literals and narrow ASCII/UTF-8 text coming from C APIs.
inline UnicodeString U(std::string_view utf8) { return Utf8ToUtf16(utf8); }

// Removes blanks and control characters (code <= 32) from both ends.
QXRTL_API UnicodeString Trim(UnicodeStringView s);
QXRTL_API UnicodeString TrimLeft(UnicodeStringView s);
QXRTL_API UnicodeString TrimRight(UnicodeStringView s);

// Upper-/lower-cases the ASCII letters only; every other character stays.
QXRTL_API UnicodeString UpperCase(UnicodeStringView s);
QXRTL_API UnicodeString LowerCase(UnicodeStringView s);

// Case-insensitive comparison over ASCII letters: <0, 0 or >0.
QXRTL_API int CompareText(UnicodeStringView a, UnicodeStringView b);
QXRTL_API bool SameText(UnicodeStringView a, UnicodeStringView b);

// 1-based position of the first occurrence of `sub` in `s`, 0 if absent
// (an empty `sub` is never found).
QXRTL_API int Pos(UnicodeStringView sub, UnicodeStringView s, int offset = 1);

// Replaces every occurrence of `from` (non-empty) by `to`, left to right.
QXRTL_API UnicodeString ReplaceAll(UnicodeStringView s, UnicodeStringView from, UnicodeStringView to);

// Decimal text of an integer.
QXRTL_API UnicodeString IntToStr(int64_t value);
QXRTL_API UnicodeString UIntToStr(uint64_t value);

// Upper-case hexadecimal text of `value`, at least `digits` digits.
QXRTL_API UnicodeString IntToHex(uint64_t value, int digits = 1);

// Parses an integer the runtime's way: optional blanks and sign, decimal
// digits, or "$"/"0x" followed by hexadecimal digits. Returns false on
// anything else or when the value does not fit.
QXRTL_API bool TryStrToInt(UnicodeStringView s, int32_t& value);
QXRTL_API bool TryStrToInt64(UnicodeStringView s, int64_t& value);

// As TryStrToInt; raises EConvertError "'%s' is not a valid integer value".
QXRTL_API int32_t StrToInt(UnicodeStringView s);
QXRTL_API int64_t StrToInt64(UnicodeStringView s);

// As TryStrToInt, returning `def` when the text is not an integer.
QXRTL_API int32_t StrToIntDef(UnicodeStringView s, int32_t def);
QXRTL_API int64_t StrToInt64Def(UnicodeStringView s, int64_t def);

// Number settings used by FormatFloat; initialised from the user's locale.
struct QXRTL_API TFormatSettings {
  Char DecimalSeparator = u'.';
  Char ThousandSeparator = u',';
};

// The process-wide settings (read from the system on first use).
QXRTL_API TFormatSettings& FormatSettings();

// One argument of Format: an integer (with the width it came in), a float
// or a string.
class QXRTL_API TFormatArg {
 public:
  enum class TKind { Integer, Unsigned, Float, String };

  template <typename T>
  requires(std::is_integral_v<T> && !std::is_same_v<T, bool> && !std::is_same_v<T, char16_t>)
      TFormatArg(T v)  // NOLINT(google-explicit-constructor): argument lists read naturally
      : Kind(std::is_signed_v<T> ? TKind::Integer : TKind::Unsigned),
        Int(static_cast<int64_t>(v)),
        Bits(sizeof(T) > 4 ? 64 : 32) {}
  TFormatArg(bool v) : Kind(TKind::Integer), Int(v ? 1 : 0), Bits(32) {}
  TFormatArg(double v) : Kind(TKind::Float), Float(v) {}
  TFormatArg(long double v) : Kind(TKind::Float), Float(v) {}
  TFormatArg(const UnicodeString& v) : Kind(TKind::String), Str(v) {}
  TFormatArg(UnicodeStringView v) : Kind(TKind::String), Str(v) {}
  TFormatArg(const Char* v) : Kind(TKind::String), Str(v) {}
  TFormatArg(Char v) : Kind(TKind::String), Str(&Char_, 1), Char_(v) {}
  TFormatArg(const TFormatArg& other);
  TFormatArg& operator=(const TFormatArg&) = delete;

  TKind Kind;
  int64_t Int = 0;
  long double Float = 0;
  UnicodeStringView Str;
  int Bits = 64;

 private:
  Char Char_ = 0;
};

// Shortest general text of a float with at most `digits` significant
// digits (15 suits a double): "1.5", "0.0001", "1E20", "-2.5E-7", with the
// settings' decimal separator; "NAN", "INF" and "-INF" for the special values.
QXRTL_API UnicodeString FloatToStr(long double value, int digits = 15);
QXRTL_API UnicodeString FloatToStr(long double value, int digits, const TFormatSettings& settings);

// Parses a float written with the settings' decimal separator: optional
// blanks and sign, digits with an optional fraction and exponent, or NAN,
// INF. Returns false for anything else and for values out of range.
QXRTL_API bool TryStrToFloat(UnicodeStringView s, long double& value);
QXRTL_API bool TryStrToFloat(UnicodeStringView s, long double& value, const TFormatSettings& settings);

// Formats like the runtime's Format: directives "%" [index ":"] ["-"]
// [width] ["." precision] type, with types d, u, x (upper-case hex), s,
// f, e, g, n and "%%". Raises EConvertError "Format '%s' invalid or
// incompatible with argument" on a mismatch or a missing argument.
QXRTL_API UnicodeString FormatArgs(UnicodeStringView format, std::initializer_list<TFormatArg> args);

template <typename... Args>
UnicodeString Format(UnicodeStringView format, const Args&... args) {
  return FormatArgs(format, {TFormatArg(args)...});
}

// Formats a float with a picture such as "0.##" or "#,##0.00 'KB'": digits
// placeholders "0" and "#", a decimal point, optional grouping ",", and
// literal text (quoted or bare). The value is first taken to 18
// significant digits, then rounded half away from zero.
QXRTL_API UnicodeString FormatFloat(UnicodeStringView format, long double value);
QXRTL_API UnicodeString FormatFloat(UnicodeStringView format, long double value, const TFormatSettings& settings);

}  // namespace Quorvex::Rtl::Strings
