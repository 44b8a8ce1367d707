#include <gtest/gtest.h>
#if !defined(_WIN32)
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#endif

#include <array>
#include <atomic>
#include <optional>
#include <set>
#include <thread>
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

// The entries of a folder, "." and ".." left out.
std::set<UnicodeString> EntriesOf(const TTempFolder& folder) {
  std::set<UnicodeString> names = SearchNames(folder / u"*", faAnyFile);
  names.erase(u".");
  names.erase(u"..");
  return names;
}

TEST(RtlFilesTest, ReplacingLeavesTheNewContentAndNothingElse) {
  const RawByteString large(200000, 'x');
  const struct Case {
    const char16_t* name;
    std::optional<RawByteString> old;
    RawByteString bytes;
  } cases[] = {
      {u"new.txt", std::nullopt, "fresh"},
      {u"shorter.txt", "the old content, longer", "short"},
      {u"emptied.txt", "old", ""},
      {u"large.bin", "old", large},
      {u"Pr\u00E4ferenzen \u65E5\u672C.xml", "<Old/>", "<Root/>"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.name));
    TTempFolder temp;
    const UnicodeString name = temp / c.name;
    if (c.old) WriteFileBytes(name, *c.old);
    ReplaceFileBytes(name, c.bytes);
    EXPECT_EQ(ReadFileBytes(name), c.bytes);
    EXPECT_EQ(EntriesOf(temp), std::set<UnicodeString>{c.name});  // no file left beside it
    ReplaceFileBytes(name, "again");
    EXPECT_EQ(ReadFileBytes(name), "again");
  }
}

TEST(RtlFilesTest, AFailedReplacementLeavesEverythingAsItWas) {
  TTempFolder temp;
  WriteFileBytes(temp / u"old.txt", "old");
  WriteFileBytes(temp / u"locked.txt", "locked");
  ASSERT_TRUE(FileSetAttr(temp / u"locked.txt", faReadOnly));
  ASSERT_TRUE(CreateDir(temp / u"sub"));
  WriteFileBytes(temp / u"sub/kept", "kept");
  const std::set<UnicodeString> before = EntriesOf(temp);

  const uint32_t pathNotFound = OnWindows() ? 3 : Testing::kNotFound;  // ERROR_PATH_NOT_FOUND, ENOENT
  const uint32_t isFolder = OnWindows() ? 5 : 21;                      // ERROR_ACCESS_DENIED, EISDIR
  const uint32_t accessDenied = OnWindows() ? 5 : 13;                  // ERROR_ACCESS_DENIED, EACCES
  const std::tuple<const char*, UnicodeString, uint32_t> cases[] = {
      {"a folder", temp / u"sub", isFolder},
      {"a read-only file", temp / u"locked.txt", accessDenied},
      {"in a missing folder", temp / u"none/new.txt", pathNotFound},
      {"a name with a NUL", temp / UnicodeStringView(u"old.txt\0x", 9), Testing::InvalidName()},
  };
  for (const auto& [what, name, code] : cases) {
    SCOPED_TRACE(what);
    EXPECT_RAISES(Exceptions::EFCreateError, ReplaceFileBytes(name, "new"),
                  Strings::Format(u"Cannot create file \"%s\". %s", name, Exceptions::SysErrorMessage(code)));
    EXPECT_EQ(EntriesOf(temp), before);
    EXPECT_EQ(ReadFileBytes(temp / u"old.txt"), "old");
    EXPECT_EQ(ReadFileBytes(temp / u"locked.txt"), "locked");
    EXPECT_EQ(ReadFileBytes(temp / u"sub/kept"), "kept");
    EXPECT_EQ(SearchNames(temp / u"sub/*", 0), std::set<UnicodeString>{u"kept"});
  }
}

TEST(RtlFilesTest, ReadersSeeTheOldOrTheNewContentNeverAMix) {
  TTempFolder temp;
  const UnicodeString name = temp / u"shared.txt";
  const RawByteString contents[] = {RawByteString(100000, 'a'), RawByteString(3000, 'b')};
  WriteFileBytes(name, contents[0]);
  std::atomic<int> reads{0};
  std::atomic<int> mixed{0};
  std::atomic<int> unopened{0};
  std::atomic<bool> done{false};
  std::thread reader([&] {
    while (!done) {
      try {
        const RawByteString seen = ReadFileBytes(name);
        if (seen != contents[0] && seen != contents[1]) ++mixed;
      } catch (const Exceptions::EFOpenError&) {
        ++unopened;
      }
      ++reads;
    }
  });
  while (reads == 0) std::this_thread::yield();
  // Readers always open the file. On Windows a replacement over a file a
  // reader holds open may still be refused once its retries run out (Wine
  // refuses as long as any handle is open); it then fails as a whole.
  // Elsewhere it always succeeds.
  int replaced = 0;
  for (int i = 0; i < 100; ++i) {
    try {
      ReplaceFileBytes(name, contents[i % 2 == 0 ? 1 : 0]);
      ++replaced;
    } catch (const Exceptions::EFCreateError&) {
      if (!OnWindows()) throw;
    }
  }
  done = true;
  reader.join();
  EXPECT_EQ(mixed, 0) << reads << " reads, " << replaced << " replacements";
  EXPECT_EQ(unopened, 0);
  EXPECT_EQ(EntriesOf(temp), std::set<UnicodeString>{u"shared.txt"});
}

