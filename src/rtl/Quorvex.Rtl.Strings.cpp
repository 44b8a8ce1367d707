#include "Quorvex.Rtl.Strings.hpp"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "Quorvex.Platform.Unicode.hpp"
#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Strings {

namespace {

bool IsBlankOrControl(Char c) { return c <= u' '; }

Char AsciiUpper(Char c) { return (c >= u'a' && c <= u'z') ? static_cast<Char>(c - 32) : c; }
Char AsciiLower(Char c) { return (c >= u'A' && c <= u'Z') ? static_cast<Char>(c + 32) : c; }

}  // namespace

UnicodeString Utf8ToUtf16(std::string_view text) { return Platform::Utf8ToUtf16(text); }

std::string Utf16ToUtf8(UnicodeStringView text) { return Platform::Utf16ToUtf8(text); }

UnicodeString TrimLeft(UnicodeStringView s) {
  size_t first = 0;
  while (first < s.size() && IsBlankOrControl(s[first])) ++first;
  return UnicodeString(s.substr(first));
}

UnicodeString TrimRight(UnicodeStringView s) {
  size_t end = s.size();
  while (end > 0 && IsBlankOrControl(s[end - 1])) --end;
  return UnicodeString(s.substr(0, end));
}

UnicodeString Trim(UnicodeStringView s) {
  size_t first = 0;
  size_t end = s.size();
  while (first < end && IsBlankOrControl(s[first])) ++first;
  while (end > first && IsBlankOrControl(s[end - 1])) --end;
  return UnicodeString(s.substr(first, end - first));
}

UnicodeString UpperCase(UnicodeStringView s) {
  UnicodeString out(s);
  std::transform(out.begin(), out.end(), out.begin(), AsciiUpper);
  return out;
}

UnicodeString LowerCase(UnicodeStringView s) {
  UnicodeString out(s);
  std::transform(out.begin(), out.end(), out.begin(), AsciiLower);
  return out;
}

