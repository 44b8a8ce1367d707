// POSIX only: helpers shared by the Linux implementation files.
#pragma once

#include <sys/stat.h>
#include <time.h>

#include <string>

#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform::Posix {

// A path as the C library takes it: UTF-8, with the bytes that names
// read from the system carried as escapes (NameToUtf8) restored. A path
// holding a NUL, or a surrogate that stands for no byte, is refused with
// EINVAL as the reason: the C library would end the name at the NUL, and
// a substitute character could name another file. Every path reaches the
// system through this one check.
class NativePath {
 public:
  explicit NativePath(PathView path);

  // False when the path was refused; errno says why.
  explicit operator bool() const { return FValid; }
  const char* c_str() const { return FText.c_str(); }
  const std::string& str() const { return FText; }

 private:
  std::string FText;
  bool FValid;
};

// False, with EINVAL as the reason, when `path` holds a NUL; for the
// computations on paths that do not hand them to the system.
bool IsValidPath(PathView path);

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
