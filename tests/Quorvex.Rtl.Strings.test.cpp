#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <tuple>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Strings.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::Strings {
namespace {

using Exceptions::EConvertError;

TEST(RtlStringsTest, Utf8RepairTrimCaseAndSearch) {
  const std::string text = "A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80";  // A, e-acute, euro, emoji
  const UnicodeString wide = Utf8ToUtf16(text);
  EXPECT_EQ(wide, (UnicodeString{u'A', 0xE9, 0x20AC, 0xD83D, 0xDE00}));
  EXPECT_EQ(Utf16ToUtf8(wide), text);
  EXPECT_EQ(Utf8ToUtf16("a\xFF!"), u"a\uFFFD!");
  EXPECT_EQ(Utf8ToUtf16("\xE2\x82"), u"\uFFFD\uFFFD");                   // truncated sequence
  EXPECT_EQ(Utf8ToUtf16("\xC0\xAF"), u"\uFFFD\uFFFD");                   // overlong slash
  EXPECT_EQ(Utf16ToUtf8(UnicodeString{0xD800, u'x'}), "\xEF\xBF\xBDx");  // lone surrogate

  EXPECT_EQ(Trim(u" \t\r\n a b \x01"), u"a b");
  EXPECT_EQ(TrimLeft(u"  a "), u"a ");
  EXPECT_EQ(TrimRight(u"  a "), u"  a");
  EXPECT_EQ(Trim(u"\u00A0a\u00A0"), u"\u00A0a\u00A0");  // only codes <= 32 are trimmed
  EXPECT_EQ(UpperCase(u"abz\u00E9"), u"ABZ\u00E9");     // ASCII letters only
  EXPECT_EQ(LowerCase(u"ABZ\u00C9"), u"abz\u00C9");
  EXPECT_TRUE(SameText(u"Hello", u"hELLO"));
  EXPECT_FALSE(SameText(u"Hello", u"Hell"));
  EXPECT_LT(CompareText(u"abc", u"ABD"), 0);
  EXPECT_EQ(Pos(u"b", u"abcb"), 2);
  EXPECT_EQ(Pos(u"b", u"abcb", 3), 4);
  EXPECT_EQ(Pos(u"", u"abc"), 0);
  EXPECT_EQ(Pos(u"x", u"abc"), 0);
  EXPECT_EQ(ReplaceAll(u"aaa", u"aa", u"b"), u"ba");
}

TEST(RtlStringsTest, IntegerConversions) {
  const std::tuple<const char16_t*, bool, int32_t> cases[] = {
      {u"0", true, 0},    {u"42 ", false, 0},   {u"$FFFFFFFF", true, -1},
      {u"", false, 0},    {u"-17", true, -17},  {u"2147483648", false, 0},
      {u"+5", true, 5},   {u"  42", true, 42},  {u"$1FFFFFFFF", false, 0},
      {u"$", false, 0},   {u"$FF", true, 255},  {u"2147483647", true, 2147483647},
      {u"-", false, 0},   {u"0x1f", true, 31},  {u"-2147483648", true, std::numeric_limits<int32_t>::min()},
      {u"12a", false, 0}, {u"-$10", true, -16},
  };
  for (const auto& [text, ok, expected] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    int32_t value = 99;
    EXPECT_EQ(TryStrToInt(text, value), ok);
    if (ok) {
      EXPECT_EQ(value, expected);
    }
    EXPECT_EQ(StrToIntDef(text, -99), ok ? expected : -99);
  }
  int64_t big = 0;
  EXPECT_TRUE(TryStrToInt64(u"-9223372036854775808", big));
  EXPECT_EQ(big, std::numeric_limits<int64_t>::min());
  EXPECT_FALSE(TryStrToInt64(u"9223372036854775808", big));
  EXPECT_EQ(IntToStr(std::numeric_limits<int64_t>::min()), u"-9223372036854775808");
  EXPECT_EQ(IntToHex(255, 4), u"00FF");
  EXPECT_EQ(IntToHex(0), u"0");
  EXPECT_RAISES(EConvertError, StrToInt(u"1x"), u"'1x' is not a valid integer value");
}

TEST(RtlStringsTest, FormatDirectives) {
  EXPECT_EQ(Format(u"%.2d:%.2d", 5, 30), u"05:30");
  EXPECT_EQ(Format(u"%.2d", -5), u"-05");
  EXPECT_EQ(Format(u"%x %X %.4x", 255, 171, 10), u"FF AB 000A");
  EXPECT_EQ(Format(u"%x", -1), u"FFFFFFFF");
  EXPECT_EQ(Format(u"%x", int64_t{-1}), u"FFFFFFFFFFFFFFFF");
  EXPECT_EQ(Format(u"100%%"), u"100%");
  EXPECT_EQ(Format(u"[%5s|%-5s]", u"ab", u"cd"), u"[   ab|cd   ]");
  EXPECT_EQ(Format(u"%1:s %0:s", u"a", u"b"), u"b a");
  EXPECT_EQ(Format(u"%u", uint32_t{4000000000u}), u"4000000000");
  EXPECT_EQ(Format(u"%d", uint64_t{18446744073709551615u}), u"18446744073709551615");
  EXPECT_EQ(Format(u"%s", u'c'), u"c");
  EXPECT_EQ(Format(u"%.3s", u"abcdef"), u"abc");

  EXPECT_RAISES(EConvertError, Format(u"%d", u"text"), u"Format '%d' invalid or incompatible with argument");
  EXPECT_RAISES(EConvertError, Format(u"%s", 5), u"Format '%s' invalid or incompatible with argument");
  EXPECT_RAISES(EConvertError, Format(u"%q", 1), u"Format '%q' invalid or incompatible with argument");
  EXPECT_RAISES(EConvertError, Format(u"%d %d", 1), u"Format '%d %d' invalid or incompatible with argument");
}

TEST(RtlStringsTest, FormatFloatPictures) {
  const TFormatSettings dot{u'.', u','};
  const TFormatSettings comma{u',', u'.'};
  // Halves round away from zero, decided on 18 digits rather than binary
  // noise, and a value that rounds to zero shows no sign.
  const std::tuple<const char16_t*, long double, const char16_t*> cases[] = {
      {u"0.##", 1.0L, u"1"},    {u"0.00", 1.5L, u"1.50"},       {u"0.## 'x#0'", 2.0L, u"2 x#0"},
      {u"000", 7.0L, u"007"},   {u"0.##", 0.125L, u"0.13"},     {u"0.#", 1050.0L / 1000.0L, u"1.1"},
      {u"#.##", 0.5L, u".5"},   {u"0.##", 2.675L, u"2.68"},     {u"0.## bytes", -5.0L, u"-5 bytes"},
      {u"0.##", 1.5L, u"1.5"},  {u"0.##", 99.999L, u"100"},     {u"#,##0", 1234567.0L, u"1,234,567"},
      {u"0.##", 0.004L, u"0"},  {u"0.##", -0.125L, u"-0.13"},   {u"0.## KB", 1536.0L / 1024.0L, u"1.5 KB"},
      {u"0.#", 1.04999L, u"1"}, {u"0;(0);zero", -3.0L, u"(3)"}, {u"0.##", 1e20L, u"100000000000000000000"},
      {u"0.##", -0.004L, u"0"}, {u"0;(0);zero", 0.0L, u"zero"},
  };
  for (const auto& [picture, value, expected] : cases)
    EXPECT_EQ(FormatFloat(picture, value, dot), expected) << Utf16ToUtf8(picture);
  EXPECT_EQ(FormatFloat(u"0.##", 1.5L, comma), u"1,5");
}

TEST(RtlStringsTest, FloatsAsTextAndBack) {
  const TFormatSettings comma{u',', u'.'};
  struct TCase {
    long double Value;
    int Digits;
    const char16_t* Text;
  };
  const TCase cases[] = {
      {1.5L, 15, u"1,5"},       {0.0001L, 15, u"0,0001"},  {1e-5L, 15, u"1E-5"}, {1e20L, 15, u"1E20"},
      {-2.5e-7L, 15, u"-2,5E-7"}, {0.1L, 15, u"0,1"},     {1.0L / 3, 7, u"0,3333333"}, {0, 15, u"0"},
      {123456789012345678.0L, 18, u"123456789012345678"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(Utf16ToUtf8(c.Text));
    EXPECT_EQ(FloatToStr(c.Value, c.Digits, comma), c.Text);
    long double back = 0;
    ASSERT_TRUE(TryStrToFloat(c.Text, back, comma));
    EXPECT_EQ(FloatToStr(back, c.Digits, comma), c.Text);
  }
  EXPECT_EQ(FloatToStr(std::numeric_limits<double>::infinity()), u"INF");
  long double value = 0;
  for (const char16_t* bad : {u"", u"1.5", u"0x10", u"1,5,5", u"+", u"INFINITY", u"1e99999", u"１"}) {
    SCOPED_TRACE(Utf16ToUtf8(bad));
    EXPECT_FALSE(TryStrToFloat(bad, value, comma));
  }
  EXPECT_TRUE(TryStrToFloat(u" nan ", value, comma));
}

}  // namespace
}  // namespace Quorvex::Rtl::Strings