int CompareText(UnicodeStringView a, UnicodeStringView b) {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const Char ca = AsciiUpper(a[i]);
    const Char cb = AsciiUpper(b[i]);
    if (ca != cb) return ca < cb ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool SameText(UnicodeStringView a, UnicodeStringView b) { return a.size() == b.size() && CompareText(a, b) == 0; }

int Pos(UnicodeStringView sub, UnicodeStringView s, int offset) {
  if (sub.empty() || offset < 1 || static_cast<size_t>(offset) > s.size()) return 0;
  const size_t at = s.find(sub, static_cast<size_t>(offset - 1));
  return at == UnicodeStringView::npos ? 0 : static_cast<int>(at) + 1;
}

UnicodeString ReplaceAll(UnicodeStringView s, UnicodeStringView from, UnicodeStringView to) {
  UnicodeString out;
  if (from.empty()) return UnicodeString(s);
  out.reserve(s.size());
  size_t start = 0;
  for (size_t at = s.find(from); at != UnicodeStringView::npos; at = s.find(from, start)) {
    out.append(s.substr(start, at - start)).append(to);
    start = at + from.size();
  }
  out.append(s.substr(start));
  return out;
}

namespace {

template <typename T>
UnicodeString ToDecimal(T value) {
  char buffer[24];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return UnicodeString(buffer, result.ptr);
}

int DigitValue(Char c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  return 99;
}

// Parses into an unsigned magnitude limited by `limit`; the runtime's rules
// for blanks, sign and hexadecimal prefixes.
bool ParseInteger(UnicodeStringView s, uint64_t limitDecimal, uint64_t limitHex, bool& negative, uint64_t& magnitude,
                  bool& hex) {
  size_t i = 0;
  while (i < s.size() && s[i] == u' ') ++i;
  negative = false;
  if (i < s.size() && (s[i] == u'-' || s[i] == u'+')) negative = s[i++] == u'-';
  hex = false;
  if (i < s.size() && (s[i] == u'$' || s[i] == u'x' || s[i] == u'X')) {
    hex = true, ++i;
  } else if (i + 1 < s.size() && s[i] == u'0' && (s[i + 1] == u'x' || s[i + 1] == u'X')) {
    hex = true, i += 2;
  }
  const int base = hex ? 16 : 10;
  const uint64_t limit = hex ? limitHex : limitDecimal;
  if (i >= s.size()) return false;
  magnitude = 0;
  for (; i < s.size(); ++i) {
    const int digit = DigitValue(s[i]);
    if (digit >= base) return false;
    if (magnitude > (limit - static_cast<uint64_t>(digit)) / static_cast<uint64_t>(base)) return false;
    magnitude = magnitude * static_cast<uint64_t>(base) + static_cast<uint64_t>(digit);
  }
  return true;
}

template <typename T>
bool TryParseSigned(UnicodeStringView s, T& value) {
  using U = std::make_unsigned_t<T>;
  bool negative, hex;
  uint64_t magnitude;
  // Decimal text may reach |min|; hexadecimal text may use every bit of the
  // width (the runtime reads "$FFFFFFFF" as -1 for a 32-bit integer).
  const uint64_t decimalLimit = static_cast<uint64_t>(std::numeric_limits<T>::max()) + 1;
  if (!ParseInteger(s, decimalLimit, std::numeric_limits<U>::max(), negative, magnitude, hex)) return false;
  if (!hex && !negative && magnitude == decimalLimit) return false;
  const U bits = static_cast<U>(magnitude);
  value = static_cast<T>(negative ? static_cast<U>(U(0) - bits) : bits);
  return true;
}

[[noreturn]] void RaiseNotInteger(UnicodeStringView s) {
  throw Exceptions::EConvertError(Format(u"'%s' is not a valid integer value", s));
}

}  // namespace

UnicodeString IntToStr(int64_t value) { return ToDecimal(value); }
UnicodeString UIntToStr(uint64_t value) { return ToDecimal(value); }

UnicodeString IntToHex(uint64_t value, int digits) {
  static constexpr char16_t kDigits[] = u"0123456789ABCDEF";
  UnicodeString out;
  do {
    out.push_back(kDigits[value & 0xF]);
    value >>= 4;
  } while (value != 0);
  if (static_cast<int>(out.size()) < digits) out.append(static_cast<size_t>(digits) - out.size(), u'0');
  std::reverse(out.begin(), out.end());
  return out;
}

bool TryStrToInt(UnicodeStringView s, int32_t& value) { return TryParseSigned(s, value); }
bool TryStrToInt64(UnicodeStringView s, int64_t& value) { return TryParseSigned(s, value); }

int32_t StrToInt(UnicodeStringView s) {
  int32_t value;
  if (!TryStrToInt(s, value)) RaiseNotInteger(s);
  return value;
}

int64_t StrToInt64(UnicodeStringView s) {
  int64_t value;
  if (!TryStrToInt64(s, value)) RaiseNotInteger(s);
  return value;
}

int32_t StrToIntDef(UnicodeStringView s, int32_t def) {
  int32_t value;
  return TryStrToInt(s, value) ? value : def;
}

int64_t StrToInt64Def(UnicodeStringView s, int64_t def) {
  int64_t value;
  return TryStrToInt64(s, value) ? value : def;
}

TFormatSettings& FormatSettings() {
  static TFormatSettings settings{Platform::DecimalSeparator(), Platform::ThousandSeparator()};
  return settings;
}

// ---------------------------------------------------------------------------
// Floats as text

UnicodeString FloatToStr(long double value, int digits) { return FloatToStr(value, digits, FormatSettings()); }

UnicodeString FloatToStr(long double value, int digits, const TFormatSettings& settings) {
  if (std::isnan(value)) return u"NAN";
  if (std::isinf(value)) return value < 0 ? u"-INF" : u"INF";
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.*Lg", std::clamp(digits, 1, 18), value);
  // "%g" writes "1.5e-07"; the runtime's form is "1.5E-7".
  UnicodeString text;
  for (const char* c = buffer; *c != 0; ++c) {
    if (*c == '.') {
      text += settings.DecimalSeparator;
    } else if (*c == 'e') {
      text += u'E';
      if (c[1] == '-') text += u'-';
      c += (c[1] == '-' || c[1] == '+') ? 1 : 0;
      while (c[1] == '0' && c[2] != 0) ++c;
    } else {
      text += static_cast<Char>(*c);
    }
  }
  return text;
}

bool TryStrToFloat(UnicodeStringView s, long double& value) { return TryStrToFloat(s, value, FormatSettings()); }

bool TryStrToFloat(UnicodeStringView s, long double& value, const TFormatSettings& settings) {
  const UnicodeString trimmed = Trim(s);
  std::string ascii;
  for (const Char c : trimmed) {
    if (c == settings.DecimalSeparator) {
      ascii += '.';
    } else if (c < 128 && c != '.') {
      ascii += static_cast<char>(c);
    } else {
      return false;
    }
  }
  // strtold takes a leading "+", hexadecimal floats and "INFINITY"; the
  // runtime's form takes only the sign, decimals and NAN/INF.
  const bool special = SameText(trimmed, u"NAN") || SameText(trimmed, u"INF") || SameText(trimmed, u"-INF") ||
                       SameText(trimmed, u"+INF");
  if (ascii.empty() || (!special && ascii.find_first_of("xXnNiIpP") != std::string::npos)) return false;
  errno = 0;
  char* end = nullptr;
  const long double parsed = std::strtold(ascii.c_str(), &end);
  if (end != ascii.c_str() + ascii.size() || errno == ERANGE) return false;
  value = parsed;
  return true;
}

TFormatArg::TFormatArg(const TFormatArg& other)
    : Kind(other.Kind), Int(other.Int), Float(other.Float), Str(other.Str), Bits(other.Bits), Char_(other.Char_) {
  // A single character is stored inside the argument itself.
  if (other.Str.data() == &other.Char_) Str = UnicodeStringView(&Char_, 1);
}

// ---------------------------------------------------------------------------
// Format

namespace {

struct TDirective {
  bool LeftAlign = false;
  int Width = -1;
  int Precision = -1;
  Char Type = 0;
};

[[noreturn]] void RaiseBadFormat(UnicodeStringView format) {
  throw Exceptions::EConvertError(u"Format '" + UnicodeString(format) + u"' invalid or incompatible with argument");
}

// Reads a run of decimal digits at `i`; -1 when there is none.
int ReadNumber(UnicodeStringView f, size_t& i) {
  if (i >= f.size() || f[i] < u'0' || f[i] > u'9') return -1;
  int value = 0;
  while (i < f.size() && f[i] >= u'0' && f[i] <= u'9') value = std::min(value * 10 + (f[i++] - u'0'), 1 << 20);
  return value;
}

UnicodeString FormatInteger(const TFormatArg& arg, const TDirective& d, UnicodeStringView format) {
  if (arg.Kind != TFormatArg::TKind::Integer && arg.Kind != TFormatArg::TKind::Unsigned) RaiseBadFormat(format);
  const Char type = AsciiUpper(d.Type);
  UnicodeString digits;
  bool negative = false;
  if (type == u'X') {
    // Hexadecimal shows the bits of the argument's own width.
    const uint64_t bits = arg.Bits == 32 ? static_cast<uint32_t>(arg.Int) : static_cast<uint64_t>(arg.Int);
    digits = IntToHex(bits);
  } else if (type == u'U' || arg.Kind == TFormatArg::TKind::Unsigned) {
    digits = UIntToStr(arg.Bits == 32 ? static_cast<uint32_t>(arg.Int) : static_cast<uint64_t>(arg.Int));
  } else {
    negative = arg.Int < 0;
    digits = UIntToStr(negative ? 0 - static_cast<uint64_t>(arg.Int) : static_cast<uint64_t>(arg.Int));
  }
  if (d.Precision > static_cast<int>(digits.size()))
    digits.insert(0, static_cast<size_t>(d.Precision) - digits.size(), u'0');
  return negative ? u"-" + digits : digits;
}

UnicodeString FormatReal(const TFormatArg& arg, const TDirective& d, UnicodeStringView format) {
  long double value;
  if (arg.Kind == TFormatArg::TKind::Float)
    value = arg.Float;
  else
    RaiseBadFormat(format);
  const Char type = AsciiUpper(d.Type);
  const int precision = d.Precision < 0 ? (type == u'G' ? 15 : 2) : d.Precision;
  char buffer[128];
  std::to_chars_result result;
  if (type == u'E')
    result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific, precision);
  else if (type == u'G')
    result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, precision);
  else
    result = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, std::min(precision, 18));
  if (result.ec != std::errc()) RaiseBadFormat(format);
  UnicodeString text(buffer, result.ptr);
  std::replace(text.begin(), text.end(), u'.', FormatSettings().DecimalSeparator);
  return text;
}

