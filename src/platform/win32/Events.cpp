// Windows only: manual-reset events are the system's event objects.
#include "Quorvex.Platform.Events.hpp"
#include "Quorvex.Platform.Win32.hpp"

namespace Quorvex::Platform {

EventHandle OpenEventObject(std::u16string_view name) {
  HANDLE event = nullptr;
  if (name.empty()) {
    event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  } else if (const Win32::WidePath wide(name); wide) {
    event = CreateEventW(nullptr, TRUE, FALSE, wide.c_str());
  }
  return reinterpret_cast<EventHandle>(event);
}

bool SignalEvent(EventHandle event) { return ::SetEvent(reinterpret_cast<HANDLE>(event)) != 0; }

bool WaitEvent(EventHandle event, uint32_t timeoutMs) {
  return WaitForSingleObject(reinterpret_cast<HANDLE>(event), timeoutMs) == WAIT_OBJECT_0;
}

void CloseEvent(EventHandle event) {
  if (event != 0) CloseHandle(reinterpret_cast<HANDLE>(event));
}

}  // namespace Quorvex::Platform
