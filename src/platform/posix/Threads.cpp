// POSIX only: thread identifiers.
#include <unistd.h>

#include "Quorvex.Platform.Threads.hpp"

namespace Quorvex::Platform {

// Kernel thread ids are bounded by the system's pid_max, far below 2^31.
uint32_t CurrentThreadId() { return static_cast<uint32_t>(::gettid()); }

}  // namespace Quorvex::Platform
