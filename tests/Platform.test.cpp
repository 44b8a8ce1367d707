// What the unit tests cannot see through the runtime: attribute mapping,
// seeking and the system's texts.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <tuple>

#include "Quorvex.Platform.Collation.hpp"
#include "Quorvex.Platform.Unicode.hpp"
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

TEST(PlatformTest, ExclusiveCreationLeavesWhatStandsThereAlone) {
  Rtl::Files::Testing::TTempFolder temp;
  const Path taken = temp / u"taken.txt";
  Rtl::Files::WriteFileBytes(taken, "kept");
  const uint32_t exists = Rtl::Files::Testing::OnWindows() ? 80 : 17;  // ERROR_FILE_EXISTS, EEXIST
  for (const Path& name : {taken, temp.Path()}) {
    SCOPED_TRACE(Rtl::Strings::Utf16ToUtf8(name));
    EXPECT_EQ(FileCreateNew(name), InvalidFile);
    EXPECT_EQ(LastError(), exists);
  }
  EXPECT_EQ(Rtl::Files::ReadFileBytes(taken), "kept");

  const FileHandle file = FileCreateNew(temp / u"new.txt");
  ASSERT_NE(file, InvalidFile);
  EXPECT_EQ(FileWrite(file, "new", 3), 3);
  EXPECT_TRUE(FileFlush(file));
  FileClose(file);
  EXPECT_TRUE(ReplaceFile(temp / u"new.txt", taken));
  EXPECT_EQ(Rtl::Files::ReadFileBytes(taken), "new");
  EXPECT_FALSE(FileExists(temp / u"new.txt"));
}

TEST(PlatformTest, NamesRoundTripEveryByteAndTextIsRepaired) {
  // Bytes outside valid UTF-8 travel as U+DC80 to U+DCFF in names.
  const std::tuple<std::string, std::u16string> cases[] = {
      {"plain.txt", u"plain.txt"},
      {"caf\xC3\xA9 \xF0\x9F\x98\x80", u"caf\u00E9 \U0001F600"},
      {"a\xFF!", u"a\xDCFF!"},
      {"\xE2\x82", u"\xDCE2\xDC82"},                      // cut short
      {"\xC0\xAF", u"\xDCC0\xDCAF"},                      // overlong slash
      {"\xED\xB2\x80", u"\xDCED\xDCB2\xDC80"},            // an encoded surrogate
      {"\xF4\x90\x80\x80", u"\xDCF4\xDC90\xDC80\xDC80"},  // beyond U+10FFFF
      {"\x80\xC3\xA9", u"\xDC80\u00E9"},                  // resumes after a stray byte
  };
  for (const auto& [bytes, name] : cases) {
    SCOPED_TRACE(bytes);
    EXPECT_EQ(NameToUtf16(bytes), name);
    std::string back;
    ASSERT_TRUE(NameToUtf8(name, back));
    EXPECT_EQ(back, bytes);
  }
  // A surrogate that stands for no byte gives no name; text repairs it.
  for (const std::u16string& name : {std::u16string{u'a', 0xD800}, std::u16string{0xDC7F}, std::u16string{0xDFFF}}) {
    std::string back;
    EXPECT_FALSE(NameToUtf8(name, back));
  }
  EXPECT_EQ(Utf8ToUtf16("a\xFF"), u"a\uFFFD");
  EXPECT_EQ(Utf16ToUtf8(u"a\xDCFF"), "a\xEF\xBF\xBD");
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
