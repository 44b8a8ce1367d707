#include "Quorvex.Utils.Strings.hpp"

#include <array>

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Utils::Strings {

namespace Checked = Rtl::Checked;
using Rtl::Strings::Char;
using Rtl::Strings::Trim;

namespace Locals {

TStringLocals::TStringLocals()
    : FBytes(u"bytes"),
      FKBytes(u"KB"),
      FMBytes(u"MB"),
      FGBytes(u"GB"),
      FTBytes(u"TB"),
      FBitsPerSec(u"b/s"),
      FKBitsPerSec(u"Kb/s"),
      FMBitsPerSec(u"Mb/s"),
      FGBitsPerSec(u"Gb/s"),
      FTBitsPerSec(u"Tb/s"),
      FBytesPerSec(u"B/s"),
      FKBytesPerSec(u"KB/s"),
      FMBytesPerSec(u"MB/s"),
      FGBytesPerSec(u"GB/s"),
      FTBytesPerSec(u"TB/s"),
      FMillimeters(u"mm"),
      FMeters(u"m"),
      FKilometers(u"km") {}

}  // namespace Locals

namespace {

// Created when the unit loads, freed when it unloads; a plain pointer so
// that it needs no static construction of its own.
Locals::TStringLocals* FLocals = nullptr;

void InitializeUnit() { FLocals = new Locals::TStringLocals(); }

void FinalizeUnit() {
  delete FLocals;
  FLocals = nullptr;
}

}  // namespace

QX_UNIT(StringsUnit, u"Quorvex.Utils.Strings", &InitializeUnit, &FinalizeUnit);

void gString::Add(UnicodeString& s, UnicodeStringView value, UnicodeStringView delimiter) {
  if (!value.empty()) AddWithEmpties(s, value, delimiter);
}

void gString::AddWithEmpties(UnicodeString& s, UnicodeStringView value, UnicodeStringView delimiter) {
  if (s.empty()) {
    s = value;
  } else {
    s.append(delimiter).append(value);
  }
}

namespace {

// Room for every item and a delimiter after each, so joining never
// reallocates.
UnicodeString ReservedForJoin(TStringSpan items, UnicodeStringView delimiter) {
  size_t length = 0;
  for (const UnicodeString& item : items) length += item.size() + delimiter.size();
  UnicodeString result;
  result.reserve(length);
  return result;
}

}  // namespace

UnicodeString gString::Join(TStringSpan items, UnicodeStringView delimiter) {
  UnicodeString result = ReservedForJoin(items, delimiter);
  for (const UnicodeString& item : items) Add(result, item, delimiter);
  return result;
}

UnicodeString gString::JoinWithEmpties(TStringSpan items, UnicodeStringView delimiter) {
  UnicodeString result = ReservedForJoin(items, delimiter);
  for (const UnicodeString& item : items) AddWithEmpties(result, item, delimiter);
  return result;
}

UnicodeString gString::StringOf(UnicodeStringView s, int32_t count) {
  UnicodeString result;
  if (count <= 0) return result;
  result.reserve(s.size() * static_cast<size_t>(count));
  for (int32_t i = 0; i < count; ++i) result.append(s);
  return result;
}

TStringDynArray gString::Concat(std::span<const TStringDynArray> arrays) {
  TStringDynArray result;
  result.reserve(static_cast<size_t>(TotalLength(arrays)));
  for (const TStringDynArray& array : arrays) result.insert(result.end(), array.begin(), array.end());
  return result;
}

TStringDynArray gString::Concat(std::initializer_list<TStringDynArray> arrays) {
  return Concat(std::span<const TStringDynArray>(arrays.begin(), arrays.size()));
}

int32_t gString::TotalLength(std::span<const TStringDynArray> arrays) {
  int32_t total = 0;
  for (const TStringDynArray& array : arrays) total = Checked::Add(total, Checked::Narrow<int32_t>(array.size()));
  return total;
}

TStringDynArray gString::Split(UnicodeStringView s, UnicodeStringView delimiter) {
  // An empty delimiter would match everywhere without advancing.
  if (delimiter.empty()) throw Rtl::Exceptions::EArgumentException(u"Split needs a non-empty delimiter");
  size_t pieces = 1;
  for (size_t at = s.find(delimiter); at != UnicodeStringView::npos; at = s.find(delimiter, at + delimiter.size()))
    ++pieces;
  TStringDynArray result;
  result.reserve(pieces);
  size_t start = 0;
  for (size_t at = s.find(delimiter); at != UnicodeStringView::npos; at = s.find(delimiter, start)) {
    result.emplace_back(s.substr(start, at - start));
    start = at + delimiter.size();
  }
  result.emplace_back(s.substr(start));
  return result;
}

UnicodeString gString::KeyOf(UnicodeStringView s, UnicodeStringView delimiter) {
  const int p = Rtl::Strings::Pos(delimiter, s);
  return p > 0 ? Trim(s.substr(0, static_cast<size_t>(p - 1))) : UnicodeString();
}

UnicodeString gString::ValueOf(UnicodeStringView s, UnicodeStringView delimiter) {
  const int p = Rtl::Strings::Pos(delimiter, s);
  return p > 0 ? Trim(s.substr(static_cast<size_t>(p))) : UnicodeString();
}

TStringDynArray gString::Delete(TStringSpan items, UnicodeStringView value) {
  TStringDynArray result;
  result.reserve(items.size());
  for (const UnicodeString& item : items)
    if (item != value) result.push_back(item);
  return result;
}

TStringDynArray gString::DeleteEmpties(TStringSpan items) { return Delete(items, UnicodeStringView()); }

bool gString::Eq(UnicodeStringView a, UnicodeStringView b, bool caseSensitive) {
  return caseSensitive ? a == b : Rtl::Strings::SameText(a, b);
}

bool gString::Eq(TStringSpan a, TStringSpan b, bool caseSensitive) {
  if (a.size() != b.size() || a.empty()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (!Eq(a[i], b[i], caseSensitive)) return false;
  return true;
}

bool gString::IsQuoted(UnicodeStringView s) {
  const auto length = static_cast<int64_t>(s.size());
  return Checked::CharAt(s, 1) == u'"' && Checked::CharAt(s, length) == u'"';
}

UnicodeString gString::Quote(UnicodeStringView s, bool onlyIfUnquoted) {
  if (onlyIfUnquoted && IsQuoted(s)) return UnicodeString(s);
  return Rtl::Strings::Format(u"\"%s\"", s);
}

UnicodeString gString::Clip(UnicodeStringView s, int32_t maxLength, UnicodeStringView suffix) {
  if (static_cast<int64_t>(s.size()) <= maxLength) return UnicodeString(s);
  // Deleting from position maxLength - length(suffix) keeps one character
  // fewer than the arithmetic suggests; applications rely on that length.
  const int32_t from = Checked::Sub(maxLength, Checked::Narrow<int32_t>(suffix.size()));
  UnicodeString result(from >= 1 ? s.substr(0, static_cast<size_t>(from - 1)) : s);
  return result.append(suffix);
}

UnicodeString gString::SpaceCompress(UnicodeStringView s) {
  // Replacing double blanks until nothing changes collapses every run of
  // blanks to one; doing it in one pass keeps the work linear.
  const UnicodeString text = Trim(Rtl::Strings::ReplaceAll(s, u"\r\n", u" "));
  UnicodeString result;
  result.reserve(text.size());
  for (Char c : text)
    if (c != u' ' || result.empty() || result.back() != u' ') result.push_back(c);
  return result;
}

UnicodeString gString::StringToHex(UnicodeStringView s) {
  UnicodeString result;
  result.reserve(s.size() * 2);
  for (Char c : s) result.append(Rtl::Strings::IntToHex(c, 2));
  return result;
}

int64_t gString::HexToInt(UnicodeStringView s) {
  UnicodeString text = Rtl::Strings::UpperCase(s);
  if (Checked::CharAt(text, static_cast<int64_t>(text.size())) == u'H') text.pop_back();
  const uint8_t count = Checked::Narrow<uint8_t>(text.size());
  int64_t result = 0;
  for (uint8_t i = 0; i < count; ++i) {
    const Char c = text[i];
    int64_t digit;
    if (c >= u'0' && c <= u'9')
      digit = c - u'0';
    else if (c >= u'A' && c <= u'F')
      digit = c - u'A' + 10;
    else
      return 0;
    // The shift drops high digits without a check; only the sum is checked.
    result = static_cast<int64_t>(static_cast<uint64_t>(result) << 4);
    result = Checked::Add(result, digit);
  }
  return result;
}

TStringDynArray gString::ToArray(const Rtl::Classes::TStrings& strings) { return strings.ToStringArray(); }

TStringDynArray gString::ToArray(TStringSpan items) { return TStringDynArray(items.begin(), items.end()); }

std::unique_ptr<Rtl::Classes::TStringList> gString::ToStrings(TStringSpan items) {
  auto list = std::make_unique<Rtl::Classes::TStringList>();
  for (const UnicodeString& item : items) list->Add(item);
  return list;
}

namespace {

// `value` / `divisor` for a positive value, rounded once, half away from
// zero, to `fractionDigits` digits and written without trailing zeros. The
// remainder is scaled apart from the whole part, so the arithmetic is exact
// over the whole 64-bit range (divisors stay below 2^41).
UnicodeString QuotientText(int64_t value, int64_t divisor, int fractionDigits) {
  int64_t scale = 1;
  for (int k = 0; k < fractionDigits; ++k) scale *= 10;
  int64_t whole = value / divisor;
  const int64_t scaledRest = value % divisor * scale;
  int64_t fraction = scaledRest / divisor;
  if (2 * (scaledRest % divisor) >= divisor) ++fraction;
  if (fraction == scale) {
    ++whole;
    fraction = 0;
  }
  UnicodeString text = Rtl::Strings::IntToStr(whole);
  if (fraction == 0) return text;
  UnicodeString digits = Rtl::Strings::IntToStr(fraction + scale).substr(1);  // zero-padded
  digits.erase(digits.find_last_not_of(u'0') + 1);
  return text + Rtl::Strings::FormatSettings().DecimalSeparator + digits;
}

// The number followed by a blank and the unit's word.
UnicodeString WithWord(const UnicodeString& number, const UnicodeString& word) { return number + u' ' + word; }

// Formats `value` in the largest of five units it reaches: words[0] for
// step^4 down to words[4] for the raw value, which is shown exactly.
UnicodeString FormatScaled(int64_t value, int64_t step, const std::array<const UnicodeString*, 5>& words) {
  for (int power = 4; power >= 1; --power) {
    int64_t threshold = 1;
    for (int k = 0; k < power; ++k) threshold = Checked::Mul(threshold, step);
    if (value >= threshold) return WithWord(QuotientText(value, threshold, 2), *words[static_cast<size_t>(4 - power)]);
  }
  return WithWord(Rtl::Strings::IntToStr(value), *words[4]);
}

}  // namespace

UnicodeString gString::FormatBytes(int64_t value) {
  const auto& l = GetLocals();
  return FormatScaled(value, 1024, {&l.TBytes(), &l.GBytes(), &l.MBytes(), &l.KBytes(), &l.Bytes()});
}

UnicodeString gString::FormatBytesPerSec(int64_t value) {
  const auto& l = GetLocals();
  return FormatScaled(value, 1024,
                      {&l.TBytesPerSec(), &l.GBytesPerSec(), &l.MBytesPerSec(), &l.KBytesPerSec(), &l.BytesPerSec()});
}

UnicodeString gString::FormatBitsPerSec(int64_t value) {
  const auto& l = GetLocals();
  return FormatScaled(value, 1000,
                      {&l.TBitsPerSec(), &l.GBitsPerSec(), &l.MBitsPerSec(), &l.KBitsPerSec(), &l.BitsPerSec()});
}

UnicodeString gString::FormatMeters(int64_t value) {
  const auto& l = GetLocals();
  if (value >= 1000) return WithWord(QuotientText(value, 1000, 1), l.Kilometers());
  return WithWord(Rtl::Strings::IntToStr(value), l.Meters());
}

const Locals::TStringLocals& gString::GetLocals() {
  // Reached before the unit loaded or after it unloaded: load it again
  // rather than hand out nothing.
  if (FLocals == nullptr) StringsUnit.Initialize();
  return *FLocals;
}

}  // namespace Quorvex::Utils::Strings
