// Windows only: thread identifiers.
#include "Quorvex.Platform.Threads.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

uint32_t CurrentThreadId() { return ::GetCurrentThreadId(); }

}  // namespace Quorvex::Platform
