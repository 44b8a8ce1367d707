#include "Quorvex.Utils.DateTime.hpp"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Utils::DateTime {
namespace {

using testing::StrEq;
using testing::ThrowsMessage;

constexpr int64_t kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute, kDay = 24 * kHour;
constexpr int64_t kYear = 31557600000, kMonth = kYear / 12;

TEST(UtilsDateTimeTest, MsecsToBigTimeSplitsDownFromTheMaxDegree) {
  struct Case {
    int64_t msec;
    TDateDegree degree;
    TBigTime expected;  // Year, Month, DayOfWeek, Day, Hour, Minute, Second, Milliseconds
  };
  const int64_t oneOfEach = kDay + kHour + kMinute + kSecond + 1;  // 90061001
  const Case cases[] = {
      {0, ddYear, {}},
      {oneOfEach, ddDay, {0, 0, 0, 1, 1, 1, 1, 1}},
      {oneOfEach, ddHour, {0, 0, 0, 0, 25, 1, 1, 1}},
      {oneOfEach, ddMSec, {0, 0, 0, 0, 0, 0, 0, 90061001}},
      {kYear + kMonth + kDay + 7, ddYear, {1, 1, 0, 1, 0, 0, 0, 7}},
      {31 * kDay, ddYear, {0, 1, 0, 0, 13, 30, 0, 0}},  // a month is 30.4375 days
      {-(kMinute + 5 * kSecond), ddMin, {0, 0, 0, 0, 0, -1, -5, 0}},
      {std::numeric_limits<int64_t>::max(), ddDay, {0, 0, 0, 106751991167, 7, 12, 55, 807}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.msec << " degree " << c.degree);
    const TBigTime t = gTime::MsecsToBigTime(c.msec, c.degree);
    EXPECT_EQ(t, c.expected) << t.Year << " " << t.Month << " " << t.Day << " " << t.Hour << " " << t.Minute << " "
                             << t.Second << " " << t.Milliseconds;
  }
}

TEST(UtilsDateTimeTest, DurationTexts) {
  const std::pair<UnicodeString, const char16_t*> cases[] = {
      {gTime::MsecsToStr(0), u"0 s"},
      {gTime::MsecsToStr(999), u"0 s"},
      {gTime::MsecsToStr(kMinute), u"1 m 0 s"},
      {gTime::MsecsToStr(3725000), u"1 h 2 m 5 s"},
      {gTime::MsecsToStr(2 * kDay + 5 * kSecond), u"2 d 0 h 0 m 5 s"},
      // The full split wraps days at a month and drops months and years.
      {gTime::MsecsToStr(40 * kDay), u"9 d 13 h 30 m 0 s"},
      {gTime::MsecsToStr(40 * kDay, ddDay), u"40 d 0 h 0 m 0 s"},
      {gTime::SecsToStr(3725), u"1 h 2 m 5 s"},
      {gTime::SecsToStr(3725, ddMin), u"62 m 5 s"},
      {gTime::SystemTimeToStr({9, 9, 9, 1, 0, 0, 65535, 9}), u"1 d 0 h 0 m 65535 s"},
  };
  for (const auto& [actual, expected] : cases)
    EXPECT_EQ(actual, expected);

  const SYSTEMTIME st = gTime::MsecsToSystemTime(2 * kYear + 3 * kMonth + 4 * kDay + 5 * kHour + 6 * kMinute + 7008);
  EXPECT_EQ(gTime::SystemTimeToBigTime(st), (TBigTime{2, 3, 0, 4, 5, 6, 7, 8}));
  EXPECT_EQ(gTime::MsecsToSystemTime(65535 * kYear).wYear, 65535);
}

TEST(UtilsDateTimeTest, PartsOutOfRangeAndOverflowRaise) {
  for (int64_t msec : {int64_t{-1}, 65536 * kYear, std::numeric_limits<int64_t>::max()}) {
    SCOPED_TRACE(msec);
    EXPECT_THAT([&] { gTime::MsecsToStr(msec); },
                ThrowsMessage<Rtl::Exceptions::ERangeError>(StrEq("Range check error")));
  }
  const int64_t seconds = std::numeric_limits<int64_t>::max() / 1000 + 1;
  EXPECT_THAT([&] { gTime::SecsToStr(seconds); },
              ThrowsMessage<Rtl::Exceptions::EIntOverflow>(StrEq("Integer overflow")));
  EXPECT_THAT([&] { gTime::SecsToStr(-seconds, ddDay); },
              ThrowsMessage<Rtl::Exceptions::EIntOverflow>(StrEq("Integer overflow")));
}

TEST(UtilsDateTimeTest, TimeZoneBiasIsTheNegatedOffset) {
  for (int32_t offset : {120, -300, 330, 0}) {
    Rtl::DateTime::TTimeZoneOverride zone(offset);
    EXPECT_EQ(gTime::GetTimeZoneBias(), -offset) << offset;
  }
}

}  // namespace
}  // namespace Quorvex::Utils::DateTime
