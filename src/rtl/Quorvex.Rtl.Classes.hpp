// The persistent-object base, the owned-item collection (TCollection and
// its TCollectionItem) and the runtime's string lists: TStrings, the
// abstract list of lines (each with an optional attached object), its text
// forms and its loading and saving in any encoding, and TStringList, the
// array-backed list that can sort, reject duplicates and own the attached
// objects.
#pragma once

#include <functional>
#include <vector>

#include "Quorvex.Rtl.Encoding.hpp"
#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Streams.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Classes {

using Encoding::TEncoding;
using Objects::IntfPtr;
using Objects::TClass;
using Objects::TGUID;
using Objects::TObject;
using Streams::TStream;
using Strings::Char;
using Strings::TStringDynArray;
using Strings::UnicodeString;
using Strings::UnicodeStringView;

// The objects attached to lines, in line order.
using TObjectDynArray = std::vector<TObject*>;

// An object whose state can be copied from another with Assign.
class QXRTL_API TPersistent : public TObject {
  QX_CLASS(TPersistent, TObject, "Quorvex.Rtl.Classes")
 public:
  // Copies `source` into this object. The base lets the source copy itself
  // through AssignTo; when neither side knows the other, raises
  // EConvertError "Cannot assign a <source class> to a <this class>" (a null
  // source is named "nil").
  virtual void Assign(TPersistent* source);

 protected:
  // Copies this object into `dest`. The base knows no target class and
  // raises the assignment error described at Assign.
  virtual void AssignTo(TPersistent* dest);

  // Raises EConvertError for assigning `source` to this object.
  [[noreturn]] void AssignError(const TPersistent* source) const;
};

class TCollection;

// An item owned by a TCollection. Items are made by their collection from
// its item class (TClassInfo::Create), so a subclass needs a default
// constructor. Freeing an item takes it out of its collection.
class QXRTL_API TCollectionItem : public TPersistent {
  QX_CLASS(TCollectionItem, TPersistent, "Quorvex.Rtl.Classes")
 public:
  TCollectionItem() = default;
  // Leaves the collection that holds the item, if any.
  ~TCollectionItem() override;
  TCollectionItem(const TCollectionItem&) = delete;
  TCollectionItem& operator=(const TCollectionItem&) = delete;

  // The collection holding the item; nullptr when none.
  TCollection* Collection() const { return FCollection; }
  // Moves the item to the end of `collection` (nullptr: into none), where
  // it gets a new ID. Raises EInvalidCast "Invalid class typecast" when the
  // item is not of the collection's item class; the item then stays put.
  void SetCollection(TCollection* collection);

  // The 0-based position in the collection; -1 when in none.
  int Index() const;
  // Moves the item to position `index` of its collection, the others
  // closing up; nothing happens for an item in no collection. Raises
  // EListError "List index out of bounds (%d)" outside 0..Count-1.
  void SetIndex(int index);

  // Given by the collection when the item joins it: unique within that
  // collection and never handed out again there, even after a delete.
  int ID() const { return FID; }

  // The name shown for the item; the base answers the class name.
  virtual UnicodeString DisplayName() const;

 private:
  friend class TCollection;

  TCollection* FCollection = nullptr;
  int FID = 0;
};

// An ordered list of items of one class that the collection owns: it makes
// them (Add, Insert), frees them (Delete, Clear, its destructor) and copies
// another collection item by item (Assign). Indexes are 0-based; one
// outside the items raises EListError "List index out of bounds (%d)" and
// changes nothing.
class QXRTL_API TCollection : public TPersistent {
  QX_CLASS(TCollection, TPersistent, "Quorvex.Rtl.Classes")
 public:
  // A collection of `itemClass` items. Raises EInvalidCast "Invalid class
  // typecast" when the class is nullptr or not a TCollectionItem.
  explicit TCollection(TClass itemClass);
  // Frees every item. An item that refuses to be freed (its
  // BeginDestruction or BeforeDestruction raises) is let go instead.
  ~TCollection() override;
  TCollection(const TCollection&) = delete;
  TCollection& operator=(const TCollection&) = delete;

  TClass ItemClass() const { return FItemClass; }
  int Count() const;
  // The item at `index`.
  TCollectionItem* Items(int index) const;
  // The item whose ID is `id`; nullptr when none.
  TCollectionItem* FindItemID(int id) const;

