#include "Quorvex.Rtl.Files.hpp"

#include <gtest/gtest.h>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"

namespace Quorvex::Rtl::Files {
namespace {

using Strings::Format;
using Strings::Utf16ToUtf8;
using Testing::OnWindows;
using Testing::P;
using Testing::TTempFolder;

TEST(RtlFilesTest, FileNameParts) {
  struct Case {
    UnicodeStringView name, path, dir, file, ext;
  } cases[] = {
      {u"/a/b.txt", u"/a/", u"/a", u"b.txt", u".txt"},
      {u"b", u"", u"", u"b", u""},
      {u"/a.d/b", u"/a.d/", u"/a.d", u"b", u""},
      {u"/x.tar.gz", u"/", u"/", u"x.tar.gz", u".gz"},
      {u"a/b/", u"a/b/", u"a/b", u"", u""},
      {u"a//b", u"a//", u"a//", u"b", u""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.name));
    const UnicodeString name = P(c.name);
    EXPECT_EQ(ExtractFilePath(name), P(c.path));
    EXPECT_EQ(ExtractFileDir(name), P(c.dir));
    EXPECT_EQ(ExtractFileName(name), c.file);
    EXPECT_EQ(ExtractFileExt(name), c.ext);
  }
  EXPECT_EQ(ChangeFileExt(P(u"/a.d/b"), u".x"), P(u"/a.d/b.x"));
  EXPECT_EQ(ChangeFileExt(P(u"/a/b.txt"), u""), P(u"/a/b"));
  EXPECT_EQ(ChangeFileExt(u"b.txt", u".log"), u"b.log");
}

TEST(RtlFilesTest, FileNamePartsPerPlatform) {
  if (OnWindows()) {
    // '/' and the drive colon delimit too.
    EXPECT_EQ(ExtractFilePath(u"C:\\a/b.txt"), u"C:\\a/");
    EXPECT_EQ(ExtractFileDir(u"C:\\a/b.txt"), u"C:\\a");
    EXPECT_EQ(ExtractFilePath(u"C:x.txt"), u"C:");
    EXPECT_EQ(ExtractFileDir(u"C:x.txt"), u"C:");
    EXPECT_EQ(ExtractFileName(u"C:x.txt"), u"x.txt");
    EXPECT_EQ(ChangeFileExt(u"C:\\a.b\\c", u".d"), u"C:\\a.b\\c.d");
  } else {
    EXPECT_EQ(ExtractFileName(u"a\\b.txt"), u"a\\b.txt");
    EXPECT_EQ(ExtractFilePath(u"C:x.txt"), u"");
  }
}

TEST(RtlFilesTest, TrailingDelimitersAndRelativePaths) {
  const UnicodeString d(1, PathDelim());
  EXPECT_EQ(IncludeTrailingPathDelimiter(u""), d);
  EXPECT_EQ(IncludeTrailingPathDelimiter(u"a"), u"a" + d);
  EXPECT_EQ(IncludeTrailingPathDelimiter(u"a" + d), u"a" + d);
  EXPECT_EQ(ExcludeTrailingPathDelimiter(u"a" + d + d), u"a" + d);
  EXPECT_EQ(ExcludeTrailingPathDelimiter(u"a"), u"a");
  EXPECT_EQ(ExcludeTrailingPathDelimiter(u""), u"");

  struct Case {
    UnicodeStringView path;
    bool relative;
  } cases[] = {
      {u"", false},      {u"a", true},    {u"a/b", true}, {u"./a", true}, {u"/a", false},
      {u"C:", false},    {u"c:/a", false}, {u"1:", true},  {u":", true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.path));
    EXPECT_EQ(IsRelativePath(P(c.path)), c.relative);
  }
}

TEST(RtlFilesTest, ExpandFileNameResolvesAgainstCurrentDir) {
  const UnicodeString current = IncludeTrailingPathDelimiter(GetCurrentDir());
  EXPECT_FALSE(IsRelativePath(current));
  EXPECT_EQ(ExpandFileName(P(u"x/../y/./z")), current + P(u"y/z"));
  EXPECT_EQ(ExpandFileName(P(u"/a/b/../c")), P(u"/a/c"));
}

