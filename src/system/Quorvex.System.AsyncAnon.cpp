#include "Quorvex.System.AsyncAnon.hpp"

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::System::AsyncAnon {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(AsyncAnonUnit, u"Quorvex.System.AsyncAnon", nullptr, nullptr);

namespace Detail {

void RaiseNoWork() { throw Rtl::Exceptions::EArgumentException(u"An operation needs work to do"); }

}  // namespace Detail

TAsyncStatus TAsyncOperation::GetStatus() {
  const std::lock_guard lock(FLock);
  return FStatus;
}

IntfPtr<IExceptionInfo> TAsyncOperation::GetFailure() {
  const std::lock_guard lock(FLock);
  return FFailure;
}

TValue TAsyncOperation::GetResult() {
  // The result is written before the status turns asCompleted under the
  // lock, and never again, so it is read safely once that status is seen.
  return GetStatus() == TAsyncStatus::asCompleted ? ResultValue() : TValue();
}

void TAsyncOperation::Cancel() {
  FCancelRequested = true;
  {
    const std::lock_guard lock(FLock);
    if (FPhase != TPhase::Pending) return;
    // Claimed here, so a later Run finds nothing to do.
    FPhase = TPhase::Running;
  }
  Finish(TAsyncStatus::asCancelled, nullptr);
}

void TAsyncOperation::Wait() {
  std::unique_lock lock(FLock);
  FDone.wait(lock, [this] { return FPhase == TPhase::Done; });
}

bool TAsyncOperation::IsCancelled() {
  ICancellable* worker = FWorker;
  const bool cancelled = FCancelRequested || (worker && worker->IsCancelled());
  if (cancelled) FCancelSeen = true;
  return cancelled;
}

void TAsyncOperation::Run(const IntfPtr<ICancellable>& worker) {
  {
    const std::lock_guard lock(FLock);
    if (FPhase != TPhase::Pending) return;
    FPhase = TPhase::Running;
  }
  FWorker = worker.Get();
  TAsyncStatus status = TAsyncStatus::asCompleted;
  IntfPtr<IExceptionInfo> failure;
  try {
    DoWork();
    if (FCancelSeen) status = TAsyncStatus::asCancelled;
  } catch (...) {
    status = TAsyncStatus::asError;
    failure = Rtl::Objects::CreateObject<ExceptionInfo::TExceptionInfo>(std::current_exception());
  }
  FWorker = nullptr;
  Finish(status, std::move(failure));
}

void TAsyncOperation::Finish(TAsyncStatus status, IntfPtr<IExceptionInfo> failure) {
  {
    const std::lock_guard lock(FLock);
    FStatus = status;
    FFailure = std::move(failure);
    FPhase = TPhase::Done;
    FDone.notify_all();
  }
  // Whoever called Run or Cancel holds a reference, so a waiter dropping
  // its own cannot free the operation before this returns.
  Finished();
}

}  // namespace Quorvex::System::AsyncAnon
