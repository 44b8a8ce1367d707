#include <gtest/gtest.h>

#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.System.AsyncAnon.hpp"
#include "Quorvex.System.AsyncList.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.TestSupport.hpp"
#include "Quorvex.Thread.ThreadPool.hpp"

namespace Quorvex::System::AsyncList {
namespace {

using Async::ICancellable;
using Async::TAsyncStatus;
using AsyncAnon::NewAsyncCallback;
using Rtl::Objects::CreateObject;
using Testing::TTestCounter;
using Thread::ThreadPool::IThreadPool;
using Thread::ThreadPool::TThreadPool;

IntfPtr<IAsyncList> NewAsyncList() { return CreateObject<TAsyncList>(); }

// A finished operation that tells when someone waits for it.
class TWaitProbe : public Rtl::Objects::TInterfacedObject, public IAsync {
  QX_CLASS(TWaitProbe, TInterfacedObject, "Tests")
  QX_INTERFACES(IAsync)
 public:
  explicit TWaitProbe(TTestCounter& waits) : FWaits(waits) {}
  TAsyncStatus GetStatus() override { return TAsyncStatus::asCompleted; }
  IntfPtr<ExceptionInfo::IExceptionInfo> GetFailure() override { return nullptr; }
  Rtl::TypInfo::TValue GetResult() override { return {}; }
  void Cancel() override {}
  void Wait() override { FWaits.Add(); }

 private:
  TTestCounter& FWaits;
};

TEST(AsyncListTest, KeepsEachOperationOnceInOrder) {
  const IntfPtr<IAsyncList> list = NewAsyncList();
  list->WaitAll();  // empty: returns at once
  const IntfPtr<IAsync> first = NewAsyncCallback([] {});
  const IntfPtr<IAsync> second = NewAsyncCallback([] {});
  list->Add(first);
  list->Add(second);
  list->Add(first);
  EXPECT_EQ(list->ToArray(), (TAsyncArray{first, second}));
  EXPECT_RAISES(Rtl::Exceptions::EArgumentException, list->Add(nullptr), u"Cannot add a nil operation");

  TAsyncArray& inner = list->LockList();
  EXPECT_EQ(inner.size(), 2u);
  EXPECT_EQ(list->ToArray().size(), 2u) << "the lock is re-entrant";
  list->UnlockList();

  list->Clear();
  EXPECT_TRUE(list->ToArray().empty());
}

TEST(AsyncListTest, CancelAllThenWaitAllEndsEveryOperation) {
  const IntfPtr<IThreadPool> pool = CreateObject<TThreadPool>(2, 8);
  const IntfPtr<IAsyncList> list = NewAsyncList();
  TTestCounter started;
  for (int i = 0; i < 2; ++i) {
    const auto busy = NewAsyncCallback([&started](ICancellable& stop) {
      started.Add();
      EXPECT_TRUE(Testing::Eventually([&stop] { return stop.IsCancelled(); }));
    });
    list->Add(busy);
    pool->Schedule(busy);
  }
  ASSERT_TRUE(started.Reaches(2));
  const IntfPtr<IAsync> queued = NewAsyncCallback([] {});
  list->Add(queued);
  pool->Schedule(queued);
  list->CancelAll();
  list->WaitAll();
  for (const IntfPtr<IAsync>& async : list->ToArray()) EXPECT_EQ(async->GetStatus(), TAsyncStatus::asCancelled);
}

TEST(AsyncListTest, WaitAllWaitsOnlyForWhatWasListedWhenItStarted) {
  const IntfPtr<IThreadPool> pool = CreateObject<TThreadPool>(1, 4);
  const IntfPtr<IAsyncList> list = NewAsyncList();
  // Never scheduled: waiting for it would never return.
  const IntfPtr<IAsync> neverRun = NewAsyncCallback([] {});
  // WaitAll waits for the probe first, so its snapshot is taken by then.
  TTestCounter waiting;
  const IntfPtr<IAsync> probe = CreateObject<TWaitProbe>(waiting);
  const IntfPtr<IAsync> adder = NewAsyncCallback([&] {
    EXPECT_TRUE(waiting.Reaches(1));
    list->Add(neverRun);  // must not deadlock with WaitAll
  });
  list->Add(probe);
  list->Add(adder);
  pool->Schedule(adder);
  Testing::TWatchedThread waiter([list] { list->WaitAll(); });
  ASSERT_TRUE(waiter.Ends());
  EXPECT_EQ(adder->GetStatus(), TAsyncStatus::asCompleted);
  EXPECT_EQ(list->ToArray(), (TAsyncArray{probe, adder, neverRun}));
  EXPECT_EQ(neverRun->GetStatus(), TAsyncStatus::asStarted);
}

}  // namespace
}  // namespace Quorvex::System::AsyncList
