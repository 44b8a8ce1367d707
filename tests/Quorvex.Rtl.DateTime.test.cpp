#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.DateTime.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::Rtl::DateTime {
namespace {

using Exceptions::EConvertError;
using Exceptions::ERangeError;

// The instant a value stands for, to the millisecond, readable in failures.
std::string Stamp(TDateTime value) { return Strings::Utf16ToUtf8(FormatDateTime(u"yyyy-mm-dd hh:nn:ss.zzz", value)); }

TEST(RtlDateTimeTest, DatesRoundTripThroughDayNumbers) {
  const std::tuple<int, int, int, double, int> cases[] = {
      {1899, 12, 30, 0, 7},   {1899, 12, 29, -1, 6},     {1900, 3, 1, 61, 5},           {2000, 2, 29, 36585, 3},
      {2015, 3, 1, 42064, 1}, {1, 1, 1, MinDateTime, 2}, {9999, 12, 31, MaxDateTime, 6}};
  for (const auto& [year, month, day, dayNumber, dayOfWeek] : cases) {
    SCOPED_TRACE(dayNumber);
    EXPECT_EQ(EncodeDate(year, month, day), dayNumber);
    int y, m, d;
    DecodeDate(dayNumber + (dayNumber < 0 ? -0.75 : 0.75), y, m, d);
    EXPECT_EQ(y * 10000 + m * 100 + d, year * 10000 + month * 100 + day);
    EXPECT_EQ(DayOfWeek(dayNumber), dayOfWeek);  // 1 = Sunday
  }
  for (const auto& [year, month, days] : {std::array{1900, 2, 28}, {2016, 2, 29}, {2015, 4, 30}})
    EXPECT_EQ(DaysInMonth(year, month), days) << year << "-" << month;
}

TEST(RtlDateTimeTest, EncodeRejectsImpossibleParts) {
  const std::array<int, 3> dates[] = {{0, 1, 1},     {10000, 1, 1}, {2015, 0, 1},  {2015, 13, 1},
                                      {2015, 2, 29}, {2016, 2, 30}, {2015, 4, 31}, {2015, 1, 0}};
  for (const auto& [year, month, day] : dates) {
    SCOPED_TRACE(testing::Message() << year << "-" << month << "-" << day);
    EXPECT_RAISES(EConvertError, EncodeDate(year, month, day), u"Invalid argument to date encode");
  }
  const std::array<int, 4> times[] = {{24, 0, 0, 0}, {0, 60, 0, 0}, {0, 0, 60, 0}, {0, 0, 0, 1000}, {-1, 0, 0, 0}};
  for (const auto& [hour, minute, second, msec] : times) {
    SCOPED_TRACE(testing::Message() << hour << ":" << minute << ":" << second << "." << msec);
    EXPECT_RAISES(EConvertError, EncodeDateTime(2015, 3, 1, hour, minute, second, msec),
                  u"Invalid argument to time encode");
  }
  TDateTime unused;  // the Try forms answer false instead of raising
  EXPECT_FALSE(TryEncodeDate(2015, 13, 1, unused) || TryEncodeTime(24, 0, 0, 0, unused));
}

TEST(RtlDateTimeTest, DecodeIsExactToTheMillisecond) {
  // Each millisecond of a day's first and last second, a sweep between; either side of day 0.
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

TEST(RtlDateTimeTest, NegativeDaysIncrementsAndTheirRange) {
  // Before day 0 the time of day is read from the absolute value.
  EXPECT_EQ(EncodeDateTime(1899, 12, 29, 6, 0, 0, 0), -1.25);
  EXPECT_EQ(Stamp(-0.25), "1899-12-30 06:00:00.000");
  const std::pair<TDateTime, const char*> cases[] = {
      {IncDay(-1.25, 1), "1899-12-30 06:00:00.000"},     {IncDay(0.25, -1), "1899-12-29 06:00:00.000"},
      {IncHour(0.125, -6), "1899-12-29 21:00:00.000"},   {IncMilliSecond(42064, -1), "2015-02-28 23:59:59.999"},
      {IncSecond(42064, 61), "2015-03-01 00:01:01.000"}, {IncMinute(-29, 24 * 60 + 1), "1899-12-02 00:01:00.000"},
  };
  for (const auto& [value, expected] : cases) EXPECT_EQ(Stamp(value), expected);

  for (TDateTime value : {MinDateTime - 1, MaxDateTime + 1, std::nan("")}) {
    SCOPED_TRACE(value);
    EXPECT_RAISES(ERangeError, DayOfWeek(value), u"Range check error");
  }
  EXPECT_RAISES(ERangeError, DaysInMonth(2015, 13), u"Range check error");
  EXPECT_RAISES(Exceptions::EIntOverflow, IncDay(0, std::numeric_limits<int64_t>::max() / 1000), u"Integer overflow");
}

TEST(RtlDateTimeTest, FormatDateTimePatterns) {
  const TDateTime value = EncodeDateTime(2015, 3, 1, 14, 5, 9, 7);
  const char16_t* cases[][2] = {
      {u"d/m/yy h:n:s.z", u"1/3/15 14:5:9.7"},
      {u"YYYY-MM-DD HH:NN:SS", u"2015-03-01 14:05:09"},
      {u"\"day\" d, 'at' [hh] 'open", u"day 1, at [14] open"},
  };
  for (const auto& [format, expected] : cases)
    EXPECT_EQ(FormatDateTime(format, value), expected) << Strings::Utf16ToUtf8(format);
  EXPECT_EQ(FormatDateTime(u"yyyy/yy", EncodeDate(5, 1, 1)), u"0005/05");
}

TEST(RtlDateTimeTest, ClockAndTimeZoneOverrides) {
  const Platform::LocalTime clock = Platform::Now();
  const TDateTime now = Now();
  if (clock.Hour != 23 || clock.Minute != 59) {  // not too close to midnight
    EXPECT_EQ(Date(), EncodeDate(clock.Year, clock.Month, clock.Day));
    EXPECT_NEAR(now, Date() + Time(), 2.0 / 86400);
  }
  std::optional<TTimeZoneOverride> east(std::in_place, 120), west(std::in_place, -300);
  EXPECT_EQ(UtcOffsetMinutes(), -300);
  west.reset();
  EXPECT_EQ(UtcOffsetMinutes(), 120);
  east.reset();
  EXPECT_EQ(UtcOffsetMinutes(), Platform::UtcOffsetMinutes());
}

}  // namespace
}  // namespace Quorvex::Rtl::DateTime
