#include "Quorvex.Rtl.Classes.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <numeric>
#include <utility>

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Classes {

using Encoding::TByteSpan;
using Exceptions::EArgumentOutOfRangeException;
using Exceptions::EConvertError;
using Exceptions::EStringListError;
using Strings::Format;

namespace {

constexpr UnicodeStringView kDefaultLineBreak = u"\r\n";

[[noreturn]] void RaiseIndexError(int index) {
  throw EStringListError(Format(u"List index out of bounds (%d)", index));
}

[[noreturn]] void RaiseCapacityError(int capacity) {
  throw EStringListError(Format(u"List capacity out of bounds (%d)", capacity));
}

// Upper-case mappings of the Basic Multilingual Plane (Unicode simple case
// mapping): code units First, First + Step, ... Last map to unit + Delta.
// Fixed data keeps case-insensitive matching the same on every platform and
// in every locale, which the C library's towupper does not promise.
struct TCaseRange {
  char16_t First;
  char16_t Last;
  uint8_t Step;
  int32_t Delta;
};

constexpr TCaseRange kUpperCaseRanges[] = {
    {0x0061, 0x007A, 1, -32},    {0x00B5, 0x00B5, 1, 743},   {0x00E0, 0x00F6, 1, -32},    {0x00F8, 0x00FE, 1, -32},
    {0x00FF, 0x00FF, 1, 121},    {0x0101, 0x012F, 2, -1},    {0x0131, 0x0131, 1, -232},   {0x0133, 0x0137, 2, -1},
    {0x013A, 0x0148, 2, -1},     {0x014B, 0x0177, 2, -1},    {0x017A, 0x017E, 2, -1},     {0x017F, 0x017F, 1, -300},
    {0x0180, 0x0180, 1, 195},    {0x0183, 0x0185, 2, -1},    {0x0188, 0x0188, 1, -1},     {0x018C, 0x018C, 1, -1},
    {0x0192, 0x0192, 1, -1},     {0x0195, 0x0195, 1, 97},    {0x0199, 0x0199, 1, -1},     {0x019A, 0x019A, 1, 163},
    {0x019E, 0x019E, 1, 130},    {0x01A1, 0x01A5, 2, -1},    {0x01A8, 0x01A8, 1, -1},     {0x01AD, 0x01AD, 1, -1},
    {0x01B0, 0x01B0, 1, -1},     {0x01B4, 0x01B6, 2, -1},    {0x01B9, 0x01B9, 1, -1},     {0x01BD, 0x01BD, 1, -1},
    {0x01BF, 0x01BF, 1, 56},     {0x01C5, 0x01C5, 1, -1},    {0x01C6, 0x01C6, 1, -2},     {0x01C8, 0x01C8, 1, -1},
    {0x01C9, 0x01C9, 1, -2},     {0x01CB, 0x01CB, 1, -1},    {0x01CC, 0x01CC, 1, -2},     {0x01CE, 0x01DC, 2, -1},
    {0x01DD, 0x01DD, 1, -79},    {0x01DF, 0x01EF, 2, -1},    {0x01F2, 0x01F2, 1, -1},     {0x01F3, 0x01F3, 1, -2},
    {0x01F5, 0x01F5, 1, -1},     {0x01F9, 0x021F, 2, -1},    {0x0223, 0x0233, 2, -1},     {0x023C, 0x023C, 1, -1},
    {0x023F, 0x0240, 1, 10815},  {0x0242, 0x0242, 1, -1},    {0x0247, 0x024F, 2, -1},     {0x0250, 0x0250, 1, 10783},
    {0x0251, 0x0251, 1, 10780},  {0x0252, 0x0252, 1, 10782}, {0x0253, 0x0253, 1, -210},   {0x0254, 0x0254, 1, -206},
    {0x0256, 0x0257, 1, -205},   {0x0259, 0x0259, 1, -202},  {0x025B, 0x025B, 1, -203},   {0x025C, 0x025C, 1, 42319},
    {0x0260, 0x0260, 1, -205},   {0x0261, 0x0261, 1, 42315}, {0x0263, 0x0263, 1, -207},   {0x0265, 0x0265, 1, 42280},
    {0x0266, 0x0266, 1, 42308},  {0x0268, 0x0268, 1, -209},  {0x0269, 0x0269, 1, -211},   {0x026A, 0x026A, 1, 42308},
    {0x026B, 0x026B, 1, 10743},  {0x026C, 0x026C, 1, 42305}, {0x026F, 0x026F, 1, -211},   {0x0271, 0x0271, 1, 10749},
    {0x0272, 0x0272, 1, -213},   {0x0275, 0x0275, 1, -214},  {0x027D, 0x027D, 1, 10727},  {0x0280, 0x0280, 1, -218},
    {0x0282, 0x0282, 1, 42307},  {0x0283, 0x0283, 1, -218},  {0x0287, 0x0287, 1, 42282},  {0x0288, 0x0288, 1, -218},
    {0x0289, 0x0289, 1, -69},    {0x028A, 0x028B, 1, -217},  {0x028C, 0x028C, 1, -71},    {0x0292, 0x0292, 1, -219},
    {0x029D, 0x029D, 1, 42261},  {0x029E, 0x029E, 1, 42258}, {0x0345, 0x0345, 1, 84},     {0x0371, 0x0373, 2, -1},
    {0x0377, 0x0377, 1, -1},     {0x037B, 0x037D, 1, 130},   {0x03AC, 0x03AC, 1, -38},    {0x03AD, 0x03AF, 1, -37},
    {0x03B1, 0x03C1, 1, -32},    {0x03C2, 0x03C2, 1, -31},   {0x03C3, 0x03CB, 1, -32},    {0x03CC, 0x03CC, 1, -64},
    {0x03CD, 0x03CE, 1, -63},    {0x03D0, 0x03D0, 1, -62},   {0x03D1, 0x03D1, 1, -57},    {0x03D5, 0x03D5, 1, -47},
    {0x03D6, 0x03D6, 1, -54},    {0x03D7, 0x03D7, 1, -8},    {0x03D9, 0x03EF, 2, -1},     {0x03F0, 0x03F0, 1, -86},
    {0x03F1, 0x03F1, 1, -80},    {0x03F2, 0x03F2, 1, 7},     {0x03F3, 0x03F3, 1, -116},   {0x03F5, 0x03F5, 1, -96},
    {0x03F8, 0x03F8, 1, -1},     {0x03FB, 0x03FB, 1, -1},    {0x0430, 0x044F, 1, -32},    {0x0450, 0x045F, 1, -80},
    {0x0461, 0x0481, 2, -1},     {0x048B, 0x04BF, 2, -1},    {0x04C2, 0x04CE, 2, -1},     {0x04CF, 0x04CF, 1, -15},
    {0x04D1, 0x052F, 2, -1},     {0x0561, 0x0586, 1, -48},   {0x10D0, 0x10FA, 1, 3008},   {0x10FD, 0x10FF, 1, 3008},
    {0x13F8, 0x13FD, 1, -8},     {0x1C80, 0x1C80, 1, -6254}, {0x1C81, 0x1C81, 1, -6253},  {0x1C82, 0x1C82, 1, -6244},
    {0x1C83, 0x1C84, 1, -6242},  {0x1C85, 0x1C85, 1, -6243}, {0x1C86, 0x1C86, 1, -6236},  {0x1C87, 0x1C87, 1, -6181},
    {0x1C88, 0x1C88, 1, 35266},  {0x1D79, 0x1D79, 1, 35332}, {0x1D7D, 0x1D7D, 1, 3814},   {0x1D8E, 0x1D8E, 1, 35384},
    {0x1E01, 0x1E95, 2, -1},     {0x1E9B, 0x1E9B, 1, -59},   {0x1EA1, 0x1EFF, 2, -1},     {0x1F00, 0x1F07, 1, 8},
    {0x1F10, 0x1F15, 1, 8},      {0x1F20, 0x1F27, 1, 8},     {0x1F30, 0x1F37, 1, 8},      {0x1F40, 0x1F45, 1, 8},
    {0x1F51, 0x1F57, 2, 8},      {0x1F60, 0x1F67, 1, 8},     {0x1F70, 0x1F71, 1, 74},     {0x1F72, 0x1F75, 1, 86},
    {0x1F76, 0x1F77, 1, 100},    {0x1F78, 0x1F79, 1, 128},   {0x1F7A, 0x1F7B, 1, 112},    {0x1F7C, 0x1F7D, 1, 126},
    {0x1FB0, 0x1FB1, 1, 8},      {0x1FBE, 0x1FBE, 1, -7205}, {0x1FD0, 0x1FD1, 1, 8},      {0x1FE0, 0x1FE1, 1, 8},
    {0x1FE5, 0x1FE5, 1, 7},      {0x214E, 0x214E, 1, -28},   {0x2170, 0x217F, 1, -16},    {0x2184, 0x2184, 1, -1},
    {0x24D0, 0x24E9, 1, -26},    {0x2C30, 0x2C5F, 1, -48},   {0x2C61, 0x2C61, 1, -1},     {0x2C65, 0x2C65, 1, -10795},
    {0x2C66, 0x2C66, 1, -10792}, {0x2C68, 0x2C6C, 2, -1},    {0x2C73, 0x2C73, 1, -1},     {0x2C76, 0x2C76, 1, -1},
    {0x2C81, 0x2CE3, 2, -1},     {0x2CEC, 0x2CEE, 2, -1},    {0x2CF3, 0x2CF3, 1, -1},     {0x2D00, 0x2D25, 1, -7264},
    {0x2D27, 0x2D27, 1, -7264},  {0x2D2D, 0x2D2D, 1, -7264}, {0xA641, 0xA66D, 2, -1},     {0xA681, 0xA69B, 2, -1},
    {0xA723, 0xA72F, 2, -1},     {0xA733, 0xA76F, 2, -1},    {0xA77A, 0xA77C, 2, -1},     {0xA77F, 0xA787, 2, -1},
    {0xA78C, 0xA78C, 1, -1},     {0xA791, 0xA793, 2, -1},    {0xA794, 0xA794, 1, 48},     {0xA797, 0xA7A9, 2, -1},
    {0xA7B5, 0xA7C3, 2, -1},     {0xA7C8, 0xA7CA, 2, -1},    {0xA7D1, 0xA7D1, 1, -1},     {0xA7D7, 0xA7D9, 2, -1},
    {0xA7F6, 0xA7F6, 1, -1},     {0xAB53, 0xAB53, 1, -928},  {0xAB70, 0xABBF, 1, -38864}, {0xFF41, 0xFF5A, 1, -32}};

// The upper-case form of every code unit, expanded once from the ranges.
const std::array<char16_t, 0x10000>& UpperCaseTable() {
  static const auto table = [] {
    std::array<char16_t, 0x10000> t{};
    std::iota(t.begin(), t.end(), char16_t{0});
    for (const TCaseRange& r : kUpperCaseRanges)
      for (uint32_t c = r.First; c <= r.Last; c += r.Step)
        t[c] = static_cast<char16_t>(static_cast<int32_t>(c) + r.Delta);
    return t;
  }();
  return table;
}

int Sign(int64_t v) { return (v > 0) - (v < 0); }

// Ordinal comparison of code units.
int CompareOrdinal(UnicodeStringView a, UnicodeStringView b) { return Sign(a.compare(b)); }

// Ordinal comparison after upper-casing each code unit; surrogates stay as
// they are, so only the BMP is folded.
int CompareFolded(UnicodeStringView a, UnicodeStringView b) {
  const auto& upper = UpperCaseTable();
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const int diff = upper[a[i]] - upper[b[i]];
    if (diff != 0) return Sign(diff);
  }
  return Sign(static_cast<int64_t>(a.size()) - static_cast<int64_t>(b.size()));
}

bool IsBlank(Char c) { return c >= 1 && c <= u' '; }

// Walks delimited text the way a zero-terminated buffer is read: the end of
// the text and an embedded NUL both read as 0, so parsing stops at either.
class TTextCursor {
 public:
  explicit TTextCursor(UnicodeStringView text) : FText(text) {}

  Char Peek(size_t ahead = 0) const {
    const size_t at = FPos + ahead;
    return at < FText.size() ? FText[at] : Char{0};
  }
  void Next() { ++FPos; }
  size_t Pos() const { return FPos; }
  UnicodeStringView Since(size_t start) const { return FText.substr(start, FPos - start); }
  void SkipBlanks() {
    while (IsBlank(Peek())) Next();
  }

 private:
  UnicodeStringView FText;
  size_t FPos = 0;
};

// Reads a quoted item starting at its opening quote: doubled quotes stand
// for one, the item ends after the closing quote, or at the end of the text
// when the quote is never closed.
UnicodeString ReadQuoted(TTextCursor& cursor, Char quote) {
  UnicodeString item;
  cursor.Next();
  for (Char c = cursor.Peek(); c != 0; c = cursor.Peek()) {
    cursor.Next();
    if (c == quote) {
      if (cursor.Peek() != quote) break;
      cursor.Next();
    }
    item += c;
  }
  return item;
}

// Reads an unquoted item: up to the delimiter, the end, or (not strict) a
// blank or control character.
UnicodeStringView ReadPlain(TTextCursor& cursor, Char delimiter, bool strict) {
  const size_t start = cursor.Pos();
  for (Char c = cursor.Peek(); c != 0 && c != delimiter && (strict || c > u' '); c = cursor.Peek()) cursor.Next();
  return cursor.Since(start);
}

// The end of the line starting at `pos` and the length of the break after
// it (0 at the end of the text).
std::pair<size_t, size_t> FindLineEnd(UnicodeStringView text, size_t pos, UnicodeStringView lineBreak) {
  if (lineBreak.empty() || lineBreak == kDefaultLineBreak) {
    // A plain scan: find_first_of would search the set once per character.
    const auto found = std::find_if(text.begin() + static_cast<ptrdiff_t>(pos), text.end(),
                                    [](Char c) { return c == u'\r' || c == u'\n'; });
    if (found == text.end()) return {text.size(), 0};
    const auto end = static_cast<size_t>(found - text.begin());
    const bool pair = text[end] == u'\r' && end + 1 < text.size() && text[end + 1] == u'\n';
    return {end, pair ? 2 : 1};
  }
  const size_t end = text.find(lineBreak, pos);
  if (end == UnicodeStringView::npos) return {text.size(), 0};
  return {end, lineBreak.size()};
}

// Appends one item of delimited text, quoted when it holds the delimiter,
// the quote character or (not strict) a blank or control character. The
// scan stops at a NUL, as it would in a zero-terminated buffer.
void AppendItem(UnicodeString& out, UnicodeStringView s, Char delimiter, Char quoteChar, bool strict) {
  const auto special = std::find_if(
      s.begin(), s.end(), [&](Char c) { return c == 0 || c == quoteChar || c == delimiter || (!strict && c <= u' '); });
  if (special == s.end() || *special == 0) {
    out += s;
    return;
  }
  out += quoteChar;
  for (Char c : s) {
    if (c == quoteChar) out += c;
    out += c;
  }
  out += quoteChar;
}

// Points `slot` at `encoding`: a standard encoding is shared, any other is
// cloned, and a clone the slot held before is freed.
void ReplaceEncoding(TEncoding*& slot, TEncoding* encoding) {
  TEncoding* next = encoding == nullptr || TEncoding::IsStandardEncoding(encoding) ? encoding : encoding->Clone();
  if (!TEncoding::IsStandardEncoding(slot)) delete slot;
  slot = next;
}

// Holds a list in its update state for one scope.
class TUpdateScope {
 public:
  explicit TUpdateScope(TStrings& strings) : FStrings(strings) { FStrings.BeginUpdate(); }
  ~TUpdateScope() { FStrings.EndUpdate(); }
  TUpdateScope(const TUpdateScope&) = delete;
  TUpdateScope& operator=(const TUpdateScope&) = delete;

 private:
  TStrings& FStrings;
};

}  // namespace

