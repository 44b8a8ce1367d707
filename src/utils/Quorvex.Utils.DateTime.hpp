// Durations as short readable texts ("2 d 3 h 0 m 5 s"), their split into
// calendar-like parts, and the local time-zone bias.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Utils::DateTime {

using Rtl::Strings::UnicodeString;

// The system's broken-down time layout (eight unsigned 16-bit fields),
// declared here so that callers need no system header.
struct QXRTL_API SYSTEMTIME {
  uint16_t wYear = 0;
  uint16_t wMonth = 0;
  uint16_t wDayOfWeek = 0;
  uint16_t wDay = 0;
  uint16_t wHour = 0;
  uint16_t wMinute = 0;
  uint16_t wSecond = 0;
  uint16_t wMilliseconds = 0;
};

// SYSTEMTIME with 64-bit fields, so that the parts of a long duration
// (say 100000 hours) fit.
struct QXRTL_API TBigTime {
  int64_t Year = 0;
  int64_t Month = 0;
  int64_t DayOfWeek = 0;
  int64_t Day = 0;
  int64_t Hour = 0;
  int64_t Minute = 0;
  int64_t Second = 0;
  int64_t Milliseconds = 0;

  friend bool operator==(const TBigTime&, const TBigTime&) = default;
};

// The largest unit a duration is split into, smallest first.
enum TDateDegree { ddMSec, ddSec, ddMin, ddHour, ddDay, ddMonth, ddYear };

struct QXRTL_API gTime {
  gTime() = delete;

  // Splits a duration into parts no larger than `AMaxDegree`: a year is
  // 365.25 days and a month a twelfth of it; what is left over lands in
  // Milliseconds. Raises EIntOverflow only if the arithmetic overflows.
  static TBigTime MsecsToBigTime(int64_t AMsec, TDateDegree AMaxDegree);

  // The split down from years into 16-bit fields; raises ERangeError when
  // a part is outside 0..65535 (negative durations included).
  static SYSTEMTIME MsecsToSystemTime(int64_t AMsec);

  // The eight fields, widened.
  static TBigTime SystemTimeToBigTime(const SYSTEMTIME& ASystemTime);

  // "1 h 2 m 5 s": days, hours and minutes from the first non-zero of them
  // down, then seconds; years, months and milliseconds are never shown.
  static UnicodeString BigTimeToStr(const TBigTime& ASysTime);
  static UnicodeString SystemTimeToStr(const SYSTEMTIME& ASysTime);

  // Duration text of a count of milliseconds. Without a degree the split
  // goes to years, so days wrap at 30.4375 and months and years are lost
  // from the text; that is long-standing behaviour callers rely on.
  // Raises ERangeError as MsecsToSystemTime.
  static UnicodeString MsecsToStr(int64_t AMsec);
  static UnicodeString MsecsToStr(int64_t AMsec, TDateDegree AMaxDegree);

  // As MsecsToStr for seconds; raises EIntOverflow when the count in
  // milliseconds does not fit 64 bits.
  static UnicodeString SecsToStr(int64_t ASec);
  static UnicodeString SecsToStr(int64_t ASec, TDateDegree AMaxDegree);

  // Minutes to add to local time to get UTC, for the offset in force now
  // (UTC+2 gives -120, UTC-5 gives 300).
  static int32_t GetTimeZoneBias();
};

}  // namespace Quorvex::Utils::DateTime
