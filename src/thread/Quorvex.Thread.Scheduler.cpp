#include "Quorvex.Thread.Scheduler.hpp"

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Threads.hpp"

namespace Quorvex::Thread::Scheduler {

namespace {

using Thread::Locked::TLockHold;
using TQueueHandle = Locked<TThreadScheduler::TActionQueue*>;

// Runs every action waiting in `queue`, in order, each under a guard that
// swallows whatever it raises. A queue already freed belongs to a
// scheduler destroyed on another thread: its window goes now, on its own
// thread.
void RunQueued(const TQueueHandle& queue, TWindowHandle wnd) {
  const TLockHold hold(queue);
  TThreadScheduler::TActionQueue* actions = queue;
  if (actions == nullptr) {
    Rtl::Messages::DeallocateHWnd(wnd);
    return;
  }
  IntfPtr<IAction<>> action;
  while (actions->TryDequeue(action)) {
    try {
      action->Run();
    } catch (...) {
      // Deliberately silent: one failing action must not keep the others
      // from running, and the loop the window runs in has no one to tell.
    }
  }
}

// The hidden window's procedure over the queue and the window alone, so a
// window that outlives its scheduler never reaches the freed object.
void HandleMessage(const TQueueHandle& queue, TWindowHandle wnd, TMessage& message) {
  if (message.Msg == WmRunScheduled)
    RunQueued(queue, wnd);
  else
    message.Result = Rtl::Messages::DefWindowProc({wnd, message.Msg, message.WParam, message.LParam, 0});
}

// Destroys `wnd`; false when this thread does not own it.
bool TryDeallocate(TWindowHandle wnd) {
  try {
    Rtl::Messages::DeallocateHWnd(wnd);
    return true;
  } catch (const Rtl::Exceptions::EOSError&) {
    return false;
  }
}

}  // namespace

TThreadScheduler::TThreadScheduler(uint32_t AThreadID)
    : FThreadID(AThreadID), FQueue(Rtl::Objects::CreateObject<TActionQueue>()) {
  try {
    FWnd = Rtl::Messages::AllocateHWnd(
        [queue = FQueue](TMessage& message) { HandleMessage(queue, message.Wnd, message); });
  } catch (...) {
    FQueue.Free();
    throw;
  }
}

TThreadScheduler::~TThreadScheduler() {
  const bool destroyed = TryDeallocate(FWnd);
  FQueue.Free();
  // The owning thread's next pump finds the queue freed and destroys the
  // window there (RunQueued).
  if (!destroyed) Rtl::Messages::PostMessage(FWnd, WmRunScheduled, 0, 0);
}

IntfPtr<IThreadScheduler> TThreadScheduler::FromCurrentThreadContext() {
  return Rtl::Objects::CreateObject<TThreadScheduler>(Rtl::Threads::CurrentThreadID());
}

void TThreadScheduler::Schedule(const IntfPtr<IAction<>>& AAction) {
  if (!AAction) throw Rtl::Exceptions::EArgumentException(u"Schedule needs an action");
  if (Rtl::Threads::CurrentThreadID() == FThreadID) {
    AAction->Run();
    return;
  }
  const TLockHold hold(FQueue);
  static_cast<TActionQueue*>(FQueue)->Enqueue(AAction);
  // One message per action; a message lost here leaves the action for the
  // next one to find.
  Rtl::Messages::PostMessage(FWnd, WmRunScheduled, 0, 0);
}

void TThreadScheduler::WindowProc(TMessage& Message) { HandleMessage(FQueue, FWnd, Message); }

}  // namespace Quorvex::Thread::Scheduler