// ---------------------------------------------------------------- TPersistent

void TPersistent::Assign(TPersistent* source) {
  if (source == nullptr) AssignError(nullptr);
  source->AssignTo(this);
}

void TPersistent::AssignTo(TPersistent* dest) { dest->AssignError(this); }

void TPersistent::AssignError(const TPersistent* source) const {
  const UnicodeString sourceName = source != nullptr ? source->ClassName() : UnicodeString(u"nil");
  throw EConvertError(Format(u"Cannot assign a %s to a %s", sourceName, ClassName()));
}

// ---------------------------------------------------------------- TStrings

TStrings::~TStrings() {
  SetStringsAdapter(nullptr);
  ReplaceEncoding(FDefaultEncoding, nullptr);
  ReplaceEncoding(FEncoding, nullptr);
}

int TStrings::Add(UnicodeString s) { return AddObject(std::move(s), nullptr); }

int TStrings::AddObject(UnicodeString s, TObject* object) {
  const int index = GetCount();
  InsertObject(index, std::move(s), object);
  return index;
}

void TStrings::Append(const UnicodeString& s) { Add(s); }

void TStrings::Insert(int index, const UnicodeString& s) { InsertObject(index, s, nullptr); }

void TStrings::AddStrings(const TStrings& strings) {
  TUpdateScope update(*this);
  const int count = strings.GetCount();
  for (int i = 0; i < count; ++i) AddObject(strings.Get(i), strings.GetObject(i));
}

