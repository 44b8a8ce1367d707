// Windows only: the user's number separators and the local clock.
#include "Quorvex.Platform.Win32.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

// The first character of a user-locale item, `fallback` when it is empty.
char16_t LocaleChar(LCTYPE item, char16_t fallback) {
  wchar_t buffer[8] = {};
  if (GetLocaleInfoW(LOCALE_USER_DEFAULT, item, buffer, 8) == 0 || buffer[0] == L'\0') return fallback;
  return static_cast<char16_t>(buffer[0]);
}

}  // namespace

char16_t DecimalSeparator() { return LocaleChar(LOCALE_SDECIMAL, u'.'); }

char16_t ThousandSeparator() { return LocaleChar(LOCALE_STHOUSAND, u','); }

LocalTime Now() {
  SYSTEMTIME now{};
  GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
}

int32_t UtcOffsetMinutes() {
  TIME_ZONE_INFORMATION zone{};
  // The bias is UTC minus local time; daylight saving adds its own bias.
  LONG bias = 0;
  switch (GetTimeZoneInformation(&zone)) {
    case TIME_ZONE_ID_STANDARD:
      bias = zone.Bias + zone.StandardBias;
      break;
    case TIME_ZONE_ID_DAYLIGHT:
      bias = zone.Bias + zone.DaylightBias;
      break;
    default:
      bias = zone.Bias;
      break;
  }
  return -bias;
}

}  // namespace Quorvex::Platform