#if !defined(_WIN32)
mode_t ModeOf(const UnicodeString& name) {
  struct stat info {};
  EXPECT_EQ(stat(Strings::Utf16ToUtf8(name).c_str(), &info), 0);
  return info.st_mode;
}

TEST(RtlFilesTest, ReplacingKeepsOwnerAndPermissionBits) {
  TTempFolder temp;
  const UnicodeString name = temp / u"settings.xml";
  for (const mode_t mode : {0600, 0640, 0604, 0755, 02750}) {
    SCOPED_TRACE(mode);
    WriteFileBytes(name, "old");
    ASSERT_EQ(chmod(Utf16ToUtf8(name).c_str(), mode), 0);
    ReplaceFileBytes(name, "new");
    EXPECT_EQ(ModeOf(name) & 07777, mode);
    EXPECT_EQ(ReadFileBytes(name), "new");
  }
  // A new file gets the bits a plain write would give it.
  WriteFileBytes(temp / u"written", "");
  ReplaceFileBytes(temp / u"replaced", "");
  EXPECT_EQ(ModeOf(temp / u"replaced"), ModeOf(temp / u"written"));

  if (geteuid() != 0) return;  // only root may give a file away
  ASSERT_EQ(chown(Utf16ToUtf8(name).c_str(), 4321, 8765), 0);
  ReplaceFileBytes(name, "owned");
  struct stat info {};
  ASSERT_EQ(stat(Utf16ToUtf8(name).c_str(), &info), 0);
  EXPECT_EQ(info.st_uid, 4321u);
  EXPECT_EQ(info.st_gid, 8765u);
}

TEST(RtlFilesTest, ReplacingALinkLeavesItsTargetAndSpecialFilesAreRefused) {
  TTempFolder temp;
  WriteFileBytes(temp / u"target.txt", "target");
  ASSERT_EQ(symlink("target.txt", Utf16ToUtf8(temp / u"link").c_str()), 0);
  ReplaceFileBytes(temp / u"link", "replaced");
  EXPECT_EQ(FileGetAttr(temp / u"link") & faSymLink, 0u);  // a plain file now
  EXPECT_EQ(ReadFileBytes(temp / u"link"), "replaced");
  EXPECT_EQ(ReadFileBytes(temp / u"target.txt"), "target");

  const UnicodeString pipe = temp / u"pipe";
  ASSERT_EQ(mkfifo(Utf16ToUtf8(pipe).c_str(), 0666), 0);
  EXPECT_RAISES(Exceptions::EFCreateError, ReplaceFileBytes(pipe, "x"),
                u"Cannot create file \"" + pipe + u"\". " + Exceptions::SysErrorMessage(EINVAL));
  EXPECT_TRUE(S_ISFIFO(ModeOf(pipe)));
  EXPECT_EQ(EntriesOf(temp), (std::set<UnicodeString>{u"link", u"pipe", u"target.txt"}));
}

// Limits the size of files this process writes, for one scope; writing
// past the limit then fails with EFBIG instead of raising a signal.
class TFileSizeLimit {
 public:
  explicit TFileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &FSaved);
    FSavedHandler = signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, FSaved.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~TFileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &FSaved);
    signal(SIGXFSZ, FSavedHandler);
  }
  TFileSizeLimit(const TFileSizeLimit&) = delete;
  TFileSizeLimit& operator=(const TFileSizeLimit&) = delete;

 private:
  rlimit FSaved{};
  sighandler_t FSavedHandler;
};

TEST(RtlFilesTest, AFailedWriteLeavesTheOldContent) {
  TTempFolder temp;
  const UnicodeString name = temp / u"data.bin";
  WriteFileBytes(name, "old");
  {
    const TFileSizeLimit limit(1000);
    EXPECT_RAISES(Exceptions::EWriteError, ReplaceFileBytes(name, RawByteString(5000, 'n')), u"Stream write error");
  }
  EXPECT_EQ(ReadFileBytes(name), "old");
  EXPECT_EQ(EntriesOf(temp), std::set<UnicodeString>{u"data.bin"});
}
#endif

}  // namespace
}  // namespace Quorvex::Rtl::Files
