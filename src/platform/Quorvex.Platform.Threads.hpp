// Threads as the system numbers them.
#pragma once

#include <cstdint>

namespace Quorvex::Platform {

// The system's identifier of the calling thread (GetCurrentThreadId, or the
// kernel's thread id), unique among the threads alive and never 0.
uint32_t CurrentThreadId();

}  // namespace Quorvex::Platform
