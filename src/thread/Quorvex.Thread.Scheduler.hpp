// Running work on one particular thread, normally the user-interface
// thread: other threads queue actions and post a message to a hidden
// window of that thread, whose window procedure runs them from the thread's
// message loop (on Linux, from Quorvex::Rtl::Messages::ProcessMessages).
#pragma once

#include <cstdint>

#include "Quorvex.Rtl.Messages.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Queues.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.Thread.Locked.hpp"

namespace Quorvex::Thread::Scheduler {

using Rtl::Messages::TMessage;
using Rtl::Messages::TWindowHandle;
using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;
using Rtl::Queues::TQueue;
using System::Actions::IAction;
using Thread::Locked::Locked;

// Hands actions to the thread a scheduler belongs to.
class IThreadScheduler : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{8C39C46E-21B9-46B5-8FC1-1491068C9F5E}");

  // Runs `AAction` on the scheduler's thread: at once when called there
  // (what it raises reaches the caller), otherwise later from that
  // thread's message loop. Raises EArgumentException "Schedule needs an
  // action" for a null one.
  virtual void Schedule(const IntfPtr<IAction<>>& AAction) = 0;
};

// The message that tells the hidden window to run the queued actions.
inline constexpr uint32_t WmRunScheduled = Rtl::Messages::WmUser + 333;

// A scheduler whose hidden window belongs to the thread that creates it.
// Actions queued from other threads run there in the order they were
// scheduled, all that wait in one go when the window's message arrives,
// while the queue's lock is held: another thread's Schedule waits for the
// batch to end. Each action's exception is swallowed so the next one runs.
class QXRTL_API TThreadScheduler : public TInterfacedObject, public IThreadScheduler {
  QX_CLASS(TThreadScheduler, TInterfacedObject, "Quorvex.Thread.Scheduler")
  QX_INTERFACES(IThreadScheduler)
 public:
  using TActionQueue = TQueue<IntfPtr<IAction<>>>;

  // Makes the hidden window on the calling thread; `AThreadID` names the
  // thread whose Schedule calls run at once, normally the calling thread.
  // Raises EOSError when the window cannot be made.
  explicit TThreadScheduler(uint32_t AThreadID);

  // Destroys the window and drops the actions still queued, unrun. Off the
  // owning thread the window cannot be destroyed there: it is left to
  // destroy itself on its thread's next pump.
  ~TThreadScheduler() override;

  // A scheduler for the calling thread.
  static IntfPtr<IThreadScheduler> FromCurrentThreadContext();

  void Schedule(const IntfPtr<IAction<>>& AAction) override;

  // The hidden window's procedure: WmRunScheduled runs every queued
  // action, each under its own guard; any other message gets the system's
  // default answer in Message.Result.
  void WindowProc(TMessage& Message);

 private:
  uint32_t FThreadID;
  TWindowHandle FWnd = 0;
  Locked<TActionQueue*> FQueue;
};

}  // namespace Quorvex::Thread::Scheduler