UnicodeString FormatOne(const TFormatArg& arg, const TDirective& d, UnicodeStringView format) {
  switch (AsciiUpper(d.Type)) {
    case u'D':
    case u'U':
    case u'X':
      return FormatInteger(arg, d, format);
    case u'E':
    case u'F':
    case u'G':
    case u'N':
      return FormatReal(arg, d, format);
    case u'S': {
      if (arg.Kind != TFormatArg::TKind::String) RaiseBadFormat(format);
      UnicodeStringView text = arg.Str;
      if (d.Precision >= 0 && static_cast<size_t>(d.Precision) < text.size())
        text = text.substr(0, static_cast<size_t>(d.Precision));
      return UnicodeString(text);
    }
    default:
      RaiseBadFormat(format);
  }
}

void AppendPadded(UnicodeString& out, const UnicodeString& text, const TDirective& d) {
  const size_t pad = d.Width > static_cast<int>(text.size()) ? static_cast<size_t>(d.Width) - text.size() : 0;
  if (!d.LeftAlign) out.append(pad, u' ');
  out.append(text);
  if (d.LeftAlign) out.append(pad, u' ');
}

}  // namespace

UnicodeString FormatArgs(UnicodeStringView format, std::initializer_list<TFormatArg> args) {
  UnicodeString out;
  out.reserve(format.size() + 16 * args.size());
  size_t next = 0;
  for (size_t i = 0; i < format.size();) {
    if (format[i] != u'%') {
      out.push_back(format[i++]);
      continue;
    }
    if (++i >= format.size()) RaiseBadFormat(format);
    if (format[i] == u'%') {
      out.push_back(u'%'), ++i;
      continue;
    }
    TDirective d;
    int number = ReadNumber(format, i);
    if (number >= 0 && i < format.size() && format[i] == u':') {
      next = static_cast<size_t>(number), ++i;  // explicit argument index
      number = -1;
    }
    if (number < 0 && i < format.size() && format[i] == u'-') d.LeftAlign = true, ++i;
    d.Width = number >= 0 ? number : ReadNumber(format, i);
    if (i < format.size() && format[i] == u'.') {
      ++i;
      d.Precision = std::max(ReadNumber(format, i), 0);
    }
    if (i >= format.size() || next >= args.size()) RaiseBadFormat(format);
    d.Type = format[i++];
    AppendPadded(out, FormatOne(args.begin()[next++], d, format), d);
  }
  return out;
}