void TStrings::AddStrings(const TStringDynArray& strings) {
  TUpdateScope update(*this);
  for (const UnicodeString& s : strings) Add(s);
}

void TStrings::AddStrings(const TStringDynArray& strings, const TObjectDynArray& objects) {
  if (strings.size() != objects.size())
    throw EArgumentOutOfRangeException(u"Length of Strings and Objects arrays must be equal");
  TUpdateScope update(*this);
  for (size_t i = 0; i < strings.size(); ++i) AddObject(strings[i], objects[i]);
}

void TStrings::Assign(TPersistent* source) {
  auto* strings = dynamic_cast<TStrings*>(source);
  if (strings == nullptr) {
    inherited::Assign(source);
    return;
  }
  // Clearing first would empty the very source being copied.
  if (strings == this) return;
  TUpdateScope update(*this);
  Clear();
  FDelimiter = strings->FDelimiter;
  FQuoteChar = strings->FQuoteChar;
  FNameValueSeparator = strings->FNameValueSeparator;
  FStrictDelimiter = strings->FStrictDelimiter;
  FWriteBOM = strings->FWriteBOM;
  FLineBreak = strings->FLineBreak;
  ReplaceEncoding(FDefaultEncoding, strings->FDefaultEncoding);
  ReplaceEncoding(FEncoding, strings->FEncoding);
  AddStrings(*strings);
}

