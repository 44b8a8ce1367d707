#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Classes {
namespace {

using Encoding::TBytes;
using Exceptions::EConvertError;
using Exceptions::EStringListError;
using Streams::TBytesStream;
using Strings::U;
using Strings::Utf16ToUtf8;
using Lines = std::vector<std::string>;

Lines LinesOf(const TStrings& list) {
  Lines result;
  for (const UnicodeString& s : list.ToStringArray()) result.push_back(Utf16ToUtf8(s));
  return result;
}

std::unique_ptr<TStringList> ListOf(const Lines& lines) {
  auto list = std::make_unique<TStringList>();
  for (const std::string& line : lines) list->Add(U(line));
  return list;
}

struct TCounted : TObject {
  explicit TCounted(int& freed) : FFreed(freed) {}
  ~TCounted() override { ++FFreed; }
  int& FFreed;
};

TEST(RtlClassesTest, DelimitedTextOutputQuotesOnlyWhatNeedsIt) {
  const std::tuple<Lines, bool, char16_t, char16_t, std::string> cases[] = {
      {{}, false, u',', u'"', ""},
      {{""}, false, u',', u'"', "\"\""},  // quoted, or it would read back as no line
      {{"a", "", ""}, false, u',', u'"', "a,\"\",\"\""},
      {{"caf\xC3\xA9", "b c", "d,e", "t\tx"}, false, u',', u'"', "caf\xC3\xA9,\"b c\",\"d,e\",\"t\tx\""},
      {{"b c", " ", "d,e", "q\"x"}, true, u',', u'"', "b c, ,\"d,e\",\"q\"\"x\""},
      {{"a,b", "c;d"}, false, u';', u'"', "a,b;\"c;d\""},
      {{"it's", "x y"}, false, u',', u'\'', "'it''s','x y'"},
  };
  for (const auto& [lines, strict, delimiter, quote, expected] : cases) {
    SCOPED_TRACE(expected);
    auto list = ListOf(lines);
    list->SetStrictDelimiter(strict);
    list->SetDelimiter(delimiter);
    list->SetQuoteChar(quote);
    EXPECT_EQ(Utf16ToUtf8(list->GetDelimitedText()), expected);
    list->SetDelimitedText(list->GetDelimitedText());  // reads back as the same lines
    EXPECT_EQ(LinesOf(*list), lines);
  }
}

TEST(RtlClassesTest, DelimitedTextInputAndCommaText) {
  const std::tuple<std::string, bool, Lines> cases[] = {
      {" a b\t, c ", false, {"a", "b", "c"}},
      {" a , b ", true, {" a ", " b "}},
      {"a,,b,", false, {"a", "", "b", ""}},  // a delimiter at the end closes an empty item
      {"a,  ", false, {"a"}},                // blanks after the last delimiter close nothing
      {"a,  ", true, {"a", "  "}},
      {"\"a b\",\"x\"\"y\"", false, {"a b", "x\"y"}},
      {"\"a,b\"c,d", false, {"a,b", "c", "d"}},
      {"\"open, ended", false, {"open, ended"}},
      {std::string("a,b\0c,d", 7), false, {"a", "b"}},  // a NUL ends the text
  };
  for (const auto& [text, strict, expected] : cases) {
    SCOPED_TRACE(text);
    TStringList list;
    list.SetStrictDelimiter(strict);
    list.SetDelimitedText(U(text));
    EXPECT_EQ(LinesOf(list), expected);
  }

  auto list = ListOf({"a b", "c;d"});
  list->SetDelimiter(u';');
  list->SetQuoteChar(u'\'');
  EXPECT_EQ(list->GetCommaText(), u"\"a b\",c;d");
  list->SetCommaText(u"x,'y z'");
  EXPECT_EQ(LinesOf(*list), (Lines{"x", "'y", "z'"}));
  EXPECT_EQ(list->GetDelimiter(), u',');  // writing switches the list to them
  EXPECT_EQ(list->GetQuoteChar(), u'"');
}

TEST(RtlClassesTest, TextFormsSplitAtEveryLineBreak) {
  TStringList list;
  list.SetTextStr(u"a\rb\nc\r\r\nd\r\n");  // a trailing break adds no line
  EXPECT_EQ(LinesOf(list), (Lines{"a", "b", "c", "", "d"}));
  EXPECT_EQ(list.GetTextStr(), u"a\r\nb\r\nc\r\n\r\nd\r\n");
  list.SetTextStr(u"\r\n");
  EXPECT_EQ(LinesOf(list), (Lines{""}));

  list.SetLineBreak(u"||");
  list.SetTextStr(u"a\r\nb||c");  // the last line needs no break; output ends every line
  EXPECT_EQ(LinesOf(list), (Lines{"a\r\nb", "c"}));
  Char* buffer = list.GetText();
  EXPECT_EQ(UnicodeString(buffer), u"a\r\nb||c||");
  StrDispose(buffer);
  list.SetText(nullptr);
  EXPECT_EQ(list.GetCount(), 0);
}

TEST(RtlClassesTest, NamesAndValues) {
  auto list = ListOf({"Key=1", "other=x=y", "noseparator", "=nameless"});
  EXPECT_EQ(list->GetName(0), u"Key");
  EXPECT_EQ(list->GetName(2), u"");
  EXPECT_EQ(list->GetValue(u"key"), u"1");
  EXPECT_EQ(list->GetValue(u"other"), u"x=y");
  EXPECT_EQ(list->GetValue(u"missing"), u"");
  EXPECT_EQ(list->IndexOfName(u"noseparator"), -1);
  EXPECT_EQ(list->GetValueFromIndex(2), u"");
  EXPECT_EQ(list->GetValueFromIndex(-1), u"");

  list->SetValue(u"KEY", u"2");
  list->SetValue(u"new", u"v");
  list->SetValue(u"other", u"");
  list->SetValue(u"absent", u"");
  EXPECT_EQ(LinesOf(*list), (Lines{"KEY=2", "noseparator", "=nameless", "new=v"}));

  list->SetValueFromIndex(0, u"3");
  list->SetValueFromIndex(-1, u"z");
  list->SetValueFromIndex(1, u"");
  EXPECT_EQ(LinesOf(*list), (Lines{"KEY=3", "=nameless", "new=v", "=z"}));

  list->SetNameValueSeparator(u':');
  list->SetTextStr(u"a:b=c");
  EXPECT_EQ(list->GetName(0), u"a");
  EXPECT_EQ(list->GetValue(u"a"), u"b=c");
}

TEST(RtlClassesTest, IndexOfFoldsCaseBeyondAscii) {
  auto list = ListOf({"ABC", "\xC3\x84PFEL", "\xD0\x9F\xD0\xA0\xD0\x98", "\xCE\xA3\xCE\xA3"});
  // Each probe finds its line only while case is ignored.
  const std::pair<std::string, int> probes[] = {
      {"abc", 0},
      {"\xC3\xA4pfel", 1},              // a-umlaut
      {"\xD0\xBF\xD1\x80\xD0\xB8", 2},  // Cyrillic
      {"\xCF\x83\xCF\x82", 3},          // sigma and final sigma
      {"ab", -1},
  };
  for (const auto& [probe, index] : probes) {
    SCOPED_TRACE(probe);
    list->SetCaseSensitive(false);
    EXPECT_EQ(list->IndexOf(U(probe)), index);
    list->SetCaseSensitive(true);
    EXPECT_EQ(list->IndexOf(U(probe)), -1);
  }
}

TEST(RtlClassesTest, SortedListsAndDuplicates) {
  for (TDuplicates duplicates : {dupAccept, dupIgnore}) {
    SCOPED_TRACE(static_cast<int>(duplicates));
    TStringList list;
    list.SetSorted(true);
    list.SetDuplicates(duplicates);
    list.AddStrings(TStringDynArray{u"b", u"c", u"a"});
    EXPECT_EQ(list.Add(u"B"), 1);
    EXPECT_EQ(LinesOf(list), (duplicates == dupAccept ? Lines{"a", "B", "b", "c"} : Lines{"a", "b", "c"}));
  }

  // Find answers the first of accepted duplicates.
  TStringList repeated;
  repeated.SetSorted(true);
  repeated.AddStrings(TStringDynArray{u"b", u"b", u"b", u"a", u"c"});
  int found = -1;
  EXPECT_TRUE(repeated.Find(u"B", found));
  EXPECT_EQ(found, 1);

  TStringList list;
  list.AddStrings(TStringDynArray{u"pear", u"Apple", u"fig"});
  list.SetDuplicates(dupError);
  list.SetSorted(true);
  EXPECT_EQ(LinesOf(list), (Lines{"Apple", "fig", "pear"}));
  EXPECT_RAISES(EStringListError, list.Add(u"FIG"), u"String list does not allow duplicates");
  EXPECT_RAISES(EStringListError, list.Insert(0, u"x"), u"Operation not allowed on sorted list");
  EXPECT_RAISES(EStringListError, list.Put(0, u"x"), u"Operation not allowed on sorted list");
  EXPECT_RAISES(EStringListError, list.Move(0, 1), u"Operation not allowed on sorted list");
  // Setting a value positions a line too, unless it only deletes one.
  EXPECT_RAISES(EStringListError, list.SetValue(u"kiwi", u"1"), u"Operation not allowed on sorted list");
  EXPECT_RAISES(EStringListError, list.SetValueFromIndex(-1, u"1"), u"Operation not allowed on sorted list");
  list.SetValue(u"kiwi", u"");
  EXPECT_EQ(LinesOf(list), (Lines{"Apple", "fig", "pear"}));
  EXPECT_EQ(list.IndexOf(u"PEAR"), 2);
  int index = -1;
  EXPECT_FALSE(list.Find(u"grape", index));
  EXPECT_EQ(index, 2);

  list.SetCaseSensitive(true);
  list.Add(u"apple");
  EXPECT_EQ(LinesOf(list), (Lines{"apple", "Apple", "fig", "pear"}));
  EXPECT_EQ(list.IndexOf(u"PEAR"), -1);

  list.SetSorted(false);
  list.CustomSort([](TStringList& l, int a, int b) {
    return static_cast<int>(l.Get(b).size()) - static_cast<int>(l.Get(a).size());
  });
  EXPECT_EQ(LinesOf(list), (Lines{"apple", "Apple", "pear", "fig"}));
}

// Sorts through CompareStrings one pair at a time, as any subclass does,
// instead of by sort keys.
struct TComparingList : TStringList {
  int CompareStrings(UnicodeStringView a, UnicodeStringView b) const override {
    return TStringList::CompareStrings(a, b);
  }
};

// Orders lines by length alone.
struct TByLengthList : TStringList {
  int CompareStrings(UnicodeStringView a, UnicodeStringView b) const override {
    return static_cast<int>(a.size()) - static_cast<int>(b.size());
  }
};

// Lines of up to four letters that differ in case, accents, blanks and
// hyphens, in a scrambled order.
TStringDynArray TrickyLines() {
  const UnicodeString letters[] = {u"a", u"A", u"\u00E4", u"\u00C4", u"b",     u"B",
                                   u" ", u"-", u"\u00E9", u"'",      u"\u00DF"};
  TStringDynArray lines;
  unsigned seed = 7;
  for (int i = 0; i < 400; ++i) {
    UnicodeString line;
    for (int length = i % 5; length > 0; --length) {
      seed = seed * 1103515245u + 12345u;
      line += letters[(seed >> 16) % std::size(letters)];
    }
    lines.push_back(line);
  }
  return lines;
}

TEST(RtlClassesTest, ListsSortAndSearchByTheUserCollation) {
  [[maybe_unused]] const TGermanCollation german;
  struct Case {
    bool caseSensitive;
    TStringDynArray lines;
    Lines sorted;
  } cases[] = {
      {false,
       {u"apple", u"Banana", u"cherry", u"\u00C4hre", u"Zebra"},
       {"\xC3\x84hre", "apple", "Banana", "cherry", "Zebra"}},
      {true,
       {u"Banana", u"apple", u"Apple", u"banana", u"\u00C4hre", u"\u00E4hre", u"Ahre"},
       {"Ahre", "\xC3\xA4hre", "\xC3\x84hre", "apple", "Apple", "banana", "Banana"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.caseSensitive);
    TStringList sorted;
    sorted.SetCaseSensitive(c.caseSensitive);
    sorted.AddStrings(c.lines);
    TComparingList compared;
    compared.SetCaseSensitive(c.caseSensitive);
    compared.AddStrings(c.lines);
    for (int i = 0; i < sorted.GetCount(); ++i) EXPECT_EQ(sorted.IndexOf(c.lines[static_cast<size_t>(i)]), i);
    sorted.SetSorted(true);
    compared.Sort();
    EXPECT_EQ(LinesOf(sorted), c.sorted);
    EXPECT_EQ(LinesOf(compared), c.sorted);
    for (int i = 0; i < sorted.GetCount(); ++i) {
      int index = -1;
      EXPECT_TRUE(sorted.Find(sorted.Get(i), index));
      EXPECT_EQ(index, i);
    }
  }

  // Case is ignored, accents are not, in searching and in duplicates alike.
  TStringList list;
  list.AddStrings(TStringDynArray{u"Zebra=2", u"\u00C4hre=1", u"apple"});
  EXPECT_EQ(list.IndexOf(u"APPLE"), 2);
  EXPECT_EQ(list.IndexOfName(u"\u00E4HRE"), 1);
  EXPECT_EQ(list.IndexOfName(u"Ahre"), -1);
  EXPECT_EQ(list.GetValue(u"zebra"), u"2");
  list.SetTextStr(u"\u00C4hre\napple\nZebra");
  list.SetSorted(true);
  list.SetDuplicates(dupIgnore);
  EXPECT_EQ(list.Add(u"\u00E4HRE"), 0);
  EXPECT_EQ(list.Add(u"Ahre"), 0);
  int index = -1;
  EXPECT_FALSE(list.Find(u"Apfel", index));
  EXPECT_EQ(index, 2);
  list.SetDuplicates(dupError);
  EXPECT_RAISES(EStringListError, list.Add(u"ZEBRA"), u"String list does not allow duplicates");
  EXPECT_EQ(LinesOf(list), (Lines{"Ahre", "\xC3\x84hre", "apple", "Zebra"}));

  // Sort keys and pairwise comparison agree, so a sorted list finds what it
  // holds; equal lines keep their order either way.
  for (bool caseSensitive : {false, true}) {
    SCOPED_TRACE(caseSensitive);
    TStringList byKeys;
    TComparingList byPairs;
    for (TStringList* l : {static_cast<TStringList*>(&byKeys), static_cast<TStringList*>(&byPairs)}) {
      l->SetCaseSensitive(caseSensitive);
      l->AddStrings(TrickyLines());
      l->Sort();
    }
    EXPECT_EQ(byKeys.ToStringArray(), byPairs.ToStringArray());
  }

  // A subclass's own comparison decides Sort and sorted insertion.
  TByLengthList byLength;
  byLength.AddStrings(TStringDynArray{u"ccc", u"a", u"bb"});
  EXPECT_EQ(byLength.IndexOf(u"zz"), 2);
  byLength.SetSorted(true);
  byLength.Add(u"dddd");
  EXPECT_EQ(LinesOf(byLength), (Lines{"a", "bb", "ccc", "dddd"}));
}

#if !defined(_WIN32)
TEST(RtlClassesTest, CollationFollowsTheLocaleVariables) {
  using TValue = TScopedEnv::TValue;
  const TValue unset;
  const Lines root{"\xC3\x84hre", "apple", "Banana", "Zebra"};
  const Lines swedish{"apple", "Banana", "Zebra", "\xC3\x84hre"};
  struct Case {
    TValue all, collate, lang;
    bool caseSensitive;
    Lines sorted;
  } cases[] = {
      {unset, unset, unset, false, root},
      {unset, unset, "sv_SE.UTF-8", false, swedish},
      {unset, "sv_SE", "de_DE.UTF-8", false, swedish},
      {"de_DE.UTF-8", "sv_SE.UTF-8", "sv_SE", false, root},
      {"", "sv_SE.UTF-8@euro", unset, false, swedish},  // empty counts as unset
      {"C", "sv_SE", "sv_SE", false, root},
      {"POSIX", unset, unset, false, root},
      {"C.UTF-8", unset, unset, true, root},  // not code-unit order
      {"sv_FI", unset, unset, true, swedish},
  };
  // One thread walks every locale: its cached collators must follow.
  for (const Case& c : cases) {
    SCOPED_TRACE(c.all.value_or("-") + " " + c.collate.value_or("-") + " " + c.lang.value_or("-"));
    const TScopedEnv all("LC_ALL", c.all), collate("LC_COLLATE", c.collate), lang("LANG", c.lang);
    TStringList list;
    list.SetCaseSensitive(c.caseSensitive);
    list.AddStrings(TStringDynArray{u"Zebra", u"Banana", u"\u00C4hre", u"apple"});
    list.SetSorted(true);
    EXPECT_EQ(LinesOf(list), c.sorted);
    int index = -1;
    EXPECT_TRUE(list.Find(u"\u00C4hre", index));
    EXPECT_EQ(index, c.sorted == root ? 0 : 3);
  }
}
#endif

TEST(RtlClassesTest, IndexErrorsNameTheIndex) {
  auto list = ListOf({"a", "b", "c"});
  EXPECT_RAISES(EStringListError, list->Get(-1), u"List index out of bounds (-1)");
  EXPECT_RAISES(EStringListError, list->Get(3), u"List index out of bounds (3)");
  EXPECT_RAISES(EStringListError, list->Put(5, u"x"), u"List index out of bounds (5)");
  EXPECT_RAISES(EStringListError, list->GetObject(3), u"List index out of bounds (3)");
  EXPECT_RAISES(EStringListError, list->PutObject(-2, nullptr), u"List index out of bounds (-2)");
  EXPECT_RAISES(EStringListError, list->Delete(3), u"List index out of bounds (3)");
  EXPECT_RAISES(EStringListError, list->Insert(4, u"x"), u"List index out of bounds (4)");
  EXPECT_RAISES(EStringListError, list->Exchange(0, 9), u"List index out of bounds (9)");
  EXPECT_RAISES(EStringListError, list->Move(9, 0), u"List index out of bounds (9)");
  EXPECT_RAISES(EStringListError, list->Move(0, 3), u"List index out of bounds (3)");
  EXPECT_RAISES(EStringListError, list->SetCapacity(2), u"List capacity out of bounds (2)");
  EXPECT_EQ(LinesOf(*list), (Lines{"a", "b", "c"}));  // failed calls change nothing

  list->Insert(3, u"d");  // Count itself is a valid insertion point
  list->SetCapacity(10);
  list->SetCapacity(4);
  EXPECT_EQ(list->GetCapacity(), 4);
  EXPECT_EQ(LinesOf(*list), (Lines{"a", "b", "c", "d"}));
}

TEST(RtlClassesTest, ObjectsFollowTheirLinesAndOwnedOnesAreFreed) {
  int freed = 0;
  {
    TStringList list(true);
    for (const char16_t* s : {u"a", u"b", u"c", u"d"}) list.AddObject(s, new TCounted(freed));
    list.Delete(0);
    EXPECT_EQ(freed, 1);
    list.PutObject(0, list.GetObject(0));  // the same object is not a replacement
    EXPECT_EQ(freed, 1);
    list.PutObject(0, new TCounted(freed));
    EXPECT_EQ(freed, 2);
    list.Clear();
    EXPECT_EQ(freed, 5);
    list.AddObject(u"last", new TCounted(freed));
  }
  EXPECT_EQ(freed, 6);  // destruction frees the rest

  freed = 0;
  TCounted a(freed), b(freed), c(freed);
  {
    TStringList list;
    list.AddStrings(TStringDynArray{u"a", u"b", u"c"}, TObjectDynArray{&a, &b, &c});
    list.Move(0, 2);
    EXPECT_EQ(list.ToObjectArray(), (TObjectDynArray{&b, &c, &a}));
    list.Move(2, 0);
    list.Exchange(0, 2);
    EXPECT_EQ(list.ToObjectArray(), (TObjectDynArray{&c, &b, &a}));
    EXPECT_EQ(list.IndexOfObject(&a), 2);
    list.PutObject(0, nullptr);
    list.Delete(0);
  }
  EXPECT_EQ(freed, 0);  // without ownership the caller keeps its objects
}

TEST(RtlClassesTest, AddStringsAssignAndEquals) {
  auto list = ListOf({"a", "b"});
  list->AddStrings(*list);  // the count is taken first: the list doubles
  EXPECT_EQ(LinesOf(*list), (Lines{"a", "b", "a", "b"}));
  EXPECT_RAISES(Exceptions::EArgumentOutOfRangeException,
                list->AddStrings(TStringDynArray{u"x", u"y"}, TObjectDynArray{nullptr}),
                u"Length of Strings and Objects arrays must be equal");
  EXPECT_EQ(list->GetCount(), 4);

  TObject object;
  TStringList source;
  source.AddObject(u"o n", &object);
  source.Add(u"t;");
  source.SetDelimiter(u';');
  source.SetQuoteChar(u'\'');
  source.SetNameValueSeparator(u':');
  source.SetStrictDelimiter(true);
  source.SetLineBreak(u"\n");
  source.SetWriteBOM(false);
  list->Assign(&source);
  EXPECT_EQ(list->GetObject(0), &object);
  EXPECT_EQ(list->GetDelimitedText(), u"o n;'t;'");  // delimiter, quote and strictness
  EXPECT_EQ(list->GetNameValueSeparator(), u':');
  EXPECT_EQ(list->GetTextStr(), u"o n\nt;\n");
  EXPECT_FALSE(list->GetWriteBOM());
  EXPECT_TRUE(list->Equals(source));
  list->Assign(list.get());
  EXPECT_TRUE(list->Equals(source));

  list->Put(1, u"T;");
  EXPECT_FALSE(list->Equals(source));  // case matters
  list->Delete(1);
  EXPECT_FALSE(list->Equals(source));

  TPersistent plain;
  EXPECT_RAISES(EConvertError, list->Assign(nullptr), u"Cannot assign a nil to a TStringList");
  EXPECT_RAISES(EConvertError, list->Assign(&plain), u"Cannot assign a TPersistent to a TStringList");
  EXPECT_RAISES(EConvertError, plain.Assign(list.get()), u"Cannot assign a TStringList to a TPersistent");
}

TBytes BytesOf(TBytesStream& stream) {
  return TBytes(stream.Bytes().begin(), stream.Bytes().begin() + stream.GetSize());
}

TEST(RtlClassesTest, FilesRoundTripThroughEveryEncoding) {
  Files::Testing::TTempFolder folder;
  const UnicodeString name = folder / u"lines.txt";
  for (TEncoding* encoding : {TEncoding::UTF8(), TEncoding::Unicode(), TEncoding::BigEndianUnicode(),
                              TEncoding::Default(), TEncoding::ASCII()}) {
    // Every encoding but ASCII carries the accent; none but the Unicode ones has a mark.
    const UnicodeString text = encoding == TEncoding::ASCII() ? u"ae\r\nb\r\n" : u"a\u00E9\r\nb\r\n";
    const bool marked = !encoding->GetPreamble().empty();
    TStringList lines;
    lines.SetTextStr(text);
    for (const bool bom : {true, false}) {
      SCOPED_TRACE(Utf16ToUtf8(encoding->ClassName()) + (bom ? " with mark" : " without mark"));
      lines.SetWriteBOM(bom);
      lines.SaveToFile(name, encoding);
      TBytesStream written;
      written.LoadFromFile(name);
      TBytes expected = bom ? encoding->GetPreamble() : TBytes();
      for (uint8_t b : encoding->GetBytes(text)) expected.push_back(b);
      EXPECT_EQ(BytesOf(written), expected);

      // The given encoding always reads it back; detection needs the mark.
      TStringList loaded;
      loaded.LoadFromFile(name, encoding);
      EXPECT_TRUE(loaded.Equals(lines));
      TStringList detected;
      detected.LoadFromFile(name);
      EXPECT_EQ(detected.GetEncoding(), bom && marked ? encoding : TEncoding::Default());
      EXPECT_TRUE(!(bom && marked) || detected.Equals(lines));
    }
  }
}

TEST(RtlClassesTest, AFolderDoesNotLoadAsAFile) {
  Files::Testing::TTempFolder folder;
  TStringList list;
  list.Add(u"kept");
  const uint32_t code = Files::Testing::OnWindows() ? 5 : 21;  // ERROR_ACCESS_DENIED, EISDIR
  EXPECT_RAISES(Exceptions::EFOpenError, list.LoadFromFile(folder.Path()),
                u"Cannot open file \"" + folder.Path() + u"\". " + Exceptions::SysErrorMessage(code));
  EXPECT_EQ(LinesOf(list), Lines{"kept"});
}

void Load(TStrings& list, const TBytes& bytes, TEncoding* encoding = nullptr) {
  TBytesStream stream(bytes);
  list.LoadFromStream(stream, encoding);
}

TBytes Saved(const TStrings& list) {
  TBytesStream stream;
  list.SaveToStream(stream);
  return BytesOf(stream);
}

TEST(RtlClassesTest, LoadAndSaveChooseTheirEncoding) {
  const TBytes marked = {0xEF, 0xBB, 0xBF, 'x', 0xC3, 0xA9};
  TStringList list;
  Load(list, marked, TEncoding::ASCII());  // a given encoding wins; the mark is just text
  EXPECT_EQ(LinesOf(list), (Lines{"???x??"}));
  list.SetDefaultEncoding(TEncoding::Unicode());
  Load(list, {'h', 0, 'i', 0});  // without a mark the default encoding decides
  EXPECT_EQ(LinesOf(list), (Lines{"hi"}));
  EXPECT_EQ(list.GetEncoding(), TEncoding::Unicode());
  Load(list, marked);  // a mark wins over the default
  EXPECT_EQ(LinesOf(list), (Lines{"x\u00E9"}));
  EXPECT_EQ(list.GetEncoding(), TEncoding::UTF8());
  // Saving reuses the encoding of the load over the default encoding.
  EXPECT_EQ(Saved(list), (TBytes{0xEF, 0xBB, 0xBF, 'x', 0xC3, 0xA9, '\r', '\n'}));

  TStringList fresh;
  fresh.Add(u"z");
  fresh.SetWriteBOM(false);
  EXPECT_EQ(Saved(fresh), (TBytes{'z', '\r', '\n'}));  // no encoding anywhere: Default
  fresh.SetDefaultEncoding(TEncoding::BigEndianUnicode());
  EXPECT_EQ(Saved(fresh), (TBytes{0, 'z', 0, '\r', 0, '\n'}));

  // A non-standard encoding is copied: the caller may free its own.
  auto* own = TEncoding::Unicode()->Clone();
  fresh.SetDefaultEncoding(own);
  EXPECT_NE(fresh.GetDefaultEncoding(), own);
  delete own;
  EXPECT_EQ(fresh.GetDefaultEncoding()->ClassName(), u"TUnicodeEncoding");

  // Reloading with the list's own copy: that copy is replaced while in use.
  const std::unique_ptr<TEncoding> wide(TEncoding::BigEndianUnicode()->Clone());
  Load(fresh, {0, 'q'}, wide.get());
  Load(fresh, {0, 'r'}, fresh.GetEncoding());
  EXPECT_EQ(LinesOf(fresh), (Lines{"r"}));
}

class TRecordingAdapter : public Objects::TInterfacedObject, public IStringsAdapter {
  QX_CLASS(TRecordingAdapter, TInterfacedObject, "Tests")
  QX_INTERFACES(IStringsAdapter)
 public:
  TRecordingAdapter(std::vector<std::string>& log, std::string name) : FLog(log), FName(std::move(name)) {}
  void ReferenceStrings(TStrings* strings) override { FLog.push_back(FName + " gets " + Utf16ToUtf8(strings->Get(0))); }
  void ReleaseStrings() override { FLog.push_back(FName + " released"); }

 private:
  std::vector<std::string>& FLog;
  std::string FName;
};

TEST(RtlClassesTest, AdapterIsToldWhenAttachedAndDetached) {
  std::vector<std::string> log;
  {
    TStringList list;
    list.Add(u"one");
    list.SetStringsAdapter(Objects::CreateObject<TRecordingAdapter>(log, "first"));
    list.SetStringsAdapter(Objects::CreateObject<TRecordingAdapter>(log, "second"));
  }
  EXPECT_EQ(log, (std::vector<std::string>{"first gets one", "first released", "second gets one", "second released"}));
}

TEST(RtlClassesTest, EnumeratorsWalkTheLines) {
  const auto list = ListOf({"a", "b", "c"});
  Lines walked;
  for (const UnicodeString& s : *list) walked.push_back(Utf16ToUtf8(s));
  EXPECT_EQ(walked, LinesOf(*list));

  const std::unique_ptr<TStringsEnumerator> enumerator(list->GetEnumerator());
  EXPECT_RAISES(EStringListError, enumerator->GetCurrent(), u"List index out of bounds (-1)");
  walked.clear();
  while (enumerator->MoveNext()) walked.push_back(Utf16ToUtf8(enumerator->GetCurrent()));
  EXPECT_EQ(walked, LinesOf(*list));
  EXPECT_FALSE(enumerator->MoveNext() || enumerator->GetCurrent() != u"c");  // stays on the last line
}

// ---------------------------------------------------------------- collections

using Exceptions::EInvalidCast;
using Exceptions::EListError;
using IDs = std::vector<int>;

class TNamedItem : public TCollectionItem {
  QX_CLASS(TNamedItem, TCollectionItem, "Tests")
 public:
  void Assign(TPersistent* source) override {
    if (auto* item = dynamic_cast<TNamedItem*>(source)) {
      Name = item->Name;
      return;
    }
    inherited::Assign(source);
  }
  UnicodeString DisplayName() const override { return Name; }

  UnicodeString Name;
};

class TPlainItem : public TCollectionItem {
  QX_CLASS(TPlainItem, TCollectionItem, "Tests")
};

// Counts its destructions; refuses to be freed while `Refuse` is set.
class TGuardedItem : public TCollectionItem {
  QX_CLASS(TGuardedItem, TCollectionItem, "Tests")
 public:
  static inline int Freed = 0;
  static inline bool Refuse = false;
  ~TGuardedItem() override { ++Freed; }

 protected:
  void BeginDestruction() override {
    if (Refuse) throw Exceptions::EInvalidOperation(u"kept");
    inherited::BeginDestruction();
  }
};

// No default constructor: its class cannot make an instance.
class TArgumentItem : public TCollectionItem {
  QX_CLASS(TArgumentItem, TCollectionItem, "Tests")
 public:
  explicit TArgumentItem(int) {}
};

IDs IDsOf(const TCollection& collection) {
  IDs ids;
  for (int i = 0; i < collection.Count(); ++i) ids.push_back(collection.Items(i)->ID());
  return ids;
}

TEST(RtlClassesTest, CollectionItemsKeepUniqueIDsAndFollowTheirIndexes) {
  TCollection collection(TNamedItem::StaticClass());
  EXPECT_EQ(collection.ItemClass(), TNamedItem::StaticClass());
  const struct Step {
    const char* what;
    std::function<void(TCollection&)> run;
    IDs ids;
  } steps[] = {
      {"add", [](TCollection& c) { c.Add(); }, {0}},
      {"add twice", [](TCollection& c) { c.Add(), c.Add(); }, {0, 1, 2}},
      {"insert inside", [](TCollection& c) { c.Insert(1); }, {0, 3, 1, 2}},
      {"insert at the end", [](TCollection& c) { c.Insert(4); }, {0, 3, 1, 2, 4}},
      {"delete the first", [](TCollection& c) { c.Delete(0); }, {3, 1, 2, 4}},
      {"move forward", [](TCollection& c) { c.Items(0)->SetIndex(2); }, {1, 2, 3, 4}},
      {"move back", [](TCollection& c) { c.Items(3)->SetIndex(0); }, {4, 1, 2, 3}},
      {"move in place", [](TCollection& c) { c.Items(1)->SetIndex(1); }, {4, 1, 2, 3}},
      {"free an item", [](TCollection& c) { Objects::FreeObject(c.Items(2)); }, {4, 1, 3}},
      {"delete the last", [](TCollection& c) { c.Delete(2); }, {4, 1}},
      {"clear, then add", [](TCollection& c) { c.Clear(), c.Add(); }, {5}},  // IDs are never reused
  };
  for (const Step& step : steps) {
    SCOPED_TRACE(step.what);
    step.run(collection);
    EXPECT_EQ(IDsOf(collection), step.ids);
    for (int i = 0; i < collection.Count(); ++i) {
      TCollectionItem* item = collection.Items(i);
      EXPECT_EQ(item->Index(), i);
      EXPECT_EQ(item->Collection(), &collection);
      EXPECT_EQ(item->ClassType(), TNamedItem::StaticClass());  // made from the item class
      EXPECT_EQ(collection.FindItemID(item->ID()), item);
    }
  }
  EXPECT_EQ(collection.FindItemID(0), nullptr);
  EXPECT_EQ(collection.FindItemID(6), nullptr);
}

TEST(RtlClassesTest, CollectionItemsMoveBetweenCollectionsOfTheirClass) {
  TCollection named(TNamedItem::StaticClass());
  TCollection any(TCollectionItem::StaticClass());
  TCollection plain(TPlainItem::StaticClass());
  any.Add();
  TCollectionItem* first = named.Add();
  TCollectionItem* second = named.Add();

  first->SetCollection(&any);  // a subclass's item fits a collection of its base
  EXPECT_EQ(first->Collection(), &any);
  EXPECT_EQ(first->Index(), 1);
  EXPECT_EQ(first->ID(), 1);  // numbered by its new collection
  EXPECT_EQ(IDsOf(named), IDs{1});
  EXPECT_EQ(second->Index(), 0);

  // A collection refuses items of another class; the item stays where it was.
  TCollectionItem* stranger = plain.Add();
  EXPECT_RAISES(EInvalidCast, stranger->SetCollection(&named), u"Invalid class typecast");
  EXPECT_RAISES(EInvalidCast, any.Items(0)->SetCollection(&plain), u"Invalid class typecast");
  EXPECT_EQ(stranger->Collection(), &plain);
  EXPECT_EQ(named.Count(), 1);
  EXPECT_EQ(any.Count(), 2);

  // Leaving every collection: no index, and the caller owns the item.
  first->SetCollection(nullptr);
  EXPECT_EQ(first->Collection(), nullptr);
  EXPECT_EQ(first->Index(), -1);
  first->SetIndex(5);  // nothing to move within
  EXPECT_EQ(any.Count(), 1);
  first->SetCollection(&named);
  EXPECT_EQ(IDsOf(named), (IDs{1, 2}));
  first->SetCollection(&named);  // already there: nothing changes
  EXPECT_EQ(IDsOf(named), (IDs{1, 2}));

  EXPECT_EQ(stranger->DisplayName(), u"TPlainItem");
  static_cast<TNamedItem*>(first)->Name = u"Shown";
  EXPECT_EQ(first->DisplayName(), u"Shown");
}

TEST(RtlClassesTest, CollectionsRefuseWrongClassesAndIndexes) {
  for (TClass itemClass :
       {static_cast<TClass>(nullptr), TObject::StaticClass(), TPersistent::StaticClass(), TStringList::StaticClass()}) {
    SCOPED_TRACE(itemClass != nullptr ? Utf16ToUtf8(itemClass->ClassName()) : "nullptr");
    EXPECT_RAISES(EInvalidCast, TCollection collection(itemClass), u"Invalid class typecast");
  }
  TCollection uncreatable(TArgumentItem::StaticClass());
  EXPECT_RAISES(Exceptions::EAbstractError, uncreatable.Add(), u"Abstract Error");
  EXPECT_EQ(uncreatable.Count(), 0);

  TCollection collection(TPlainItem::StaticClass());
  collection.Add();
  collection.Add();
  const std::tuple<const char*, std::function<void()>, const char16_t*> cases[] = {
      {"Items(-1)", [&] { collection.Items(-1); }, u"List index out of bounds (-1)"},
      {"Items(2)", [&] { collection.Items(2); }, u"List index out of bounds (2)"},
      {"Delete(2)", [&] { collection.Delete(2); }, u"List index out of bounds (2)"},
      {"Delete(-3)", [&] { collection.Delete(-3); }, u"List index out of bounds (-3)"},
      {"Insert(-1)", [&] { collection.Insert(-1); }, u"List index out of bounds (-1)"},
      {"Insert(3)", [&] { collection.Insert(3); }, u"List index out of bounds (3)"},
      {"SetIndex(2)", [&] { collection.Items(0)->SetIndex(2); }, u"List index out of bounds (2)"},
      {"SetIndex(-1)", [&] { collection.Items(1)->SetIndex(-1); }, u"List index out of bounds (-1)"},
  };
  for (const auto& [what, call, message] : cases) {
    SCOPED_TRACE(what);
    EXPECT_RAISES(EListError, call(), message);
    EXPECT_EQ(IDsOf(collection), (IDs{0, 1}));  // nothing changed
  }
}

TEST(RtlClassesTest, CollectionsAssignItemByItem) {
  TCollection source(TNamedItem::StaticClass());
  for (const char16_t* name : {u"a", u"b", u"c"}) static_cast<TNamedItem*>(source.Add())->Name = name;
  TCollection target(TNamedItem::StaticClass());
  target.Add();
  target.Add();
  target.Assign(&source);
  ASSERT_EQ(target.Count(), 3);
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_NE(target.Items(i), source.Items(i));  // copies, not the source's items
    EXPECT_EQ(target.Items(i)->DisplayName(), source.Items(i)->DisplayName());
  }
  EXPECT_EQ(IDsOf(target), (IDs{2, 3, 4}));  // the target's own numbering goes on
  target.Assign(&target);
  EXPECT_EQ(IDsOf(target), (IDs{2, 3, 4}));

  TStringList list;
  TCollection plain(TPlainItem::StaticClass());
  plain.Add();
  const std::tuple<TPersistent*, TPersistent*, const char16_t*> cases[] = {
      {&target, nullptr, u"Cannot assign a nil to a TCollection"},
      {&target, &list, u"Cannot assign a TStringList to a TCollection"},
      {&list, &target, u"Cannot assign a TCollection to a TStringList"},
      {&target, &plain, u"Cannot assign a TPlainItem to a TNamedItem"},
      {&plain, &source, u"Cannot assign a TNamedItem to a TPlainItem"},  // items without an Assign of their own
  };
  for (const auto& [dest, from, message] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(message));
    EXPECT_RAISES(EConvertError, dest->Assign(from), message);
  }
}