  // Makes an item of the item class and appends it. An item class without
  // a default constructor raises EAbstractError "Abstract Error".
  TCollectionItem* Add();
  // Makes an item of the item class at `index` (0..Count).
  TCollectionItem* Insert(int index);
  // Frees the item at `index`.
  void Delete(int index);
  // Frees every item, the last first; an item that refuses stops the
  // clearing with its exception.
  void Clear();

  // Replaces the items with one new item per item of another TCollection,
  // each copied with the new item's Assign; other sources as TPersistent.
  // An item's Assign that raises (the base's EConvertError when the item
  // class has none) stops the copy, leaving the items made so far.
  void Assign(TPersistent* source) override;

 private:
  friend class TCollectionItem;

  // Raises EListError unless 0 <= index <= high.
  static void CheckIndex(int index, int high);
  // Puts `item` at `index` with the next ID; raises EInvalidCast for an
  // item of another class. The item's old collection still lists it.
  void InsertItem(TCollectionItem& item, int index);
  // Takes `item` off the list; the item's own fields are left to the caller.
  void RemoveItem(const TCollectionItem& item);
  void MoveItem(int curIndex, int newIndex);
  int IndexOf(const TCollectionItem& item) const;

  TClass FItemClass;
  std::vector<TCollectionItem*> FItems;
  int FNextID = 0;
};

class TStrings;
class TStringsEnumerator;

// An object that mirrors a list elsewhere: a list calls ReferenceStrings
// when the adapter is attached and ReleaseStrings when it is detached
// (replaced, cleared or the list destroyed).
class IStringsAdapter : public virtual Objects::IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{5C1E8A3B-94D2-4F67-B0A5-2E7D6C9F1843}");

  virtual void ReferenceStrings(TStrings* strings) = 0;
  virtual void ReleaseStrings() = 0;

 protected:
  ~IStringsAdapter() = default;
};

// Walks the lines of a list for range-for. Each step reads the line
// afresh; the end is fixed when the walk starts.
class QXRTL_API TStringsIterator {
 public:
  TStringsIterator(const TStrings& strings, int index) : FStrings(&strings), FIndex(index) {}

  UnicodeString operator*() const;
  TStringsIterator& operator++() {
    ++FIndex;
    return *this;
  }
  bool operator==(const TStringsIterator& other) const = default;

 private:
  const TStrings* FStrings;
  int FIndex;
};

// An abstract list of text lines, each with an optional attached object.
// Storage is left to subclasses (the pure virtual primitives); the text
// forms, name-value access and searching are built on those primitives.
// Indexes are 0-based; an index outside the list raises EStringListError
// "List index out of bounds (%d)" in every primitive that takes one.
class QXRTL_API TStrings : public TPersistent {
  QX_CLASS(TStrings, TPersistent, "Quorvex.Rtl.Classes")
 public:
  TStrings() = default;
  // Detaches the adapter and frees the encodings the list owns.
  ~TStrings() override;
  TStrings(const TStrings&) = delete;
  TStrings& operator=(const TStrings&) = delete;

  // --- Storage primitives.

  virtual int GetCount() const = 0;
  // The line at `index`.
  virtual UnicodeString Get(int index) const = 0;
  // Replaces the line at `index`, keeping its object.
  virtual void Put(int index, const UnicodeString& s) = 0;
  // The object attached to the line at `index` (nullptr when none).
  virtual TObject* GetObject(int index) const = 0;
  // Attaches `object` to the line at `index`, replacing the previous one.
  virtual void PutObject(int index, TObject* object) = 0;
  // Inserts a line with its object before `index` (0..Count).
  virtual void InsertObject(int index, UnicodeString s, TObject* object) = 0;
  // Removes the line at `index`.
  virtual void Delete(int index) = 0;
  // Removes every line.
  virtual void Clear() = 0;
  // Swaps two lines together with their objects.
  virtual void Exchange(int index1, int index2) = 0;
  // Moves the line at `curIndex` (with its object) so that it ends up at
  // `newIndex`.
  virtual void Move(int curIndex, int newIndex) = 0;
  // Room reserved for lines; setting it below Count raises EStringListError
  // "List capacity out of bounds (%d)".
  virtual int GetCapacity() const = 0;
  virtual void SetCapacity(int capacity) = 0;

  // --- Adding and inserting.

