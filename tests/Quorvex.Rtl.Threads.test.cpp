#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Quorvex.Rtl.Threads.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.TestSupport.hpp"

namespace Quorvex::Rtl::Threads {
namespace {

using Objects::CreateObject;
using Objects::FreeObject;
using Testing::Eventually;
using Testing::TTestCounter;

// Runs a closure as its Execute and counts how far it got.
class TProbeThread : public TThread {
  QX_CLASS(TProbeThread, TThread, "Tests")
 public:
  explicit TProbeThread(std::function<void(TProbeThread&)> body) : FBody(std::move(body)) {}

  TTestCounter Started;
  TTestCounter Ended;
  TThreadID RanOn = 0;

 protected:
  void Execute() override {
    Started.Add();
    RanOn = CurrentThreadID();
    FBody(*this);
    Ended.Add();
  }

 private:
  std::function<void(TProbeThread&)> FBody;
};

// Watches, in its constructor, that nothing of Execute runs while a
// constructor still does.
class TSlowlyBuiltThread : public TProbeThread {
  QX_CLASS(TSlowlyBuiltThread, TProbeThread, "Tests")
 public:
  TSlowlyBuiltThread() : TProbeThread([](TProbeThread&) {}) { StartedEarly = !Started.StaysBelow(1); }

