#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Utils.Files.hpp"

namespace Quorvex::Utils::Files {
namespace {

using Rtl::Files::Testing::kNotFound;
using Rtl::Files::Testing::OnWindows;
using Rtl::Files::Testing::TTempFolder;
using Rtl::Strings::Format;
using namespace std::string_literals;

// Windows: a read-only file held open without sharing; elsewhere a kernel
// file that not even root may unlink.
TEST(UtilsFilesTest, FailedDeleteRestoresAttributesAndRaises) {
  TTempFolder temp;
  const UnicodeString name = OnWindows() ? temp / u"locked.txt" : u"/proc/self/status";
  Platform::FileHandle lock = Platform::InvalidFile;
  if (OnWindows()) {
    gFile::Save(name, u"x");
    lock = Platform::FileOpen(name, Platform::fmOpenRead);
  }
  ASSERT_FALSE(Platform::DeleteFile(name));
  const uint32_t code = Platform::LastError();
  if (OnWindows()) gFile::SetAttributes(name, Rtl::Files::faReadOnly);
  const uint32_t attributes = Rtl::Files::FileGetAttr(name);
  EXPECT_RAISES(EFileException, gFile::Delete(name),
                Format(u"File cannot not be deleted: %s; error code: %d", name, code));
  EXPECT_TRUE(gFile::Exists(name));
  EXPECT_EQ(Rtl::Files::FileGetAttr(name), attributes);
  if (lock != Platform::InvalidFile) Platform::FileClose(lock);
}

TEST(UtilsFilesTest, SameNamesCountInUpperCaseHexAndSaveLoadAndSize) {
  TTempFolder temp;
  EXPECT_EQ(gFile::GetSameName(temp / u"a.txt"), temp / u"a_1.txt");
  EXPECT_EQ(gFile::GetSameName(temp / u"readme"), temp / u"readme_1");
  EXPECT_EQ(gFile::GetUniqueName(temp / u"x.tar.gz"), temp / u"x.tar_1.gz");
  for (int n = 1; n <= 9; ++n) gFile::Save(temp / Format(u"a_%d.txt", n), u"");
  EXPECT_EQ(gFile::GetSameName(temp / u"a.txt"), temp / u"a_A.txt");
  gFile::Save(temp / u"a_A.txt", u"");
  EXPECT_EQ(gFile::GetUniqueName(temp / u"a.txt"), temp / u"a_B.txt");

  const UnicodeString name = temp / u"text.txt";
  const UnicodeString text = u"caf\u00E9\r\nline two";
  gFile::Save(name, text);
  EXPECT_EQ(gFile::Load(name), text);
  const Rtl::Files::RawByteString bytes = Rtl::Files::ReadFileBytes(name);
  EXPECT_EQ(bytes.front(), 'c');  // no byte-order mark
  if (!OnWindows()) {
    EXPECT_EQ(bytes, "caf\xC3\xA9\r\nline two");
  }
  EXPECT_EQ(gFile::GetSize(name), static_cast<int64_t>(bytes.size()));

  gFile::Save(name, u"");  // truncates
  EXPECT_EQ(gFile::GetSize(name), 0);
  EXPECT_EQ(gFile::GetSize(temp / u"missing"), 0);
  EXPECT_THROW(gFile::Load(temp / u"missing"), Rtl::Exceptions::EFOpenError);
}

TEST(UtilsFilesTest, RenameAttributesAndDeleteOrNameTheFileAndCode) {
  TTempFolder temp;
  const UnicodeString from = temp / u"from.txt";
  const UnicodeString to = temp / u"to.txt";
  gFile::Save(from, u"x");
  gFile::Rename(from, to);
  EXPECT_FALSE(gFile::Exists(from));
  gFile::SetAttributes(to, Rtl::Files::faReadOnly);
  gFile::Delete(to);  // read-only or not
  EXPECT_FALSE(gFile::Exists(to));
  EXPECT_NO_THROW(gFile::Delete(to));
  EXPECT_FALSE(gFile::Exists(temp.Path()));  // a folder is not a file
  EXPECT_RAISES(EFileException, gFile::Rename(from, to),
                Format(u"Cannot rename file %s to %s; error: %d", from, to, kNotFound));
  EXPECT_RAISES(EFileException, gFile::SetAttributes(from, Rtl::Files::faReadOnly),
                Format(u"Cannot set attributes for the file %s; error: %d", from, kNotFound));
  // A read-only file is not overwritten, not even by root.
  gFile::Save(to, u"kept");
  gFile::SetAttributes(to, Rtl::Files::faReadOnly);
  const uint32_t denied = OnWindows() ? 5 : 13;  // ERROR_ACCESS_DENIED, EACCES
  EXPECT_RAISES(Rtl::Exceptions::EFCreateError, gFile::Save(to, u"lost"),
                Format(u"Cannot create file \"%s\". %s", to, Rtl::Exceptions::SysErrorMessage(denied)));
  EXPECT_EQ(gFile::Load(to), u"kept");
  gFile::Delete(to);
  // A rename never replaces an existing file.
  gFile::Save(from, u"new");
  gFile::Save(to, u"old");
  EXPECT_RAISES(EFileException, gFile::Rename(from, to),
                Format(u"Cannot rename file %s to %s; error: %d", from, to, Rtl::Files::Testing::AlreadyExists()));
  EXPECT_EQ(gFile::Load(to), u"old");
}

// Linux only: Windows moves files between volumes itself.
TEST(UtilsFilesTest, RenameMovesFilesAcrossFileSystemsOrLeavesThemAlone) {
  const std::filesystem::path other = Rtl::Files::Testing::OtherFileSystem();
  if (other.empty()) GTEST_SKIP() << "no second file system here";
  TTempFolder temp;
  TTempFolder away(other);
  const UnicodeString from = temp / u"moved.txt";
  const UnicodeString to = away / u"moved.txt";
  gFile::Save(from, u"content");
  const auto written = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 400);
  std::filesystem::last_write_time(std::filesystem::path(from), written);
  std::filesystem::permissions(std::filesystem::path(from), std::filesystem::perms(0640));

