#include "Quorvex.Thread.ThreadPool.hpp"

#include <algorithm>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Units.hpp"

namespace Quorvex::Thread::ThreadPool {

// The unit keeps no state; it is registered so that it takes part in the
// library's start-up and shut-down like every other unit.
QX_UNIT(ThreadPoolUnit, u"Quorvex.Thread.ThreadPool", nullptr, nullptr);

namespace {

// Cancels the operation behind `action`, if it is one, so that whoever
// waits for it is not left waiting for work the pool will never run.
void CancelUnrun(const TPoolAction& action) {
  if (const IntfPtr<IAsync> async = action.As<IAsync>()) async->Cancel();
}

}  // namespace

int32_t TPoolThread::QueryInterface(const TGUID& iid, void** obj) {
  return Rtl::Objects::QueryInterfaceOf(this, this, iid, obj);
}

void TPoolThread::Execute() {
  const IntfPtr<ICancellable> self(this);
  // Holds the last action run until the next pop replaces it.
  TPoolAction item;
  while (!Terminated())
    if (FQueue.Pop(item)) item->Run(self);
}

TThreadPool::TThreadPool(int32_t threadCount, int32_t queueDepth) : FQueuedItems(queueDepth) {
  FThreads.reserve(static_cast<size_t>(std::max(threadCount, 0)));
  try {
    for (int32_t i = 0; i < threadCount; ++i) FThreads.push_back(Rtl::Objects::CreateObject<TPoolThread>(FQueuedItems));
  } catch (...) {
    FreeWorkers();
    throw;
  }
}

TThreadPool::~TThreadPool() { FreeWorkers(); }

int32_t TThreadPool::CountQueued() { return FQueuedItems.QueueSize(); }

void TThreadPool::Schedule(const TPoolAction& action) {
  if (!action) throw Rtl::Exceptions::EArgumentException(u"Cannot schedule a nil action");
  if (!FQueuedItems.Push(action)) CancelUnrun(action);
}

void TThreadPool::Schedule(const IntfPtr<IAsync>& async) {
  TPoolAction action = async.As<IAction<ICancellable>>();
  if (async && !action) Rtl::Exceptions::RaiseIntfCastError();
  Schedule(action);
}

void TThreadPool::Schedule(const std::vector<IntfPtr<IAsync>>& asyncs) {
  for (const IntfPtr<IAsync>& async : asyncs) Schedule(async);
}

void TThreadPool::CancelAll() {
  for (TPoolThread* worker : FThreads) worker->Terminate();
  FQueuedItems.DoShutDown();
}

void TThreadPool::FreeWorkers() {
  CancelAll();
  for (TPoolThread* worker : FThreads) Rtl::Objects::FreeObject(worker);
  FThreads.clear();
  TPoolAction unrun;
  while (FQueuedItems.Pop(unrun, 0)) {
    try {
      CancelUnrun(unrun);
    } catch (...) {
      // A pool going away has no one to tell that a cancellation failed;
      // the other operations must still be cancelled.
    }
  }
}

}  // namespace Quorvex::Thread::ThreadPool
