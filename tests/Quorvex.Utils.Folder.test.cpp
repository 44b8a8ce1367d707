#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.Rtl.Files.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Utils.Files.hpp"
#include "Quorvex.Utils.Folder.hpp"

namespace Quorvex::Utils::Folder {
namespace {

using Files::gFile;
using Rtl::Files::Testing::kNotFound;
using Rtl::Files::Testing::OnWindows;
using Rtl::Files::Testing::TTempFolder;
using Rtl::Strings::Format;
using namespace std::string_literals;

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

TEST(UtilsFolderTest, EmptinessEmptyAndDelete) {
  TTempFolder temp;
  EXPECT_TRUE(gFolder::IsEmpty(temp / u"missing"));
  EXPECT_TRUE(gFolder::IsEmpty(temp.Path()));
  MakeTree(temp, u"tree");
  EXPECT_FALSE(gFolder::IsEmpty(temp.Path()));  // a subfolder counts
  gFolder::DeleteEmpty(temp / u"tree");
  gFolder::DeleteEmpty(temp / u"tree/empty");
  EXPECT_FALSE(gFolder::Exists(temp / u"tree/empty"));
  gFolder::Delete(temp / u"tree/x");
  gFile::Delete(temp / u"tree/a.txt");
  EXPECT_FALSE(gFolder::IsEmpty(temp / u"tree"));  // a hidden file counts
  gFolder::Empty(temp / u"tree");
  EXPECT_TRUE(gFolder::Exists(temp / u"tree"));
  EXPECT_TRUE(gFolder::IsEmpty(temp / u"tree"));

  MakeTree(temp, u"tree");
  gFolder::Delete(temp / u"tree");
  EXPECT_FALSE(gFolder::Exists(temp / u"tree"));
  EXPECT_NO_THROW(gFolder::Delete(temp / u"tree"));
  EXPECT_NO_THROW(gFolder::Empty(temp / u"tree"));
  EXPECT_NO_THROW(gFolder::DeleteEmpty(temp / u"tree"));

  gFile::Save(temp / u"file", u"");
  EXPECT_FALSE(gFolder::Exists(temp / u"file"));
  EXPECT_NO_THROW(gFolder::Force(temp / u"file/sub"));  // failures go unreported
  EXPECT_FALSE(gFolder::Exists(temp / u"file/sub"));
}

// An empty name must not become the bare delimiter, which names the root.
TEST(UtilsFolderTest, AnEmptyNameIsAMissingFolder) {
  TTempFolder temp;
  gFile::Save(temp / u"keep.txt", u"x");
  // Asserted first: where this fails, Empty("") would go on to empty the root.
  ASSERT_TRUE(gFolder::IsEmpty(u""));
  EXPECT_FALSE(gFolder::Exists(u""));
  EXPECT_NO_THROW(gFolder::Empty(u""));
  EXPECT_NO_THROW(gFolder::DeleteEmpty(u""));
  EXPECT_NO_THROW(gFolder::Delete(u""));
  EXPECT_TRUE(gFile::Exists(temp / u"keep.txt"));
  EXPECT_EQ(gFolder::GetUniqueName(u"", u"New"), u"New");  // relative, not at the root
}

// The system would end such a name at the NUL and act on "tree".
TEST(UtilsFolderTest, NamesWithANulTouchNothing) {
  TTempFolder temp;
  MakeTree(temp, u"tree");
  const UnicodeString name = temp / u"tree\0/x"s;
  const uint32_t code = Rtl::Files::Testing::InvalidName();

  EXPECT_FALSE(gFolder::Exists(name));
  EXPECT_TRUE(gFolder::IsEmpty(name));
  gFolder::Empty(name);
  gFolder::DeleteEmpty(name);
  gFolder::Delete(name);
  gFolder::Force(temp / u"new\0/x"s);
  EXPECT_EQ(gFolder::MakeUnique(temp.Path(), u"ma\0de"s), temp / u"ma\0de"s);
  EXPECT_RAISES(EFolderException, gFolder::Rename(name, temp / u"other"),
                Format(u"Cannot rename folder %s to %s; error: %d", name, temp / u"other", code));
  EXPECT_RAISES(EFolderException, gFolder::SetAttributes(name, Rtl::Files::faReadOnly),
                Format(u"Cannot set attributes for the folder %s; error: %d", name, code));

  EXPECT_TRUE(gFile::Exists(temp / u"tree/x/y/c.txt"));
  EXPECT_FALSE(gFolder::Exists(temp / u"new"));
  EXPECT_FALSE(gFolder::Exists(temp / u"ma"));
  EXPECT_FALSE(gFolder::Exists(temp / u"other"));
}

TEST(UtilsFolderTest, UniqueNamesCountAndFailuresNameTheFolderAndCode) {
  TTempFolder temp;
  EXPECT_EQ(gFolder::MakeUnique(temp.Path(), u"New"), temp / u"New");
  EXPECT_EQ(gFolder::GetUniqueName(temp.Path() + Rtl::Files::PathDelim(), u"New"), temp / u"New2");
  EXPECT_EQ(gFolder::MakeUnique(temp.Path(), u"New"), temp / u"New2");
  EXPECT_EQ(gFolder::MakeUnique(temp.Path(), u"New"), temp / u"New3");
  gFile::Save(temp / u"Note", u"");  // only folders are in the way
  EXPECT_EQ(gFolder::GetUniqueName(temp.Path(), u"Note"), temp / u"Note");

  const UnicodeString from = temp / u"from";
  const UnicodeString to = temp / u"to";
  gFolder::Force(from);
  gFolder::Rename(from, to);
  EXPECT_TRUE(gFolder::Exists(to));
  gFolder::SetAttributes(to, Rtl::Files::faDirectory);
  EXPECT_RAISES(EFolderException, gFolder::Rename(from, to),
                Format(u"Cannot rename folder %s to %s; error: %d", from, to, kNotFound));
  EXPECT_RAISES(EFolderException, gFolder::SetAttributes(from, 0),
                Format(u"Cannot set attributes for the folder %s; error: %d", from, kNotFound));
}

TEST(UtilsFolderTest, DeleteRemovesLinksWithoutFollowingThem) {
  TTempFolder temp;
  gFolder::Force(temp / u"outside");
  gFile::Save(temp / u"outside/keep.txt", u"x");
  gFile::Save(temp / u"target.txt", u"x");
  gFolder::Force(temp / u"tree");
  try {
    std::filesystem::create_directory_symlink(std::filesystem::path(temp / u"outside"),
                                              std::filesystem::path(temp / u"tree/dir"));
    std::filesystem::create_symlink(std::filesystem::path(temp / u"target.txt"),
                                    std::filesystem::path(temp / u"tree/file"));
    std::filesystem::create_symlink(std::filesystem::path(temp / u"missing"),
                                    std::filesystem::path(temp / u"tree/dangling"));
    for (const char16_t* link : {u"link", u"slashed"}) {
      std::filesystem::create_directory_symlink(std::filesystem::path(temp / u"outside"),
                                                std::filesystem::path(temp / link));
    }
  } catch (const std::filesystem::filesystem_error&) {
    GTEST_SKIP() << "symbolic links cannot be made here";
  }
  gFile::SetAttributes(temp / u"target.txt", Rtl::Files::faReadOnly);
  gFolder::Delete(temp / u"tree");
  EXPECT_FALSE(gFolder::Exists(temp / u"tree"));
  EXPECT_TRUE(gFile::Exists(temp / u"outside/keep.txt"));
  EXPECT_EQ(Rtl::Files::FileGetAttr(temp / u"target.txt") & Rtl::Files::faReadOnly, Rtl::Files::faReadOnly);

  // A link named itself goes the same way, trailing delimiter or not.
  for (const UnicodeString& link : {temp / u"link", temp / u"slashed/"}) {
    SCOPED_TRACE(Rtl::Strings::Utf16ToUtf8(link));
    gFolder::Delete(link);
    EXPECT_EQ(Rtl::Files::FileGetAttr(link), Rtl::Files::faInvalid);
    EXPECT_TRUE(gFile::Exists(temp / u"outside/keep.txt"));
  }
}

// Linux only: folders stay on their file system, as on their volume on
// Windows.
TEST(UtilsFolderTest, RenameKeepsFoldersOnTheirFileSystem) {
  const std::filesystem::path other = Rtl::Files::Testing::OtherFileSystem();
  if (other.empty()) GTEST_SKIP() << "no second file system here";
  TTempFolder temp;
  TTempFolder away(other);
  MakeTree(temp, u"tree");
  const UnicodeString from = temp / u"tree";
  const UnicodeString to = away / u"tree";
  EXPECT_RAISES(EFolderException, gFolder::Rename(from, to),
                Format(u"Cannot rename folder %s to %s; error: %d", from, to, 18));  // EXDEV
  EXPECT_TRUE(gFile::Exists(temp / u"tree/x/y/c.txt"));
  EXPECT_FALSE(gFolder::Exists(to));
}

// Linux only: there names are bytes, which need not be UTF-8; Windows
// names are UTF-16 already.
TEST(UtilsFolderTest, NamesThatAreNotUtf8RoundTrip) {
  if (OnWindows()) GTEST_SKIP() << "names are UTF-16 here";
  TTempFolder temp;
  const std::filesystem::path tree = std::filesystem::path(temp.Path()) / "tree";
  std::filesystem::create_directories(tree / "sub\xFF");
  for (const char* name : {"latin1-\xE9.txt", "sub\xFF/cut-\xE2\x82"}) std::ofstream(tree / name) << "x";

  const UnicodeString latin1 = temp / u"tree/latin1-\xDCE9.txt";
  EXPECT_TRUE(gFile::Exists(latin1));
  EXPECT_TRUE(gFolder::Exists(temp / u"tree/sub\xDCFF"));
  gFile::Rename(latin1, temp / u"tree/back-\xDCE9");
  EXPECT_TRUE(std::filesystem::exists(tree / "back-\xE9"));

  gFolder::Delete(temp / u"tree");
  EXPECT_FALSE(std::filesystem::exists(tree));
  // A surrogate that stands for no byte names nothing, not a look-alike.
  std::ofstream(std::filesystem::path(temp.Path()) / "\xEF\xBF\xBD") << "x";
  EXPECT_FALSE(gFile::Exists(temp / UnicodeString(1, char16_t{0xD800})));
  gFile::Delete(temp / UnicodeString(1, char16_t{0xD800}));
  EXPECT_TRUE(gFile::Exists(temp / u"\uFFFD"));
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
  const auto expected = [&folder] {  // with the code a second attempt gets
    EXPECT_FALSE(Platform::RemoveDirectory(folder));
    return Format(u"Folder cannot not be deleted: %s; error code: %d", folder, Platform::LastError());
  };
  EXPECT_RAISES(EFolderException, gFolder::Delete(folder), expected());
  Rtl::Files::FindClose(search);
  EXPECT_TRUE(gFolder::IsEmpty(temp / u"tree"));

  if (!OnWindows()) return;  // only there can a file refuse its owner
  MakeTree(temp, u"tree");
  const Platform::FileHandle lock = Platform::FileOpen(temp / u"tree/x/b.txt", Platform::fmOpenRead);
  EXPECT_THROW(gFolder::Delete(temp / u"tree"), Files::EFileException);  // the first failure ends it
  Platform::FileClose(lock);
  EXPECT_TRUE(gFile::Exists(temp / u"tree/x/b.txt"));
}

}  // namespace
}  // namespace Quorvex::Utils::Folder
