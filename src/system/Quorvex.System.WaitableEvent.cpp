#include "Quorvex.System.WaitableEvent.hpp"

#include "Quorvex.Platform.Events.hpp"

namespace Quorvex::System::WaitableEvent {

static_assert(kInfinite == Platform::kWaitForever);

TWaitableEvent::TWaitableEvent(UnicodeStringView AName) : FEvent(Platform::OpenEventObject(AName)) {}

TWaitableEvent::~TWaitableEvent() { Platform::CloseEvent(FEvent); }

void TWaitableEvent::SetEvent() { Platform::SignalEvent(FEvent); }

bool TWaitableEvent::Wait(uint32_t ATimeout) { return Platform::WaitEvent(FEvent, ATimeout); }

}  // namespace Quorvex::System::WaitableEvent
