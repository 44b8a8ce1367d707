#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.TestSupport.hpp"
#include "Quorvex.Thread.ThreadPool.hpp"

namespace Quorvex::Thread::ThreadPool {
namespace {

using Rtl::Objects::CreateObject;
using Rtl::TypInfo::TValue;
using System::Async::TAsyncStatus;
using System::ExceptionInfo::IExceptionInfo;
using Testing::Eventually;
using Testing::TTestCounter;

using TBody = std::function<void(const IntfPtr<ICancellable>&)>;

// How often the actions of one test ran and were freed.
struct TTally {
  TTestCounter Runs;
  TTestCounter Freed;
};

// An action that runs `body`, then counts the run; it counts its own end too.
class TCountedAction : public TInterfacedObject, public IAction<ICancellable> {
  QX_CLASS(TCountedAction, TInterfacedObject, "Tests")
  QX_INTERFACES(IAction<ICancellable>)
 public:
  TCountedAction(TTally& tally, TBody body) : FTally(tally), FBody(std::move(body)) {}
  ~TCountedAction() override { FTally.Freed.Add(); }

  void Run(const IntfPtr<ICancellable>& cancellable) override {
    if (FBody) FBody(cancellable);
    FTally.Runs.Add();
  }

 private:
  TTally& FTally;
  TBody FBody;
};

TPoolAction Counted(TTally& tally, TBody body = {}) { return CreateObject<TCountedAction>(tally, std::move(body)); }

// A body that signals `started`, then holds its worker until the pool is cancelled.
TBody UntilCancelled(TTestCounter& started) {
  return [&started](const IntfPtr<ICancellable>& cancellable) {
    started.Add();
    EXPECT_TRUE(Eventually([&] { return cancellable->IsCancelled(); }));
  };
}

// A body that signals `started`, then waits for `gate` to open.
TBody UntilOpen(TTestCounter& started, TTestCounter& gate) {
  return [&started, &gate](const IntfPtr<ICancellable>&) {
    started.Add();
    EXPECT_TRUE(gate.Reaches(1));
  };
}

IntfPtr<IThreadPool> NewPool(int32_t threads, int32_t depth) { return CreateObject<TThreadPool>(threads, depth); }

// An operation without work of its own to hand to a worker.
class TWorklessOperation : public TInterfacedObject, public IAsync {
  QX_CLASS(TWorklessOperation, TInterfacedObject, "Tests")
  QX_INTERFACES(IAsync)
 public:
  TAsyncStatus GetStatus() override { return TAsyncStatus::asStarted; }
  IntfPtr<IExceptionInfo> GetFailure() override { return nullptr; }
  TValue GetResult() override { return {}; }
  void Cancel() override {}
  void Wait() override {}
};

// An operation whose work appends its name to a log.
class TOperation : public TWorklessOperation, public IAction<ICancellable> {
  QX_CLASS(TOperation, TWorklessOperation, "Tests")
  QX_INTERFACES(IAction<ICancellable>)
 public:
  TOperation(std::string& log, char name) : FLog(log), FName(name) {}
  void Run(const IntfPtr<ICancellable>&) override { FLog += FName; }

