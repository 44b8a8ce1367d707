// What the unit tests cannot see through the runtime: attribute mapping,
// seeking and the system's texts.
#include <gtest/gtest.h>

#include <thread>

#include "Quorvex.Platform.Collation.hpp"
#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Files.TestSupport.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Platform {
namespace {

using Rtl::Files::Testing::kNotFound;

TEST(PlatformTest, SystemTextsAndSeparators) {
  SetLastError(kNotFound);
  const std::u16string text = ErrorMessage(kNotFound);
  EXPECT_EQ(LastError(), kNotFound);
  ASSERT_FALSE(text.empty());
  EXPECT_GT(text.back(), u' ');  // no line break...
  EXPECT_NE(text.back(), u'.');  // ...and no full stop: callers embed it
  EXPECT_NE(DecimalSeparator(), ThousandSeparator());
  EXPECT_NE(ThousandSeparator(), u'\0');
}

TEST(PlatformTest, AttributesMapToWindowsBitsAndHandlesSeekFromEachOrigin) {
  Rtl::Files::Testing::TTempFolder temp;
  const Path name = temp / u"f.txt";
  Rtl::Files::WriteFileBytes(name, "");
  EXPECT_EQ(GetFileAttributes(name) & (faArchive | faDirectory | faReadOnly), faArchive);
  EXPECT_EQ(GetFileAttributes(temp.Path()) & (faArchive | faDirectory), faDirectory);
  ASSERT_TRUE(SetFileAttributes(name, faReadOnly));
  EXPECT_EQ(GetFileAttributes(name) & faReadOnly, faReadOnly);
  ASSERT_TRUE(SetFileAttributes(name, faArchive));
  EXPECT_EQ(GetFileAttributes(name) & faReadOnly, 0u);
  EXPECT_EQ(GetFileAttributes(temp / u"missing"), InvalidAttributes);

  const FileHandle file = FileCreate(temp / u"data.bin");
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
  EXPECT_EQ(FileOpen(temp / u"data.bin", 3), InvalidFile);  // no such access mode
}

#if !defined(_WIN32)
TEST(PlatformTest, CollatorsAreMadeOncePerThreadAndLocaleAndOutliveAChange) {
  const TScopedEnv all("LC_ALL", "sv_SE.UTF-8");
  const Collator swedish = UserCollator(true);
  EXPECT_EQ(UserCollator(true), swedish);
  EXPECT_NE(UserCollator(false), swedish);
  {
    const TScopedEnv german("LC_ALL", "de_DE.UTF-8");
    EXPECT_LT(Collate(UserCollator(true), u"\u00C4hre", u"Zebra"), 0);
  }
  // Still Swedish, though the thread has moved on to German and back.
  EXPECT_GT(Collate(swedish, u"\u00C4hre", u"Zebra"), 0);
  EXPECT_NE(UserCollator(true), swedish);

  Collator elsewhere;
  std::thread([&] { elsewhere = UserCollator(true); }).join();
  EXPECT_NE(elsewhere, UserCollator(true));
  std::string keys;
  AppendCollationKey(elsewhere, u"Zebra", keys);
  const size_t zebra = keys.size();
  AppendCollationKey(elsewhere, u"\u00E4HRE", keys);
  EXPECT_LT(std::string_view(keys).substr(0, zebra), std::string_view(keys).substr(zebra));
}
#endif

}  // namespace
}  // namespace Quorvex::Platform
