// POSIX only: error codes and their texts for Linux builds.
#include <cerrno>
#include <cstring>

#include "Quorvex.Platform.Unicode.hpp"
#include "Quorvex.Platform.hpp"

namespace Quorvex::Platform {

namespace {

// strerror_r comes in two shapes (GNU returns the text, XSI fills the
// buffer and returns a status); overloads pick whichever the C library has.
[[maybe_unused]] const char* ErrorText(const char* text, const char*) { return text; }
[[maybe_unused]] const char* ErrorText(int status, const char* buffer) { return status == 0 ? buffer : ""; }

}  // namespace

uint32_t LastError() { return static_cast<uint32_t>(errno); }

void SetLastError(uint32_t code) { errno = static_cast<int>(code); }

std::u16string ErrorMessage(uint32_t code) {
  char buffer[256] = {};
  const int saved = errno;
  const char* text = ErrorText(strerror_r(static_cast<int>(code), buffer, sizeof buffer), buffer);
  std::u16string result = Utf8ToUtf16(text);
  errno = saved;
  return result;
}

}  // namespace Quorvex::Platform
