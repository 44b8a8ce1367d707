#include <gtest/gtest.h>

#include <array>
#include <tuple>

#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Utils.Path.hpp"

namespace Quorvex::Utils::Path {
namespace {

using Rtl::Files::Testing::P;
using Rtl::Strings::Utf16ToUtf8;

TEST(UtilsPathTest, TailsAndHeads) {
  const std::array<UnicodeStringView, 4> cases[] = {
      {u" \t ", u"", u"", u""},
      {u"\\", u"\\", u"", u""},
      {u"C:\\x", u"C:\\x\\", u"C:\\x", u"C:\\x"},
      {u" C:\\x ", u"C:\\x\\", u"C:\\x", u"C:\\x"},
      {u"C:\\x\\\\", u"C:\\x\\\\", u"C:\\x\\", u"C:\\x\\\\"},
      {u" \\\\a ", u"\\\\a\\", u"\\\\a", u"\\a"},
  };
  for (const auto& [text, addTail, removeTail, removeHead] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    EXPECT_EQ(gPath::AddTail(text, u"\\"), addTail);
    EXPECT_EQ(gPath::RemoveTail(text, u"\\"), removeTail);
    EXPECT_EQ(gPath::RemoveHeadDelimiter(text, u"\\"), removeHead);
  }
  // A tail of two characters never equals the last one: always added, never removed.
  EXPECT_EQ(gPath::AddTail(u"xab", u"ab"), u"xabab");
  EXPECT_EQ(gPath::RemoveTail(u"xab", u"ab"), u"xab");
  EXPECT_EQ(gPath::RemoveHeadDelimiter(u"abx", u"ab"), u"abx");
}

TEST(UtilsPathTest, MakeJoinsWithOneDelimiter) {
  const std::array<UnicodeStringView, 3> cases[] = {
      {u"C:\\data", u"file.txt", u"C:\\data\\file.txt"},
      {u"C:\\data\\", u"\\file.txt", u"C:\\data\\file.txt"},
      {u"", u"\\file.txt", u"file.txt"},
      {u" C:\\data ", u"", u" C:\\data"},
      {u" C:\\data", u"x", u"C:\\data\\x"},
      {u"C:\\a", u"\\\\b", u"C:\\a\\\\b"},
      {u"C:\\a", u"\\", u"C:\\a\\"},
      {u"", u"", u""},
  };
  for (const auto& [head, tail, expected] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(head) + " + " + Utf16ToUtf8(tail));
    EXPECT_EQ(gPath::Make(head, tail, u"\\"), expected);
    EXPECT_EQ(gPath::Combine(head, tail, u"\\"), expected);
  }
  EXPECT_EQ(gPath::Make(u"/usr", u"/lib", u"/"), u"/usr/lib");
}

TEST(UtilsPathTest, FileNameValidity) {
  const std::tuple<UnicodeStringView, bool, UnicodeStringView> cases[] = {
      {u"a.txt", true, u"a.txt"},
      {u"a\tb", true, u"a\tb"},  // control characters pass
      {u"a?.txt", false, u"a_.txt"},
      {u"\\/:*?\"<>|", false, u"_________"},
  };
  for (const auto& [name, valid, validated] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(name));
    EXPECT_EQ(gPath::IsValidName(name), valid);
    EXPECT_EQ(gPath::ValidateName(name, u'_'), validated);
  }
}

TEST(UtilsPathTest, ToAbsoluteResolvesDotsLexically) {
  const std::array<UnicodeStringView, 3> cases[] = {
      {u"a/../b", u"/t", u"/t/b"}, {u"./a", u"/t/", u"/t/a"}, {u"", u"/t", u"/t/"},       {u"b/../", u"/a", u"/a/"},
      {u"b/..", u"/a", u"/a"},     {u"..", u"/", u"/"},       {u"../../b", u"/a", u"/b"}, {u"b", u"/a//", u"/a//b"},
  };
  for (const auto& [path, base, absolute] : cases)
    EXPECT_EQ(gPath::ToAbsolute(P(path), P(base)), P(absolute)) << Utf16ToUtf8(path) << " in " << Utf16ToUtf8(base);
  EXPECT_EQ(gPath::ToAbsolute(P(u"x"), P(u"/" + UnicodeString(300, u'a'))), u"");  // too long
}

TEST(UtilsPathTest, ToRelativeClimbsByWholeSegments) {
  const std::array<UnicodeStringView, 3> cases[] = {
      {u"/t/name", u"/t", u"./name"},         {u"/t/folder/name", u"/t/sub", u"../folder/name"},
      {u"/t/name", u"/t/a/b", u"../../name"}, {u"/b/f", u"/a", u"../b/f"},
      {u"/a/f", u"/ab", u"../a/f"},           {u"/t/name", u"t", u""},  // no common root
  };
  for (const auto& [path, base, relative] : cases)
    EXPECT_EQ(gPath::ToRelative(P(path), P(base)), P(relative)) << Utf16ToUtf8(path) << " from " << Utf16ToUtf8(base);
  // The shell's answer from a folder with a trailing delimiter: no "." first.
  EXPECT_EQ(gPath::ToRelative(P(u"/t/name"), P(u"/t/")), Rtl::Files::PathDelim() + UnicodeString(u"name"));
  EXPECT_EQ(gPath::ToRelative(P(u"/t/" + UnicodeString(300, u'a')), P(u"/t")), u"");  // too long
}

}  // namespace
}  // namespace Quorvex::Utils::Path
