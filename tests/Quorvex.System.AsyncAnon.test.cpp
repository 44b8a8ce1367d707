#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <stdexcept>

#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.System.AsyncAnon.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.TestSupport.hpp"
#include "Quorvex.Thread.ThreadPool.hpp"

namespace Quorvex::System::AsyncAnon {
namespace {

using Rtl::Exceptions::EArgumentException;
using Rtl::Exceptions::EConvertError;
using Rtl::Exceptions::EListError;
using Rtl::Objects::CreateObject;
using Rtl::Strings::UnicodeString;
using Testing::TTestCounter;
using Thread::ThreadPool::IThreadPool;
using Thread::ThreadPool::TThreadPool;

// Runs `async` on the calling thread, as a pool worker would.
void RunHere(const IntfPtr<IAsync>& async) { async.As<IAction<ICancellable>>()->Run(nullptr); }

TEST(AsyncCallbackTest, EndsAsItsWorkEnds) {
  const auto answer = NewAsyncCallback([] { return 42; });
  const auto text = NewAsyncCallback([](ICancellable&) { return UnicodeString(u"done"); });
  int sideEffect = 0;
  const auto plain = NewAsyncCallback([&sideEffect] { ++sideEffect; });
  EXPECT_EQ(answer->GetStatus(), TAsyncStatus::asStarted);
  EXPECT_TRUE(answer->GetResult().IsEmpty()) << "no result before the work ran";
  for (const auto& async : {answer, text, plain}) RunHere(async);
  EXPECT_EQ(answer->GetResult().AsType<int>(), 42);
  EXPECT_EQ(text->GetResult().AsString(), u"done");
  EXPECT_TRUE(plain->GetResult().IsEmpty());
  RunHere(plain);
  EXPECT_EQ(sideEffect, 1) << "an operation runs its work once";
  for (const auto& async : {answer, text, plain}) {
    EXPECT_EQ(async->GetStatus(), TAsyncStatus::asCompleted);
    EXPECT_FALSE(async->GetFailure());
    async->Wait();
    async->Cancel();
    EXPECT_EQ(async->GetStatus(), TAsyncStatus::asCompleted) << "a final status stays";
  }
}

TEST(AsyncCallbackTest, KeepsWhatItsWorkRaisesWithTheWholeChain) {
  const auto failing = NewAsyncCallback([]() -> int {
    try {
      throw EConvertError(u"inner");
    } catch (...) {
      Rtl::Exceptions::RaiseOuterException(EListError(u"outer"));
    }
  });
  RunHere(failing);  // raises nothing here
  EXPECT_EQ(failing->GetStatus(), TAsyncStatus::asError);
  EXPECT_TRUE(failing->GetResult().IsEmpty());
  const IntfPtr<IExceptionInfo> failure = failing->GetFailure();
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->GetExceptClass()->QualifiedClassName(), u"Quorvex.Rtl.Exceptions.EListError");
  EXPECT_EQ(failure->GetMessage(), u"outer");
  ASSERT_TRUE(failure->GetInnerInfo());
  EXPECT_EQ(failure->GetInnerInfo()->GetMessage(), u"inner");

  const auto foreign = NewAsyncCallback([] { throw std::runtime_error("disk full"); });
  RunHere(foreign);
  EXPECT_EQ(foreign->GetFailure()->GetMessage(), u"disk full");

  EXPECT_RAISES(EArgumentException, NewAsyncCallback(std::function<int()>()), u"An operation needs work to do");
  EXPECT_RAISES(EArgumentException, NewAsyncCallback(std::function<void(ICancellable&)>()),
                u"An operation needs work to do");
}

TEST(AsyncCallbackTest, CancellationEndsItOnlyWhenTheWorkSeesIt) {
  bool ran = false;
  const auto early = NewAsyncCallback([&ran] { ran = true; });
  early->Cancel();
  EXPECT_EQ(early->GetStatus(), TAsyncStatus::asCancelled) << "cancelled before it started";
  early->Wait();
  RunHere(early);
  EXPECT_FALSE(ran) << "work cancelled before it started never runs";

  IntfPtr<IAsync> self;
  const auto polling = NewAsyncCallback([&self](ICancellable& stop) {
    self->Cancel();
    return stop.IsCancelled() ? 0 : 1;
  });
  self = polling;
  RunHere(polling);
  EXPECT_EQ(polling->GetStatus(), TAsyncStatus::asCancelled);
  EXPECT_TRUE(polling->GetResult().IsEmpty()) << "a cancelled operation has no result";

  const auto ignoring = NewAsyncCallback([&self] { self->Cancel(); });
  self = ignoring;
  RunHere(ignoring);
  EXPECT_EQ(ignoring->GetStatus(), TAsyncStatus::asCompleted) << "work that never looked finished first";
  self = nullptr;
}

TEST(AsyncCallbackTest, RunsOnAPoolAndSeesThePoolCancelled) {
  IntfPtr<IThreadPool> pool = CreateObject<TThreadPool>(1, 4);
  TTestCounter started;
  const auto looping = NewAsyncCallback([&started](ICancellable& stop) {
    started.Add();
    return Testing::Eventually([&stop] { return stop.IsCancelled(); });
  });
  const auto queued = NewAsyncCallback([] { return 1; });
  pool->Schedule({looping, queued});
  ASSERT_TRUE(started.Reaches(1));
  EXPECT_EQ(looping->GetStatus(), TAsyncStatus::asStarted);
  pool->CancelAll();
  looping->Wait();
  EXPECT_EQ(looping->GetStatus(), TAsyncStatus::asCancelled);
  // The queued one never runs: it waits in the queue until the pool goes,
  // which cancels it; one scheduled now is cancelled at once.
  EXPECT_EQ(queued->GetStatus(), TAsyncStatus::asStarted);
  const auto late = NewAsyncCallback([] { return 2; });
  pool->Schedule(late);
  EXPECT_EQ(late->GetStatus(), TAsyncStatus::asCancelled);
  pool.Reset();
  queued->Wait();
  EXPECT_EQ(queued->GetStatus(), TAsyncStatus::asCancelled);

  const IntfPtr<IThreadPool> busy = CreateObject<TThreadPool>(4, 8);
  std::vector<IntfPtr<IAsyncCallback>> squares;
  for (int i = 0; i < 200; ++i) squares.push_back(NewAsyncCallback([i] { return i * i; }));
  for (const auto& square : squares) busy->Schedule(square);
  for (int i = 0; i < 200; ++i) {
    squares[i]->Wait();
    EXPECT_EQ(squares[i]->GetResult().AsType<int>(), i * i);
  }
}

}  // namespace
}  // namespace Quorvex::System::AsyncAnon
