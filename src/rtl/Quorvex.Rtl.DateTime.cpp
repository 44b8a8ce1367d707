#include "Quorvex.Rtl.DateTime.hpp"

#include <array>
#include <atomic>
#include <cmath>
#include <limits>

#include "Quorvex.Platform.hpp"
#include "Quorvex.Rtl.Checked.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"

namespace Quorvex::Rtl::DateTime {

namespace {

// Day number of 1970-01-01, the epoch of the civil-date arithmetic below.
constexpr int64_t kUnixEpochDay = 25569;

struct TCivilDate {
  int Year, Month, Day;
};

// Days from 1970-01-01 to a proleptic Gregorian date, in O(1): the year is
// shifted to start in March so that the leap day falls at its end.
int64_t DaysFromCivil(int year, int month, int day) {
  const int64_t y = year - (month <= 2 ? 1 : 0);
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yearOfEra = y - era * 400;
  const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146097 + dayOfEra - 719468;
}

// The inverse of DaysFromCivil.
TCivilDate CivilFromDays(int64_t days) {
  days += 719468;
  const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const int64_t dayOfEra = days - era * 146097;
  const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
  const int day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
  const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
  const int year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
  return {year, month, day};
}

int64_t FloorDiv(int64_t a, int64_t b) {
  const int64_t q = a / b;
  return (a % b != 0 && (a < 0) != (b < 0)) ? q - 1 : q;
}

// The instant of a value as a linear count of milliseconds since
// 1899-12-30 00:00, which unlike the value itself is monotonic across the
// negative-day boundary. Rounding here is what makes decoding exact.
int64_t ToMilliseconds(TDateTime value) {
  if (!(value > MinDateTime - 1 && value < MaxDateTime + 1)) Exceptions::RaiseRangeError();
  const double days = std::trunc(value);
  const double fraction = std::fabs(value - days);
  const int64_t msecs = static_cast<int64_t>(days) * MSecsPerDay + std::llround(fraction * MSecsPerDay);
  // The last half millisecond of 9999-12-31 rounds into a year of five
  // digits, which is out of range like the values beyond it.
  constexpr int64_t kEnd = (static_cast<int64_t>(MaxDateTime) + 1) * MSecsPerDay;
  if (msecs >= kEnd) Exceptions::RaiseRangeError();
  return msecs;
}

TDateTime FromMilliseconds(int64_t msecs) {
  const int64_t days = FloorDiv(msecs, MSecsPerDay);
  const double fraction = static_cast<double>(msecs - days * MSecsPerDay) / MSecsPerDay;
  return days >= 0 ? static_cast<double>(days) + fraction : static_cast<double>(days) - fraction;
}

// Joins a day number and a time of day following the sign rule.
TDateTime Combine(TDateTime date, TDateTime time) { return date >= 0 ? date + time : date - time; }

// No override installed; outside the range of any int32_t offset.
constexpr int64_t kNoOverride = std::numeric_limits<int64_t>::min();
std::atomic<int64_t> offsetOverride{kNoOverride};

}  // namespace

bool IsLeapYear(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int DaysInMonth(int year, int month) {
  static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const int days = Checked::At(kDays, month - 1);
  return month == 2 && IsLeapYear(year) ? days + 1 : days;
}

bool TryEncodeDate(int year, int month, int day, TDateTime& date) {
  if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > DaysInMonth(year, month)) return false;
  date = static_cast<double>(DaysFromCivil(year, month, day) + kUnixEpochDay);
  return true;
}

TDateTime EncodeDate(int year, int month, int day) {
  TDateTime date;
  if (!TryEncodeDate(year, month, day, date)) throw Exceptions::EConvertError(u"Invalid argument to date encode");
  return date;
}

bool TryEncodeTime(int hour, int minute, int second, int msec, TDateTime& time) {
  if (hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0 || second > 59 || msec < 0 || msec > 999)
    return false;
  const int64_t msecs = hour * MSecsPerHour + minute * MSecsPerMin + second * MSecsPerSec + msec;
  time = static_cast<double>(msecs) / MSecsPerDay;
  return true;
}

TDateTime EncodeTime(int hour, int minute, int second, int msec) {
  TDateTime time;
  if (!TryEncodeTime(hour, minute, second, msec, time))
    throw Exceptions::EConvertError(u"Invalid argument to time encode");
  return time;
}

TDateTime EncodeDateTime(int year, int month, int day, int hour, int minute, int second, int msec) {
  return Combine(EncodeDate(year, month, day), EncodeTime(hour, minute, second, msec));
}

void DecodeDateTime(TDateTime value, int& year, int& month, int& day, int& hour, int& minute, int& second, int& msec) {
  const int64_t msecs = ToMilliseconds(value);
  const int64_t days = FloorDiv(msecs, MSecsPerDay);
  const TCivilDate date = CivilFromDays(days - kUnixEpochDay);
  year = date.Year;
  month = date.Month;
  day = date.Day;
  const int64_t ofDay = msecs - days * MSecsPerDay;
  hour = static_cast<int>(ofDay / MSecsPerHour);
  minute = static_cast<int>(ofDay / MSecsPerMin % 60);
  second = static_cast<int>(ofDay / MSecsPerSec % 60);
  msec = static_cast<int>(ofDay % MSecsPerSec);
}

void DecodeDate(TDateTime value, int& year, int& month, int& day) {
  int hour, minute, second, msec;
  DecodeDateTime(value, year, month, day, hour, minute, second, msec);
}

void DecodeTime(TDateTime value, int& hour, int& minute, int& second, int& msec) {
  int year, month, day;
  DecodeDateTime(value, year, month, day, hour, minute, second, msec);
}

int DayOfWeek(TDateTime value) {
  // Day 0, 1899-12-30, was a Saturday.
  const int64_t days = FloorDiv(ToMilliseconds(value), MSecsPerDay);
  return static_cast<int>(((days + 6) % 7 + 7) % 7) + 1;
}

TDateTime Now() {
  const Platform::LocalTime t = Platform::Now();
  return EncodeDateTime(t.Year, t.Month, t.Day, t.Hour, t.Minute, t.Second, t.Milliseconds);
}

TDateTime Date() {
  const Platform::LocalTime t = Platform::Now();
  return EncodeDate(t.Year, t.Month, t.Day);
}

TDateTime Time() {
  const Platform::LocalTime t = Platform::Now();
  return EncodeTime(t.Hour, t.Minute, t.Second, t.Milliseconds);
}

TDateTime IncMilliSecond(TDateTime value, int64_t count) {
  return FromMilliseconds(Checked::Add(ToMilliseconds(value), count));
}

TDateTime IncSecond(TDateTime value, int64_t count) { return IncMilliSecond(value, Checked::Mul(count, MSecsPerSec)); }

TDateTime IncMinute(TDateTime value, int64_t count) { return IncMilliSecond(value, Checked::Mul(count, MSecsPerMin)); }

TDateTime IncHour(TDateTime value, int64_t count) { return IncMilliSecond(value, Checked::Mul(count, MSecsPerHour)); }

TDateTime IncDay(TDateTime value, int64_t count) { return IncMilliSecond(value, Checked::Mul(count, MSecsPerDay)); }

namespace {

enum TPart { kYear, kYearOfCentury, kMonth, kDay, kHour, kMinute, kSecond, kMSec, kPartCount };

struct TFormatToken {
  UnicodeStringView Pattern;  // lower case
  TPart Part;
  size_t Width;  // minimum digits
};

// Longer patterns come before their prefixes so that "mm" wins over "m".
constexpr TFormatToken kFormatTokens[] = {
    {u"yyyy", kYear, 4}, {u"yy", kYearOfCentury, 2}, {u"mm", kMonth, 2}, {u"m", kMonth, 1},   {u"dd", kDay, 2},
    {u"d", kDay, 1},     {u"hh", kHour, 2},          {u"h", kHour, 1},   {u"nn", kMinute, 2}, {u"n", kMinute, 1},
    {u"ss", kSecond, 2}, {u"s", kSecond, 1},         {u"zzz", kMSec, 3}, {u"z", kMSec, 1},
};

bool MatchesAt(UnicodeStringView text, size_t pos, UnicodeStringView pattern) {
  if (text.size() - pos < pattern.size()) return false;
  for (size_t i = 0; i < pattern.size(); ++i) {
    Strings::Char c = text[pos + i];
    if (c >= u'A' && c <= u'Z') c = static_cast<Strings::Char>(c - u'A' + u'a');
    if (c != pattern[i]) return false;
  }
  return true;
}

const TFormatToken* FindToken(UnicodeStringView format, size_t pos) {
  for (const TFormatToken& token : kFormatTokens)
    if (MatchesAt(format, pos, token.Pattern)) return &token;
  return nullptr;
}

void AppendPadded(UnicodeString& out, int value, size_t width) {
  const UnicodeString digits = Strings::IntToStr(value);
  if (digits.size() < width) out.append(width - digits.size(), u'0');
  out += digits;
}

}  // namespace

UnicodeString FormatDateTime(UnicodeStringView format, TDateTime value) {
  std::array<int, kPartCount> parts;
  DecodeDateTime(value, parts[kYear], parts[kMonth], parts[kDay], parts[kHour], parts[kMinute], parts[kSecond],
                 parts[kMSec]);
  parts[kYearOfCentury] = parts[kYear] % 100;

  UnicodeString result;
  size_t pos = 0;
  while (pos < format.size()) {
    const Strings::Char c = format[pos];
    if (c == u'\'' || c == u'"') {
      // An unterminated literal runs to the end of the pattern.
      size_t close = format.find(c, pos + 1);
      if (close == UnicodeStringView::npos) close = format.size();
      result.append(format.substr(pos + 1, close - pos - 1));
      pos = close + 1;
    } else if (const TFormatToken* token = FindToken(format, pos)) {
      AppendPadded(result, parts[token->Part], token->Width);
      pos += token->Pattern.size();
    } else {
      result += c;
      ++pos;
    }
  }
  return result;
}

int32_t UtcOffsetMinutes() {
  const int64_t overridden = offsetOverride.load(std::memory_order_acquire);
  if (overridden != kNoOverride) return static_cast<int32_t>(overridden);
  return Platform::UtcOffsetMinutes();
}

TTimeZoneOverride::TTimeZoneOverride(int32_t offsetMinutes)
    : FPrevious(offsetOverride.exchange(offsetMinutes, std::memory_order_acq_rel)) {}

TTimeZoneOverride::~TTimeZoneOverride() { offsetOverride.store(FPrevious, std::memory_order_release); }

}  // namespace Quorvex::Rtl::DateTime
