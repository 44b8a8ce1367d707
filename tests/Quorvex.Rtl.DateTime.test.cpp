#include "Quorvex.Rtl.DateTime.hpp"

#include <cmath>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::DateTime {
namespace {

using testing::StrEq;
using testing::ThrowsMessage;

// The instant a value stands for, to the millisecond, readable in failures.
std::string Stamp(TDateTime value) {
  return Strings::Utf16ToUtf8(FormatDateTime(u"yyyy-mm-dd hh:nn:ss.zzz", value));
}

TEST(RtlDateTimeTest, DatesRoundTripThroughDayNumbers) {
  struct Case {
    int year, month, day;
    double dayNumber;
    int dayOfWeek;  // 1 = Sunday
  };
  const Case cases[] = {{1899, 12, 30, 0, 7},          {1899, 12, 29, -1, 6},  {1900, 3, 1, 61, 5},
                        {2000, 2, 29, 36585, 3},       {2015, 3, 1, 42064, 1}, {1, 1, 1, MinDateTime, 2},
                        {9999, 12, 31, MaxDateTime, 6}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.dayNumber);
    EXPECT_EQ(EncodeDate(c.year, c.month, c.day), c.dayNumber);
    int year, month, day;
    DecodeDate(c.dayNumber + (c.dayNumber < 0 ? -0.75 : 0.75), year, month, day);
    EXPECT_EQ(year * 10000 + month * 100 + day, c.year * 10000 + c.month * 100 + c.day);
    EXPECT_EQ(DayOfWeek(c.dayNumber), c.dayOfWeek);
  }
  const int monthLengths[][3] = {{1900, 2, 28}, {2000, 2, 29}, {2016, 2, 29}, {2015, 4, 30}};
  for (const auto& m : monthLengths)
    EXPECT_EQ(DaysInMonth(m[0], m[1]), m[2]) << m[0] << "-" << m[1];
}

TEST(RtlDateTimeTest, EncodeRejectsImpossibleParts) {
  const int dates[][3] = {{0, 1, 1},     {10000, 1, 1}, {2015, 0, 1},  {2015, 13, 1},
                          {2015, 2, 29}, {2016, 2, 30}, {2015, 4, 31}, {2015, 1, 0}};
  for (const auto& d : dates) {
    SCOPED_TRACE(testing::Message() << d[0] << "-" << d[1] << "-" << d[2]);
    TDateTime unused = 0;
    EXPECT_FALSE(TryEncodeDate(d[0], d[1], d[2], unused));
    EXPECT_THAT([&] { EncodeDate(d[0], d[1], d[2]); },
                ThrowsMessage<Exceptions::EConvertError>(StrEq("Invalid argument to date encode")));
  }
  const int times[][4] = {{24, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}, {-1, 0, 0, 0}};
  for (const auto& t : times) {
    SCOPED_TRACE(testing::Message() << t[0] << ":" << t[1] << ":" << t[2] << "." << t[3]);
    TDateTime unused = 0;
    EXPECT_FALSE(TryEncodeTime(t[0], t[1], t[2], t[3], unused));
    EXPECT_THAT([&] { EncodeDateTime(2015, 3, 1, t[0], t[1], t[2], t[3]); },
                ThrowsMessage<Exceptions::EConvertError>(StrEq("Invalid argument to time encode")));
  }
}

TEST(RtlDateTimeTest, DecodeIsExactToTheMillisecond) {
  // Every millisecond of a day's first and last second and a sweep between,
  // on a day after and a day before day 0.
  for (int year : {2015, 1899}) {
    for (int64_t ms = 0; ms < MSecsPerDay; ms += (ms < 1000 || ms >= MSecsPerDay - 1000) ? 1 : 9973) {
      int hour, minute, second, msec;
      DecodeTime(EncodeDateTime(year, 12, 28, ms / MSecsPerHour, ms / MSecsPerMin % 60, ms / 1000 % 60, ms % 1000),
                 hour, minute, second, msec);
      ASSERT_EQ(hour * MSecsPerHour + minute * MSecsPerMin + second * 1000 + msec, ms) << year;
    }
  }
  // Floating error just under midnight rounds into the next day.
  EXPECT_EQ(Stamp(42064.99999999999), "2015-03-02 00:00:00.000");
}

