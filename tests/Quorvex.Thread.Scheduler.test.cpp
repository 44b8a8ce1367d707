#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Messages.hpp"
#include "Quorvex.Rtl.Threads.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.Scheduler.hpp"
#include "Quorvex.Thread.TestSupport.hpp"

namespace Quorvex::Thread::Scheduler {
namespace {

using Rtl::Exceptions::EArgumentException;
using Rtl::Threads::CurrentThreadID;
using Rtl::Messages::ProcessMessages;
using Rtl::Objects::CreateObject;
using System::Actions::TAnonAction;

using Testing::kPatienceMs;

IntfPtr<IAction<>> Action(std::function<void()> body) { return CreateObject<TAnonAction<>>(std::move(body)); }

// An action that counts its runs and its destruction.
class TCountedAction : public TInterfacedObject, public IAction<> {
  QX_CLASS(TCountedAction, TInterfacedObject, "Quorvex.Thread.Scheduler.Test")
  QX_INTERFACES(IAction<>)
 public:
  TCountedAction(std::atomic<int>& runs, std::atomic<int>& destroyed) : FRuns(runs), FDestroyed(destroyed) {}
  ~TCountedAction() override { ++FDestroyed; }
  void Run() override { ++FRuns; }

 private:
  std::atomic<int>& FRuns;
  std::atomic<int>& FDestroyed;
};

// Runs `body` on a thread of its own until that thread has ended.
void OnOtherThread(std::function<void()> body) {
  EXPECT_TRUE(Testing::EndsOnItsOwnThread(std::move(body))) << "the thread did not end";
}

// Schedules each action from a thread of its own, in order.
void ScheduleFromWorker(const IntfPtr<IThreadScheduler>& scheduler, const std::vector<IntfPtr<IAction<>>>& actions) {
  OnOtherThread([&] {
    for (const IntfPtr<IAction<>>& action : actions) scheduler->Schedule(action);
  });
}

TMessage RunMessage() { return TMessage{0, WmRunScheduled, 0, 0, 0}; }

TEST(ThreadSchedulerTest, OnTheOwningThreadActionsRunAtOnce) {
  const IntfPtr<IThreadScheduler> scheduler = TThreadScheduler::FromCurrentThreadContext();
  bool ran = false;
  scheduler->Schedule(Action([&ran] { ran = true; }));
  EXPECT_TRUE(ran);
  EXPECT_RAISES(EArgumentException, scheduler->Schedule(Action([] { throw EArgumentException(u"direct"); })),
                u"direct");
  EXPECT_EQ(ProcessMessages(), 0u) << "nothing went through the window";
}

TEST(ThreadSchedulerTest, NullActionsAreRefused) {
  const IntfPtr<IThreadScheduler> scheduler = TThreadScheduler::FromCurrentThreadContext();
  for (const bool fromWorker : {false, true}) {
    SCOPED_TRACE(fromWorker ? "from a worker" : "from the owner");
    const auto attempt = [&] {
      EXPECT_RAISES(EArgumentException, scheduler->Schedule(nullptr), u"Schedule needs an action");
    };
    fromWorker ? OnOtherThread(attempt) : attempt();
  }
  EXPECT_EQ(ProcessMessages(), 0u);
}

TEST(ThreadSchedulerTest, QueuedActionsRunInOrderAllInTheFirstMessage) {
  auto* object = CreateObject<TThreadScheduler>(CurrentThreadID());
  const IntfPtr<IThreadScheduler> scheduler(object);
  std::vector<std::pair<int, uint32_t>> runs;
  const auto record = [&runs](int id) { return Action([&runs, id] { runs.emplace_back(id, CurrentThreadID()); }); };
  ScheduleFromWorker(scheduler, {record(1), record(2), record(3)});
  EXPECT_TRUE(runs.empty()) << "nothing runs before the owner pumps";

  TMessage message = RunMessage();
  object->WindowProc(message);
  const uint32_t owner = CurrentThreadID();
  EXPECT_EQ(runs, (std::vector<std::pair<int, uint32_t>>{{1, owner}, {2, owner}, {3, owner}}));
  EXPECT_EQ(ProcessMessages(), 3u) << "one message per action";
  EXPECT_EQ(runs.size(), 3u) << "the later messages find the queue empty";

  ScheduleFromWorker(scheduler, {record(4), record(5)});
  EXPECT_EQ(ProcessMessages(), 2u);
  ASSERT_EQ(runs.size(), 5u);
  EXPECT_EQ(runs[3].first, 4);
  EXPECT_EQ(runs[4].first, 5);
}

TEST(ThreadSchedulerTest, AnActionThatRaisesDoesNotStopTheBatch) {
  auto* object = CreateObject<TThreadScheduler>(CurrentThreadID());
  const IntfPtr<IThreadScheduler> scheduler(object);
  struct TCase {
    const char* Name;
    std::function<void()> Raise;
  };
  const TCase cases[] = {
      {"library exception", [] { throw EArgumentException(u"refused"); }},
      {"standard exception", [] { throw std::runtime_error("refused"); }},
      {"anything else", [] { throw 42; }},
  };
  for (const bool throughPump : {false, true}) {
    for (const TCase& c : cases) {
      SCOPED_TRACE(std::string(c.Name) + (throughPump ? ", pumped" : ", window procedure called"));
      int after = 0;
      ScheduleFromWorker(
          scheduler, {Action(c.Raise), Action([&after] { ++after; }), Action(c.Raise), Action([&after] { ++after; })});
      TMessage message = RunMessage();
      if (throughPump) {
        EXPECT_NO_THROW(EXPECT_EQ(ProcessMessages(), 4u));
      } else {
        EXPECT_NO_THROW(object->WindowProc(message));
        ProcessMessages();
      }
      EXPECT_EQ(after, 2);
    }
  }
}

TEST(ThreadSchedulerTest, DestroyingTheSchedulerReleasesQueuedActionsUnrun) {
  for (const bool onOwner : {true, false}) {
    SCOPED_TRACE(onOwner ? "destroyed on its thread" : "destroyed on another thread");
    std::atomic<int> runs = 0, destroyed = 0;
    IntfPtr<IThreadScheduler> scheduler = TThreadScheduler::FromCurrentThreadContext();
    ScheduleFromWorker(scheduler,
                       {CreateObject<TCountedAction>(runs, destroyed), CreateObject<TCountedAction>(runs, destroyed)});
    EXPECT_EQ(destroyed, 0);
    if (onOwner)
      scheduler.Reset();
    else
      OnOtherThread([released = std::move(scheduler)]() mutable { released.Reset(); });
    EXPECT_EQ(destroyed, 2);
    // Off its thread the window outlives the scheduler until the first
    // message reaches it, and then destroys itself with the rest unread.
    EXPECT_EQ(ProcessMessages(), onOwner ? 0u : 1u);
    EXPECT_EQ(ProcessMessages(), 0u);
    EXPECT_EQ(runs, 0);
  }
}

TEST(ThreadSchedulerTest, OwnerPumpingWhileFourThreadsSchedule) {
  constexpr int kProducers = 4;
  constexpr int kEach = 2000;
  const IntfPtr<IThreadScheduler> scheduler = TThreadScheduler::FromCurrentThreadContext();
  const uint32_t owner = CurrentThreadID();
  struct TRun {
    int Producer;
    int Sequence;
    uint32_t Thread;
  };
  std::vector<TRun> runs;
  std::vector<std::unique_ptr<Testing::TWatchedThread>> producers;
  for (int producer = 0; producer < kProducers; ++producer)
    producers.push_back(std::make_unique<Testing::TWatchedThread>([&, producer] {
      for (int i = 0; i < kEach; ++i)
        scheduler->Schedule(Action([&runs, producer, i] { runs.push_back({producer, i, CurrentThreadID()}); }));
    }));
  while (runs.size() < size_t{kProducers * kEach}) {
    ASSERT_TRUE(Rtl::Messages::WaitMessage(kPatienceMs)) << runs.size() << " actions ran, then nothing came";
    ProcessMessages();
  }
  for (const auto& producer : producers) ASSERT_TRUE(producer->Ends());
  ProcessMessages();
  ASSERT_EQ(runs.size(), size_t{kProducers * kEach}) << "nothing run twice";
  std::vector<int> next(kProducers, 0);
  for (const TRun& run : runs) {
    EXPECT_EQ(run.Thread, owner);
    EXPECT_EQ(run.Sequence, next[run.Producer]++) << "each producer's actions run once, in order";
  }
}

TEST(ThreadSchedulerTest, AnActionMayScheduleAnotherFromInsideTheBatch) {
  const IntfPtr<IThreadScheduler> scheduler = TThreadScheduler::FromCurrentThreadContext();
  std::vector<std::string> log;
  std::optional<Testing::TWatchedThread> late;
  const auto inner = Action([&log] { log.push_back("inner"); });
  ScheduleFromWorker(scheduler, {Action([&] {
                       log.push_back("outer begins");
                       scheduler->Schedule(inner);
                       // Another thread's Schedule waits for the batch to end.
                       late.emplace([&] { scheduler->Schedule(Action([&log] { log.push_back("late"); })); });
                       log.push_back("outer ends");
                     })});
  ProcessMessages();
  ASSERT_GE(log.size(), 3u);
  EXPECT_EQ(std::vector<std::string>(log.begin(), log.begin() + 3),
            (std::vector<std::string>{"outer begins", "inner", "outer ends"}));
  ASSERT_TRUE(late && late->Ends());
  ProcessMessages();
  EXPECT_EQ(log, (std::vector<std::string>{"outer begins", "inner", "outer ends", "late"}));
}

TEST(ThreadSchedulerTest, OtherMessagesGetTheDefaultAnswer) {
  auto* object = CreateObject<TThreadScheduler>(CurrentThreadID());
  const IntfPtr<IThreadScheduler> scheduler(object);
  TMessage message{0, Rtl::Messages::WmUser + 1, 1, 2, 42};
  object->WindowProc(message);
  EXPECT_EQ(message.Result, 0);
}

}  // namespace
}  // namespace Quorvex::Thread::Scheduler
