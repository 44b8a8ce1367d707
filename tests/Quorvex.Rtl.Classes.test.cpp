#include "Quorvex.Rtl.Classes.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::Classes {
namespace {

using Exceptions::EArgumentOutOfRangeException;
using Exceptions::EConvertError;
using Exceptions::Exception;
using Exceptions::EStringListError;
using Strings::U;
using Strings::Utf16ToUtf8;
using Lines = std::vector<std::string>;

// The lines in UTF-8, so failures print readably.
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

// Runs `action` and answers the message of the EStringListError it raises.
std::string ListErrorOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const EStringListError& e) {
    return e.what();
  }
  return "(nothing raised)";
}

// Counts its own destruction, to show when a list frees it.
class TCounted : public TObject {
 public:
  explicit TCounted(int& freed) : FFreed(freed) {}
  ~TCounted() override { ++FFreed; }

 private:
  int& FFreed;
};

TEST(RtlClassesTest, DelimitedTextOutputQuotesOnlyWhatNeedsIt) {
  struct Case {
    Lines lines;
    bool strict;
    char16_t delimiter;
    char16_t quote;
    std::string expected;
  };
  const Case cases[] = {
      {{}, false, u',', u'"', ""},
      {{""}, false, u',', u'"', "\"\""},
      {{"", ""}, false, u',', u'"', ","},
      {{"a", "", "b"}, false, u',', u'"', "a,,b"},
      {{"a", "b c", "d,e"}, false, u',', u'"', "a,\"b c\",\"d,e\""},
      {{"say \"hi\""}, false, u',', u'"', "\"say \"\"hi\"\"\""},
      {{"tab\there", "\x01"}, false, u',', u'"', "\"tab\there\",\"\x01\""},
      {{"caf\xC3\xA9"}, false, u',', u'"', "caf\xC3\xA9"},
      {{"b c", " ", "d,e", "q\"x"}, true, u',', u'"', "b c, ,\"d,e\",\"q\"\"x\""},
      {{""}, true, u',', u'"', "\"\""},
      {{"a,b", "c;d"}, false, u';', u'"', "a,b;\"c;d\""},
      {{"it's", "x y"}, false, u',', u'\'', "'it''s','x y'"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.expected);
    auto list = ListOf(c.lines);
    list->SetStrictDelimiter(c.strict);
    list->SetDelimiter(c.delimiter);
    list->SetQuoteChar(c.quote);
    EXPECT_EQ(Utf16ToUtf8(list->GetDelimitedText()), c.expected);
    // Whatever is written reads back as the same lines.
    list->SetDelimitedText(list->GetDelimitedText());
    EXPECT_EQ(LinesOf(*list), c.lines);
  }
}

TEST(RtlClassesTest, DelimitedTextInputSplitsQuotesAndSkipsBlanks) {
  struct Case {
    std::string text;
    bool strict;
    Lines expected;
  };
  const Case cases[] = {
      {"", false, {}},
      {"   ", false, {}},
      {"   ", true, {"   "}},
      {"a,b,c", false, {"a", "b", "c"}},
      {"a b\tc", false, {"a", "b", "c"}},
      {"a b", true, {"a b"}},
      {" a , b ", false, {"a", "b"}},
      {" a , b ", true, {" a ", " b "}},
      {"a,,b", false, {"a", "", "b"}},
      {"a,b,", false, {"a", "b", ""}},
      {",a", false, {"", "a"}},
      {"a,  ", false, {"a"}},  // blanks after the last delimiter close nothing
      {"a,  ", true, {"a", "  "}},
      {"\"a b\",c", false, {"a b", "c"}},
      {"\"x\"\"y\"", false, {"x\"y"}},
      {"\"\"", false, {""}},
      {"\"a,b\"c,d", false, {"a,b", "c", "d"}},
      {"\"open, ended", false, {"open, ended"}},
      {"\"a,b\", c", true, {"a,b", " c"}},
      {"a\r\nb", false, {"a", "b"}},
      {std::string("a,b\0c,d", 7), false, {"a", "b"}},  // a NUL ends the text
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    TStringList list;
    list.Add(u"stale");
    list.SetStrictDelimiter(c.strict);
    list.SetDelimitedText(U(c.text));
    EXPECT_EQ(LinesOf(list), c.expected);
  }
}

