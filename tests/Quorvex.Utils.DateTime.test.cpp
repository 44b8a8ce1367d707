#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Utils.DateTime.hpp"

namespace Quorvex::Utils::DateTime {
namespace {

using Rtl::Exceptions::EIntOverflow;
using Rtl::Exceptions::ERangeError;

constexpr int64_t kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute, kDay = 24 * kHour;
constexpr int64_t kYear = 31557600000, kMonth = kYear / 12;

TEST(UtilsDateTimeTest, DurationsSplitDownFromTheMaxDegree) {
  // Year, Month, DayOfWeek, Day, Hour, Minute, Second, Milliseconds.
  const std::pair<TBigTime, TBigTime> cases[] = {
      {gTime::MsecsToBigTime(kDay + kHour + kMinute + kSecond + 1, ddHour), {0, 0, 0, 0, 25, 1, 1, 1}},
      {gTime::MsecsToBigTime(kYear + kMonth + kDay + 7, ddYear), {1, 1, 0, 1, 0, 0, 0, 7}},
      {gTime::MsecsToBigTime(31 * kDay, ddYear), {0, 1, 0, 0, 13, 30, 0, 0}},  // a month is 30.4375 days
      {gTime::MsecsToBigTime(-(kMinute + 5 * kSecond), ddMin), {0, 0, 0, 0, 0, -1, -5, 0}},
      // Just under a whole number of days near the 64-bit limit, where double division rounds up.
      {gTime::MsecsToBigTime(106751991167 * kDay - 1, ddDay), {0, 0, 0, 106751991166, 23, 59, 59, 999}},
      // Through the 16-bit fields and back; 18367008 ms is 5 h 6 m 7.008 s.
      {gTime::SystemTimeToBigTime(gTime::MsecsToSystemTime(2 * kYear + 3 * kMonth + 4 * kDay + 18367008)),
       {2, 3, 0, 4, 5, 6, 7, 8}},
  };
  for (const auto& [t, expected] : cases)
    EXPECT_EQ(t, expected) << t.Year << " " << t.Month << " " << t.Day << " " << t.Hour << " " << t.Minute << " "
                           << t.Second << " " << t.Milliseconds;
  EXPECT_EQ(gTime::MsecsToSystemTime(65535 * kYear).wYear, 65535);
}

TEST(UtilsDateTimeTest, DurationTexts) {
  const std::pair<UnicodeString, const char16_t*> cases[] = {
      {gTime::MsecsToStr(999), u"0 s"},
      {gTime::MsecsToStr(kMinute), u"1 m 0 s"},
      {gTime::MsecsToStr(2 * kDay + 5 * kSecond), u"2 d 0 h 0 m 5 s"},
      // The full split wraps days at a month and drops months and years.
      {gTime::MsecsToStr(40 * kDay), u"9 d 13 h 30 m 0 s"},
      {gTime::MsecsToStr(40 * kDay, ddDay), u"40 d 0 h 0 m 0 s"},
      {gTime::SecsToStr(3725), u"1 h 2 m 5 s"},
      {gTime::SecsToStr(3725, ddMin), u"62 m 5 s"},
      {gTime::SystemTimeToStr({9, 9, 9, 1, 0, 0, 65535, 9}), u"1 d 0 h 0 m 65535 s"},
  };
  for (const auto& [actual, expected] : cases) EXPECT_EQ(actual, expected);
}

TEST(UtilsDateTimeTest, PartsOutOfRangeAndOverflowRaiseAndTheBiasIsTheNegatedOffset) {
  EXPECT_RAISES(ERangeError, gTime::MsecsToStr(-1), u"Range check error");
  EXPECT_RAISES(ERangeError, gTime::MsecsToStr(65536 * kYear), u"Range check error");
  const int64_t seconds = std::numeric_limits<int64_t>::max() / 1000 + 1;
  EXPECT_RAISES(EIntOverflow, gTime::SecsToStr(seconds), u"Integer overflow");
  EXPECT_RAISES(EIntOverflow, gTime::SecsToStr(-seconds, ddDay), u"Integer overflow");

  Rtl::DateTime::TTimeZoneOverride zone(-300);
  EXPECT_EQ(gTime::GetTimeZoneBias(), 300);
}

}  // namespace
}  // namespace Quorvex::Utils::DateTime
