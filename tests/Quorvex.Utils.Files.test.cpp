#include "Quorvex.Utils.Files.hpp"

#include <gtest/gtest.h>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Files.hpp"

namespace Quorvex::Utils::Files {
namespace {

using Rtl::Files::Testing::OnWindows;
using Rtl::Files::Testing::TTempFolder;
using Rtl::Strings::Format;

constexpr uint32_t kNotFound = 2;  // ERROR_FILE_NOT_FOUND and ENOENT alike

// A file that exists but cannot be deleted while this object lives: on
// Windows a temporary file held open without sharing, elsewhere a kernel
// file that not even root may unlink.
class TUndeletableFile {
 public:
  explicit TUndeletableFile(const TTempFolder& temp) {
    if (!OnWindows()) {
      FName = u"/proc/self/status";
      return;
    }
    FName = temp / u"locked.txt";
    Rtl::Files::WriteFileBytes(FName, "x");
    FFile = Platform::FileOpen(FName, Platform::fmOpenRead);
  }
  ~TUndeletableFile() {
    if (FFile != Platform::InvalidFile) Platform::FileClose(FFile);
  }
  TUndeletableFile(const TUndeletableFile&) = delete;
  TUndeletableFile& operator=(const TUndeletableFile&) = delete;

  const UnicodeString& Name() const { return FName; }

  // The error code a deletion attempt gets.
  uint32_t DeleteError() const {
    EXPECT_FALSE(Platform::DeleteFile(FName));
    return Platform::LastError();
  }

 private:
  UnicodeString FName;
  Platform::FileHandle FFile = Platform::InvalidFile;
};

TEST(UtilsFilesTest, DeleteClearsReadOnlyAndIgnoresMissingFiles) {
  TTempFolder temp;
  const UnicodeString name = temp / u"ro.txt";
  gFile::Save(name, u"x");
  gFile::SetAttributes(name, Rtl::Files::faReadOnly);
  EXPECT_TRUE(gFile::Exists(name));
  gFile::Delete(name);
  EXPECT_FALSE(gFile::Exists(name));
  EXPECT_NO_THROW(gFile::Delete(name));
  EXPECT_FALSE(gFile::Exists(temp.Path()));  // a folder is not a file
}

TEST(UtilsFilesTest, FailedDeleteRestoresAttributesAndRaises) {
  TTempFolder temp;
  TUndeletableFile victim(temp);
  const uint32_t attributes = Rtl::Files::FileGetAttr(victim.Name()) | Rtl::Files::faReadOnly;
  if (OnWindows()) gFile::SetAttributes(victim.Name(), attributes);
  try {
    gFile::Delete(victim.Name());
    FAIL() << "no error";
  } catch (const EFileException& e) {
    EXPECT_EQ(e.Message(), Format(u"File cannot not be deleted: %s; error code: %d", victim.Name(),
                                  victim.DeleteError()));
  }
  EXPECT_TRUE(gFile::Exists(victim.Name()));
  if (OnWindows()) {
    EXPECT_EQ(Rtl::Files::FileGetAttr(victim.Name()), attributes);
    gFile::SetAttributes(victim.Name(), Rtl::Files::faArchive);
  }
}

TEST(UtilsFilesTest, SameNameCountsInUpperCaseHex) {
  TTempFolder temp;
  EXPECT_EQ(gFile::GetSameName(temp / u"a.txt"), temp / u"a_1.txt");
  EXPECT_EQ(gFile::GetSameName(temp / u"readme"), temp / u"readme_1");
  EXPECT_EQ(gFile::GetUniqueName(temp / u"x.tar.gz"), temp / u"x.tar_1.gz");
  EXPECT_EQ(gFile::GetSameName(u"plain.txt"), u"plain_1.txt");
  for (int n = 1; n <= 9; ++n) gFile::Save(temp / Format(u"a_%d.txt", n), u"");
  EXPECT_EQ(gFile::GetSameName(temp / u"a.txt"), temp / u"a_A.txt");
  gFile::Save(temp / u"a_A.txt", u"");
  EXPECT_EQ(gFile::GetUniqueName(temp / u"a.txt"), temp / u"a_B.txt");
}

TEST(UtilsFilesTest, SaveLoadAndSize) {
  TTempFolder temp;
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
  EXPECT_TRUE(gFile::Exists(name));
  EXPECT_EQ(gFile::Load(name), u"");
  EXPECT_EQ(gFile::GetSize(name), 0);
  EXPECT_EQ(gFile::GetSize(temp / u"missing"), 0);

  EXPECT_THROW(gFile::Load(temp / u"missing"), Rtl::Exceptions::EFOpenError);
  EXPECT_THROW(gFile::Save(temp / u"no/such", u"x"), Rtl::Exceptions::EFCreateError);
}

TEST(UtilsFilesTest, RenameAndAttributeFailuresNameTheFileAndCode) {
  TTempFolder temp;
  const UnicodeString from = temp / u"from.txt";
  const UnicodeString to = temp / u"to.txt";
  gFile::Save(from, u"x");
  gFile::Rename(from, to);
  EXPECT_FALSE(gFile::Exists(from));
  EXPECT_TRUE(gFile::Exists(to));

  try {
    gFile::Rename(from, to);
    FAIL() << "no error";
  } catch (const EFileException& e) {
    EXPECT_EQ(e.Message(), Format(u"Cannot rename file %s to %s; error: %d", from, to, kNotFound));
  }
  try {
    gFile::SetAttributes(from, Rtl::Files::faReadOnly);
    FAIL() << "no error";
  } catch (const EFileException& e) {
    EXPECT_EQ(e.Message(), Format(u"Cannot set attributes for the file %s; error: %d", from, kNotFound));
  }
}

}  // namespace
}  // namespace Quorvex::Utils::Files