// ---------------------------------------------------------------------------
// FormatFloat

namespace {

// A float picture split into its parts: literal text before and after the
// digit placeholders, and the digit counts that steer rounding and padding.
struct TPicture {
  UnicodeString Prefix;
  UnicodeString Suffix;
  int MinIntegerDigits = 0;
  int MinFractionDigits = 0;
  int MaxFractionDigits = 0;
  bool Grouping = false;
  bool HasDigits = false;
};

// Takes the section for the value's sign from "positive;negative;zero".
UnicodeStringView SelectSection(UnicodeStringView format, int section) {
  size_t start = 0;
  Char quote = 0;
  int index = 0;
  for (size_t i = 0; i <= format.size(); ++i) {
    const bool end = i == format.size();
    if (!end && quote != 0) {
      if (format[i] == quote) quote = 0;
    } else if (!end && (format[i] == u'\'' || format[i] == u'"')) {
      quote = format[i];
    } else if (end || format[i] == u';') {
      if (index == section) return format.substr(start, i - start);
      start = i + 1;
      ++index;
    }
  }
  return {};
}

TPicture ParsePicture(UnicodeStringView section) {
  TPicture picture;
  bool inFraction = false;
  bool afterDigits = false;
  for (size_t i = 0; i < section.size(); ++i) {
    const Char c = section[i];
    UnicodeString& literal = afterDigits ? picture.Suffix : picture.Prefix;
    if (c == u'\'' || c == u'"') {
      const size_t close = section.find(c, i + 1);
      const size_t end = close == UnicodeStringView::npos ? section.size() : close;
      literal.append(section.substr(i + 1, end - i - 1));
      i = end;
    } else if (c == u'0' || c == u'#') {
      if (afterDigits && !picture.Suffix.empty()) {
        literal.push_back(c);  // a digit sign after literal text stays literal
        continue;
      }
      picture.HasDigits = true;
      if (inFraction) {
        ++picture.MaxFractionDigits;
        if (c == u'0') picture.MinFractionDigits = picture.MaxFractionDigits;
      } else if (c == u'0') {
        ++picture.MinIntegerDigits;
      }
      afterDigits = true;
    } else if (c == u'.' && !inFraction && (picture.Suffix.empty())) {
      inFraction = true;
      afterDigits = true;
    } else if (c == u',' && !inFraction && picture.Suffix.empty()) {
      picture.Grouping = true;
    } else {
      literal.push_back(c);
    }
  }
  return picture;
}

// Decimal digits of |value| to 18 significant digits and the position of
// the decimal point relative to them.
void DecimalDigits(long double value, std::string& digits, int& exponent) {
  char buffer[64];
  const auto result =
      std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value), std::chars_format::scientific, 17);
  const std::string_view text(buffer, static_cast<size_t>(result.ptr - buffer));
  const size_t e = text.find('e');
  digits.clear();
  for (char c : text.substr(0, e))
    if (c != '.') digits.push_back(c);
  int power = 0;
  std::from_chars(text.data() + e + 1 + (text[e + 1] == '+' ? 1 : 0), text.data() + text.size(), power);
  exponent = power + 1;  // digits before the decimal point
  while (digits.size() > 1 && digits.back() == '0') digits.pop_back();
  if (digits == "0") exponent = 1;
}

