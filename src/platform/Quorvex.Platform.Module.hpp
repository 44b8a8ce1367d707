// Loaded modules and the system clock: the version block a module carries
// and the millisecond tick count. Like the rest of the platform layer,
// nothing here raises.
#pragma once

#include <cstdint>
#include <vector>

namespace Quorvex::Platform {

// A loaded module: an HMODULE on Windows, a dlopen handle elsewhere; 0
// stands for the process's main executable.
using ModuleHandle = uintptr_t;

// Copies the whole version block of `module` into `bytes`: on Windows its
// version resource "#1", elsewhere the block stamped into it at build time
// (its length taken from its first two bytes). False when the module has
// no block of its own.
bool ReadVersionResource(ModuleHandle module, std::vector<uint8_t>& bytes);

// Milliseconds since the system started, time spent suspended included,
// as a 32-bit count, wrapping to 0 after about 49.7 days.
uint32_t TickCount32();

}  // namespace Quorvex::Platform
