#include "Quorvex.Rtl.Threads.hpp"

#include "Quorvex.Platform.Threads.hpp"
#include "Quorvex.Rtl.Strings.hpp"

namespace Quorvex::Rtl::Threads {

TThreadID CurrentThreadID() { return Platform::CurrentThreadId(); }

TThread::TThread() : FThread(&TThread::ThreadMain, this) {
  std::unique_lock lock(FLock);
  FChanged.wait(lock, [this] { return FThreadID != 0; });
}

TThread::~TThread() {
  Stop();
  FThread.join();
}

void TThread::AfterConstruction() {
  inherited::AfterConstruction();
  LeaveCreated(TPhase::Running);
}

void TThread::BeforeDestruction() {
  RefuseOwnThread();
  Stop();
  inherited::BeforeDestruction();
}

void TThread::Terminate() { FTerminated.store(true, std::memory_order_release); }

void TThread::WaitFor() {
  RefuseOwnThread();
  WaitUntilEnded();
}

std::exception_ptr TThread::FatalException() const {
  std::lock_guard lock(FLock);
  return FFatalException;
}

void TThread::ThreadMain() {
  if (!AwaitStart()) return;
  std::exception_ptr fatal;
  try {
    Execute();
  } catch (...) {
    fatal = std::current_exception();
  }
  std::lock_guard lock(FLock);
  FFatalException = std::move(fatal);
  FPhase = TPhase::Finished;
  FChanged.notify_all();
}

bool TThread::AwaitStart() {
  std::unique_lock lock(FLock);
  FThreadID = CurrentThreadID();
  FChanged.notify_all();
  FChanged.wait(lock, [this] { return FPhase != TPhase::Created; });
  return FPhase == TPhase::Running;
}

void TThread::LeaveCreated(TPhase phase) {
  std::lock_guard lock(FLock);
  if (FPhase != TPhase::Created) return;
  FPhase = phase;
  FChanged.notify_all();
}

void TThread::RefuseOwnThread() const {
  if (CurrentThreadID() == FThreadID) throw EThread(u"A thread cannot wait for itself");
}

void TThread::Stop() {
  Terminate();
  LeaveCreated(TPhase::Abandoned);
  WaitUntilEnded();
}

void TThread::WaitUntilEnded() {
  std::unique_lock lock(FLock);
  FChanged.wait(lock, [this] { return FPhase == TPhase::Finished || FPhase == TPhase::Abandoned; });
}

namespace Detail {
void RaiseBadCapacity(int32_t capacity) {
  throw Exceptions::EArgumentOutOfRangeException(Strings::Format(u"Queue capacity must be at least 1 (%d)", capacity));
}
}  // namespace Detail

}  // namespace Quorvex::Rtl::Threads