TEST(RtlClassesTest, CommaTextUsesCommaAndDoubleQuote) {
  auto list = ListOf({"a b", "c;d"});
  list->SetDelimiter(u';');
  list->SetQuoteChar(u'\'');
  EXPECT_EQ(list->GetCommaText(), u"\"a b\",c;d");
  EXPECT_EQ(list->GetDelimiter(), u';');  // reading leaves the settings alone
  EXPECT_EQ(list->GetQuoteChar(), u'\'');

  list->SetCommaText(u"x,'y z'");
  EXPECT_EQ(LinesOf(*list), (Lines{"x", "'y", "z'"}));
  EXPECT_EQ(list->GetDelimiter(), u',');  // writing switches them
  EXPECT_EQ(list->GetQuoteChar(), u'"');
}

TEST(RtlClassesTest, TextFormsSplitAtEveryLineBreak) {
  struct Case {
    std::string text;
    std::u16string lineBreak;
    Lines expected;
  };
  const Case cases[] = {
      {"", u"\r\n", {}},
      {"a\r\nb", u"\r\n", {"a", "b"}},
      {"a\r\nb\r\n", u"\r\n", {"a", "b"}},
      {"a\rb\nc", u"\r\n", {"a", "b", "c"}},
      {"a\n\nb", u"\r\n", {"a", "", "b"}},
      {"a\r\r\nb", u"\r\n", {"a", "", "b"}},
      {"\r\n", u"\r\n", {""}},
      {"a||b||", u"||", {"a", "b"}},
      {"a\r\nb||", u"||", {"a\r\nb"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    TStringList list;
    list.SetLineBreak(c.lineBreak);
    list.SetTextStr(U(c.text));
    EXPECT_EQ(LinesOf(list), c.expected);
  }

  auto list = ListOf({"a", "", "b"});
  EXPECT_EQ(list->GetTextStr(), u"a\r\n\r\nb\r\n");
  list->SetLineBreak(u"|");
  EXPECT_EQ(list->GetTextStr(), u"a||b|");
  EXPECT_EQ(TStringList().GetTextStr(), u"");

  Char* buffer = list->GetText();
  EXPECT_EQ(UnicodeString(buffer), u"a||b|");
  StrDispose(buffer);
  list->SetLineBreak(u"\r\n");
  list->SetText(u"x\ny");
  EXPECT_EQ(LinesOf(*list), (Lines{"x", "y"}));
  list->SetText(nullptr);
  EXPECT_EQ(list->GetCount(), 0);
}

TEST(RtlClassesTest, NamesAndValues) {
  auto list = ListOf({"Key=1", "other=x=y", "noseparator", "=nameless"});
  EXPECT_EQ(list->GetName(0), u"Key");
  EXPECT_EQ(list->GetName(2), u"");
  EXPECT_EQ(list->GetName(3), u"");
  EXPECT_EQ(list->GetValue(u"key"), u"1");
  EXPECT_EQ(list->GetValue(u"other"), u"x=y");
  EXPECT_EQ(list->GetValue(u"missing"), u"");
  EXPECT_EQ(list->IndexOfName(u"OTHER"), 1);
  EXPECT_EQ(list->IndexOfName(u"noseparator"), -1);
  EXPECT_EQ(list->GetValueFromIndex(1), u"x=y");
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
  auto list = ListOf({"ABC", "\xC3\x84PFEL", "\xD0\x9F\xD0\xA0\xD0\x98", "\xCE\xA3\xCE\xA3", "abc"});
  struct Case {
    std::string probe;
    int insensitive;
    int sensitive;
  };
  const Case cases[] = {
      {"abc", 0, 4},
      {"\xC3\xA4pfel", 1, -1},              // a-umlaut
      {"\xD0\xBF\xD1\x80\xD0\xB8", 2, -1},  // Cyrillic
      {"\xCF\x83\xCF\x82", 3, -1},          // sigma and final sigma
      {"ab", -1, -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.probe);
    list->SetCaseSensitive(false);
    EXPECT_EQ(list->IndexOf(U(c.probe)), c.insensitive);
    list->SetCaseSensitive(true);
    EXPECT_EQ(list->IndexOf(U(c.probe)), c.sensitive);
  }
  TStringList twice;
  twice.Add(u"same");
  EXPECT_EQ(twice.Add(u"same"), 1);
  EXPECT_EQ(twice.GetCount(), 2);
}

TEST(RtlClassesTest, SortedListsAndDuplicates) {
  struct Case {
    TDuplicates duplicates;
    Lines expected;
    int indexOfDuplicate;
  };
  const Case cases[] = {
      {dupAccept, {"a", "B", "b", "c"}, 1},
      {dupIgnore, {"a", "b", "c"}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.duplicates));
    TStringList list;
    list.SetSorted(true);
    list.SetDuplicates(c.duplicates);
    for (const char16_t* s : {u"b", u"c", u"a"}) list.Add(s);
    EXPECT_EQ(list.Add(u"B"), c.indexOfDuplicate);
    EXPECT_EQ(LinesOf(list), c.expected);
  }

  // Find answers the first of accepted duplicates, any one of them otherwise.
  TStringList repeated;
  repeated.SetSorted(true);
  repeated.AddStrings(TStringDynArray{u"b", u"b", u"b", u"a", u"c"});
  int found = -1;
  EXPECT_TRUE(repeated.Find(u"B", found));
  EXPECT_EQ(found, 1);
  repeated.SetDuplicates(dupIgnore);
  EXPECT_TRUE(repeated.Find(u"B", found));
  EXPECT_EQ(found, 2);

  TStringList list;
  list.AddStrings(TStringDynArray{u"pear", u"Apple", u"fig"});
  list.SetDuplicates(dupError);
  list.SetSorted(true);
  EXPECT_EQ(LinesOf(list), (Lines{"Apple", "fig", "pear"}));
  EXPECT_EQ(ListErrorOf([&] { list.Add(u"FIG"); }), "String list does not allow duplicates");
  EXPECT_EQ(ListErrorOf([&] { list.Insert(0, u"x"); }), "Operation not allowed on sorted list");
  EXPECT_EQ(ListErrorOf([&] { list.Put(0, u"x"); }), "Operation not allowed on sorted list");
  EXPECT_EQ(ListErrorOf([&] { list.Move(0, 1); }), "Operation not allowed on sorted list");
  EXPECT_EQ(list.IndexOf(u"PEAR"), 2);
  int index = -1;
  EXPECT_FALSE(list.Find(u"grape", index));
  EXPECT_EQ(index, 2);

  list.SetCaseSensitive(true);  // re-sorts in code-unit order
  list.Add(u"apple");
  EXPECT_EQ(LinesOf(list), (Lines{"Apple", "apple", "fig", "pear"}));
  EXPECT_EQ(list.IndexOf(u"PEAR"), -1);

  list.SetSorted(false);
  list.CustomSort([](TStringList& l, int a, int b) {
    return static_cast<int>(l.Get(b).size()) - static_cast<int>(l.Get(a).size());
  });
  EXPECT_EQ(LinesOf(list), (Lines{"Apple", "apple", "pear", "fig"}));
}

TEST(RtlClassesTest, IndexErrorsNameTheIndex) {
  auto list = ListOf({"a", "b", "c"});
  struct Case {
    const char* what;
    std::function<void()> action;
    std::string message;
  };
  const Case cases[] = {
      {"Get -1", [&] { list->Get(-1); }, "List index out of bounds (-1)"},
      {"Get Count", [&] { list->Get(3); }, "List index out of bounds (3)"},
      {"Put", [&] { list->Put(5, u"x"); }, "List index out of bounds (5)"},
      {"GetObject", [&] { list->GetObject(3); }, "List index out of bounds (3)"},
      {"PutObject", [&] { list->PutObject(-2, nullptr); }, "List index out of bounds (-2)"},
      {"Delete", [&] { list->Delete(3); }, "List index out of bounds (3)"},
      {"Insert", [&] { list->Insert(4, u"x"); }, "List index out of bounds (4)"},
      {"Exchange", [&] { list->Exchange(0, 9); }, "List index out of bounds (9)"},
      {"Move from", [&] { list->Move(9, 0); }, "List index out of bounds (9)"},
      {"Move to", [&] { list->Move(0, 3); }, "List index out of bounds (3)"},
      {"GetName", [&] { list->GetName(7); }, "List index out of bounds (7)"},
      {"Capacity", [&] { list->SetCapacity(2); }, "List capacity out of bounds (2)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(ListErrorOf(c.action), c.message);
    EXPECT_EQ(LinesOf(*list), (Lines{"a", "b", "c"}));
  }
  list->Insert(3, u"d");  // Count itself is a valid insertion point
  list->SetCapacity(10);
  EXPECT_EQ(list->GetCapacity(), 10);
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
    TObject* kept = list.GetObject(0);
    list.PutObject(0, kept);  // the same object is not a replacement
    EXPECT_EQ(freed, 1);
    list.PutObject(0, new TCounted(freed));
    EXPECT_EQ(freed, 2);
    list.Move(0, 2);
    list.Exchange(0, 1);
    list.Put(0, u"renamed");
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
    EXPECT_EQ(LinesOf(list), (Lines{"b", "c", "a"}));
    EXPECT_EQ(list.ToObjectArray(), (TObjectDynArray{&b, &c, &a}));
    list.Move(2, 0);
    list.Exchange(0, 2);
    EXPECT_EQ(LinesOf(list), (Lines{"c", "b", "a"}));
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
  try {
    list->AddStrings(TStringDynArray{u"x", u"y"}, TObjectDynArray{nullptr});
    ADD_FAILURE() << "mismatched arrays were accepted";
  } catch (const EArgumentOutOfRangeException& e) {
    EXPECT_STREQ(e.what(), "Length of Strings and Objects arrays must be equal");
  }
  EXPECT_EQ(list->GetCount(), 4);

  int freed = 0;
  TCounted object(freed);
  TStringList source;
  source.AddObject(u"one", &object);
  source.Add(u"two");
  source.SetDelimiter(u';');
  source.SetQuoteChar(u'\'');
  source.SetNameValueSeparator(u':');
  source.SetStrictDelimiter(true);
  source.SetLineBreak(u"\n");
  source.SetWriteBOM(false);
  list->Assign(&source);
  EXPECT_EQ(LinesOf(*list), (Lines{"one", "two"}));
  EXPECT_EQ(list->GetObject(0), &object);
  EXPECT_EQ(list->GetDelimitedText(), u"one;two");
  EXPECT_EQ(list->GetNameValueSeparator(), u':');
  EXPECT_EQ(list->GetTextStr(), u"one\ntwo\n");
  EXPECT_FALSE(list->GetWriteBOM());
  EXPECT_TRUE(list->Equals(source));
  list->Assign(list.get());
  EXPECT_EQ(LinesOf(*list), (Lines{"one", "two"}));

  list->Put(1, u"TWO");
  EXPECT_FALSE(list->Equals(source));  // case matters
  list->Delete(1);
  EXPECT_FALSE(list->Equals(source));

  struct Case {
    TPersistent* source;
    std::string message;
  };
  TPersistent plain;
  const Case cases[] = {
      {nullptr, "Cannot assign a nil to a TStringList"},
      {&plain, "Cannot assign a TPersistent to a TStringList"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    try {
      list->Assign(c.source);
      ADD_FAILURE() << "nothing raised";
    } catch (const EConvertError& e) {
      EXPECT_EQ(e.what(), c.message);
    }
  }
  EXPECT_THROW(plain.Assign(list.get()), EConvertError);
}

}  // namespace
}  // namespace Quorvex::Rtl::Classes
