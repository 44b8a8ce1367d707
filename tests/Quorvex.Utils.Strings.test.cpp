#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Utils.Strings.hpp"

namespace Quorvex::Utils::Strings {
namespace {

using Rtl::Exceptions::ERangeError;
using Rtl::Strings::Utf16ToUtf8;

// The decimal separator of the user's settings, as the formatters use it.
UnicodeString Dec(UnicodeStringView text) {
  UnicodeString out(text);
  for (auto& c : out)
    if (c == u'.') c = Rtl::Strings::FormatSettings().DecimalSeparator;
  return out;
}

TEST(gStringTest, AddAndJoinKeepTheirDelimiterRules) {
  UnicodeString s;
  gString::Add(s, u"", u",");
  EXPECT_EQ(s, u"");
  gString::Add(s, u"a", u",");
  EXPECT_EQ(s, u"a");  // no delimiter in front of the first value
  gString::Add(s, u"", u",");
  EXPECT_EQ(s, u"a");
  gString::AddWithEmpties(s, u"", u",");
  EXPECT_EQ(s, u"a,");
  UnicodeString empty;
  gString::AddWithEmpties(empty, u"", u",");
  EXPECT_EQ(empty, u"");

  const std::tuple<TStringDynArray, const char16_t*, const char16_t*> cases[] = {
      {{u"", u"a", u"", u"b"}, u"a,b", u"a,,b"},
      {{u"", u"a", u""}, u"a", u"a,"},
      {{u"", u""}, u"", u""},
      {{}, u"", u""},
      {{u"x", u"y"}, u"x,y", u"x,y"}};
  for (const auto& [items, joined, withEmpties] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(withEmpties));
    EXPECT_EQ(gString::Join(items, u","), joined);
    EXPECT_EQ(gString::JoinWithEmpties(items, u","), withEmpties);
  }
}

TEST(gStringTest, SplitAndTheDeliberatelyAsymmetricKeyAndValueOf) {
  const std::tuple<const char16_t*, const char16_t*, TStringDynArray> cases[] = {
      {u"a,,b", u",", {u"a", u"", u"b"}}, {u"", u",", {u""}},
      {u"a,", u",", {u"a", u""}},         {u",", u",", {u"", u""}},
      {u"a::b", u"::", {u"a", u"b"}},     {u"a:b", u"::", {u"a:b"}},
      {u"aaa", u"aa", {u"", u"a"}}};
  for (const auto& [text, delimiter, pieces] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    EXPECT_EQ(gString::Split(text, delimiter), pieces);
  }
  EXPECT_THROW(gString::Split(u"abc", u""), Rtl::Exceptions::EArgumentException);

  EXPECT_EQ(gString::KeyOf(u"key := value", u":="), u"key");
  EXPECT_EQ(gString::ValueOf(u"key := value", u":="), u"= value");
  EXPECT_EQ(gString::KeyOf(u"novalue", u"="), u"");
  EXPECT_EQ(gString::ValueOf(u"novalue", u"="), u"");
  EXPECT_EQ(gString::ValueOf(u"a=b=c", u"="), u"b=c");
}

TEST(gStringTest, ArraysDeleteConcatAndCompare) {
  const TStringDynArray items = {u"a", u"", u"b", u"a"};
  EXPECT_EQ(gString::Delete(items, u"a"), (TStringDynArray{u"", u"b"}));
  EXPECT_EQ(gString::Delete(items, u"A"), items);  // case-sensitive
  EXPECT_EQ(gString::DeleteEmpties(items), (TStringDynArray{u"a", u"b", u"a"}));
  EXPECT_EQ(gString::Concat({{u"a"}, {}, {u"b", u"c"}}), (TStringDynArray{u"a", u"b", u"c"}));
  EXPECT_EQ(gString::Concat({}), TStringDynArray{});
  const TStringDynArray arrays[] = {{u"a"}, {u"b", u"c"}};
  EXPECT_EQ(gString::TotalLength(arrays), 3);
  EXPECT_EQ(gString::StringOf(u"ab", 3), u"ababab");
  EXPECT_EQ(gString::StringOf(u"ab", -2), u"");

  EXPECT_TRUE(gString::Eq(u"abc", u"ABC", false));
  EXPECT_FALSE(gString::Eq(u"abc", u"ABC", true));
  EXPECT_FALSE(gString::Eq(u"\u00E9", u"\u00C9", false));  // only ASCII folds
  const TStringDynArray none;
  EXPECT_FALSE(gString::Eq(none, none, true));  // two empty arrays are not equal
  EXPECT_TRUE(gString::Eq(TStringDynArray{u"a", u"B"}, TStringDynArray{u"A", u"b"}, false));
  EXPECT_FALSE(gString::Eq(TStringDynArray{u"a", u"B"}, TStringDynArray{u"A", u"b"}, true));
  EXPECT_FALSE(gString::Eq(TStringDynArray{u"a"}, TStringDynArray{u"a", u"b"}, false));
}

TEST(gStringTest, QuotingAndClipping) {
  EXPECT_TRUE(gString::IsQuoted(u"\""));
  EXPECT_TRUE(gString::IsQuoted(u"\"a\""));
  EXPECT_FALSE(gString::IsQuoted(u"\"a"));
  EXPECT_EQ(gString::Quote(u"\"a\"", false), u"\"\"a\"\"");
  EXPECT_EQ(gString::Quote(u"\"a\"", true), u"\"a\"");
  EXPECT_EQ(gString::Quote(u"a\"b", true), u"\"a\"b\"");
  EXPECT_EQ(gString::Quote(u"", false), u"\"\"");
  EXPECT_RAISES(ERangeError, gString::IsQuoted(u""), u"Range check error");
  EXPECT_RAISES(ERangeError, gString::Quote(u"", true), u"Range check error");

  const std::tuple<const char16_t*, int32_t, const char16_t*, const char16_t*> cases[] = {
      {u"abcdefghij", 5, u"...", u"a..."}, {u"abc", 5, u"...", u"abc"},  {u"abcdef", 2, u"...", u"abcdef..."},
      {u"abcde", 5, u"...", u"abcde"},     {u"abcdef", 5, u"", u"abcd"}, {u"abcdef", 4, u"...", u"..."},
  };
  for (const auto& [text, maxLength, suffix, clipped] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(text));
    EXPECT_EQ(gString::Clip(text, maxLength, suffix), clipped);
  }
  EXPECT_THROW(gString::Clip(u"abc", INT32_MIN, u"x"), Rtl::Exceptions::EIntOverflow);
}