  bool StartedEarly = false;
};

void UntilTerminated(TProbeThread& self) {
  EXPECT_TRUE(Eventually([&] { return self.Terminated(); }));
}

// What an exception held in an exception_ptr says, whatever its type.
std::string Describe(const std::exception_ptr& error) {
  try {
    std::rethrow_exception(error);
  } catch (const Exceptions::Exception& e) {
    return Strings::Utf16ToUtf8(e.ClassName()) + ": " + e.what();
  } catch (const std::exception& e) {
    return std::string("std: ") + e.what();
  } catch (int code) {
    return "int " + std::to_string(code);
  } catch (...) {
    return "something else";
  }
}

TEST(RtlThreadsTest, ExecuteRunsOnAThreadOfItsOwnOnceTheObjectIsBuilt) {
  const TThreadID mine = CurrentThreadID();
  EXPECT_NE(mine, 0u);
  EXPECT_EQ(CurrentThreadID(), mine);
  auto* thread = CreateObject<TSlowlyBuiltThread>();
  thread->WaitFor();
  EXPECT_FALSE(thread->StartedEarly);
  EXPECT_EQ(thread->Ended.Value(), 1);
  EXPECT_NE(thread->ThreadID(), 0u);
  EXPECT_NE(thread->ThreadID(), mine);
  EXPECT_EQ(thread->RanOn, thread->ThreadID());
  EXPECT_FALSE(thread->FatalException());
  EXPECT_FALSE(thread->Terminated());
  thread->WaitFor();  // again, after the end
  FreeObject(thread);
}

TEST(RtlThreadsTest, AnExceptionEscapingExecuteIsKeptAsTheFatalException) {
  const struct {
    const char* name;
    std::function<void()> raise;
    std::string kept;
  } cases[] = {
      {"library exception", [] { throw Exceptions::EConvertError(u"bad digit"); }, "EConvertError: bad digit"},
      {"standard exception", [] { throw std::out_of_range("past the end"); }, "std: past the end"},
      {"anything else", [] { throw 42; }, "int 42"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    auto* thread = CreateObject<TProbeThread>([&](TProbeThread&) { test.raise(); });
    thread->WaitFor();
    EXPECT_EQ(thread->Ended.Value(), 0);
    ASSERT_TRUE(thread->FatalException());
    EXPECT_EQ(Describe(thread->FatalException()), test.kept);
    FreeObject(thread);
  }
}

TEST(RtlThreadsTest, EndingAThreadWaitsForExecuteToReturn) {
  const struct {
    const char* name;
    std::function<void(TProbeThread*)> end;
    int runs;
  } cases[] = {
      {"terminate, then wait",
       [](TProbeThread* thread) {
         ASSERT_TRUE(thread->Started.Reaches(1));
         thread->Terminate();
         EXPECT_TRUE(thread->Terminated());
         thread->WaitFor();
         EXPECT_EQ(thread->Ended.Value(), 1);
         FreeObject(thread);
       },
       1},
      {"several threads wait at once",
       [](TProbeThread* thread) {
         TTestCounter back;
         std::vector<std::thread> waiters;
         for (int i = 0; i < 3; ++i)
           waiters.emplace_back([&] {
             thread->WaitFor();
             back.Add();
           });
         EXPECT_TRUE(back.StaysBelow(1));
         thread->Terminate();
         EXPECT_TRUE(back.Reaches(3));
         for (auto& waiter : waiters) waiter.join();
         FreeObject(thread);
       },
       1},
      {"free while running",
       [](TProbeThread* thread) {
         ASSERT_TRUE(thread->Started.Reaches(1));
         FreeObject(thread);  // terminates and waits
       },
       1},
      // A thread made without CreateObject is never let run.
      {"delete before the start", [](TProbeThread* thread) { delete thread; }, 0},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    TTestCounter runs;
    auto body = [&runs](TProbeThread& self) {
      UntilTerminated(self);
      runs.Add();
    };
    auto* thread = test.runs == 0 ? new TProbeThread(body) : CreateObject<TProbeThread>(body);
    test.end(thread);
    EXPECT_EQ(runs.Value(), test.runs);  // finished before the thread object went
  }
}

TEST(RtlThreadsTest, AThreadCannotWaitForItselfNorFreeItself) {
  std::vector<std::u16string> messages;
  auto* thread = CreateObject<TProbeThread>([&messages](TProbeThread& self) {
    for (auto end : {+[](TThread* t) { t->WaitFor(); }, +[](TThread* t) { FreeObject(t); }}) {
      try {
        end(&self);
        messages.push_back(u"returned");
      } catch (const EThread& e) {
        messages.push_back(e.Message());
      }
    }
  });
  thread->WaitFor();
  EXPECT_EQ(messages,
            (std::vector<std::u16string>{u"A thread cannot wait for itself", u"A thread cannot wait for itself"}));
  EXPECT_EQ(thread->Ended.Value(), 1);  // still alive after the refused free
  FreeObject(thread);
}

TEST(RtlThreadsTest, QueueCapacityMustBeAtLeastOne) {
  for (int32_t capacity : {0, -1, INT_MIN}) {
    SCOPED_TRACE(capacity);
    EXPECT_RAISES(Exceptions::EArgumentOutOfRangeException, TBlockingQueue<int>{capacity},
                  u"Queue capacity must be at least 1 (" + Strings::IntToStr(capacity) + u")");
  }
  EXPECT_EQ(TBlockingQueue<int>(1).Capacity(), 1);
  EXPECT_EQ(TBlockingQueue<int>(INT_MAX).Capacity(), INT_MAX);
}

TEST(RtlThreadsTest, QueueIsFirstInFirstOutAndGivesUpAfterItsTimeOut) {
  enum TOp { Push, Pop };
  const struct {
    const char* name;
    TOp op;
    int value;  // pushed, or expected from a pop (-1: left untouched)
    uint32_t timeout;
    bool done;
    int32_t size;
  } steps[] = {
      {"push 1", Push, 1, kInfinite, true, 1},
      {"push 2", Push, 2, 0, true, 2},
      {"push 3", Push, 3, 20, true, 3},
      {"push to a full queue without waiting", Push, 4, 0, false, 3},
      {"push to a full queue waiting 20 ms", Push, 4, 20, false, 3},
      {"pop 1", Pop, 1, kInfinite, true, 2},
      {"push 4 into the room", Push, 4, 0, true, 3},
      {"pop 2", Pop, 2, 0, true, 2},
      {"pop 3", Pop, 3, 20, true, 1},
      {"pop 4", Pop, 4, kInfinite, true, 0},
      {"pop from an empty queue without waiting", Pop, -1, 0, false, 0},
      {"pop from an empty queue waiting 20 ms", Pop, -1, 20, false, 0},
  };
  TBlockingQueue<int> queue(3);
  for (const auto& step : steps) {
    SCOPED_TRACE(step.name);
    if (step.op == Push) {
      EXPECT_EQ(queue.Push(step.value, step.timeout), step.done);
    } else {
      int item = -1;
      EXPECT_EQ(queue.Pop(item, step.timeout), step.done);
      EXPECT_EQ(item, step.value);
    }
    EXPECT_EQ(queue.QueueSize(), step.size);
  }
}

TEST(RtlThreadsTest, AFullQueueHoldsThePusherBackUntilAnItemIsTaken) {
  TBlockingQueue<int> queue(1);
  ASSERT_TRUE(queue.Push(1));
  TTestCounter pushed;
  std::thread producer([&] {
    EXPECT_TRUE(queue.Push(2));
    pushed.Add();
  });
  EXPECT_TRUE(pushed.StaysBelow(1));
  EXPECT_EQ(queue.QueueSize(), 1);
  int item = 0;
  EXPECT_TRUE(queue.Pop(item));
  EXPECT_EQ(item, 1);
  EXPECT_TRUE(pushed.Reaches(1));
  producer.join();
  EXPECT_TRUE(queue.Pop(item, 0));
  EXPECT_EQ(item, 2);
}

TEST(RtlThreadsTest, ShutDownWakesEveryWaiterRefusesPushesAndLetsPopsDrain) {
  using TItem = std::shared_ptr<int>;
  TBlockingQueue<TItem> empty(2);
  TBlockingQueue<TItem> full(2);
  ASSERT_TRUE(full.Push(std::make_shared<int>(1)));
  ASSERT_TRUE(full.Push(std::make_shared<int>(2)));
  // Long time-outs: a waiter that is not woken fails the test instead of hanging it.
  const auto longWait = static_cast<uint32_t>(2 * std::chrono::milliseconds(Testing::kPatience).count());
  TTestCounter back;
  TTestCounter succeeded;
  std::vector<std::thread> waiters;
  for (int i = 0; i < 3; ++i) {
    waiters.emplace_back([&] {
      TItem item;
      if (empty.Pop(item, longWait)) succeeded.Add();
      back.Add();
    });
    waiters.emplace_back([&] {
      if (full.Push(std::make_shared<int>(3), longWait)) succeeded.Add();
      back.Add();
    });
  }
  EXPECT_TRUE(back.StaysBelow(1));
  EXPECT_FALSE(full.ShutDown());
  empty.DoShutDown();
  full.DoShutDown();
  EXPECT_TRUE(back.Reaches(6));
  for (auto& waiter : waiters) waiter.join();
  EXPECT_EQ(succeeded.Value(), 0);
  EXPECT_TRUE(full.ShutDown());

  const TItem refused = std::make_shared<int>(4);
  EXPECT_FALSE(full.Push(refused, 0));
  EXPECT_EQ(refused.use_count(), 1);  // the queue kept no copy
  TItem item;
  for (int expected : {1, 2}) {
    SCOPED_TRACE(expected);
    ASSERT_TRUE(full.Pop(item, 0));
    EXPECT_EQ(*item, expected);
  }
  EXPECT_FALSE(full.Pop(item, kInfinite));  // drained: fails at once
  EXPECT_EQ(*item, 2);
}

TEST(RtlThreadsTest, APopReleasesTheItemItReplacesOutsideTheLock) {
  TBlockingQueue<std::shared_ptr<int>> queue(4);
  TTestCounter released;
  // The first item, when released, uses the queue: under the queue's lock this would deadlock.
  ASSERT_TRUE(queue.Push(std::shared_ptr<int>(new int(1), [&](int* value) {
    delete value;
    EXPECT_TRUE(queue.Push(std::make_shared<int>(9), 0));
    released.Add();
  })));
  ASSERT_TRUE(queue.Push(std::make_shared<int>(2)));
  std::shared_ptr<int> item;
  ASSERT_TRUE(queue.Pop(item));
  ASSERT_TRUE(queue.Pop(item));
  EXPECT_EQ(released.Value(), 1);
  EXPECT_EQ(*item, 2);
  ASSERT_TRUE(queue.Pop(item, 0));
  EXPECT_EQ(*item, 9);
}

}  // namespace
}  // namespace Quorvex::Rtl::Threads