TEST(RtlDateTimeTest, NegativeDaysAndIncrements) {
  // Before day 0 the time of day is read from the absolute value.
  EXPECT_EQ(EncodeDateTime(1899, 12, 29, 6, 0, 0, 0), -1.25);
  EXPECT_EQ(Stamp(-0.25), "1899-12-30 06:00:00.000");
  EXPECT_EQ(IncHour(EncodeTime(3, 0, 0, 0), -6), EncodeDateTime(1899, 12, 29, 21, 0, 0, 0));
  struct Case {
    TDateTime start;
    TDateTime (*inc)(TDateTime, int64_t);
    int64_t count;
    const char* expected;
  };
  const Case cases[] = {
      {-1.25, IncDay, 1, "1899-12-30 06:00:00.000"},
      {0.25, IncDay, -1, "1899-12-29 06:00:00.000"},
      {42064, IncMilliSecond, -1, "2015-02-28 23:59:59.999"},
      {42064, IncSecond, 61, "2015-03-01 00:01:01.000"},
      {-29, IncMinute, 24 * 60 + 1, "1899-12-02 00:01:00.000"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.expected);
    EXPECT_EQ(Stamp(c.inc(c.start, c.count)), c.expected);
  }
}

TEST(RtlDateTimeTest, OutOfRangeValuesAndCountsRaise) {
  for (TDateTime value : {MinDateTime - 1, MaxDateTime + 1, std::nan(""), HUGE_VAL}) {
    SCOPED_TRACE(value);
    EXPECT_THAT([&] { DayOfWeek(value); }, ThrowsMessage<Exceptions::ERangeError>(StrEq("Range check error")));
  }
  EXPECT_THAT([] { DaysInMonth(2015, 13); }, ThrowsMessage<Exceptions::ERangeError>(StrEq("Range check error")));
  EXPECT_THAT([] { IncDay(0, std::numeric_limits<int64_t>::max() / 1000); },
              ThrowsMessage<Exceptions::EIntOverflow>(StrEq("Integer overflow")));
}

TEST(RtlDateTimeTest, FormatDateTimePatterns) {
  const TDateTime value = EncodeDateTime(2015, 3, 1, 14, 5, 9, 7);
  const char16_t* cases[][2] = {
      {u"yyyy'-'mm'-'dd'T'hh':'nn':'ss'.'zzz", u"2015-03-01T14:05:09.007"},
      {u"d/m/yy h:n:s.z", u"1/3/15 14:5:9.7"},
      {u"YYYY-MM-DD HH:NN:SS", u"2015-03-01 14:05:09"},
      {u"\"day\" d, 'at' [hh] 'open", u"day 1, at [14] open"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Strings::Utf16ToUtf8(c[0]));
    EXPECT_EQ(FormatDateTime(c[0], value), c[1]);
  }
  EXPECT_EQ(FormatDateTime(u"yyyy/yy", EncodeDate(5, 1, 1)), u"0005/05");
}

TEST(RtlDateTimeTest, NowAgreesWithThePlatformClock) {
  const Platform::LocalTime before = Platform::Now();
  const TDateTime now = Now();
  if (before.Hour == 23 && before.Minute == 59)
    GTEST_SKIP() << "too close to midnight";
  EXPECT_EQ(Date(), EncodeDate(before.Year, before.Month, before.Day));
  EXPECT_EQ(std::trunc(now), Date());
  EXPECT_NEAR(Time(), now - Date(), 2.0 / 86400);
}

TEST(RtlDateTimeTest, TimeZoneOverridesNestAndRestore) {
  EXPECT_EQ(UtcOffsetMinutes(), Platform::UtcOffsetMinutes());
  {
    TTimeZoneOverride east(120);
    {
      TTimeZoneOverride west(-300);
      EXPECT_EQ(UtcOffsetMinutes(), -300);
    }
    EXPECT_EQ(UtcOffsetMinutes(), 120);
  }
  EXPECT_EQ(UtcOffsetMinutes(), Platform::UtcOffsetMinutes());
}

}  // namespace
}  // namespace Quorvex::Rtl::DateTime
