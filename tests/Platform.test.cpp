#include "Quorvex.Platform.hpp"

#include <gtest/gtest.h>

#include <set>

#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Platform {
namespace {

using Rtl::Files::Testing::OnWindows;
using Rtl::Files::Testing::P;
using Rtl::Files::Testing::TTempFolder;
using Rtl::Strings::Utf16ToUtf8;

constexpr uint32_t kNotFound = 2;  // ERROR_FILE_NOT_FOUND and ENOENT alike

void Touch(PathView path) {
  const FileHandle file = FileCreate(path);
  ASSERT_NE(file, InvalidFile);
  FileClose(file);
}

TEST(PlatformTest, ErrorTextsAreBareSentencesAndKeepTheLastError) {
  SetLastError(kNotFound);
  const std::u16string text = ErrorMessage(kNotFound);
  EXPECT_EQ(LastError(), kNotFound);
  ASSERT_FALSE(text.empty());
  EXPECT_GT(text.back(), u' ');
  EXPECT_NE(text.back(), u'.');
}

TEST(PlatformTest, CanonicalizeResolvesDotSegmentsLexically) {
  struct Case {
    std::u16string_view path, expected;
  } cases[] = {
      {u"/a/b/../c", u"/a/c"},  {u"/a/./b", u"/a/b"},       {u"/a/b/../", u"/a/"},
      {u"/a/b/..", u"/a"},      {u"/..", u"/"},             {u"/a/../../b", u"/b"},
      {u"/a//b", u"/a//b"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.path));
    Path result;
    EXPECT_TRUE(CanonicalizePath(P(c.path), result));
    EXPECT_EQ(result, P(c.expected));
  }
  Path result = u"stale";
  EXPECT_FALSE(CanonicalizePath(P(u"/" + std::u16string(300, u'a')), result));
  EXPECT_EQ(result, u"");
}

TEST(PlatformTest, RelativePathFromFolderToFile) {
  struct Case {
    std::u16string_view from, to, expected;
  } cases[] = {
      {u"/t", u"/t/name", u"./name"},
      {u"/t/sub", u"/t/folder/name", u"../folder/name"},
      {u"/t/a/b", u"/t/name", u"../../name"},
      {u"/a", u"/b/f", u"../b/f"},
      {u"/ab", u"/a/f", u"../a/f"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.from) + " -> " + Utf16ToUtf8(c.to));
    Path result;
    EXPECT_TRUE(RelativePath(P(c.from), P(c.to), result));
    EXPECT_EQ(result, P(c.expected));
  }
  Path result;
  // The shell's answer when the folder ends in a delimiter: no "." first.
  EXPECT_TRUE(RelativePath(P(u"/t/"), P(u"/t/name"), result));
  EXPECT_EQ(result, PathDelimiter() + Path(u"name"));
  result = u"stale";
  EXPECT_FALSE(RelativePath(P(u"a"), P(u"/b/f"), result));  // no common root
  EXPECT_EQ(result, u"");
  EXPECT_FALSE(RelativePath(P(u"/t"), P(u"/t/" + std::u16string(300, u'a')), result));
}

TEST(PlatformTest, AttributesMapToWindowsBits) {
  TTempFolder temp;
  const Path file = temp / u"f.txt";
  Touch(file);
  ASSERT_TRUE(CreateDirectory(temp / u"sub"));
  EXPECT_EQ(GetFileAttributes(file) & (faArchive | faDirectory | faReadOnly), faArchive);
  EXPECT_EQ(GetFileAttributes(temp / u"sub") & (faArchive | faDirectory), faDirectory);

  ASSERT_TRUE(SetFileAttributes(file, faReadOnly));
  EXPECT_EQ(GetFileAttributes(file) & faReadOnly, faReadOnly);
  ASSERT_TRUE(SetFileAttributes(file, faArchive));
  EXPECT_EQ(GetFileAttributes(file) & faReadOnly, 0u);

  EXPECT_EQ(GetFileAttributes(temp / u"missing"), InvalidAttributes);
  EXPECT_FALSE(SetFileAttributes(temp / u"missing", 0));
  EXPECT_EQ(LastError(), kNotFound);
}

// Names reported by a whole search.
std::set<std::u16string> SearchNames(PathView pattern, uint32_t mask) {
  std::set<std::u16string> names;
  FindData data;
  FindHandle search = FindFirst(pattern, mask, data);
  if (search == nullptr) return names;
  do {
    names.insert(data.Name);
  } while (FindNext(search, data));
  FindClose(search);
  return names;
}

