#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.Rtl.Messages.hpp"
#include "Quorvex.Rtl.Threads.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.BackgroundWorker.hpp"
#include "Quorvex.Thread.TestSupport.hpp"

namespace Quorvex::Thread::BackgroundWorker {
namespace {

using Rtl::Exceptions::EArgumentException;
using Rtl::Exceptions::EInvalidOperation;
using Rtl::Objects::CreateObject;
using Rtl::Threads::CurrentThreadID;
using Testing::TTestCounter;
using ThreadPool::TThreadPool;

using Testing::kPatienceMs;

IntfPtr<IThreadPool> NewPool() { return CreateObject<TThreadPool>(2, 4); }

// Pumps the calling thread's messages until `done` holds.
template <typename Done>
void PumpUntil(Done done) {
  while (!done()) {
    ASSERT_TRUE(Rtl::Messages::WaitMessage(kPatienceMs)) << "nothing came";
    Rtl::Messages::ProcessMessages();
  }
}

// Workers leave messages behind (one per delivery, the first delivers all)
// and their schedulers' windows go on this thread's next pump; both are
// cleared here so that later tests find an empty queue.
class BackgroundWorkerTest : public ::testing::Test {
 protected:
  void TearDown() override {
    while (Rtl::Messages::ProcessMessages() > 0) {
    }
  }
};

TEST_F(BackgroundWorkerTest, ReportsProgressAndItsEndOnTheMakingThread) {
  const IntfPtr<IThreadPool> pool = NewPool();
  const uint32_t owner = CurrentThreadID();
  const auto worker = NewBackgroundWorker<int>([owner](TBackgroundWorkerBase& self) {
    EXPECT_NE(CurrentThreadID(), owner);
    for (int step = 1; step <= 4; ++step) self.ReportProgress(step * 25, u"step " + Rtl::Strings::IntToStr(step));
    return 7;
  });
  std::vector<std::u16string> reports;
  worker->OnProgress = [&reports, owner](int32_t percent, const UnicodeString& message) {
    EXPECT_EQ(CurrentThreadID(), owner);
    reports.push_back(Rtl::Strings::IntToStr(percent) + u"% " + message);
  };
  int ends = 0;
  worker->OnCompleted = [&](TBackgroundWorker<int>& done) {
    EXPECT_EQ(CurrentThreadID(), owner);
    EXPECT_EQ(reports.size(), 4u) << "every report comes before the end";
    EXPECT_EQ(done.GetStatus(), TAsyncStatus::asCompleted);
    EXPECT_EQ(done.Result(), 7);
    EXPECT_EQ(done.GetResult().AsType<int>(), 7);
    ++ends;
  };
  worker->Start(pool);
  PumpUntil([&ends] { return ends > 0; });
  EXPECT_EQ(reports, (std::vector<std::u16string>{u"25% step 1", u"50% step 2", u"75% step 3", u"100% step 4"}));
  EXPECT_FALSE(worker->OnCompleted) << "the handlers are dropped once delivered";
  EXPECT_FALSE(worker->OnProgress);
  EXPECT_RAISES(EInvalidOperation, worker->Start(pool), u"The worker has already been started");
  EXPECT_RAISES(EArgumentException, worker->Start(nullptr), u"Cannot start on a nil pool");
}

TEST_F(BackgroundWorkerTest, EndsWithTheFailureOrTheCancellation) {
  const IntfPtr<IThreadPool> pool = NewPool();
  const auto failing = NewBackgroundWorker<int>([](TBackgroundWorkerBase& self) {
    self.ReportProgress(101, u"too far");
    return 0;
  });
  UnicodeString failure;
  failing->OnCompleted = [&failure](TBackgroundWorker<int>& done) {
    EXPECT_EQ(done.GetStatus(), TAsyncStatus::asError);
    EXPECT_RAISES(EInvalidOperation, done.Result(), u"The worker has not completed");
    failure = done.GetFailure()->GetMessage();
  };
  failing->Start(pool);
  PumpUntil([&failure] { return !failure.empty(); });
  EXPECT_EQ(failure, u"Progress must be between 0 and 100 (101)");

  TTestCounter started;
  const auto endless = NewBackgroundWorker<>([&started](TBackgroundWorkerBase& self) {
    started.Add();
    EXPECT_TRUE(Testing::Eventually([&self] { return self.IsCancelled(); }));
  });
  bool cancelled = false;
  endless->OnCompleted = [&cancelled](TBackgroundWorker<>& done) {
    cancelled = done.GetStatus() == TAsyncStatus::asCancelled;
  };
  endless->Start(pool);
  ASSERT_TRUE(started.Reaches(1));
  endless->Cancel();
  PumpUntil([&] { return endless->GetStatus() != TAsyncStatus::asStarted && cancelled; });

  // Cancelled before it is started: it ends at once, on this thread.
  const auto unstarted = NewBackgroundWorker<>([](TBackgroundWorkerBase&) { FAIL() << "never runs"; });
  bool ended = false;
  unstarted->OnCompleted = [&ended](TBackgroundWorker<>&) { ended = true; };
  unstarted->Cancel();
  EXPECT_TRUE(ended);
  EXPECT_RAISES(EArgumentException, NewBackgroundWorker<>(nullptr), u"An operation needs work to do");
}

}  // namespace
}  // namespace Quorvex::Thread::BackgroundWorker