TEST(RtlClassesTest, CollectionsFreeTheirItems) {
  TGuardedItem::Freed = 0;
  {
    TCollection collection(TGuardedItem::StaticClass());
    for (int i = 0; i < 3; ++i) collection.Add();
  }
  EXPECT_EQ(TGuardedItem::Freed, 3);

  TGuardedItem::Freed = 0;
  std::vector<TCollectionItem*> loose;
  {
    TCollection collection(TGuardedItem::StaticClass());
    for (int i = 0; i < 4; ++i) collection.Add();
    collection.Delete(1);
    EXPECT_EQ(TGuardedItem::Freed, 1);
    loose.push_back(collection.Items(0));
    loose.back()->SetCollection(nullptr);  // now the caller's to free

    // An item refusing to be freed stops Clear and keeps its place.
    TGuardedItem::Refuse = true;
    EXPECT_RAISES(Exceptions::EInvalidOperation, collection.Clear(), u"kept");
    EXPECT_EQ(IDsOf(collection), (IDs{2, 3}));
    loose.push_back(collection.Items(0));
    loose.push_back(collection.Items(1));
  }
  // A destructor cannot pass the refusal on: it lets the items go instead.
  EXPECT_EQ(TGuardedItem::Freed, 1);
  TGuardedItem::Refuse = false;
  for (TCollectionItem* item : loose) {
    EXPECT_EQ(item->Collection(), nullptr);
    EXPECT_EQ(item->Index(), -1);
    Objects::FreeObject(item);
  }
  EXPECT_EQ(TGuardedItem::Freed, 4);
}

}  // namespace
}  // namespace Quorvex::Rtl::Classes
