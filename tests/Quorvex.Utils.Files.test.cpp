#include <gtest/gtest.h>

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
  // A rename never replaces an existing file.
  gFile::Save(from, u"new");
  gFile::Save(to, u"old");
  EXPECT_RAISES(EFileException, gFile::Rename(from, to),
                Format(u"Cannot rename file %s to %s; error: %d", from, to, Rtl::Files::Testing::AlreadyExists()));
  EXPECT_EQ(gFile::Load(to), u"old");
}

}  // namespace
}  // namespace Quorvex::Utils::Files