  // Adds a line and answers its index.
  virtual int Add(UnicodeString s);
  // Adds a line with an attached object and answers its index.
  virtual int AddObject(UnicodeString s, TObject* object);
  // Adds a line, ignoring its index.
  void Append(const UnicodeString& s);
  // Inserts a line without an object before `index` (0..Count).
  virtual void Insert(int index, const UnicodeString& s);
  // Adds every line of `strings` with its object. The line count is taken
  // first, so adding a list to itself doubles it.
  virtual void AddStrings(const TStrings& strings);
  // Adds every string of the array.
  void AddStrings(const TStringDynArray& strings);
  // Adds the strings with the objects of the same position; raises
  // EArgumentOutOfRangeException "Length of Strings and Objects arrays must
  // be equal" (adding nothing) when the arrays differ in length.
  void AddStrings(const TStringDynArray& strings, const TObjectDynArray& objects);

  // Replaces the lines, objects and text settings (delimiter, quote
  // character, name-value separator, line break, strict delimiter, write
  // BOM, both encodings) with those of another TStrings; other sources as
  // TPersistent.
  void Assign(TPersistent* source) override;

  // Brackets a series of changes. Calls nest; EndUpdate without a matching
  // BeginUpdate is ignored.
  void BeginUpdate();
  void EndUpdate();
  // How many BeginUpdate calls are still open.
  int UpdateCount() const { return FUpdateCount; }

  // True when both lists have the same lines in the same order, compared
  // case-sensitively; objects are not compared.
  bool Equals(const TStrings& strings) const;

  // --- Searching.

  // Index of the first line equal to `s` under CompareStrings, or -1.
  virtual int IndexOf(const UnicodeString& s) const;
  // Index of the first line whose name matches `name` under
  // CompareStrings, or -1. Lines without a separator have no name.
  int IndexOfName(const UnicodeString& name) const;
  // Index of the first line carrying exactly `object`, or -1.
  int IndexOfObject(const TObject* object) const;

  // --- Copies.

  TStringDynArray ToStringArray() const;
  // The attached objects themselves (not copies), one per line.
  TObjectDynArray ToObjectArray() const;

  // --- Text forms.

  // Every line followed by LineBreak ("" for an empty list).
  UnicodeString GetTextStr() const;
  // Replaces the lines with those of `text`. With the default CR LF line
  // break, a CR LF pair, a lone CR and a lone LF each end a line; any other
  // line break is matched exactly. A final line break adds no empty line.
  void SetTextStr(UnicodeStringView text);
  // GetTextStr in a new zero-terminated buffer; release it with StrDispose.
  Char* GetText() const;
  // SetTextStr from a zero-terminated buffer (nullptr clears the list).
  void SetText(const Char* text);

  // The lines joined by Delimiter. A line is enclosed in QuoteChar (inner
  // quote characters doubled) when it holds the delimiter or the quote
  // character, or, with StrictDelimiter off, a blank or control character.
  // A list of a single empty line gives two quote characters.
  UnicodeString GetDelimitedText() const;
  // Replaces the lines with the items of `text`: items are split at
  // Delimiter and may be quoted (doubled quote characters inside). With
  // StrictDelimiter off, blanks and control characters also split items
  // and are skipped around them. A NUL character ends the text.
  void SetDelimitedText(UnicodeStringView text);
  // GetDelimitedText with delimiter ',' and quote '"' whatever the current
  // settings (which are kept).
  UnicodeString GetCommaText() const;
  // Sets Delimiter to ',' and QuoteChar to '"', then SetDelimitedText.
  void SetCommaText(UnicodeStringView text);

  // --- Loading and saving.

  // Replaces the lines with the rest of `stream` decoded. Without an
  // encoding, a byte-order mark picks UTF-8, UTF-16 LE or UTF-16 BE and is
  // skipped; otherwise DefaultEncoding applies, or Default without one.
  // With an encoding, that encoding wins and its own mark alone is skipped.
  // The encoding used becomes Encoding. Raises EReadError "Stream read
  // error" when the stream ends early.
  void LoadFromStream(TStream& stream, TEncoding* encoding = nullptr);
  // LoadFromStream from a file opened for reading; raises EFOpenError
  // "Cannot open file \"%s\". %s" when it cannot be opened.
  void LoadFromFile(UnicodeStringView fileName, TEncoding* encoding = nullptr);
  // Writes GetTextStr encoded, after the encoding's mark when WriteBOM.
  // Without an encoding: Encoding, else DefaultEncoding, else Default.
  // Raises EWriteError "Stream write error" when the stream takes less.
  void SaveToStream(TStream& stream, TEncoding* encoding = nullptr) const;
  // SaveToStream into a created or truncated file; raises EFCreateError
  // "Cannot create file \"%s\". %s" when it cannot be created.
  void SaveToFile(UnicodeStringView fileName, TEncoding* encoding = nullptr) const;

