#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl {
namespace {

TEST(RtlCheckedTest, OverflowAndRangeRaise) {
  EXPECT_EQ(Checked::Add<int32_t>(2147483646, 1), 2147483647);
  EXPECT_THROW(Checked::Add<int32_t>(2147483647, 1), Exceptions::EIntOverflow);
  EXPECT_THROW(Checked::Sub<int64_t>(INT64_MIN, 1), Exceptions::EIntOverflow);
  EXPECT_THROW(Checked::Mul<uint16_t>(256, 256), Exceptions::EIntOverflow);
  EXPECT_THROW(Checked::Sub<uint32_t>(0, 1), Exceptions::EIntOverflow);
  EXPECT_RAISES(Exceptions::EIntOverflow, Checked::Mul<int64_t>(INT64_MAX, 2), u"Integer overflow");
  EXPECT_EQ(Checked::Narrow<uint8_t>(255), 255);
  EXPECT_THROW(Checked::Narrow<uint8_t>(256), Exceptions::ERangeError);
  EXPECT_THROW(Checked::Narrow<uint16_t>(-1), Exceptions::ERangeError);
  const std::u16string s = u"ab";
  EXPECT_EQ(Checked::CharAt(s, 2), u'b');
  EXPECT_THROW(Checked::CharAt(s, 0), Exceptions::ERangeError);
  EXPECT_RAISES(Exceptions::ERangeError, Checked::CharAt(std::u16string(), 1), u"Range check error");
}

}  // namespace
}  // namespace Quorvex::Rtl
