// POSIX only: helpers shared by the Linux implementation files.
#pragma once

#include <sys/stat.h>
#include <time.h>

#include <string>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform::Posix {

// A path as the C library takes it (UTF-8).
std::string Native(PathView path);

// The Windows attribute bits of an entry named `name` (without its folder):
// folder or archive, read-only when the owner may not write, hidden for
// dot names other than "." and "..".
uint32_t AttributesOf(const struct stat& info, PathView name);

// `t` broken down in local time, honouring the current TZ variable.
tm LocalBrokenDown(time_t t);

// Seconds since 1970 in local time as the runtime's date-time value (days
// since 1899-12-30 with the time of day as fraction).
double ToDateTime(time_t t, long nanoseconds);

}  // namespace Quorvex::Platform::Posix
