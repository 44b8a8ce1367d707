#include "Quorvex.Utils.Folder.hpp"

#include <gtest/gtest.h>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.Utils.Files.hpp"

namespace Quorvex::Utils::Folder {
namespace {

using Files::gFile;
using Rtl::Files::Testing::OnWindows;
using Rtl::Files::Testing::TTempFolder;
using Rtl::Strings::Format;

constexpr uint32_t kNotFound = 2;  // ERROR_FILE_NOT_FOUND and ENOENT alike

// Fills `root` with files (one read-only, one hidden) and nested folders.
void MakeTree(const TTempFolder& temp, UnicodeStringView root) {
  const UnicodeString base(root);
  gFolder::Force(temp / (base + u"/x/y/z"));
  gFolder::Force(temp / (base + u"/empty"));
  for (const char16_t* file : {u"/a.txt", u"/.hidden", u"/x/b.txt", u"/x/y/c.txt"}) {
    gFile::Save(temp / (base + file), u"data");
  }
  gFile::SetAttributes(temp / (base + u"/x/y/c.txt"), Rtl::Files::faReadOnly);
  gFile::SetAttributes(temp / (base + u"/.hidden"), Rtl::Files::faHidden);
}

TEST(UtilsFolderTest, EmptinessCountsMissingFoldersAsEmpty) {
  TTempFolder temp;
  EXPECT_TRUE(gFolder::IsEmpty(temp / u"missing"));
  EXPECT_FALSE(gFolder::Exists(temp / u"missing"));
  EXPECT_TRUE(gFolder::Exists(temp.Path()));
  EXPECT_TRUE(gFolder::IsEmpty(temp.Path()));
  EXPECT_TRUE(gFolder::IsEmpty(temp.Path() + Rtl::Files::PathDelim()));

  gFolder::Force(temp / u"sub");
  EXPECT_FALSE(gFolder::IsEmpty(temp.Path()));  // an empty subfolder counts
  EXPECT_TRUE(gFolder::IsEmpty(temp / u"sub"));
  gFile::Save(temp / u"sub/.hidden", u"");
  gFile::SetAttributes(temp / u"sub/.hidden", Rtl::Files::faHidden);
  EXPECT_FALSE(gFolder::IsEmpty(temp / u"sub"));

  gFile::Save(temp / u"file", u"");
  EXPECT_FALSE(gFolder::Exists(temp / u"file"));
}

TEST(UtilsFolderTest, EmptyAndDeleteRemoveWholeTrees) {
  TTempFolder temp;
  MakeTree(temp, u"tree");
  gFolder::Empty(temp / u"tree");
  EXPECT_TRUE(gFolder::Exists(temp / u"tree"));
  EXPECT_TRUE(gFolder::IsEmpty(temp / u"tree"));

  MakeTree(temp, u"tree");
  gFolder::Delete(temp / u"tree");
  EXPECT_FALSE(gFolder::Exists(temp / u"tree"));
  EXPECT_NO_THROW(gFolder::Delete(temp / u"tree"));
  EXPECT_NO_THROW(gFolder::Empty(temp / u"tree"));

  MakeTree(temp, u"kept");
  gFolder::DeleteEmpty(temp / u"kept");
  EXPECT_TRUE(gFolder::Exists(temp / u"kept"));
  gFolder::DeleteEmpty(temp / u"kept/empty");
  EXPECT_FALSE(gFolder::Exists(temp / u"kept/empty"));
  EXPECT_NO_THROW(gFolder::DeleteEmpty(temp / u"missing"));
}

TEST(UtilsFolderTest, ForceCreatesParentsAndReportsNothing) {
  TTempFolder temp;
  gFolder::Force(temp / u"a/b/c");
  EXPECT_TRUE(gFolder::Exists(temp / u"a/b/c"));
  EXPECT_NO_THROW(gFolder::Force(temp / u"a/b/c"));
  gFile::Save(temp / u"file", u"");
  EXPECT_NO_THROW(gFolder::Force(temp / u"file/sub"));
  EXPECT_FALSE(gFolder::Exists(temp / u"file/sub"));
}

TEST(UtilsFolderTest, UniqueNamesAppendADecimalCounter) {
  TTempFolder temp;
  EXPECT_EQ(gFolder::GetUniqueName(temp.Path(), u"New"), temp / u"New");
  EXPECT_EQ(gFolder::MakeUnique(temp.Path(), u"New"), temp / u"New");
  EXPECT_TRUE(gFolder::Exists(temp / u"New"));
  EXPECT_EQ(gFolder::GetUniqueName(temp.Path() + Rtl::Files::PathDelim(), u"New"), temp / u"New2");
  EXPECT_EQ(gFolder::MakeUnique(temp.Path(), u"New"), temp / u"New2");
  EXPECT_EQ(gFolder::MakeUnique(temp.Path(), u"New"), temp / u"New3");
  gFile::Save(temp / u"Note", u"");  // only folders are in the way
  EXPECT_EQ(gFolder::GetUniqueName(temp.Path(), u"Note"), temp / u"Note");
}

TEST(UtilsFolderTest, RenameAndAttributeFailuresNameTheFolderAndCode) {
  TTempFolder temp;
  const UnicodeString from = temp / u"from";
  const UnicodeString to = temp / u"to";
  gFolder::Force(from);
  gFolder::Rename(from, to);
  EXPECT_TRUE(gFolder::Exists(to));
  gFolder::SetAttributes(to, Rtl::Files::faDirectory);

  try {
    gFolder::Rename(from, to);
    FAIL() << "no error";
  } catch (const EFolderException& e) {
    EXPECT_EQ(e.Message(), Format(u"Cannot rename folder %s to %s; error: %d", from, to, kNotFound));
  }
  try {
    gFolder::SetAttributes(from, 0);
    FAIL() << "no error";
  } catch (const EFolderException& e) {
    EXPECT_EQ(e.Message(), Format(u"Cannot set attributes for the folder %s; error: %d", from, kNotFound));
  }
}

TEST(UtilsFolderTest, FailedRemovalRaisesAfterEmptying) {
  TTempFolder temp;
  MakeTree(temp, u"tree");
  // Windows refuses to remove a folder while a search inside it is open;
  // POSIX refuses to remove a folder named through its "." entry.
  const UnicodeString folder = OnWindows() ? temp / u"tree" : temp / u"tree/.";
  Rtl::Files::TSearchRec search;
  if (OnWindows()) {
    ASSERT_EQ(Rtl::Files::FindFirst(temp / u"tree/*", Rtl::Files::faAnyFile, search), 0);
  }
  try {
    gFolder::Delete(folder);
    FAIL() << "no error";
  } catch (const EFolderException& e) {
    EXPECT_FALSE(Platform::RemoveDirectory(folder));
    EXPECT_EQ(e.Message(),
              Format(u"Folder cannot not be deleted: %s; error code: %d", folder, Platform::LastError()));
  }
  Rtl::Files::FindClose(search);
  EXPECT_TRUE(gFolder::Exists(temp / u"tree"));
  EXPECT_TRUE(gFolder::IsEmpty(temp / u"tree"));
}

TEST(UtilsFolderTest, FirstFailureInsideATreeEndsTheDeletion) {
  if (!OnWindows()) GTEST_SKIP() << "needs a file that its owner cannot delete";
  TTempFolder temp;
  MakeTree(temp, u"tree");
  const UnicodeString locked = temp / u"tree/x/b.txt";
  const Platform::FileHandle file = Platform::FileOpen(locked, Platform::fmOpenRead);
  ASSERT_NE(file, Platform::InvalidFile);
  EXPECT_THROW(gFolder::Delete(temp / u"tree"), Files::EFileException);
  Platform::FileClose(file);
  EXPECT_TRUE(gFile::Exists(locked));
  EXPECT_TRUE(gFolder::Exists(temp / u"tree/x"));
}

}  // namespace
}  // namespace Quorvex::Utils::Folder
