// Asynchronous operations built from closures, with or without a result,
// ready to run on a thread pool:
//
//   IntfPtr<IAsyncCallback> sum = NewAsyncCallback([](ICancellable& stop) {
//     int64_t total = 0;
//     for (int i = 0; i < 1000 && !stop.IsCancelled(); ++i) total += i;
//     return total;
//   });
//   pool->Schedule(sum);
//   sum->Wait();
//   if (sum->GetStatus() == TAsyncStatus::asCompleted) use(sum->GetResult().AsType<int64_t>());
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.TypInfo.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.System.Async.hpp"

namespace Quorvex::System::AsyncAnon {

using Actions::IAction;
using Async::IAsync;
using Async::ICancellable;
using Async::TAsyncStatus;
using ExceptionInfo::IExceptionInfo;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TInterfacedObject;
using Rtl::TypInfo::TValue;

// The type of operations built from closures. It has no identifier of its
// own: query an object for IAsync.
class IAsyncCallback : public IAsync {};

// The life of an operation, for the closure-based types to build on. The
// operation runs its work once, from the first Run; a later Run does
// nothing. While the work runs, the operation is itself the stop request it
// polls: it answers true once Cancel was called or the running pool worker
// is cancelled. The work ends the operation as
//   asCompleted  when it returns without having seen a stop request;
//   asCancelled  when it returns after IsCancelled answered true, or when
//                Cancel comes before the work started (it then never runs);
//   asError      when it raises: the exception is captured, not passed on.
class QXRTL_API TAsyncOperation : public TInterfacedObject,
                                  public IAsyncCallback,
                                  public IAction<ICancellable>,
                                  public ICancellable {
  QX_CLASS(TAsyncOperation, TInterfacedObject, "Quorvex.System.AsyncAnon")
  QX_INTERFACES(IAsync, IAction<ICancellable>, ICancellable)
 public:
  TAsyncStatus GetStatus() override;
  // The captured exception, with its inner chain, once the status is
  // asError; null otherwise.
  IntfPtr<IExceptionInfo> GetFailure() override;
  // The work's result once the status is asCompleted; the empty value
  // otherwise and for work without a result.
  TValue GetResult() override;
  void Cancel() override;
  void Wait() override;

  // Does the work on the calling thread, polling `worker` (may be null)
  // beside the operation's own flag.
  void Run(const IntfPtr<ICancellable>& worker) override;
  bool IsCancelled() override;

 protected:
  // The work itself; it polls IsCancelled to see stop requests.
  virtual void DoWork() = 0;
  // The result as a value, read only once the work returned.
  virtual TValue ResultValue() { return {}; }
  // Called once the status is final, outside the lock, on the thread that
  // finished the operation (the worker's, or Cancel's caller's).
  virtual void Finished() {}

 private:
  enum class TPhase : uint8_t { Pending, Running, Done };

  void Finish(TAsyncStatus status, IntfPtr<IExceptionInfo> failure);

  std::mutex FLock;
  std::condition_variable FDone;
  TPhase FPhase = TPhase::Pending;
  TAsyncStatus FStatus = TAsyncStatus::asStarted;
  IntfPtr<IExceptionInfo> FFailure;
  std::atomic<bool> FCancelRequested{false};
  std::atomic<bool> FCancelSeen{false};
  // The pool worker running the work, uncounted; null outside Run.
  std::atomic<ICancellable*> FWorker{nullptr};
};

namespace Detail {

// Raises EArgumentException "An operation needs work to do".
[[noreturn]] QXRTL_API void RaiseNoWork();

// Where an operation keeps what its work returned; nothing for void.
template <typename TResult>
class TResultSlot {
 public:
  template <typename F>
  void Store(F&& produce) { FValue.emplace(produce()); }
  const TResult& Get() const { return *FValue; }
  TValue ToValue() const { return FValue ? TValue::From(*FValue) : TValue(); }

 private:
  std::optional<TResult> FValue;
};

template <>
class TResultSlot<void> {
 public:
  template <typename F>
  void Store(F&& produce) { produce(); }
  TValue ToValue() const { return {}; }
};

}  // namespace Detail

// An operation over a closure taking the stop request. TResult is void or
// a type with type information (numbers, strings, enumerations, records,
// objects, interfaces), which GetResult hands out.
template <typename TResult = void>
class TAsyncCallback : public TAsyncOperation {
  QX_CLASS(TAsyncCallback, TAsyncOperation, "Quorvex.System.AsyncAnon")
 public:
  using TWork = std::function<TResult(ICancellable&)>;

  explicit TAsyncCallback(TWork work) : FWork(std::move(work)) {}

 protected:
  void DoWork() override {
    FResult.Store([this]() -> TResult { return FWork(*this); });
  }
  TValue ResultValue() override { return FResult.ToValue(); }

 private:
  TWork FWork;
  Detail::TResultSlot<TResult> FResult;
};

// An operation over `work`, which takes an ICancellable& or nothing and
// returns void or a described type. Raises EArgumentException "An
// operation needs work to do" for an empty std::function.
template <typename F>
IntfPtr<IAsyncCallback> NewAsyncCallback(F work) {
  if constexpr (std::is_invocable_v<F&, ICancellable&>) {
    using TResult = std::invoke_result_t<F&, ICancellable&>;
    typename TAsyncCallback<TResult>::TWork body(std::move(work));
    if (!body) Detail::RaiseNoWork();
    return Rtl::Objects::CreateObject<TAsyncCallback<TResult>>(std::move(body));
  } else {
    static_assert(std::is_invocable_v<F&>, "the work takes an ICancellable& or nothing");
    std::function<std::invoke_result_t<F&>()> plain(std::move(work));
    if (!plain) Detail::RaiseNoWork();
    return NewAsyncCallback([plain = std::move(plain)](ICancellable&) { return plain(); });
  }
}

}  // namespace Quorvex::System::AsyncAnon