TEST(PlatformTest, SearchMatchesWildcardsAndFiltersByMask) {
  TTempFolder temp;
  for (const char16_t* name : {u"a.txt", u"b.log", u"ab.txt", u".hidden"}) Touch(temp / name);
  ASSERT_TRUE(SetFileAttributes(temp / u".hidden", faHidden));  // hidden by name off Windows
  ASSERT_TRUE(CreateDirectory(temp / u"sub"));

  using Names = std::set<std::u16string>;
  struct Case {
    std::u16string_view pattern;
    uint32_t mask;
    Names expected;
  } cases[] = {
      {u"*", 0, {u"a.txt", u"b.log", u"ab.txt"}},
      {u"*", faDirectory, {u".", u"..", u"a.txt", u"b.log", u"ab.txt", u"sub"}},
      {u"*", faHidden, {u"a.txt", u"b.log", u"ab.txt", u".hidden"}},
      {u"*", faAnyFile, {u".", u"..", u"a.txt", u"b.log", u"ab.txt", u".hidden", u"sub"}},
      {u"*.txt", faAnyFile, {u"a.txt", u"ab.txt"}},
      {u"?.*", 0, {u"a.txt", u"b.log"}},
      {u"a*t", faAnyFile, {u"a.txt", u"ab.txt"}},
      {u"b.log", faAnyFile, {u"b.log"}},
      {u"s?b", 0, {}},
      {u"nothing*", faAnyFile, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.pattern) + " mask " + std::to_string(c.mask));
    EXPECT_EQ(SearchNames(temp / c.pattern, c.mask), c.expected);
  }

  FindData data;
  EXPECT_EQ(FindFirst(temp / u"nothing*", faAnyFile, data), nullptr);
  EXPECT_EQ(LastError(), kNotFound);
  FindHandle search = FindFirst(temp / u"a.txt", faAnyFile, data);
  ASSERT_NE(search, nullptr);
  FindClose(search);
  // The file was just made: after 2020-01-01, day 43831 of the date scale.
  EXPECT_GT(data.TimeStamp, 43831.0);
}

TEST(PlatformTest, FileHandlesReadWriteAndSeek) {
  TTempFolder temp;
  const Path name = temp / u"data.bin";
  FileHandle file = FileCreate(name);
  ASSERT_NE(file, InvalidFile);
  EXPECT_EQ(FileWrite(file, "hello world", 11), 11);
  EXPECT_EQ(FileSeek(file, 6, 0), 6);
  char buffer[16] = {};
  EXPECT_EQ(FileRead(file, buffer, sizeof buffer), 5);
  EXPECT_EQ(std::string(buffer, 5), "world");
  EXPECT_EQ(FileSeek(file, -5, 2), 6);
  EXPECT_EQ(FileSeek(file, 1, 1), 7);
  EXPECT_EQ(FileSeek(file, 0, 3), -1);
  FileClose(file);

  file = FileOpen(name, fmOpenRead);
  ASSERT_NE(file, InvalidFile);
  EXPECT_EQ(FileRead(file, buffer, 5), 5);
  EXPECT_EQ(std::string(buffer, 5), "hello");
  FileClose(file);

  EXPECT_EQ(FileOpen(temp / u"missing", fmOpenRead), InvalidFile);
  EXPECT_EQ(LastError(), kNotFound);
  EXPECT_EQ(FileOpen(name, 3), InvalidFile);  // no such access mode
}

TEST(PlatformTest, EncodingsLocaleAndClock) {
  const std::u16string text = u"caf\u00E9 ok";
  EXPECT_EQ(AnsiToUnicode(UnicodeToAnsi(text)), text);
  EXPECT_EQ(UnicodeToAnsi(u""), "");
  if (!OnWindows()) {
    EXPECT_EQ(UnicodeToAnsi(text), "caf\xC3\xA9 ok");  // UTF-8 off Windows
  }

  EXPECT_NE(DecimalSeparator(), u'\0');
  EXPECT_NE(DecimalSeparator(), ThousandSeparator());
  EXPECT_GE(Now().Year, 2020);
  const int32_t offset = UtcOffsetMinutes();
  EXPECT_GE(offset, -12 * 60);
  EXPECT_LE(offset, 14 * 60);
}

}  // namespace
}  // namespace Quorvex::Platform
