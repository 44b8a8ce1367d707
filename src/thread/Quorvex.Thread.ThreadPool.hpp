// A fixed set of worker threads running queued actions in the order they
// were scheduled. The bounded queue is the pool's only lock: a full queue
// holds the scheduling thread back until a worker takes an item.
#pragma once

#include <cstdint>
#include <vector>

#include "Quorvex.Rtl.Export.hpp"
#include "Quorvex.Rtl.Objects.hpp"
#include "Quorvex.Rtl.Threads.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.System.Async.hpp"

namespace Quorvex::Thread::ThreadPool {

using Rtl::Objects::IInterface;
using Rtl::Objects::IntfPtr;
using Rtl::Objects::TGUID;
using Rtl::Objects::TInterfacedObject;
using System::Actions::IAction;
using System::Async::IAsync;
using System::Async::ICancellable;

// The pool's unit of work: run with the worker's stop request.
using TPoolAction = IntfPtr<IAction<ICancellable>>;
using TPoolQueue = Rtl::Threads::TBlockingQueue<TPoolAction>;

// Runs work on a pool of threads.
class IThreadPool : public virtual IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{F15B9F10-B4F6-4653-8631-D3C694DED86B}");

  // The number of items waiting in the queue, not counting those running.
  virtual int32_t CountQueued() = 0;
  // Queues `action`, waiting while the queue is full. Dropped silently
  // once the pool is cancelled (an operation is cancelled then); a null
  // action raises EArgumentException "Cannot schedule a nil action".
  virtual void Schedule(const TPoolAction& action) = 0;
  // Queues the IAction<ICancellable> of `async`; raises EIntfCastError
  // "Interface not supported" when it has none.
  virtual void Schedule(const IntfPtr<IAsync>& async) = 0;
  // Queues each operation in turn, in array order.
  virtual void Schedule(const std::vector<IntfPtr<IAsync>>& asyncs) = 0;
  // Tells every worker to stop after its current item and refuses all
  // further work; queued items never run. Final.
  virtual void CancelAll() = 0;
};

// One worker: pops actions and runs them, handing itself to each as its
// ICancellable, until it is told to terminate. An action that raises ends
// the worker (the exception is kept as its FatalException). Interface
// references do not count: the pool frees its workers.
class QXRTL_API TPoolThread : public Rtl::Threads::TThread, public ICancellable {
  QX_CLASS(TPoolThread, TThread, "Quorvex.Thread.ThreadPool")
  QX_INTERFACES(IInterface, ICancellable)
 public:
  // Starts the worker on `queue`, which must outlive it.
  explicit TPoolThread(TPoolQueue& queue) : FQueue(queue) {}

  // Answers 0 with *obj set for IInterface and ICancellable, otherwise
  // 0x80004002 with *obj null.
  int32_t QueryInterface(const TGUID& iid, void** obj) override;
  // Both do nothing and return -1.
  int32_t _AddRef() override { return -1; }
  int32_t _Release() override { return -1; }

  // True once the worker has been told to terminate.
  bool IsCancelled() override { return Terminated(); }

 protected:
  void Execute() override;

 private:
  TPoolQueue& FQueue;
};

// The pool: AThreadCount workers sharing one queue of AQueueDepth items.
class QXRTL_API TThreadPool : public TInterfacedObject, public IThreadPool {
  QX_CLASS(TThreadPool, TInterfacedObject, "Quorvex.Thread.ThreadPool")
  QX_INTERFACES(IThreadPool)
 public:
  // Starts `threadCount` workers at once; below 1 none, and work then
  // queues and never runs. Raises EArgumentOutOfRangeException "Queue
  // capacity must be at least 1 (<depth>)" for a depth below 1.
  TThreadPool(int32_t threadCount, int32_t queueDepth);
  // Cancels, waits for every worker to end, then releases the items still
  // queued without running them, cancelling those that are operations so
  // their waits return. Never call it from a worker of the pool.
  ~TThreadPool() override;

  int32_t CountQueued() override;
  void Schedule(const TPoolAction& action) override;
  void Schedule(const IntfPtr<IAsync>& async) override;
  void Schedule(const std::vector<IntfPtr<IAsync>>& asyncs) override;
  void CancelAll() override;

 private:
  void FreeWorkers();

  std::vector<TPoolThread*> FThreads;  // owned, in creation order
  TPoolQueue FQueuedItems;
};

}  // namespace Quorvex::Thread::ThreadPool