void TStrings::BeginUpdate() { ++FUpdateCount; }

void TStrings::EndUpdate() {
  if (FUpdateCount > 0) --FUpdateCount;
}

bool TStrings::Equals(const TStrings& strings) const {
  const int count = GetCount();
  if (count != strings.GetCount()) return false;
  for (int i = 0; i < count; ++i)
    if (Get(i) != strings.Get(i)) return false;
  return true;
}

int TStrings::IndexOf(const UnicodeString& s) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i)
    if (CompareStrings(Get(i), s) == 0) return i;
  return -1;
}

int TStrings::IndexOfName(const UnicodeString& name) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i) {
    const UnicodeString line = Get(i);
    const size_t separator = line.find(FNameValueSeparator);
    if (separator != UnicodeString::npos && CompareStrings(UnicodeStringView(line).substr(0, separator), name) == 0)
      return i;
  }
  return -1;
}

int TStrings::IndexOfObject(const TObject* object) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i)
    if (GetObject(i) == object) return i;
  return -1;
}

TStringDynArray TStrings::ToStringArray() const {
  TStringDynArray result;
  const int count = GetCount();
  result.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) result.push_back(Get(i));
  return result;
}

TObjectDynArray TStrings::ToObjectArray() const {
  TObjectDynArray result;
  const int count = GetCount();
  result.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) result.push_back(GetObject(i));
  return result;
}