  // The encoding used when neither a call nor a load names one (nullptr
  // at first). A standard encoding is shared; any other is copied with
  // Clone and the copy belongs to the list.
  TEncoding* GetDefaultEncoding() const { return FDefaultEncoding; }
  void SetDefaultEncoding(TEncoding* encoding);
  // The encoding of the last load (nullptr before any), used again on save.
  TEncoding* GetEncoding() const { return FEncoding; }

  // --- Adapter and enumeration.

  // Attaches `adapter` after detaching the current one (see
  // IStringsAdapter); nullptr only detaches.
  void SetStringsAdapter(const IntfPtr<IStringsAdapter>& adapter);
  const IntfPtr<IStringsAdapter>& GetStringsAdapter() const { return FAdapter; }

  // A new enumerator over the lines; the caller frees it.
  TStringsEnumerator* GetEnumerator() const;
  TStringsIterator begin() const { return TStringsIterator(*this, 0); }
  TStringsIterator end() const { return TStringsIterator(*this, GetCount()); }

  // --- Name-value lines ("name=value" with the default separator).

  // The text before the first separator of line `index` ("" when none).
  UnicodeString GetName(int index) const;
  // The text after the first separator of the line named `name`; "" when
  // no line has that name.
  UnicodeString GetValue(const UnicodeString& name) const;
  // Sets the value of the line named `name`: an empty value deletes the
  // line, a missing name appends "name=value" (Insert at Count, so a sorted
  // list raises EStringListError as for any positional change).
  void SetValue(const UnicodeString& name, const UnicodeString& value);
  // The text after the first separator of line `index` ("" when the line
  // has no separator or `index` is negative).
  UnicodeString GetValueFromIndex(int index) const;
  // Replaces the value of line `index` keeping its name; an empty value
  // deletes the line, a negative index appends "=value" as SetValue does.
  void SetValueFromIndex(int index, const UnicodeString& value);

  // --- Settings of the text forms.

  Char GetDelimiter() const { return FDelimiter; }
  void SetDelimiter(Char delimiter) { FDelimiter = delimiter; }
  Char GetQuoteChar() const { return FQuoteChar; }
  void SetQuoteChar(Char quoteChar) { FQuoteChar = quoteChar; }
  Char GetNameValueSeparator() const { return FNameValueSeparator; }
  void SetNameValueSeparator(Char separator) { FNameValueSeparator = separator; }
  bool GetStrictDelimiter() const { return FStrictDelimiter; }
  void SetStrictDelimiter(bool strict) { FStrictDelimiter = strict; }
  const UnicodeString& GetLineBreak() const { return FLineBreak; }
  void SetLineBreak(const UnicodeString& lineBreak) { FLineBreak = lineBreak; }
  // Whether saving writes a byte-order mark.
  bool GetWriteBOM() const { return FWriteBOM; }
  void SetWriteBOM(bool writeBOM) { FWriteBOM = writeBOM; }

 protected:
  // Orders two lines for searching: <0, 0 or >0. The base uses the user's
  // locale collation ignoring case (accents still count).
  virtual int CompareStrings(UnicodeStringView a, UnicodeStringView b) const;

 private:
  void AppendLine(const UnicodeString& line);
  size_t TotalLength() const;
  UnicodeString JoinDelimited(Char delimiter, Char quoteChar) const;
  UnicodeStringView ExtractName(UnicodeStringView line) const;
  UnicodeStringView ExtractValue(UnicodeStringView line) const;

  Char FDelimiter = u',';
  Char FQuoteChar = u'"';
  Char FNameValueSeparator = u'=';
  bool FStrictDelimiter = false;
  bool FWriteBOM = true;
  UnicodeString FLineBreak = u"\r\n";
  int FUpdateCount = 0;
  TEncoding* FDefaultEncoding = nullptr;
  TEncoding* FEncoding = nullptr;
  IntfPtr<IStringsAdapter> FAdapter;
};

// Steps through the lines of a list: MoveNext first, then GetCurrent.
class QXRTL_API TStringsEnumerator : public TObject {
  QX_CLASS(TStringsEnumerator, TObject, "Quorvex.Rtl.Classes")
 public:
  explicit TStringsEnumerator(const TStrings& strings) : FStrings(strings) {}

  // The line reached by the last MoveNext; raises EStringListError "List
  // index out of bounds (-1)" before the first MoveNext.
  UnicodeString GetCurrent() const { return FStrings.Get(FIndex); }
  // Advances to the next line; false at the end, staying on the last line.
  bool MoveNext();

 private:
  const TStrings& FStrings;
  int FIndex = -1;
};