  gFile::Rename(from, to);
  EXPECT_FALSE(gFile::Exists(from));
  EXPECT_EQ(gFile::Load(to), u"content");
  EXPECT_EQ(std::filesystem::last_write_time(std::filesystem::path(to)), written);
  EXPECT_EQ(std::filesystem::status(std::filesystem::path(to)).permissions(), std::filesystem::perms(0640));

  // An existing target stays; a source that cannot go takes its copy along.
  gFile::Save(from, u"second");
  EXPECT_RAISES(EFileException, gFile::Rename(from, to),
                Format(u"Cannot rename file %s to %s; error: %d", from, to, Rtl::Files::Testing::AlreadyExists()));
  EXPECT_EQ(gFile::Load(from), u"second");
  EXPECT_EQ(gFile::Load(to), u"content");
  const UnicodeString kernel = u"/proc/self/status";  // copies, but never deletes
  ASSERT_FALSE(Platform::DeleteFile(kernel));
  const uint32_t code = Platform::LastError();
  EXPECT_RAISES(EFileException, gFile::Rename(kernel, temp / u"status"),
                Format(u"Cannot rename file %s to %s; error: %d", kernel, temp / u"status", code));
  EXPECT_FALSE(gFile::Exists(temp / u"status"));
}

// The system would end such a name at the NUL and act on "keep.txt".
TEST(UtilsFilesTest, NamesWithANulTouchNothing) {
  TTempFolder temp;
  const UnicodeString keep = temp / u"keep.txt";
  gFile::Save(keep, u"kept");
  const UnicodeString name = keep + u"\0.bak"s;
  const uint32_t code = Rtl::Files::Testing::InvalidName();

  EXPECT_FALSE(gFile::Exists(name));
  EXPECT_EQ(gFile::GetSize(name), 0);
  gFile::Delete(name);
  EXPECT_RAISES(EFileException, gFile::Rename(name, temp / u"other.txt"),
                Format(u"Cannot rename file %s to %s; error: %d", name, temp / u"other.txt", code));
  EXPECT_RAISES(EFileException, gFile::Rename(keep, temp / u"new.txt\0"s),
                Format(u"Cannot rename file %s to %s; error: %d", keep, temp / u"new.txt\0"s, code));
  EXPECT_FALSE(gFile::Exists(temp / u"new.txt"));
  EXPECT_RAISES(EFileException, gFile::SetAttributes(name, Rtl::Files::faReadOnly),
                Format(u"Cannot set attributes for the file %s; error: %d", name, code));
  const UnicodeString why = Rtl::Exceptions::SysErrorMessage(code);
  EXPECT_RAISES(Rtl::Exceptions::EFOpenError, gFile::Load(name), Format(u"Cannot open file \"%s\". %s", name, why));
  EXPECT_RAISES(Rtl::Exceptions::EFCreateError, gFile::Save(name, u"lost"),
                Format(u"Cannot create file \"%s\". %s", name, why));

  EXPECT_EQ(gFile::Load(keep), u"kept");
  EXPECT_EQ(Rtl::Files::FileGetAttr(keep) & Rtl::Files::faReadOnly, 0u);
}

}  // namespace
}  // namespace Quorvex::Utils::Files