size_t TStrings::TotalLength() const {
  size_t total = 0;
  const int count = GetCount();
  for (int i = 0; i < count; ++i) total += Get(i).size();
  return total;
}

UnicodeString TStrings::GetTextStr() const {
  const int count = GetCount();
  UnicodeString text;
  text.reserve(TotalLength() + static_cast<size_t>(count) * FLineBreak.size());
  for (int i = 0; i < count; ++i) {
    text += Get(i);
    text += FLineBreak;
  }
  return text;
}

void TStrings::SetTextStr(UnicodeStringView text) {
  TUpdateScope update(*this);
  Clear();
  size_t pos = 0;
  while (pos < text.size()) {
    const auto [end, breakLength] = FindLineEnd(text, pos, FLineBreak);
    Add(UnicodeString(text.substr(pos, end - pos)));
    pos = end + breakLength;
  }
}

Char* TStrings::GetText() const {
  const UnicodeString text = GetTextStr();
  auto* buffer = new Char[text.size() + 1];
  std::copy(text.begin(), text.end(), buffer);
  buffer[text.size()] = 0;
  return buffer;
}

void TStrings::SetText(const Char* text) {
  SetTextStr(text != nullptr ? UnicodeStringView(text) : UnicodeStringView());
}

void StrDispose(Char* text) { delete[] text; }

