// Manual-reset events that are signalled once: unnamed ones for the
// threads of one process, named ones shared by every process of the same
// user that opens the same name. Like the rest of the platform layer,
// nothing here raises.
#pragma once

#include <cstdint>
#include <string_view>

namespace Quorvex::Platform {

// An open event: a HANDLE on Windows; elsewhere the address of this
// process's record of the event, meaningful to these functions only. 0
// stands for no event.
using EventHandle = uintptr_t;

// The time-out that waits without end.
constexpr uint32_t kWaitForever = 0xFFFFFFFFu;

// Opens the event `name`, making it (not signalled) when no open event has
// that name; an empty name makes a new unnamed event. 0 on failure with
// the reason in LastError(): a name holding a NUL is refused (as an invalid
// name) rather than cut short, which would open another event.
EventHandle OpenEventObject(std::u16string_view name);

// Signals `event`: every wait on it, now or later, returns true. False
// when the handle is not an event.
bool SignalEvent(EventHandle event);

// Waits until `event` is signalled or `timeoutMs` milliseconds have passed
// (kWaitForever: no limit). True when signalled; false on time-out and at
// once for handle 0.
bool WaitEvent(EventHandle event, uint32_t timeoutMs);

// Closes the handle; nothing for 0. A named event goes with the last
// handle any process holds on it.
void CloseEvent(EventHandle event);

}  // namespace Quorvex::Platform
