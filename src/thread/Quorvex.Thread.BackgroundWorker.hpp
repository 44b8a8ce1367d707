// Work that runs on a thread pool and reports its progress and its end to
// the thread that made it, through that thread's scheduler: handlers run
// there while it pumps its messages, so they may touch what that thread
// owns (a window, a model) without locks.
//
//   auto worker = NewBackgroundWorker<int>([](TBackgroundWorkerBase& self) {
//     for (int step = 1; step <= 10; ++step) {
//       if (self.IsCancelled()) return 0;
//       self.ReportProgress(step * 10, u"Copying");
//     }
//     return 10;
//   });
//   worker->OnProgress = [](int32_t percent, const UnicodeString& message) { ... };
//   worker->OnCompleted = [](TBackgroundWorker<int>& done) { ... done.Result() ... };
//   worker->Start(pool);
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.System.AsyncAnon.hpp"
#include "Quorvex.Thread.Scheduler.hpp"
#include "Quorvex.Thread.ThreadPool.hpp"

namespace Quorvex::Thread::BackgroundWorker {

using Rtl::Objects::IntfPtr;
using Rtl::Strings::UnicodeString;
using Scheduler::IThreadScheduler;
using System::Async::TAsyncStatus;
using System::AsyncAnon::TAsyncOperation;
using ThreadPool::IThreadPool;

// Everything of a worker but its result's type: what the work calls
// (IsCancelled, ReportProgress) and how reports reach the making thread.
class QXRTL_API TBackgroundWorkerBase : public TAsyncOperation {
  QX_CLASS(TBackgroundWorkerBase, TAsyncOperation, "Quorvex.Thread.BackgroundWorker")
 public:
  using TProgressHandler = std::function<void(int32_t APercent, const UnicodeString& AMessage)>;

  // Runs on the making thread for each report, in the order reported. Set
  // it before Start; it is dropped once the worker has ended.
  TProgressHandler OnProgress;

  // Queues the work on `APool`. Raises EArgumentException "Cannot start on
  // a nil pool", and EInvalidOperation "The worker has already been
  // started" on a second call.
  void Start(const IntfPtr<IThreadPool>& APool);

  // Called by the work: hands a report to the making thread. Raises
  // EArgumentOutOfRangeException "Progress must be between 0 and 100
  // (<percent>)".
  void ReportProgress(int32_t APercent, const UnicodeString& AMessage);

 protected:
  // Takes the scheduler of the calling thread, which receives the reports.
  TBackgroundWorkerBase();

  void Finished() override;
  // Runs the end handler on the making thread, then drops both handlers,
  // so a handler holding the worker does not keep it alive.
  virtual void DeliverCompleted() = 0;

 private:
  IntfPtr<IThreadScheduler> FScheduler;
  std::atomic<bool> FStarted{false};
};

// A worker whose work returns a TResult: void, or a type with type
// information (GetResult hands it out as a value too).
template <typename TResult = void>
class TBackgroundWorker : public TBackgroundWorkerBase {
  QX_CLASS(TBackgroundWorker, TBackgroundWorkerBase, "Quorvex.Thread.BackgroundWorker")
 public:
  using TWork = std::function<TResult(TBackgroundWorkerBase& AWorker)>;
  using TCompletedHandler = std::function<void(TBackgroundWorker& AWorker)>;

  // Raises EArgumentException "An operation needs work to do" for empty
  // work.
  explicit TBackgroundWorker(TWork AWork) : FWork(std::move(AWork)) {
    if (!FWork) System::AsyncAnon::Detail::RaiseNoWork();
  }

  // Runs once on the making thread when the worker has ended, whether
  // completed, cancelled or failed: ask the worker it gets which.
  TCompletedHandler OnCompleted;

  // What the work returned. Raises EInvalidOperation "The worker has not
  // completed" unless the status is asCompleted.
  template <typename R = TResult>
    requires(!std::is_void_v<R>)
  const R& Result() {
    if (GetStatus() != TAsyncStatus::asCompleted)
      throw Rtl::Exceptions::EInvalidOperation(u"The worker has not completed");
    return FResult.Get();
  }

 protected:
  void DoWork() override {
    FResult.Store([this]() -> TResult { return FWork(*this); });
  }
  Rtl::TypInfo::TValue ResultValue() override { return FResult.ToValue(); }

  void DeliverCompleted() override {
    TCompletedHandler handler = std::move(OnCompleted);
    OnCompleted = nullptr;
    OnProgress = nullptr;
    if (handler) handler(*this);
  }

 private:
  TWork FWork;
  System::AsyncAnon::Detail::TResultSlot<TResult> FResult;
};

// A worker over `AWork`, reporting to the calling thread.
template <typename TResult = void>
IntfPtr<TBackgroundWorker<TResult>> NewBackgroundWorker(typename TBackgroundWorker<TResult>::TWork AWork) {
  return Rtl::Objects::CreateObject<TBackgroundWorker<TResult>>(std::move(AWork));
}

}  // namespace Quorvex::Thread::BackgroundWorker