TEST(RtlFilesTest, FoldersAndForceDirectories) {
  TTempFolder temp;
  const UnicodeString deep = temp / u"a/b/c";
  EXPECT_FALSE(CreateDir(deep));
  EXPECT_TRUE(ForceDirectories(deep));
  EXPECT_TRUE(DirectoryExists(deep));
  EXPECT_TRUE(ForceDirectories(deep + PathDelim()));  // already there
  EXPECT_FALSE(ForceDirectories(u""));

  WriteFileBytes(temp / u"file", "x");
  EXPECT_FALSE(ForceDirectories(temp / u"file/sub"));  // a file stands in the way
  EXPECT_FALSE(RemoveDir(temp / u"a"));  // not empty
}

TEST(RtlFilesTest, SearchReportsZeroOrTheErrorCode) {
  TTempFolder temp;
  WriteFileBytes(temp / u"one.txt", "1");
  WriteFileBytes(temp / u"two.txt", "22");

  TSearchRec rec;
  ASSERT_EQ(FindFirst(temp / u"*.txt", faAnyFile, rec), 0);
  int64_t total = rec.Size;
  int found = 1;
  while (FindNext(rec) == 0) {
    total += rec.Size;
    ++found;
  }
  EXPECT_EQ(found, 2);
  EXPECT_EQ(total, 3);
  EXPECT_EQ(FindNext(rec), static_cast<int>(Platform::LastError()));
  EXPECT_NE(FindNext(rec), 0);
  FindClose(rec);
  FindClose(rec);  // a second close is harmless
  EXPECT_NE(FindNext(rec), 0);

  EXPECT_EQ(FindFirst(temp / u"*.log", faAnyFile, rec), 2);  // file not found
  EXPECT_EQ(rec.FindHandle, nullptr);
}

TEST(RtlFilesTest, WholeFileBytesRoundTrip) {
  TTempFolder temp;
  const UnicodeString name = temp / u"data.bin";
  RawByteString bytes(200000, '\0');
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7);
  WriteFileBytes(name, bytes);
  EXPECT_EQ(ReadFileBytes(name), bytes);
  WriteFileBytes(name, "");
  EXPECT_EQ(ReadFileBytes(name), "");
}

// The message a failed open or create carries, for the error a repeated
// attempt gets from the platform.
UnicodeString ExpectedOpenError(UnicodeStringView format, UnicodeStringView name, bool create) {
  const Platform::FileHandle file = create ? Platform::FileCreate(name) : Platform::FileOpen(name, 0);
  EXPECT_EQ(file, Platform::InvalidFile);
  return Format(format, name, Exceptions::SysErrorMessage(Platform::LastError()));
}

TEST(RtlFilesTest, WholeFileErrorsCarryNameAndSystemText) {
  TTempFolder temp;
  const UnicodeString missing = temp / u"missing.txt";
  try {
    ReadFileBytes(missing);
    FAIL() << "no error";
  } catch (const Exceptions::EFOpenError& e) {
    EXPECT_EQ(e.Message(), ExpectedOpenError(u"Cannot open file \"%s\". %s", missing, false));
  }
  const UnicodeString nowhere = temp / u"no/such.txt";
  try {
    WriteFileBytes(nowhere, "x");
    FAIL() << "no error";
  } catch (const Exceptions::EFCreateError& e) {
    EXPECT_EQ(e.Message(), ExpectedOpenError(u"Cannot create file \"%s\". %s", nowhere, true));
  }
}

TEST(RtlFilesTest, ReadAndWriteFailuresAfterOpening) {
  if (OnWindows()) GTEST_SKIP() << "Windows refuses to open folders and has no full device";
  TTempFolder temp;
  try {
    ReadFileBytes(temp.Path());  // a folder opens but cannot be read
    FAIL() << "no error";
  } catch (const Exceptions::EReadError& e) {
    EXPECT_EQ(e.Message(), u"Stream read error");
  }
  try {
    WriteFileBytes(u"/dev/full", "x");
    FAIL() << "no error";
  } catch (const Exceptions::EWriteError& e) {
    EXPECT_EQ(e.Message(), u"Stream write error");
  }
}

}  // namespace
}  // namespace Quorvex::Rtl::Files