UnicodeString TStrings::JoinDelimited(Char delimiter, Char quoteChar) const {
  const int count = GetCount();
  // Without the quotes, one empty line would read back as no line at all.
  if (count == 1 && Get(0).empty()) return UnicodeString(2, quoteChar);
  UnicodeString text;
  text.reserve(TotalLength() + static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += delimiter;
    AppendItem(text, Get(i), delimiter, quoteChar, FStrictDelimiter);
  }
  return text;
}

UnicodeString TStrings::GetDelimitedText() const { return JoinDelimited(FDelimiter, FQuoteChar); }

UnicodeString TStrings::GetCommaText() const { return JoinDelimited(u',', u'"'); }

void TStrings::SetDelimitedText(UnicodeStringView text) {
  TUpdateScope update(*this);
  Clear();
  TTextCursor cursor(text);
  if (!FStrictDelimiter) cursor.SkipBlanks();
  while (cursor.Peek() != 0) {
    if (cursor.Peek() == FQuoteChar)
      Add(ReadQuoted(cursor, FQuoteChar));
    else
      Add(UnicodeString(ReadPlain(cursor, FDelimiter, FStrictDelimiter)));
    if (!FStrictDelimiter) cursor.SkipBlanks();
    if (cursor.Peek() == FDelimiter) {
      // A delimiter that ends the text still closes an (empty) item.
      if (cursor.Peek(1) == 0) Add(UnicodeString());
      cursor.Next();
      if (!FStrictDelimiter) cursor.SkipBlanks();
    }
  }
}

void TStrings::SetCommaText(UnicodeStringView text) {
  FDelimiter = u',';
  FQuoteChar = u'"';
  SetDelimitedText(text);
}

UnicodeStringView TStrings::ExtractName(UnicodeStringView line) const {
  const size_t separator = line.find(FNameValueSeparator);
  return separator == UnicodeStringView::npos ? UnicodeStringView() : line.substr(0, separator);
}

UnicodeStringView TStrings::ExtractValue(UnicodeStringView line) const {
  const size_t separator = line.find(FNameValueSeparator);
  return separator == UnicodeStringView::npos ? UnicodeStringView() : line.substr(separator + 1);
}

void TStrings::LoadFromStream(TStream& stream, TEncoding* encoding) {
  TUpdateScope update(*this);
  Streams::TMemoryStream content;
  content.LoadFromPosition(stream);
  const TByteSpan bytes(content.Memory(), static_cast<size_t>(content.GetSize()));
  const int mark = TEncoding::GetBufferEncoding(bytes, encoding, FDefaultEncoding);
  // Decoded before the swap: `encoding` may be the list's own clone, which
  // ReplaceEncoding frees.
  const UnicodeString text = encoding->GetString(bytes.subspan(static_cast<size_t>(mark)));
  ReplaceEncoding(FEncoding, encoding);
  SetTextStr(text);
}

void TStrings::LoadFromFile(UnicodeStringView fileName, TEncoding* encoding) {
  Streams::TFileStream file(fileName, Streams::fmOpenRead | Streams::fmShareDenyWrite);
  LoadFromStream(file, encoding);
}

void TStrings::SaveToStream(TStream& stream, TEncoding* encoding) const {
  if (encoding == nullptr) encoding = FEncoding != nullptr ? FEncoding : FDefaultEncoding;
  if (encoding == nullptr) encoding = TEncoding::Default();
  if (FWriteBOM) {
    const Encoding::TBytes mark = encoding->GetPreamble();
    stream.WriteBuffer(mark.data(), static_cast<int64_t>(mark.size()));
  }
  const Encoding::TBytes bytes = encoding->GetBytes(GetTextStr());
  stream.WriteBuffer(bytes.data(), static_cast<int64_t>(bytes.size()));
}