 private:
  std::string& FLog;
  char FName;
};

TEST(ThreadPoolTest, OneWorkerRunsActionsInTheOrderScheduled) {
  TTally tally;
  std::vector<int> order;
  {
    auto pool = NewPool(1, 4);
    for (int i = 0; i < 200; ++i) pool->Schedule(Counted(tally, [&order, i](auto&) { order.push_back(i); }));
    ASSERT_TRUE(tally.Runs.Reaches(200));
  }
  std::vector<int> expected(200);
  for (int i = 0; i < 200; ++i) expected[i] = i;
  EXPECT_EQ(order, expected);
  EXPECT_EQ(tally.Freed.Value(), 200);
}

TEST(ThreadPoolTest, OperationsRunThroughTheirActionInArrayOrder) {
  std::string log;
  TTally tally;
  {
    auto pool = NewPool(1, 2);
    pool->Schedule(IntfPtr<IAsync>(CreateObject<TOperation>(log, 'a')));
    pool->Schedule(
        {CreateObject<TOperation>(log, 'b'), CreateObject<TOperation>(log, 'c'), CreateObject<TOperation>(log, 'd')});
    pool->Schedule(Counted(tally));  // the last: once it ran, so had the operations
    ASSERT_TRUE(tally.Runs.Reaches(1));
  }
  EXPECT_EQ(log, "abcd");
}

TEST(ThreadPoolTest, BadWorkAndBadDepthsAreRefusedWithTheirMessage) {
  auto pool = NewPool(1, 2);
  const struct {
    const char* name;
    std::function<void()> schedule;
    std::u16string raised;
  } cases[] = {
      {"operation without an action", [&] { pool->Schedule(IntfPtr<IAsync>(CreateObject<TWorklessOperation>())); },
       u"EIntfCastError: Interface not supported"},
      {"array holding an operation without an action",
       [&] { pool->Schedule(std::vector<IntfPtr<IAsync>>{CreateObject<TWorklessOperation>()}); },
       u"EIntfCastError: Interface not supported"},
      {"nil action", [&] { pool->Schedule(TPoolAction()); }, u"EArgumentException: Cannot schedule a nil action"},
      {"nil operation", [&] { pool->Schedule(IntfPtr<IAsync>()); },
       u"EArgumentException: Cannot schedule a nil action"},
      {"queue depth 0", [] { NewPool(2, 0); }, u"EArgumentOutOfRangeException: Queue capacity must be at least 1 (0)"},
      {"negative queue depth", [] { NewPool(0, -5); },
       u"EArgumentOutOfRangeException: Queue capacity must be at least 1 (-5)"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    try {
      test.schedule();
      ADD_FAILURE() << "nothing raised";
    } catch (const Rtl::Exceptions::Exception& e) {
      EXPECT_EQ(e.ClassName() + u": " + e.Message(), test.raised);
    }
    EXPECT_EQ(pool->CountQueued(), 0);
  }
}

TEST(ThreadPoolTest, AFullQueueHoldsTheSchedulerBackUntilAWorkerTakesAnItem) {
  TTally tally;
  TTestCounter started;
  TTestCounter gate;
  TTestCounter scheduled;
  auto pool = NewPool(1, 1);
  pool->Schedule(Counted(tally, UntilOpen(started, gate)));
  ASSERT_TRUE(started.Reaches(1));  // the worker is busy and the queue empty
  pool->Schedule(Counted(tally));   // returns at once
  EXPECT_EQ(pool->CountQueued(), 1);
  std::thread producer([&] {
    pool->Schedule(Counted(tally));
    scheduled.Add();
  });
  EXPECT_TRUE(scheduled.StaysBelow(1));
  EXPECT_EQ(pool->CountQueued(), 1);
  gate.Add();
  EXPECT_TRUE(scheduled.Reaches(1));
  producer.join();
  EXPECT_TRUE(tally.Runs.Reaches(3));
}

TEST(ThreadPoolTest, CancelAllIsSeenByRunningActionsAndRefusesLaterWork) {
  TTally tally;
  std::vector<bool> seen;
  auto pool = NewPool(1, 4);
  TTestCounter started;
  pool->Schedule(Counted(tally, [&](const IntfPtr<ICancellable>& cancellable) {
    seen.push_back(cancellable->IsCancelled());
    UntilCancelled(started)(cancellable);
    seen.push_back(cancellable->IsCancelled());
  }));
  ASSERT_TRUE(started.Reaches(1));
  pool->Schedule(Counted(tally));
  EXPECT_EQ(pool->CountQueued(), 1);
  pool->CancelAll();
  EXPECT_TRUE(tally.Runs.Reaches(1));
  pool->Schedule(Counted(tally));       // dropped at once
  EXPECT_TRUE(tally.Freed.Reaches(2));  // and the first when its worker ended
  EXPECT_EQ(pool->CountQueued(), 1);
  pool->CancelAll();  // again: nothing changes
  EXPECT_EQ(pool->CountQueued(), 1);
  pool.Reset();
  EXPECT_EQ(seen, (std::vector<bool>{false, true}));
  EXPECT_EQ(tally.Runs.Value(), 1);
  EXPECT_EQ(tally.Freed.Value(), 3);
}

TEST(ThreadPoolTest, DestroyingAPoolReleasesQueuedItemsWithoutRunningThem) {
  const struct {
    const char* name;
    int32_t threads;
  } cases[] = {{"busy workers", 2}, {"no workers", 0}, {"a negative count of workers", -3}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    TTally busy;
    TTally queued;
    TTestCounter started;
    auto pool = NewPool(test.threads, 10);
    for (int32_t i = 0; i < test.threads; ++i) pool->Schedule(Counted(busy, UntilCancelled(started)));
    ASSERT_TRUE(started.Reaches(std::max(test.threads, 0)));
    for (int i = 0; i < 10; ++i) pool->Schedule(Counted(queued));
    EXPECT_EQ(pool->CountQueued(), 10);
    pool.Reset();
    EXPECT_EQ(queued.Runs.Value(), 0);
    EXPECT_EQ(queued.Freed.Value(), 10);
    EXPECT_EQ(busy.Runs.Value(), busy.Freed.Value());
  }
}

TEST(ThreadPoolTest, AnActionThatRaisesEndsItsWorkerAndThePoolRunsOn) {
  TTally tally;
  TTestCounter raised;
  TTestCounter started;
  TTestCounter gate;
  auto pool = NewPool(2, 4);
  pool->Schedule(Counted(tally, [&](auto&) {
    raised.Add();
    throw Rtl::Exceptions::EConvertError(u"bad digit");
  }));
  ASSERT_TRUE(raised.Reaches(1));
  // Two actions that each hold a worker: only one worker is left to take them.
  pool->Schedule(Counted(tally, UntilOpen(started, gate)));
  pool->Schedule(Counted(tally, UntilOpen(started, gate)));
  EXPECT_TRUE(started.Reaches(1));
  EXPECT_TRUE(started.StaysBelow(2));
  gate.Add();
  EXPECT_TRUE(tally.Runs.Reaches(2));

  // With its only worker gone, a pool queues work that never runs.
  TTally alone;
  auto single = NewPool(1, 4);
  single->Schedule(Counted(alone, [&](auto&) { throw std::runtime_error("gone"); }));
  EXPECT_TRUE(alone.Freed.Reaches(1));  // released when the worker ended
  single->Schedule(Counted(alone));
  EXPECT_TRUE(alone.Runs.StaysBelow(1));
  EXPECT_EQ(single->CountQueued(), 1);
  single.Reset();
  EXPECT_EQ(alone.Freed.Value(), 2);
}

TEST(ThreadPoolTest, WorkersHandThemselvesOutWithoutReferenceCounting) {
  using Rtl::Objects::HResult::NoInterface;
  using Rtl::Objects::HResult::Ok;
  const struct {
    const char* name;
    TGUID iid;
    int32_t answer;
  } cases[] = {
      {"ICancellable", ICancellable::IID, Ok},
      {"IInterface", IInterface::IID, Ok},
      {"IAction<ICancellable>", IAction<ICancellable>::IID, NoInterface},
      {"IThreadPool", IThreadPool::IID, NoInterface},
  };
  TTally tally;
  IntfPtr<ICancellable> worker;
  auto pool = NewPool(1, 1);
  pool->Schedule(Counted(tally, [&](const IntfPtr<ICancellable>& cancellable) {
    worker = cancellable;
    EXPECT_EQ(cancellable->_AddRef(), -1);
    EXPECT_EQ(cancellable->_Release(), -1);
    for (const auto& test : cases) {
      SCOPED_TRACE(test.name);
      void* found = &found;
      EXPECT_EQ(cancellable->QueryInterface(test.iid, &found), test.answer);
      EXPECT_EQ(found != nullptr, test.answer == Ok);
    }
  }));
  ASSERT_TRUE(tally.Runs.Reaches(1));
  EXPECT_FALSE(worker->IsCancelled());
  auto* thread = dynamic_cast<TPoolThread*>(Rtl::Objects::ObjectOf(worker.Get()));
  ASSERT_NE(thread, nullptr);
  EXPECT_NE(thread->ThreadID(), Rtl::Threads::CurrentThreadID());
  pool->CancelAll();
  EXPECT_TRUE(worker->IsCancelled());
  worker.Reset();  // the pool frees its workers whatever their references say
}

TEST(ThreadPoolTest, CancelAllWakesProducersBlockedOnAFullQueue) {
  TTally tally;
  TTestCounter started;
  TTestCounter back;
  auto pool = NewPool(1, 2);
  pool->Schedule(Counted(tally, UntilCancelled(started)));
  ASSERT_TRUE(started.Reaches(1));
  pool->Schedule(Counted(tally));
  pool->Schedule(Counted(tally));
  std::vector<std::thread> producers;
  for (int i = 0; i < 3; ++i)
    producers.emplace_back([&] {
      pool->Schedule(Counted(tally));
      back.Add();
    });
  EXPECT_TRUE(back.StaysBelow(1));
  pool->CancelAll();
  EXPECT_TRUE(back.Reaches(3));
  for (auto& producer : producers) producer.join();
  EXPECT_EQ(pool->CountQueued(), 2);
  pool.Reset();
  EXPECT_EQ(tally.Runs.Value(), 1);
  EXPECT_EQ(tally.Freed.Value(), 6);
}

// Marks its own slot; a slot marked twice, or never, is a fault.
class TStressAction : public TInterfacedObject, public IAction<ICancellable> {
  QX_CLASS(TStressAction, TInterfacedObject, "Tests")
  QX_INTERFACES(IAction<ICancellable>)
 public:
  TStressAction(std::atomic<uint8_t>& slot, std::atomic<int>& freed) : FSlot(slot), FFreed(freed) {}
  ~TStressAction() override { FFreed.fetch_add(1, std::memory_order_relaxed); }
  void Run(const IntfPtr<ICancellable>&) override { FSlot.fetch_add(1, std::memory_order_relaxed); }

 private:
  std::atomic<uint8_t>& FSlot;
  std::atomic<int>& FFreed;
};

TEST(ThreadPoolTest, ManyProducersLoseNothingAndRunNothingTwice) {
#if defined(_WIN32)
  // Under Wine every contended hand-over is a round trip to its server, about
  // a hundred times the native cost: a tenth of the count keeps the lane short.
  constexpr int kPerProducer = 10000;
#else
  constexpr int kPerProducer = 100000;
#endif
  constexpr int kProducers = 8;
  constexpr int kTotal = kProducers * kPerProducer;
  auto slots = std::make_unique<std::atomic<uint8_t>[]>(kTotal);
  std::atomic<int> freed{0};
  TTally tally;
  {
    auto pool = NewPool(4, 64);
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
      producers.emplace_back([&, p] {
        for (int i = p * kPerProducer; i < (p + 1) * kPerProducer; ++i)
          pool->Schedule(CreateObject<TStressAction>(slots[i], freed));
      });
    for (auto& producer : producers) producer.join();
    pool->Schedule(Counted(tally));  // runs after every other item left the queue
    ASSERT_TRUE(tally.Runs.Reaches(1));
  }
  EXPECT_EQ(freed.load(), kTotal);
  int once = 0;
  for (int i = 0; i < kTotal; ++i) once += slots[i].load() == 1;
  EXPECT_EQ(once, kTotal);
}

}  // namespace
}  // namespace Quorvex::Thread::ThreadPool
