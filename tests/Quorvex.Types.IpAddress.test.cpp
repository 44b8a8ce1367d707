#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <utility>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Types.IpAddress.hpp"

namespace Quorvex::Types::IpAddress {
namespace {

using Rtl::Strings::Utf16ToUtf8;

TEST(TypesIpAddressTest, TextAndWordForms) {
  const std::pair<UnicodeStringView, TIpAddress> cases[] = {
      {u"192.168.0.1", TIpAddress(192, 168, 0, 1)},
      // Rejected text cannot be told from the broadcast address.
      {u"not an address", TIpAddress(255, 255, 255, 255)},
      {u"1.2.3.256", TIpAddress(255, 255, 255, 255)},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(TIpAddress(text), expected) << Utf16ToUtf8(text);
  const TIpAddress address(192, 168, 0, 1);
  EXPECT_EQ(address.ToString(), u"192.168.0.1");
  EXPECT_EQ(address.RangeSize(), 3232235521u);
  // The word keeps the network-order memory layout in both directions.
  const uint32_t word = address.Word();
  EXPECT_EQ(std::memcmp(&word, address.Bytes.data(), sizeof word), 0);
  EXPECT_EQ(TIpAddress(word), address);
}

TEST(TypesIpAddressTest, OrderingDistanceIncrementAndIsCorrect) {
  const TIpAddress low(10, 0, 0, 2), high(10, 0, 0, 5), wide(9, 255, 255, 255);
  // Compared as numbers, not as stored words (which would put 9.255.255.255
  // above 10.0.0.2 on a little-endian machine).
  EXPECT_TRUE(wide < low && low < high && high > low && low <= low && low >= low && !(low > low));
  EXPECT_NE(low, high);
  EXPECT_EQ(low - high, -3);
  EXPECT_EQ(TIpAddress(255, 255, 255, 255) - TIpAddress(0, 0, 0, 0), 4294967295LL);
  const std::pair<TIpAddress, TIpAddress> steps[] = {
      {TIpAddress(10, 0, 0, 255), TIpAddress(10, 0, 1, 0)},
      {TIpAddress(10, 255, 255, 255), TIpAddress(11, 0, 0, 0)},
      {TIpAddress(255, 255, 255, 255), TIpAddress(0, 0, 0, 0)},
  };
  for (auto [from, to] : steps) EXPECT_EQ(++from, to) << Utf16ToUtf8(to.ToString());

  const UnicodeStringView correct[] = {u"10.0.0.1", u"10..0.0.1", u".10.0.0.1.", u"00.0.0.0"};
  const UnicodeStringView wrong[] = {u"10.0.0",     u"10.0.0.256", u"0.0.0.0",   u"255.255.255.255",
                                     u"10.0.0.1.2", u"10.0.x.1",   u"10.0.-1.1", u""};
  for (UnicodeStringView text : correct) EXPECT_TRUE(gIpAddress::IsCorrect(text)) << Utf16ToUtf8(text);
  for (UnicodeStringView text : wrong) EXPECT_FALSE(gIpAddress::IsCorrect(text)) << Utf16ToUtf8(text);
}

TEST(TypesIpAddressTest, Classes) {
  const std::tuple<TIpAddress, TIpAddressClass, UnicodeStringView, UnicodeStringView> cases[] = {
      {TIpAddress(127, 255, 255, 255), icA, u"A", u"255.0.0.0"},
      {TIpAddress(172, 16, 0, 1), icB, u"B", u"255.255.0.0"},
      {TIpAddress(192, 0, 0, 0), icC, u"C", u"255.255.255.0"},
      {TIpAddress(239, 255, 255, 255), icD, u"D", u"255.255.255.0"},
      {TIpAddress(255, 255, 255, 255), icE, u"E", u"255.255.255.0"},
  };
  for (const auto& [address, cls, name, mask] : cases) {
    SCOPED_TRACE(Utf16ToUtf8(address.ToString()));
    EXPECT_EQ(gIpAddress::GetClass(address), cls);
    EXPECT_EQ(gIpAddress::ClassToString(cls), name);
    EXPECT_EQ(gIpAddress::GetClassMask(cls).ToString(), mask);
  }
  EXPECT_EQ(gIpAddress::ClassToString(icIncorrect), u"Incorrect");
  EXPECT_EQ(gIpAddress::GetClassMask(icIncorrect), TIpAddress(255, 0, 0, 0));
  EXPECT_RAISES(Rtl::Exceptions::ERangeError, gIpAddress::ClassToString(static_cast<TIpAddressClass>(6)),
                u"Range check error");
}

}  // namespace
}  // namespace Quorvex::Types::IpAddress
