#include "Quorvex.Utils.Path.hpp"

#include <gtest/gtest.h>

#include "Quorvex.Rtl.Files.TestSupport.hpp"

namespace Quorvex::Utils::Path {
namespace {

using Rtl::Files::Testing::P;
using Rtl::Strings::Utf16ToUtf8;

TEST(UtilsPathTest, TailsAndHeads) {
  struct Case {
    UnicodeStringView s, addTail, removeTail, removeHead;
  } cases[] = {
      {u"", u"", u"", u""},
      {u" \t ", u"", u"", u""},
      {u"C:\\x", u"C:\\x\\", u"C:\\x", u"C:\\x"},
      {u"C:\\x\\", u"C:\\x\\", u"C:\\x", u"C:\\x\\"},
      {u" C:\\x ", u"C:\\x\\", u"C:\\x", u"C:\\x"},
      {u"C:\\x\\\\", u"C:\\x\\\\", u"C:\\x\\", u"C:\\x\\\\"},
      {u" \\\\a ", u"\\\\a\\", u"\\\\a", u"\\a"},
      {u"\\", u"\\", u"", u""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.s));
    EXPECT_EQ(gPath::AddTail(c.s, u"\\"), c.addTail);
    EXPECT_EQ(gPath::RemoveTail(c.s, u"\\"), c.removeTail);
    EXPECT_EQ(gPath::RemoveHeadDelimiter(c.s, u"\\"), c.removeHead);
  }
  // The last character is compared with the whole tail: longer tails
  // never match, so they are always added and never removed.
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
      {u"C:\\data ", u"", u"C:\\data"},
      {u" C:\\data", u"", u" C:\\data"},
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
      {u"", true, u""},
      {u"a\tb", true, u"a\tb"},  // control characters are not checked
      {u"a?.txt", false, u"a_.txt"},
      {u"a:b*c", false, u"a_b_c"},
      {u"\\/:*?\"<>|", false, u"_________"},
      {u"x||y", false, u"x__y"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.name));
    EXPECT_EQ(gPath::IsValidName(c.name), c.valid);
    EXPECT_EQ(gPath::ValidateName(c.name, u'_'), c.validated);
  }
  EXPECT_EQ(gPath::ValidateName(u"a/b", u':'), u"a:b");
}

TEST(UtilsPathTest, AbsoluteAndRelativePaths) {
  EXPECT_TRUE(gPath::IsRelative(u"name"));
  EXPECT_FALSE(gPath::IsRelative(P(u"/name")));

  struct Case {
    UnicodeStringView path, base, absolute;
  } cases[] = {
      {u"a/../b", u"/t", u"/t/b"},
      {u"./a", u"/t/", u"/t/a"},
      {u"../../x", u"/t/u", u"/x"},
      {u"", u"/t", u"/t/"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.path) + " in " + Utf16ToUtf8(c.base));
    EXPECT_EQ(gPath::ToAbsolute(P(c.path), P(c.base)), P(c.absolute));
  }
  EXPECT_EQ(gPath::ToAbsolute(P(u"x"), P(u"/" + UnicodeString(300, u'a'))), u"");

  EXPECT_EQ(gPath::ToRelative(P(u"/t/name"), P(u"/t")), P(u"./name"));
  EXPECT_EQ(gPath::ToRelative(P(u"/t/folder/name"), P(u"/t/sub")), P(u"../folder/name"));
  EXPECT_EQ(gPath::ToRelative(P(u"/t/name"), P(u"t")), u"");  // no common root

  const UnicodeString current = Rtl::Files::IncludeTrailingPathDelimiter(Rtl::Files::GetCurrentDir());
  EXPECT_EQ(gPath::ToAbsolute(P(u"a/./b/..")), current + u"a");
}

}  // namespace
}  // namespace Quorvex::Utils::Path