void TStrings::SaveToFile(UnicodeStringView fileName, TEncoding* encoding) const {
  Streams::TFileStream file(fileName, Streams::fmCreate);
  SaveToStream(file, encoding);
}

void TStrings::SetDefaultEncoding(TEncoding* encoding) { ReplaceEncoding(FDefaultEncoding, encoding); }

void TStrings::SetStringsAdapter(const IntfPtr<IStringsAdapter>& adapter) {
  if (FAdapter) FAdapter->ReleaseStrings();
  FAdapter = adapter;
  if (FAdapter) FAdapter->ReferenceStrings(this);
}

TStringsEnumerator* TStrings::GetEnumerator() const { return new TStringsEnumerator(*this); }

UnicodeString TStringsIterator::operator*() const { return FStrings->Get(FIndex); }

bool TStringsEnumerator::MoveNext() {
  if (FIndex >= FStrings.GetCount() - 1) return false;
  ++FIndex;
  return true;
}

UnicodeString TStrings::GetName(int index) const { return UnicodeString(ExtractName(Get(index))); }

UnicodeString TStrings::GetValue(const UnicodeString& name) const {
  const int index = IndexOfName(name);
  return index >= 0 ? UnicodeString(ExtractValue(Get(index))) : UnicodeString();
}

void TStrings::SetValue(const UnicodeString& name, const UnicodeString& value) {
  const int index = IndexOfName(name);
  if (value.empty()) {
    if (index >= 0) Delete(index);
    return;
  }
  UnicodeString line = name + FNameValueSeparator + value;
  if (index >= 0)
    Put(index, line);
  else
    Add(line);
}

UnicodeString TStrings::GetValueFromIndex(int index) const {
  return index >= 0 ? UnicodeString(ExtractValue(Get(index))) : UnicodeString();
}

void TStrings::SetValueFromIndex(int index, const UnicodeString& value) {
  if (value.empty()) {
    if (index >= 0) Delete(index);
    return;
  }
  if (index < 0) {
    Add(FNameValueSeparator + value);
    return;
  }
  Put(index, UnicodeString(ExtractName(Get(index))) + FNameValueSeparator + value);
}

int TStrings::CompareStrings(UnicodeStringView a, UnicodeStringView b) const { return CompareFolded(a, b); }

// ---------------------------------------------------------------- TStringList

TStringList::~TStringList() { Clear(); }

void TStringList::CheckIndex(int index) const {
  if (index < 0 || index >= GetCount()) RaiseIndexError(index);
}

void TStringList::CheckUnsorted() const {
  if (FSorted) throw EStringListError(u"Operation not allowed on sorted list");
}

int TStringList::GetCount() const { return Checked::Narrow<int>(FList.size()); }

UnicodeString TStringList::Get(int index) const {
  CheckIndex(index);
  return FList[static_cast<size_t>(index)].FString;
}

void TStringList::Put(int index, const UnicodeString& s) {
  CheckUnsorted();
  CheckIndex(index);
  FList[static_cast<size_t>(index)].FString = s;
}

TObject* TStringList::GetObject(int index) const {
  CheckIndex(index);
  return FList[static_cast<size_t>(index)].FObject;
}

void TStringList::PutObject(int index, TObject* object) {
  CheckIndex(index);
  TObject* old = std::exchange(FList[static_cast<size_t>(index)].FObject, object);
  if (FOwnsObjects && old != object) delete old;
}

void TStringList::InsertItem(int index, UnicodeString s, TObject* object) {
  // Keeps Count representable: the list never grows past the int range.
  Checked::Add(GetCount(), 1);
  FList.insert(FList.begin() + index, TStringItem{std::move(s), object});
}

void TStringList::InsertObject(int index, UnicodeString s, TObject* object) {
  CheckUnsorted();
  if (index < 0 || index > GetCount()) RaiseIndexError(index);
  InsertItem(index, std::move(s), object);
}

void TStringList::Delete(int index) {
  CheckIndex(index);
  TObject* object = FList[static_cast<size_t>(index)].FObject;
  FList.erase(FList.begin() + index);
  // Freed only once the line is gone, so its destructor sees a consistent list.
  if (FOwnsObjects) delete object;
}

