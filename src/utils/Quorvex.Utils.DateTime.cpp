#include "Quorvex.Utils.DateTime.hpp"

#include <cmath>

#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.DateTime.hpp"

namespace Quorvex::Utils::DateTime {

namespace Checked = Rtl::Checked;
using Rtl::Strings::Format;

namespace {

struct TSplitUnit {
  TDateDegree Degree;
  int64_t Length;  // milliseconds
  int64_t TBigTime::*Part;
};

constexpr int64_t kYearLength = 31557600000;  // 365.25 days

// Largest unit first: each takes what it can from the remainder.
constexpr TSplitUnit kSplitUnits[] = {
    {ddYear, kYearLength, &TBigTime::Year},
    {ddMonth, kYearLength / 12, &TBigTime::Month},
    {ddDay, Rtl::DateTime::MSecsPerDay, &TBigTime::Day},
    {ddHour, Rtl::DateTime::MSecsPerHour, &TBigTime::Hour},
    {ddMin, Rtl::DateTime::MSecsPerMin, &TBigTime::Minute},
    {ddSec, Rtl::DateTime::MSecsPerSec, &TBigTime::Second},
};

}  // namespace

TBigTime gTime::MsecsToBigTime(int64_t AMsec, TDateDegree AMaxDegree) {
  TBigTime result;
  int64_t remainder = AMsec;
  for (const TSplitUnit& unit : kSplitUnits) {
    if (remainder == 0) break;
    if (unit.Degree > AMaxDegree) continue;
    // Extended precision, truncated toward zero: a negative duration
    // splits into negative parts.
    const auto part = static_cast<int64_t>(std::trunc(static_cast<long double>(remainder) / unit.Length));
    result.*unit.Part = part;
    remainder = Checked::Sub(remainder, Checked::Mul(part, unit.Length));
  }
  result.Milliseconds = remainder;
  return result;
}

SYSTEMTIME gTime::MsecsToSystemTime(int64_t AMsec) {
  const TBigTime parts = MsecsToBigTime(AMsec, ddYear);
  SYSTEMTIME result;
  result.wYear = Checked::Narrow<uint16_t>(parts.Year);
  result.wMonth = Checked::Narrow<uint16_t>(parts.Month);
  result.wDayOfWeek = Checked::Narrow<uint16_t>(parts.DayOfWeek);
  result.wDay = Checked::Narrow<uint16_t>(parts.Day);
  result.wHour = Checked::Narrow<uint16_t>(parts.Hour);
  result.wMinute = Checked::Narrow<uint16_t>(parts.Minute);
  result.wSecond = Checked::Narrow<uint16_t>(parts.Second);
  result.wMilliseconds = Checked::Narrow<uint16_t>(parts.Milliseconds);
  return result;
}

TBigTime gTime::SystemTimeToBigTime(const SYSTEMTIME& ASystemTime) {
  TBigTime result;
  result.Year = ASystemTime.wYear;
  result.Month = ASystemTime.wMonth;
  result.DayOfWeek = ASystemTime.wDayOfWeek;
  result.Day = ASystemTime.wDay;
  result.Hour = ASystemTime.wHour;
  result.Minute = ASystemTime.wMinute;
  result.Second = ASystemTime.wSecond;
  result.Milliseconds = ASystemTime.wMilliseconds;
  return result;
}

UnicodeString gTime::BigTimeToStr(const TBigTime& ASysTime) {
  UnicodeString result = Format(u"%d s", ASysTime.Second);
  if (ASysTime.Minute > 0 || ASysTime.Hour > 0 || ASysTime.Day > 0)
    result = Format(u"%d m", ASysTime.Minute) + u' ' + result;
  if (ASysTime.Hour > 0 || ASysTime.Day > 0) result = Format(u"%d h", ASysTime.Hour) + u' ' + result;
  if (ASysTime.Day > 0) result = Format(u"%d d", ASysTime.Day) + u' ' + result;
  return result;
}

UnicodeString gTime::SystemTimeToStr(const SYSTEMTIME& ASysTime) { return BigTimeToStr(SystemTimeToBigTime(ASysTime)); }

UnicodeString gTime::MsecsToStr(int64_t AMsec) { return SystemTimeToStr(MsecsToSystemTime(AMsec)); }

UnicodeString gTime::MsecsToStr(int64_t AMsec, TDateDegree AMaxDegree) {
  return BigTimeToStr(MsecsToBigTime(AMsec, AMaxDegree));
}

UnicodeString gTime::SecsToStr(int64_t ASec) { return MsecsToStr(Checked::Mul<int64_t>(ASec, 1000)); }

UnicodeString gTime::SecsToStr(int64_t ASec, TDateDegree AMaxDegree) {
  return MsecsToStr(Checked::Mul<int64_t>(ASec, 1000), AMaxDegree);
}

int32_t gTime::GetTimeZoneBias() { return -Rtl::DateTime::UtcOffsetMinutes(); }

}  // namespace Quorvex::Utils::DateTime
