// POSIX only: the user's number separators and the local clock on Linux.
#include <langinfo.h>
#include <locale.h>
#include <time.h>

#include "Quorvex.Platform.Posix.hpp"
#include "Quorvex.Platform.Unicode.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

// The first UTF-16 unit of the user's locale item, or `fallback` when the
// locale cannot be loaded or leaves the item empty (the C locale has no
// thousands separator). A private locale object keeps the process-wide
// locale untouched.
char16_t LocaleChar(nl_item item, char16_t fallback) {
  locale_t locale = newlocale(LC_ALL_MASK, "", static_cast<locale_t>(nullptr));
  if (locale == static_cast<locale_t>(nullptr)) return fallback;
  const std::u16string text = Utf8ToUtf16(nl_langinfo_l(item, locale));
  freelocale(locale);
  return text.empty() ? fallback : text.front();
}

}  // namespace

char16_t DecimalSeparator() { return LocaleChar(RADIXCHAR, u'.'); }

char16_t ThousandSeparator() { return LocaleChar(THOUSEP, u','); }

LocalTime Now() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  const tm local = Posix::LocalBrokenDown(now.tv_sec);
  return {local.tm_year + 1900,
          local.tm_mon + 1,
          local.tm_mday,
          local.tm_hour,
          local.tm_min,
          local.tm_sec,
          static_cast<int>(now.tv_nsec / 1000000)};
}

int32_t UtcOffsetMinutes() { return static_cast<int32_t>(Posix::LocalBrokenDown(time(nullptr)).tm_gmtoff / 60); }

namespace Posix {

tm LocalBrokenDown(time_t t) {
  // localtime_r alone may keep a stale zone; tzset re-reads TZ first.
  tzset();
  tm local{};
  localtime_r(&t, &local);
  return local;
}

double ToDateTime(time_t t, long nanoseconds) {
  constexpr double kUnixEpochDays = 25569;  // 1970-01-01 as a date-time value
  const double local = static_cast<double>(t + LocalBrokenDown(t).tm_gmtoff) + nanoseconds / 1e9;
  return kUnixEpochDays + local / 86400;
}

}  // namespace Posix

}  // namespace Quorvex::Platform
