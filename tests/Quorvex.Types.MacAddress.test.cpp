#include <gtest/gtest.h>

#include <utility>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Types.MacAddress.hpp"

namespace Quorvex::Types::MacAddress {
namespace {

using Rtl::Strings::Utf16ToUtf8;

TEST(TypesMacAddressTest, FromStringSplitsAtTheThirdCharacter) {
  const TMacAddress expected(0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E);
  const std::pair<UnicodeStringView, TMacAddress> cases[] = {
      {u"00:1a:2b:3c:4d:5e", expected},
      {u"00-1A-2B-3C-4D-5E", expected},
      {u"0a 0b 0c 0d 0e 0f", TMacAddress(10, 11, 12, 13, 14, 15)},
      {u"00:1:002b:3c:4d:5e", TMacAddress(0, 1, 0x2B, 0x3C, 0x4D, 0x5E)},
      // Too short, or a piece count other than six: all zeros.
      {u"ab", TMacAddress()},
      {u"00:1a:2b:3c:4d", TMacAddress()},
      {u"001a2b3c4d5e", TMacAddress()},
  };
  for (const auto& [text, mac] : cases) EXPECT_EQ(TMacAddress(text), mac) << Utf16ToUtf8(text);
  TMacAddress mac = TMacAddress::FromString(u"00:1a:2b:3c:4d:5e");
  EXPECT_EQ(mac.ToString(u":"), u"00:1A:2B:3C:4D:5E");
  EXPECT_EQ(mac.C(), 0x2B);
  mac.E() = 0x55;
  EXPECT_EQ(mac.Groups[4], 0x55);
  EXPECT_NE(mac, expected);
}

TEST(TypesMacAddressTest, FromStringRaisesForBadPiecesAndIsCorrectAcceptsDotsOnly) {
  using Rtl::Exceptions::EConvertError;
  EXPECT_RAISES(EConvertError, TMacAddress::FromString(u"00:1g:2b:3c:4d:5e"), u"'$1g' is not a valid integer value");
  EXPECT_RAISES(EConvertError, TMacAddress::FromString(u"00::2b:3c:4d:5e"), u"'$' is not a valid integer value");
  EXPECT_RAISES(Rtl::Exceptions::ERangeError, TMacAddress::FromString(u"00:100:2b:3c:4d:5e"), u"Range check error");

  const UnicodeStringView correct[] = {u"00.1A.2B.3C.4D.5E", u"00.1A..2B.3C.4D.5E", u"ff.ff.ff.ff.ff.ff"};
  const UnicodeStringView wrong[] = {u"00-1A-2B-3C-4D-5E",  u"00:1A:2B:3C:4D:5E", u"00.1A.2B.3C.4D",
                                     u"00.1A.2B.3C.4D.100", u"00.1A.2B.3C.4D.xx", u""};
  for (UnicodeStringView text : correct) EXPECT_TRUE(TMacAddress::IsCorrect(text)) << Utf16ToUtf8(text);
  for (UnicodeStringView text : wrong) EXPECT_FALSE(TMacAddress::IsCorrect(text)) << Utf16ToUtf8(text);
}

}  // namespace
}  // namespace Quorvex::Types::MacAddress
