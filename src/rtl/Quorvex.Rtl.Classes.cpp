#include "Quorvex.Rtl.Classes.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "Quorvex.Platform.Collation.hpp"
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
  // An empty item is quoted too, so that it reads back as an item, also
  // when it is the only one.
  if (!s.empty() && (special == s.end() || *special == 0)) {
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

// The positions 0..n-1 ordered by their sort keys, which lie one after the
// other in `keys`, key i ending at ends[i]. Equal keys keep their order.
std::vector<int> OrderByKeys(std::string_view keys, const std::vector<size_t>& ends) {
  struct TKeyed {
    std::string_view Key;
    int Index;
  };
  std::vector<TKeyed> keyed;
  keyed.reserve(ends.size());
  size_t start = 0;
  for (size_t i = 0; i < ends.size(); start = ends[i++])
    keyed.push_back({keys.substr(start, ends[i] - start), static_cast<int>(i)});
  std::stable_sort(keyed.begin(), keyed.end(), [](const TKeyed& a, const TKeyed& b) { return a.Key < b.Key; });
  std::vector<int> order;
  order.reserve(keyed.size());
  for (const TKeyed& k : keyed) order.push_back(k.Index);
  return order;
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

// ---------------------------------------------------------------- TCollectionItem

TCollectionItem::~TCollectionItem() {
  if (FCollection != nullptr) FCollection->RemoveItem(*this);
}

void TCollectionItem::SetCollection(TCollection* collection) {
  if (collection == FCollection) return;
  TCollection* old = FCollection;
  // Joining first: when the new collection refuses, the item stays put.
  if (collection != nullptr)
    collection->InsertItem(*this, collection->Count());
  else
    FCollection = nullptr;
  if (old != nullptr) old->RemoveItem(*this);
}

int TCollectionItem::Index() const { return FCollection != nullptr ? FCollection->IndexOf(*this) : -1; }

void TCollectionItem::SetIndex(int index) {
  if (FCollection != nullptr) FCollection->MoveItem(Index(), index);
}

UnicodeString TCollectionItem::DisplayName() const { return ClassName(); }

// ---------------------------------------------------------------- TCollection

TCollection::TCollection(TClass itemClass) : FItemClass(itemClass) {
  if (itemClass == nullptr || !itemClass->InheritsFrom(TCollectionItem::StaticClass())) Exceptions::RaiseInvalidCast();
}

TCollection::~TCollection() {
  while (!FItems.empty()) {
    TCollectionItem* item = FItems.back();
    try {
      Objects::FreeObject(item);
    } catch (...) {
      // A destructor cannot pass the refusal on; the item lives on alone.
      item->FCollection = nullptr;
      FItems.pop_back();
    }
  }
}

void TCollection::CheckIndex(int index, int high) {
  if (index < 0 || index > high) Exceptions::RaiseListIndexError(index);
}

int TCollection::Count() const { return Checked::Narrow<int>(FItems.size()); }

TCollectionItem* TCollection::Items(int index) const {
  CheckIndex(index, Count() - 1);
  return FItems[static_cast<size_t>(index)];
}

TCollectionItem* TCollection::FindItemID(int id) const {
  const auto found =
      std::find_if(FItems.begin(), FItems.end(), [id](const TCollectionItem* item) { return item->FID == id; });
  return found != FItems.end() ? *found : nullptr;
}

TCollectionItem* TCollection::Add() { return Insert(Count()); }

TCollectionItem* TCollection::Insert(int index) {
  CheckIndex(index, Count());
  std::unique_ptr<TObject> made(FItemClass->Create());
  auto* item = Objects::ObjectCast<TCollectionItem>(made.get());
  InsertItem(*item, index);
  made.release();
  return item;
}

void TCollection::Delete(int index) { Objects::FreeObject(Items(index)); }

void TCollection::Clear() {
  while (!FItems.empty()) Objects::FreeObject(FItems.back());
}

void TCollection::Assign(TPersistent* source) {
  auto* collection = dynamic_cast<TCollection*>(source);
  if (collection == nullptr) {
    inherited::Assign(source);
    return;
  }
  // Clearing first would empty the very source being copied.
  if (collection == this) return;
  Clear();
  for (int i = 0; i < collection->Count(); ++i) Add()->Assign(collection->Items(i));
}

void TCollection::InsertItem(TCollectionItem& item, int index) {
  if (!item.InheritsFrom(FItemClass)) Exceptions::RaiseInvalidCast();
  const int nextID = Checked::Add(FNextID, 1);
  FItems.insert(FItems.begin() + index, &item);
  item.FCollection = this;
  item.FID = FNextID;
  FNextID = nextID;
}

void TCollection::RemoveItem(const TCollectionItem& item) {
  // Searched from the end, where Clear and the destructor take items.
  const auto found = std::find(FItems.rbegin(), FItems.rend(), &item);
  if (found != FItems.rend()) FItems.erase(std::next(found).base());
}

void TCollection::MoveItem(int curIndex, int newIndex) {
  CheckIndex(newIndex, Count() - 1);
  const auto cur = FItems.begin() + curIndex;
  const auto target = FItems.begin() + newIndex;
  if (curIndex < newIndex)
    std::rotate(cur, cur + 1, target + 1);
  else
    std::rotate(target, cur, cur + 1);
}

int TCollection::IndexOf(const TCollectionItem& item) const {
  const auto found = std::find(FItems.begin(), FItems.end(), &item);
  return found != FItems.end() ? static_cast<int>(found - FItems.begin()) : -1;
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
    AppendLine(line);
}

void TStrings::AppendLine(const UnicodeString& line) {
  // Inserted at the end rather than added: a sorted list refuses that, as it
  // refuses Put, instead of filing the line at some other place.
  Insert(GetCount(), line);
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
    AppendLine(FNameValueSeparator + value);
    return;
  }
  Put(index, UnicodeString(ExtractName(Get(index))) + FNameValueSeparator + value);
}

int TStrings::CompareStrings(UnicodeStringView a, UnicodeStringView b) const {
  return Platform::Collate(Platform::UserCollator(true), a, b);
}

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

bool TStringList::OwnsOrder() const {
  // A subclass may order lines its own way in CompareStrings.
  return typeid(*this) == typeid(TStringList);
}

template <typename Body>
auto TStringList::WithComparison(const Body& body) const {
  if (!OwnsOrder()) return body([this](UnicodeStringView a, UnicodeStringView b) { return CompareStrings(a, b); });
  // One collator for the whole operation, rather than one look-up per pair.
  const Platform::Collator collator = Platform::UserCollator(!FCaseSensitive);
  return body([&](UnicodeStringView a, UnicodeStringView b) { return Platform::Collate(collator, a, b); });
}

int TStringList::IndexOf(const UnicodeString& s) const {
  int index = -1;
  if (FSorted) return Find(s, index) ? index : -1;
  // Compares in place: the base would copy every line through Get.
  return WithComparison([&](const auto& compare) {
    const auto found = std::find_if(FList.begin(), FList.end(),
                                    [&](const TStringItem& item) { return compare(item.FString, s) == 0; });
    return found == FList.end() ? -1 : static_cast<int>(found - FList.begin());
  });
}

bool TStringList::Find(const UnicodeString& s, int& index) const {
  return WithComparison([&](const auto& compare) { return BinarySearch(compare, s, index); });
}

template <typename Compare>
bool TStringList::BinarySearch(const Compare& compare, const UnicodeString& s, int& index) const {
  bool found = false;
  int low = 0;
  int high = GetCount() - 1;
  while (low <= high) {
    const int mid = low + (high - low) / 2;
    const int order = compare(FList[static_cast<size_t>(mid)].FString, s);
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
  // This class's own order sorts faster by keys made once per line.
  if (OwnsOrder()) {
    if (!FSorted && FList.size() >= 2) SortByKeys();
    return;
  }
  CustomSort([](TStringList& list, int index1, int index2) {
    return list.CompareStrings(list.FList[static_cast<size_t>(index1)].FString,
                               list.FList[static_cast<size_t>(index2)].FString);
  });
}

void TStringList::SortByKeys() {
  const Platform::Collator collator = Platform::UserCollator(!FCaseSensitive);
  std::string keys;
  std::vector<size_t> ends;
  ends.reserve(FList.size());
  for (const TStringItem& item : FList) {
    Platform::AppendCollationKey(collator, item.FString, keys);
    ends.push_back(keys.size());
  }
  Reorder(OrderByKeys(keys, ends));
}

void TStringList::CustomSort(const TStringListSortCompare& compare) {
  if (FSorted || FList.size() < 2) return;
  // Sort positions, not lines: `compare` then always sees the list as it
  // was, and a merge sort stays in bounds even with an inconsistent order.
  std::vector<int> order(FList.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return compare(*this, a, b) < 0; });
  Reorder(order);
}

void TStringList::Reorder(const std::vector<int>& order) {
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
  return Platform::Collate(Platform::UserCollator(!FCaseSensitive), a, b);
}

}  // namespace Quorvex::Rtl::Classes