TEST(gStringTest, SpaceCompress) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"  a   b  ", u"a b"},         {u"a\r\nb", u"a b"}, {u"a \r\n b", u"a b"},
      {u"a\rb\nc\td", u"a\rb\nc\td"},  // lone CR, LF and tabs stay
      {u"a\t  b", u"a\t b"},          {u"\r\n\r\n", u""},  {u"", u""},
  };
  for (const auto& [text, compressed] : cases) EXPECT_EQ(gString::SpaceCompress(text), compressed) << Utf16ToUtf8(text);
}

TEST(gStringTest, Hexadecimal) {
  EXPECT_EQ(gString::StringToHex(u"AB"), u"4142");
  EXPECT_EQ(gString::StringToHex(u"\n\u00FF\u0100\u20AC"), u"0AFF10020AC");
  // A top digit beyond sixteen falls off; prefixes, signs and bad digits give 0.
  const std::pair<const char16_t*, int64_t> cases[] = {
      {u"FF", 255}, {u"ffh", 255}, {u"10H", 16}, {u"FFFFFFFFFFFFFFFF", -1},
      {u"0", 0},    {u"$FF", 0},   {u"0xFF", 0}, {u"1FFFFFFFFFFFFFFFF", -1},
      {u"-1", 0},   {u"FG", 0},    {u"H", 0},    {u"7FFFFFFFFFFFFFFF", INT64_MAX}};
  for (const auto& [text, value] : cases) EXPECT_EQ(gString::HexToInt(text), value) << Utf16ToUtf8(text);
  EXPECT_THROW(gString::HexToInt(u""), ERangeError);
  EXPECT_EQ(gString::HexToInt(UnicodeString(255, u'0')), 0);
  EXPECT_EQ(gString::HexToInt(UnicodeString(255, u'0') + u"H"), 0);
  EXPECT_THROW(gString::HexToInt(UnicodeString(256, u'0')), ERangeError);
  EXPECT_EQ(gString::HexToInt(u"8000000000000000F"), 15);  // shifted out, no overflow
}

TEST(gStringTest, ListConversions) {
  const TStringDynArray items = {u"b", u"", u"a"};
  auto list = gString::ToStrings(items);
  ASSERT_EQ(list->GetCount(), 3);
  EXPECT_EQ(list->Get(2), u"a");
  EXPECT_EQ(gString::ToArray(*list), items);
  EXPECT_EQ(gString::ToArray(std::span<const UnicodeString>(items)), items);
  EXPECT_EQ(gString::ToStrings({})->GetCount(), 0);
}

// 1048575 bytes (1023.999 KB) rounds up while the unit stays; 1050 m rounds
// half away from zero on the decimal value.
TEST(gStringTest, FormattersPickTheLargestUnitReached) {
  const auto bytes = gString::FormatBytes, perSec = gString::FormatBytesPerSec, bits = gString::FormatBitsPerSec,
             meters = gString::FormatMeters;
  const std::tuple<UnicodeString (*)(int64_t), int64_t, const char16_t*> cases[] = {
      {bytes, 0, u"0 bytes"},           {bytes, 1024, u"1 KB"},           {bits, 999, u"999 b/s"},
      {bits, 1000, u"1 Kb/s"},          {meters, 999, u"999 m"},          {meters, 1000, u"1 km"},
      {bytes, 1536, u"1.5 KB"},         {bytes, -5, u"-5 bytes"},         {perSec, 512, u"512 B/s"},
      {meters, 1050, u"1.1 km"},        {meters, 1500, u"1.5 km"},        {bytes, 1023, u"1023 bytes"},
      {bytes, 1048575, u"1024 KB"},     {perSec, 3145728, u"3 MB/s"},     {bits, 1500000, u"1.5 Mb/s"},
      {meters, 123456, u"123.5 km"},    {bytes, -5000, u"-5000 bytes"},   {bytes, 1099511627776, u"1 TB"},
      {bits, 2345678901, u"2.35 Gb/s"}, {bits, 1000000000000, u"1 Tb/s"}, {bytes, INT64_MAX, u"8388608 TB"},
  };
  for (const auto& [format, value, expected] : cases) EXPECT_EQ(format(value), Dec(expected)) << value;
}

