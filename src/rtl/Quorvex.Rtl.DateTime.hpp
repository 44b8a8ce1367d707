// The runtime's date-time value: a floating count of days since
// 1899-12-30, the fraction being the time of day. Encoding validates every
// part; decoding rounds to the nearest millisecond first, so values that
// went through floating arithmetic still decode to the intended instant.
//
// Values before 1899-12-30 are negative, and their time of day is read from
// the absolute value: -1.25 is 1899-12-29 06:00, not 18:00.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::DateTime {

using Strings::UnicodeString;
using Strings::UnicodeStringView;

// A date-time is a double with a name of its own, so that type information
// can tell a date-time property from a plain number. It converts to and
// from double implicitly and takes part in arithmetic as one.
struct TDateTime {
  double Value = 0;

  constexpr TDateTime() = default;
  constexpr TDateTime(double value) : Value(value) {}  // NOLINT(google-explicit-constructor)
  constexpr operator double() const { return Value; }  // NOLINT(google-explicit-constructor)
  constexpr TDateTime& operator+=(double days) {
    Value += days;
    return *this;
  }
  constexpr TDateTime& operator-=(double days) {
    Value -= days;
    return *this;
  }
};

constexpr int64_t MSecsPerSec = 1000;
constexpr int64_t MSecsPerMin = 60 * MSecsPerSec;
constexpr int64_t MSecsPerHour = 60 * MSecsPerMin;
constexpr int64_t MSecsPerDay = 24 * MSecsPerHour;

// The day numbers of 0001-01-01 and 9999-12-31, the range every operation
// here accepts.
constexpr double MinDateTime = -693593;
constexpr double MaxDateTime = 2958465;

// True for years of 366 days (Gregorian rule).
QXRTL_API bool IsLeapYear(int year);

// Days in `month` of `year`; raises ERangeError for a month outside 1..12.
QXRTL_API int DaysInMonth(int year, int month);

// Stores the day number of a date and returns true, or returns false when
// the date does not exist (year outside 1..9999, month 0, February 30...).
QXRTL_API bool TryEncodeDate(int year, int month, int day, TDateTime& date);

// The day number of a date; raises EConvertError
// "Invalid argument to date encode" when the date does not exist.
QXRTL_API TDateTime EncodeDate(int year, int month, int day);

// Stores the fraction of a day for a time of day and returns true, or
// returns false for a part out of range (hour 24, minute 60, ms 1000...).
QXRTL_API bool TryEncodeTime(int hour, int minute, int second, int msec, TDateTime& time);

// The fraction of a day for a time of day; raises EConvertError
// "Invalid argument to time encode" for a part out of range.
QXRTL_API TDateTime EncodeTime(int hour, int minute, int second, int msec);

// Date and time combined; raises what EncodeDate or EncodeTime raise.
QXRTL_API TDateTime EncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec);

// Splits a value into its parts, to the nearest millisecond. Raise
// ERangeError for a value outside MinDateTime..MaxDateTime (or NaN), and
// for one that rounds past the last millisecond of MaxDateTime.
QXRTL_API void DecodeDate(TDateTime value, int& year, int& month, int& day);
QXRTL_API void DecodeTime(TDateTime value, int& hour, int& minute, int& second, int& msec);
QXRTL_API void DecodeDateTime(TDateTime value, int& year, int& month, int& day, int& hour, int& minute, int& second,
                              int& msec);

// Day of the week, 1 = Sunday ... 7 = Saturday; raises as DecodeDate.
QXRTL_API int DayOfWeek(TDateTime value);

// The current local date and time, the date alone and the time alone.
QXRTL_API TDateTime Now();
QXRTL_API TDateTime Date();
QXRTL_API TDateTime Time();

// `value` moved by a number of units, exact to the millisecond across
// midnight and across the negative-day boundary. Raise ERangeError for a
// value out of range and EIntOverflow when the count overflows.
QXRTL_API TDateTime IncMilliSecond(TDateTime value, int64_t count = 1);
QXRTL_API TDateTime IncSecond(TDateTime value, int64_t count = 1);
QXRTL_API TDateTime IncMinute(TDateTime value, int64_t count = 1);
QXRTL_API TDateTime IncHour(TDateTime value, int64_t count = 1);
QXRTL_API TDateTime IncDay(TDateTime value, int64_t count = 1);

// Formats `value` with a pattern. Recognised (letters in any case):
// yyyy, yy, mm, m, dd, d, hh, h (24-hour), nn, n, ss, s, zzz, z; the
// doubled forms pad with zeros. Text in '...' or "..." is copied without
// its quotes, and every other character is copied as it is. Raises as
// DecodeDate.
QXRTL_API UnicodeString FormatDateTime(UnicodeStringView format, TDateTime value);

// The offset of local time from UTC now, in minutes (UTC+2 gives 120).
// Comes from the operating system unless a TTimeZoneOverride is alive.
QXRTL_API int32_t UtcOffsetMinutes();

// Makes UtcOffsetMinutes answer a fixed offset while it lives, so that
// behaviour in other zones can be checked without touching the machine's
// zone. Overrides nest: destruction restores the previous answer. Process
// wide, so meant for tests and single-threaded set-up.
class QXRTL_API TTimeZoneOverride {
 public:
  explicit TTimeZoneOverride(int32_t offsetMinutes);
  ~TTimeZoneOverride();
  TTimeZoneOverride(const TTimeZoneOverride&) = delete;
  TTimeZoneOverride& operator=(const TTimeZoneOverride&) = delete;

 private:
  int64_t FPrevious;
};

}  // namespace Quorvex::Rtl::DateTime
