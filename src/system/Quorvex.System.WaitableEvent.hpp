// An operating-system event behind a counted interface: set once, from any
// thread, it releases every wait on it for the rest of its life. Events
// with the same non-empty name are one event, across processes too.
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Threads.hpp"

namespace Quorvex::System::WaitableEvent {

using Rtl::Objects::IInterface;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;
using Rtl::Strings::UnicodeStringView;

// An event's handle. On Windows it is the event object's HANDLE, to wait
// on several objects at once. Elsewhere it identifies the event to this
// library within the process only; 0 means the event could not be made.
using THandle = uintptr_t;

// The time-out of a wait without end.
using Rtl::Threads::kInfinite;

// A manual-reset event that cannot be reset.
class IWaitableEvent : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{F2678B55-A71C-4D94-80FA-6894132B7F38}");

  // The event's handle (see THandle).
  virtual THandle GetHandle() = 0;
  // Signals the event for good: waits now and later return true.
  virtual void SetEvent() = 0;
  // Waits up to `ATimeout` milliseconds (kInfinite: no limit) for the event.
  // True when it is signalled; false on time-out, and at once when the event
  // could not be made.
  virtual bool Wait(uint32_t ATimeout) = 0;
};

// The event object. It raises nothing: when the system cannot make the
// event (a name holding a NUL, a name taken by another kind of object, no
// resources) the handle is 0, SetEvent does nothing and Wait answers false.
class QXRTL_API TWaitableEvent : public TInterfacedObject, public IWaitableEvent {
  QX_CLASS(TWaitableEvent, TInterfacedObject, "Quorvex.System.WaitableEvent")
  QX_INTERFACES(IWaitableEvent)
 public:
  // Opens the event named `AName`, making it not signalled if no process
  // has it open; an empty name makes a new unnamed event of this process.
  explicit TWaitableEvent(UnicodeStringView AName = u"");
  ~TWaitableEvent() override;
  TWaitableEvent(const TWaitableEvent&) = delete;
  TWaitableEvent& operator=(const TWaitableEvent&) = delete;

  THandle GetHandle() override { return FEvent; }
  void SetEvent() override;
  bool Wait(uint32_t ATimeout) override;

 private:
  THandle FEvent;
};

}  // namespace Quorvex::System::WaitableEvent