// Releases a buffer returned by TStrings::GetText; nullptr is ignored.
QXRTL_API void StrDispose(Char* text);

// What a sorted TStringList does with a line equal to one it holds.
enum class TDuplicates { dupIgnore, dupAccept, dupError };
using enum TDuplicates;

class TStringList;

// Orders lines `index1` and `index2` of `list` for CustomSort: <0, 0 or >0.
using TStringListSortCompare = std::function<int(TStringList& list, int index1, int index2)>;

// The array-backed string list. Adding is amortised O(1) on an unsorted
// list. Lines are compared by the user's locale collation (an accented
// letter sorts next to its base letter), ignoring case unless
// CaseSensitive. A sorted list keeps
// its lines in CompareStrings order, finds them by binary search and
// refuses positional changes (Insert, Put, Move, setting the value of a
// missing name) with EStringListError "Operation not allowed on sorted
// list".
class QXRTL_API TStringList : public TStrings {
  QX_CLASS(TStringList, TStrings, "Quorvex.Rtl.Classes")
 public:
  TStringList() = default;
  // With `ownsObjects`, the list frees a line's object when the line is
  // deleted, when its object is replaced, on Clear and on destruction.
  explicit TStringList(bool ownsObjects) : FOwnsObjects(ownsObjects) {}
  ~TStringList() override;

  int GetCount() const override;
  UnicodeString Get(int index) const override;
  void Put(int index, const UnicodeString& s) override;
  TObject* GetObject(int index) const override;
  void PutObject(int index, TObject* object) override;
  void InsertObject(int index, UnicodeString s, TObject* object) override;
  void Delete(int index) override;
  void Clear() override;
  void Exchange(int index1, int index2) override;
  void Move(int curIndex, int newIndex) override;
  int GetCapacity() const override;
  void SetCapacity(int capacity) override;

  // On a sorted list, inserts at the line's sorted place; a duplicate is
  // then dropped (dupIgnore: answers the existing line's index, the object
  // is not stored) or refused (dupError: EStringListError "String list does
  // not allow duplicates").
  int AddObject(UnicodeString s, TObject* object) override;
  // Binary search on a sorted list, linear search otherwise.
  int IndexOf(const UnicodeString& s) const override;

  // Binary search for `s`, valid on a sorted list. Answers whether it was
  // found; `index` receives its index, or where it would be inserted.
  // Unless duplicates are accepted, a match ends the search at once.
  bool Find(const UnicodeString& s, int& index) const;
  // Sorts by CompareStrings, keeping equal lines in their order. Does
  // nothing on a sorted list.
  void Sort();
  // Sorts by `compare`, which sees the list in its order before the sort.
  // Does nothing on a sorted list.
  void CustomSort(const TStringListSortCompare& compare);

  bool GetSorted() const { return FSorted; }
  // Turning sorting on sorts the lines.
  void SetSorted(bool sorted);
  TDuplicates GetDuplicates() const { return FDuplicates; }
  // Applies to lines added later; lines already there stay.
  void SetDuplicates(TDuplicates duplicates) { FDuplicates = duplicates; }
  bool GetCaseSensitive() const { return FCaseSensitive; }
  // Re-sorts a sorted list under the new comparison.
  void SetCaseSensitive(bool caseSensitive);
  bool GetOwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool ownsObjects) { FOwnsObjects = ownsObjects; }

 protected:
  // The user's locale collation; case counts only when CaseSensitive.
  int CompareStrings(UnicodeStringView a, UnicodeStringView b) const override;

 private:
  struct TStringItem {
    UnicodeString FString;
    TObject* FObject = nullptr;
  };

  void CheckIndex(int index) const;
  void CheckUnsorted() const;
  void InsertItem(int index, UnicodeString s, TObject* object);
  // True when lines follow this class's CompareStrings, not a subclass's.
  bool OwnsOrder() const;
  // Calls `body` with the comparison of CompareStrings, made once for the
  // call, and answers its result.
  template <typename Body>
  auto WithComparison(const Body& body) const;
  template <typename Compare>
  bool BinarySearch(const Compare& compare, const UnicodeString& s, int& index) const;
  void SortByKeys();
  // Puts the lines in the order of `order`, a permutation of their indexes.
  void Reorder(const std::vector<int>& order);

  std::vector<TStringItem> FList;
  bool FOwnsObjects = false;
  bool FSorted = false;
  bool FCaseSensitive = false;
  TDuplicates FDuplicates = dupAccept;
};

}  // namespace Quorvex::Rtl::Classes