// Far beyond what floating point holds exactly: the raw count is printed as
// it is, a quotient is the exact one, rounded once. Each pair straddles a
// rounding half near 2^53, 10^16, 10^18 and the top of the range.
TEST(gStringTest, FormattersAreExactOverTheWholeRange) {
  const auto bytes = gString::FormatBytes, perSec = gString::FormatBytesPerSec, bits = gString::FormatBitsPerSec,
             meters = gString::FormatMeters;
  const std::tuple<UnicodeString (*)(int64_t), int64_t, const char16_t*> cases[] = {
      {bytes, 9007336693694463, u"8192.12 TB"},
      {bytes, 9007336693694464, u"8192.13 TB"},
      {bytes, 10000195693576191, u"9095.12 TB"},
      {bytes, 10000195693576192, u"9095.13 TB"},
      {bytes, 1000000190465179647, u"909494.87 TB"},
      {bytes, 1000000190465179648, u"909494.88 TB"},
      {bytes, 9223362278689079295, u"8388599.12 TB"},
      {bytes, 9223362278689079296, u"8388599.13 TB"},
      {bytes, INT64_MIN, u"-9223372036854775808 bytes"},
      {bytes, INT64_MAX, u"8388608 TB"},
      {perSec, 9007336693694463, u"8192.12 TB/s"},
      {perSec, 9007336693694464, u"8192.13 TB/s"},
      {perSec, 10000195693576191, u"9095.12 TB/s"},
      {perSec, 10000195693576192, u"9095.13 TB/s"},
      {perSec, 1000000190465179647, u"909494.87 TB/s"},
      {perSec, 1000000190465179648, u"909494.88 TB/s"},
      {perSec, 9223362278689079295, u"8388599.12 TB/s"},
      {perSec, 9223362278689079296, u"8388599.13 TB/s"},
      {perSec, INT64_MIN, u"-9223372036854775808 B/s"},
      {perSec, INT64_MAX, u"8388608 TB/s"},
      {bits, 9007194999999999, u"9007.19 Tb/s"},
      {bits, 9007195000000000, u"9007.2 Tb/s"},
      {bits, 10000004999999999, u"10000 Tb/s"},
      {bits, 10000005000000000, u"10000.01 Tb/s"},
      {bits, 1000000004999999999, u"1000000 Tb/s"},
      {bits, 1000000005000000000, u"1000000.01 Tb/s"},
      {bits, 9223362034999999999, u"9223362.03 Tb/s"},
      {bits, 9223362035000000000, u"9223362.04 Tb/s"},
      {bits, INT64_MIN, u"-9223372036854775808 b/s"},
      {bits, INT64_MAX, u"9223372.04 Tb/s"},
      {meters, 9007199254740949, u"9007199254740.9 km"},
      {meters, 9007199254740950, u"9007199254741 km"},
      {meters, 10000000000000049, u"10000000000000 km"},
      {meters, 10000000000000050, u"10000000000000.1 km"},
      {meters, 1000000000000000049, u"1000000000000000 km"},
      {meters, 1000000000000000050, u"1000000000000000.1 km"},
      {meters, 9223362036854775849, u"9223362036854775.8 km"},
      {meters, 9223362036854775850, u"9223362036854775.9 km"},
      {meters, INT64_MIN, u"-9223372036854775808 m"},
      {meters, INT64_MAX, u"9223372036854775.8 km"},
      {bytes, 1099511765214953471, u"1000000.12 TB"},
      {meters, 3499566157810395648, u"3499566157810395.6 km"},
      {bits, 9999999999999999, u"10000 Tb/s"},
      {bytes, INT64_MIN + 1, u"-9223372036854775807 bytes"},
  };
  for (const auto& [format, value, expected] : cases) {
    SCOPED_TRACE(value);
    EXPECT_EQ(format(value), Dec(expected));
  }
}

TEST(gStringTest, LocalsHoldTheUnitWords) {
  const Locals::TStringLocals& locals = gString::GetLocals();
  EXPECT_EQ(&locals, &gString::GetLocals());
  EXPECT_EQ(locals.Millimeters(), u"mm");  // defined, though no formatter uses it
  EXPECT_TRUE(StringsUnit.Initialized());
  // Unloaded and used again: the words come back rather than a dangling object.
  StringsUnit.Finalize();
  EXPECT_EQ(gString::FormatMeters(5), u"5 m");
  EXPECT_TRUE(StringsUnit.Initialized());
}

}  // namespace
}  // namespace Quorvex::Utils::Strings