// Rounds the digit string half away from zero to `fraction` digits after
// the point (the digits are a magnitude, so "up" is away from zero).
void RoundDigits(std::string& digits, int& exponent, int fraction) {
  const int keep = exponent + fraction;
  if (keep < 0) {
    digits = "0", exponent = 1;
    return;
  }
  if (static_cast<size_t>(keep) >= digits.size()) return;
  const bool up = digits[static_cast<size_t>(keep)] >= '5';
  digits.resize(static_cast<size_t>(keep));
  if (up) {
    int i = keep - 1;
    for (; i >= 0 && digits[static_cast<size_t>(i)] == '9'; --i) digits[static_cast<size_t>(i)] = '0';
    if (i >= 0) {
      ++digits[static_cast<size_t>(i)];
    } else {
      digits.insert(digits.begin(), '1');
      ++exponent;
    }
  }
  while (!digits.empty() && digits.back() == '0' && static_cast<int>(digits.size()) > exponent) digits.pop_back();
  if (digits.empty() || digits.find_first_not_of('0') == std::string::npos) digits = "0", exponent = 1;
}

UnicodeString GroupThousands(const UnicodeString& integer, Char separator) {
  UnicodeString out;
  out.reserve(integer.size() + integer.size() / 3);
  for (size_t i = 0; i < integer.size(); ++i) {
    if (i > 0 && (integer.size() - i) % 3 == 0) out.push_back(separator);
    out.push_back(integer[i]);
  }
  return out;
}

UnicodeString RenderNumber(const TPicture& picture, std::string digits, int exponent, const TFormatSettings& settings) {
  UnicodeString integer;
  UnicodeString fraction;
  for (int k = 0; k < exponent; ++k)
    integer.push_back(static_cast<size_t>(k) < digits.size() ? static_cast<Char>(digits[static_cast<size_t>(k)])
                                                             : u'0');
  for (int k = exponent; k < static_cast<int>(digits.size()); ++k)
    fraction.push_back(k < 0 ? u'0' : static_cast<Char>(digits[static_cast<size_t>(k)]));
  if (integer == u"0") integer.clear();
  if (static_cast<int>(integer.size()) < picture.MinIntegerDigits)
    integer.insert(0, static_cast<size_t>(picture.MinIntegerDigits) - integer.size(), u'0');
  if (static_cast<int>(fraction.size()) < picture.MinFractionDigits)
    fraction.append(static_cast<size_t>(picture.MinFractionDigits) - fraction.size(), u'0');
  if (picture.Grouping) integer = GroupThousands(integer, settings.ThousandSeparator);
  UnicodeString out = std::move(integer);
  if (!fraction.empty()) out.append(1, settings.DecimalSeparator).append(fraction);
  return out;
}

}  // namespace

UnicodeString FormatFloat(UnicodeStringView format, long double value) {
  return FormatFloat(format, value, FormatSettings());
}

UnicodeString FormatFloat(UnicodeStringView format, long double value, const TFormatSettings& settings) {
  if (std::isnan(value)) return u"NAN";
  if (std::isinf(value)) return value > 0 ? u"INF" : u"-INF";
  if (format.empty()) format = u"0.##################";
  TPicture picture = ParsePicture(SelectSection(format, 0));
  std::string digits;
  int exponent;
  DecimalDigits(value, digits, exponent);
  RoundDigits(digits, exponent, picture.MaxFractionDigits);
  const bool zero = digits == "0";
  bool negative = value < 0 && !zero;
  // A second section formats negative values (without a sign), a third zero.
  if (negative && !SelectSection(format, 1).empty()) {
    picture = ParsePicture(SelectSection(format, 1));
    negative = false;
  } else if (zero && !SelectSection(format, 2).empty()) {
    picture = ParsePicture(SelectSection(format, 2));
  }
  UnicodeString out = picture.Prefix;
  if (negative) out.push_back(u'-');
  if (picture.HasDigits) out.append(RenderNumber(picture, std::move(digits), exponent, settings));
  out.append(picture.Suffix);
  return out;
}

}  // namespace Quorvex::Rtl::Strings
