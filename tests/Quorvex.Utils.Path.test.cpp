#include <gtest/gtest.h>

#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Utils.Path.hpp"

namespace Quorvex::Utils::Path {
namespace {

using Rtl::Files::Testing::P;
using Rtl::Strings::Utf16ToUtf8;

TEST(UtilsPathTest, TailsAndHeads) {
  struct Case {
    UnicodeStringView s, addTail, removeTail, removeHead;
  } cases[] = {
      {u" \t ", u"", u"", u""},
      {u"\\", u"\\", u"", u""},
      {u"C:\\x", u"C:\\x\\", u"C:\\x", u"C:\\x"},
      {u" C:\\x ", u"C:\\x\\", u"C:\\x", u"C:\\x"},
      {u"C:\\x\\\\", u"C:\\x\\\\", u"C:\\x\\", u"C:\\x\\\\"},
      {u" \\\\a ", u"\\\\a\\", u"\\\\a", u"\\a"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.s));
    EXPECT_EQ(gPath::AddTail(c.s, u"\\"), c.addTail);
    EXPECT_EQ(gPath::RemoveTail(c.s, u"\\"), c.removeTail);
    EXPECT_EQ(gPath::RemoveHeadDelimiter(c.s, u"\\"), c.removeHead);
  }
  // A tail of two characters never equals the last one: always added, never removed.
  EXPECT_EQ(gPath::AddTail(u"xab", u"ab"), u"xabab");
  EXPECT_EQ(gPath::RemoveTail(u"xab", u"ab"), u"xab");
  EXPECT_EQ(gPath::RemoveHeadDelimiter(u"abx", u"ab"), u"abx");
}

TEST(UtilsPathTest, MakeJoinsWithOneDelimiter) {
  struct Case {
    UnicodeStringView head, tail, expected;
  } cases[] = {
      {u"C:\\data", u"file.txt", u"C:\\data\\file.txt"},
      {u"C:\\data\\", u"\\file.txt", u"C:\\data\\file.txt"},
      {u"", u"\\file.txt", u"file.txt"},
      {u" C:\\data ", u"", u" C:\\data"},
      {u" C:\\data", u"x", u"C:\\data\\x"},
      {u"C:\\a", u"\\\\b", u"C:\\a\\\\b"},
      {u"C:\\a", u"\\", u"C:\\a\\"},
      {u"", u"", u""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.head) + " + " + Utf16ToUtf8(c.tail));
    EXPECT_EQ(gPath::Make(c.head, c.tail, u"\\"), c.expected);
    EXPECT_EQ(gPath::Combine(c.head, c.tail, u"\\"), c.expected);
  }
  EXPECT_EQ(gPath::Make(u"/usr", u"/lib", u"/"), u"/usr/lib");
}

TEST(UtilsPathTest, FileNameValidity) {
  struct Case {
    UnicodeStringView name;
    bool valid;
    UnicodeStringView validated;
  } cases[] = {
      {u"a.txt", true, u"a.txt"},
      {u"a\tb", true, u"a\tb"},  // control characters pass
      {u"a?.txt", false, u"a_.txt"},
      {u"\\/:*?\"<>|", false, u"_________"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.name));
    EXPECT_EQ(gPath::IsValidName(c.name), c.valid);
    EXPECT_EQ(gPath::ValidateName(c.name, u'_'), c.validated);
  }
}

TEST(UtilsPathTest, ToAbsoluteResolvesDotsLexically) {
  struct Case {
    UnicodeStringView path, base, absolute;
  } cases[] = {
      {u"a/../b", u"/t", u"/t/b"}, {u"./a", u"/t/", u"/t/a"}, {u"", u"/t", u"/t/"},       {u"b/../", u"/a", u"/a/"},
      {u"b/..", u"/a", u"/a"},     {u"..", u"/", u"/"},       {u"../../b", u"/a", u"/b"}, {u"b", u"/a//", u"/a//b"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.path) + " in " + Utf16ToUtf8(c.base));
    EXPECT_EQ(gPath::ToAbsolute(P(c.path), P(c.base)), P(c.absolute));
  }
  EXPECT_EQ(gPath::ToAbsolute(P(u"x"), P(u"/" + UnicodeString(300, u'a'))), u"");  // too long
}

TEST(UtilsPathTest, ToRelativeClimbsByWholeSegments) {
  struct Case {
    UnicodeStringView path, base, relative;
  } cases[] = {
      {u"/t/name", u"/t", u"./name"},         {u"/t/folder/name", u"/t/sub", u"../folder/name"},
      {u"/t/name", u"/t/a/b", u"../../name"}, {u"/b/f", u"/a", u"../b/f"},
      {u"/a/f", u"/ab", u"../a/f"},           {u"/t/name", u"t", u""},  // no common root
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.path) + " from " + Utf16ToUtf8(c.base));
    EXPECT_EQ(gPath::ToRelative(P(c.path), P(c.base)), P(c.relative));
  }
  // The shell's answer from a folder with a trailing delimiter: no "." first.
  EXPECT_EQ(gPath::ToRelative(P(u"/t/name"), P(u"/t/")), Rtl::Files::PathDelim() + UnicodeString(u"name"));
  EXPECT_EQ(gPath::ToRelative(P(u"/t/" + UnicodeString(300, u'a')), P(u"/t")), u"");  // too long
}

}  // namespace
}  // namespace Quorvex::Utils::Path