void TStringList::Clear() {
  std::vector<TStringItem> old;
  old.swap(FList);
  if (FOwnsObjects)
    for (TStringItem& item : old) delete item.FObject;
}

void TStringList::Exchange(int index1, int index2) {
  CheckIndex(index1);
  CheckIndex(index2);
  std::swap(FList[static_cast<size_t>(index1)], FList[static_cast<size_t>(index2)]);
}

void TStringList::Move(int curIndex, int newIndex) {
  if (curIndex == newIndex) return;
  CheckIndex(curIndex);
  CheckUnsorted();
  CheckIndex(newIndex);
  const auto cur = FList.begin() + curIndex;
  const auto target = FList.begin() + newIndex;
  if (curIndex < newIndex)
    std::rotate(cur, cur + 1, target + 1);
  else
    std::rotate(target, cur, cur + 1);
}

int TStringList::GetCapacity() const { return Checked::Narrow<int>(FList.capacity()); }

void TStringList::SetCapacity(int capacity) {
  if (capacity < GetCount()) RaiseCapacityError(capacity);
  if (capacity == GetCapacity()) return;
  std::vector<TStringItem> resized;
  resized.reserve(static_cast<size_t>(capacity));
  std::move(FList.begin(), FList.end(), std::back_inserter(resized));
  FList.swap(resized);
}

int TStringList::AddObject(UnicodeString s, TObject* object) {
  int index = GetCount();
  if (FSorted && Find(s, index)) {
    if (FDuplicates == dupIgnore) return index;
    if (FDuplicates == dupError) throw EStringListError(u"String list does not allow duplicates");
  }
  InsertItem(index, std::move(s), object);
  return index;
}

int TStringList::IndexOf(const UnicodeString& s) const {
  int index = -1;
  if (FSorted) return Find(s, index) ? index : -1;
  // Compares in place: the base would copy every line through Get.
  const auto found = std::find_if(FList.begin(), FList.end(),
                                  [&](const TStringItem& item) { return CompareStrings(item.FString, s) == 0; });
  return found == FList.end() ? -1 : static_cast<int>(found - FList.begin());
}

bool TStringList::Find(const UnicodeString& s, int& index) const {
  bool found = false;
  int low = 0;
  int high = GetCount() - 1;
  while (low <= high) {
    const int mid = low + (high - low) / 2;
    const int order = CompareStrings(FList[static_cast<size_t>(mid)].FString, s);
    if (order < 0) {
      low = mid + 1;
    } else {
      high = mid - 1;
      if (order == 0) {
        found = true;
        // With duplicates accepted, keep looking for the first equal line.
        if (FDuplicates != dupAccept) low = mid;
      }
    }
  }
  index = low;
  return found;
}

void TStringList::Sort() {
  CustomSort([](TStringList& list, int index1, int index2) {
    return list.CompareStrings(list.FList[static_cast<size_t>(index1)].FString,
                               list.FList[static_cast<size_t>(index2)].FString);
  });
}

void TStringList::CustomSort(const TStringListSortCompare& compare) {
  if (FSorted || FList.size() < 2) return;
  // Sort positions, not lines: `compare` then always sees the list as it
  // was, and a merge sort stays in bounds even with an inconsistent order.
  std::vector<int> order(FList.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return compare(*this, a, b) < 0; });
  std::vector<TStringItem> sorted;
  sorted.reserve(FList.capacity());
  for (int i : order) sorted.push_back(std::move(FList[static_cast<size_t>(i)]));
  FList.swap(sorted);
}

void TStringList::SetSorted(bool sorted) {
  if (sorted && !FSorted) Sort();
  FSorted = sorted;
}

void TStringList::SetCaseSensitive(bool caseSensitive) {
  if (caseSensitive == FCaseSensitive) return;
  FCaseSensitive = caseSensitive;
  if (FSorted) {
    FSorted = false;
    SetSorted(true);
  }
}

int TStringList::CompareStrings(UnicodeStringView a, UnicodeStringView b) const {
  return FCaseSensitive ? CompareOrdinal(a, b) : CompareFolded(a, b);
}

}  // namespace Quorvex::Rtl::Classes
