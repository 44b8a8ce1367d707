#include <gtest/gtest.h>

#include <array>
#include <set>
#include <tuple>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Files {
namespace {

using Strings::Utf16ToUtf8;
using Testing::OnWindows;
using Testing::P;
using Testing::TTempFolder;

TEST(RtlFilesTest, FileNameParts) {
  const std::array<UnicodeStringView, 5> cases[] = {
      {u"/a/b.txt", u"/a/", u"/a", u"b.txt", u".txt"},
      {u"b", u"", u"", u"b", u""},
      {u"/a.d/b", u"/a.d/", u"/a.d", u"b", u""},
      {u"/x.tar.gz", u"/", u"/", u"x.tar.gz", u".gz"},
      {u"a/b/", u"a/b/", u"a/b", u"", u""},
      {u"a//b", u"a//", u"a//", u"b", u""},
  };
  for (const auto& [text, path, dir, file, ext] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    const UnicodeString name = P(text);
    EXPECT_EQ(ExtractFilePath(name), P(path));
    EXPECT_EQ(ExtractFileDir(name), P(dir));
    EXPECT_EQ(ExtractFileName(name), file);
    EXPECT_EQ(ExtractFileExt(name), ext);
  }
  EXPECT_EQ(ChangeFileExt(P(u"/a.d/b"), u".x"), P(u"/a.d/b.x"));
  EXPECT_EQ(ChangeFileExt(P(u"/a/b.txt"), u""), P(u"/a/b"));

  if (OnWindows()) {  // '/' and the drive colon delimit too
    EXPECT_EQ(ExtractFileDir(u"C:\\a/b.txt"), u"C:\\a");
    EXPECT_EQ(ExtractFileDir(u"C:x.txt"), u"C:");
  } else {
    EXPECT_EQ(ExtractFileName(u"a\\b.txt"), u"a\\b.txt");
    EXPECT_EQ(ExtractFilePath(u"C:x.txt"), u"");
  }
}

TEST(RtlFilesTest, TrailingDelimitersRelativeAndExpandedPaths) {
  const UnicodeString d(1, PathDelim());
  EXPECT_EQ(IncludeTrailingPathDelimiter(u""), d);
  EXPECT_EQ(ExcludeTrailingPathDelimiter(u"a" + d + d), u"a" + d);
  EXPECT_EQ(ExcludeTrailingPathDelimiter(u""), u"");

  for (const UnicodeStringView path : {u"a", u"a/b", u"./a", u"1:", u":"})
    EXPECT_TRUE(IsRelativePath(P(path))) << Utf16ToUtf8(path);
  for (const UnicodeStringView path : {u"", u"/a", u"C:", u"c:/a"})
    EXPECT_FALSE(IsRelativePath(P(path))) << Utf16ToUtf8(path);
  const UnicodeString current = IncludeTrailingPathDelimiter(GetCurrentDir());
  EXPECT_EQ(ExpandFileName(P(u"x/../y/./z")), current + P(u"y/z"));
  EXPECT_EQ(ExpandFileName(P(u"/a/b/../c")), P(u"/a/c"));
}

TEST(RtlFilesTest, FoldersAndForceDirectories) {
  TTempFolder temp;
  const UnicodeString deep = temp / u"a/b/c";
  EXPECT_FALSE(CreateDir(deep));
  EXPECT_TRUE(ForceDirectories(deep));
  EXPECT_TRUE(ForceDirectories(deep + PathDelim()));  // already there
  EXPECT_FALSE(ForceDirectories(u""));
  WriteFileBytes(temp / u"file", "x");
  EXPECT_FALSE(ForceDirectories(temp / u"file/sub"));  // a file stands in the way
  EXPECT_FALSE(RemoveDir(temp / u"a"));                // not empty
}

// Names a whole search reports.
std::set<UnicodeString> SearchNames(UnicodeStringView pattern, uint32_t mask) {
  std::set<UnicodeString> names;
  TSearchRec rec;
  for (int code = FindFirst(pattern, mask, rec); code == 0; code = FindNext(rec)) names.insert(rec.Name);
  FindClose(rec);
  return names;
}

TEST(RtlFilesTest, SearchFiltersByWildcardsAndMaskAndReportsCodes) {
  TTempFolder temp;
  for (const char16_t* name : {u"a.txt", u"b.log", u"ab.txt", u".hidden"}) WriteFileBytes(temp / name, "22");
  ASSERT_TRUE(FileSetAttr(temp / u".hidden", faHidden));  // hidden by name off Windows
  ASSERT_TRUE(CreateDir(temp / u"sub"));
  const std::tuple<UnicodeStringView, uint32_t, std::set<UnicodeString>> cases[] = {
      {u"*", 0, {u"a.txt", u"b.log", u"ab.txt"}},
      {u"*", faDirectory, {u".", u"..", u"a.txt", u"b.log", u"ab.txt", u"sub"}},
      {u"*", faHidden, {u"a.txt", u"b.log", u"ab.txt", u".hidden"}},
      {u"?.*", 0, {u"a.txt", u"b.log"}},
      {u"a*t", faAnyFile, {u"a.txt", u"ab.txt"}},
  };
  for (const auto& [pattern, mask, expected] : cases)
    EXPECT_EQ(SearchNames(temp / pattern, mask), expected) << Utf16ToUtf8(pattern) << " mask " << mask;

  TSearchRec rec;
  ASSERT_EQ(FindFirst(temp / u"b.log", faAnyFile, rec), 0);
  EXPECT_EQ(rec.Size, 2);
  EXPECT_GT(rec.TimeStamp, 43831.0);  // just written: after 2020-01-01
  EXPECT_EQ(FindNext(rec), static_cast<int>(Platform::LastError()));
  EXPECT_NE(FindNext(rec), 0);
  FindClose(rec);
  FindClose(rec);  // a second close is harmless
  EXPECT_NE(FindNext(rec), 0);
  EXPECT_EQ(FindFirst(temp / u"*.xyz", faAnyFile, rec), static_cast<int>(Testing::kNotFound));
  EXPECT_EQ(rec.FindHandle, nullptr);
}

// The message of a failed open or create, with the error a second attempt gets.
UnicodeString ExpectedOpenError(UnicodeStringView format, UnicodeStringView name, bool create) {
  const Platform::FileHandle file = create ? Platform::FileCreate(name) : Platform::FileOpen(name, 0);
  EXPECT_EQ(file, Platform::InvalidFile);
  return Strings::Format(format, name, Exceptions::SysErrorMessage(Platform::LastError()));
}

TEST(RtlFilesTest, WholeFilesRoundTripOrRaise) {
  TTempFolder temp;
  RawByteString bytes(200000, '\0');  // several read buffers' worth
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7);
  WriteFileBytes(temp / u"data.bin", bytes);
  EXPECT_EQ(ReadFileBytes(temp / u"data.bin"), bytes);

  const UnicodeString missing = temp / u"missing.txt";
  EXPECT_RAISES(Exceptions::EFOpenError, ReadFileBytes(missing),
                ExpectedOpenError(u"Cannot open file \"%s\". %s", missing, false));
  const UnicodeString nowhere = temp / u"no/such.txt";
  EXPECT_RAISES(Exceptions::EFCreateError, WriteFileBytes(nowhere, "x"),
                ExpectedOpenError(u"Cannot create file \"%s\". %s", nowhere, true));

  // A folder is no file, though Linux would open one for reading.
  EXPECT_RAISES(Exceptions::EFOpenError, ReadFileBytes(temp.Path()),
                ExpectedOpenError(u"Cannot open file \"%s\". %s", temp.Path(), false));
  EXPECT_RAISES(Exceptions::EFCreateError, WriteFileBytes(temp.Path(), "x"),
                ExpectedOpenError(u"Cannot create file \"%s\". %s", temp.Path(), true));

  if (OnWindows()) return;  // it has no full device
  EXPECT_RAISES(Exceptions::EWriteError, WriteFileBytes(u"/dev/full", "x"), u"Stream write error");
}

}  // namespace
}  // namespace Quorvex::Rtl::Files
