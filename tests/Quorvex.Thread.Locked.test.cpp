#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "Quorvex.Rtl.Queues.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.TestSupport.hpp"
#include "Quorvex.Thread.Locked.hpp"
#include "Quorvex.Thread.TestSupport.hpp"

namespace Quorvex::Thread::Locked {
namespace {

using Rtl::Exceptions::Exception;
using Rtl::Queues::TQueue;
using System::Actions::IAction;
using System::Actions::TAnonAction;

// An object that counts its destructions and can refuse to be freed the
// first `refusals` times (BeforeDestruction raising keeps it alive).
class TTracked : public TObject {
 public:
  TTracked(std::atomic<int>& destroyed, int refusals = 0) : FDestroyed(destroyed), FRefusals(refusals) {}
  ~TTracked() override { ++FDestroyed; }
  void BeforeDestruction() override {
    if (FRefusals > 0) {
      --FRefusals;
      throw Exception(u"still in use");
    }
    TObject::BeforeDestruction();
  }
  int64_t Count = 0;

 private:
  std::atomic<int>& FDestroyed;
  int FRefusals;
};

// The number of references held on the counted object behind `intf`.
int32_t RefCountOf(IInterface* intf) {
  return static_cast<TInterfacedObject*>(Rtl::Objects::ObjectOf(intf))->RefCount();
}

TEST(ThreadLockedTest, FreeDisposesOfAnObjectOnceAndKeepsTheLock) {
  const struct {
    int frees;
    int destroyed;
  } cases[] = {{0, 0}, {1, 1}, {2, 1}, {3, 1}};
  for (const auto& test : cases) {
    SCOPED_TRACE(test.frees);
    std::atomic<int> destroyed{0};
    auto* object = new TTracked(destroyed);
    {
      Locked<TTracked*> locked = object;
      const Locked<TTracked*> copy = locked;  // shares the value and the lock
      for (int i = 0; i < test.frees; ++i) (i % 2 ? copy : locked).Free();
      EXPECT_EQ(destroyed, test.destroyed);
      EXPECT_EQ(static_cast<TTracked*>(copy), test.frees ? nullptr : object);
      // The lock outlives the value.
      EXPECT_TRUE(Testing::EndsOnItsOwnThread([locked] {
        locked.Acquire();
        locked.Release();
      }));
    }
    // Dropping the last handle does not dispose of a value never freed.
    EXPECT_EQ(destroyed, test.destroyed);
    if (test.frees == 0) Rtl::Objects::FreeObject(object);
  }
}

TEST(ThreadLockedTest, FreeClearsOtherValuesAndReleasesCountedOnes) {
  Locked<int> number = Locked<int>::Create(42);
  Locked<Rtl::Strings::UnicodeString> text = Rtl::Strings::UnicodeString(u"text");
  std::atomic<int> runs{0};
  IntfPtr<IAction<>> action = Rtl::Objects::CreateObject<TAnonAction<>>([&runs] { ++runs; });
  Locked<IntfPtr<IAction<>>> held = action;
  EXPECT_EQ(static_cast<int>(number), 42);
  EXPECT_EQ(RefCountOf(action.Get()), 2);
  number.Free();
  text.Free();
  held.Free();
  EXPECT_EQ(static_cast<int>(number), 0);
  EXPECT_EQ(static_cast<Rtl::Strings::UnicodeString>(text), u"");
  EXPECT_EQ(static_cast<IntfPtr<IAction<>>>(held), nullptr);
  EXPECT_EQ(RefCountOf(action.Get()), 1);
  EXPECT_EQ(runs, 0);
}

TEST(ThreadLockedTest, FreeingAQueueReleasesItsActionsWithoutRunningThem) {
  std::atomic<int> runs{0}, destroyed{0};
  Locked<TQueue<IntfPtr<IAction<>>>*> queue = Rtl::Objects::CreateObject<TQueue<IntfPtr<IAction<>>>>();
  queue.Acquire();
  for (int i = 0; i < 3; ++i) {
    // The closure's copy of the guard counts the action's destruction.
    auto guard = std::shared_ptr<void>(nullptr, [&destroyed](void*) { ++destroyed; });
    static_cast<TQueue<IntfPtr<IAction<>>>*>(queue)->Enqueue(
        Rtl::Objects::CreateObject<TAnonAction<>>([&runs, guard] { ++runs; }));
  }
  queue.Release();
  EXPECT_EQ(destroyed, 0);
  queue.Free();
  EXPECT_EQ(destroyed, 3);
  EXPECT_EQ(runs, 0);
}

TEST(ThreadLockedTest, FreeLeavesTheLockWhenDisposalRaisesAndTriesAgainLater) {
  std::atomic<int> destroyed{0};
  Locked<TTracked*> locked = new TTracked(destroyed, 1);
  EXPECT_RAISES(Exception, locked.Free(), u"still in use");
  EXPECT_NE(static_cast<TTracked*>(locked), nullptr);
  bool acquired = Testing::EndsOnItsOwnThread([locked] {
    locked.Acquire();
    locked.Release();
  });
  EXPECT_TRUE(acquired);
  if (!acquired) locked.Release();  // let the abandoned thread end
  locked.Free();
  EXPECT_EQ(destroyed, 1);
  EXPECT_EQ(static_cast<TTracked*>(locked), nullptr);
}

TEST(ThreadLockedTest, TheLockIsReentrantAndHeldUntilTheLastRelease) {
  const Locked<int> locked = 0;
  const IntfPtr<ILocked<int>> shared = locked;
  const auto taken = std::make_shared<std::promise<void>>();
  const std::shared_future<void> takenElsewhere = taken->get_future().share();
  // Re-entered on a thread of its own, so that a lock that is not
  // re-entrant fails the test instead of hanging it.
  ASSERT_TRUE(Testing::EndsOnItsOwnThread([locked, shared, taken, takenElsewhere] {
    shared->Acquire();
    locked.Acquire();
    Testing::TWatchedThread other([locked, taken] {
      locked.Acquire();
      taken->set_value();
      locked.Release();
    });
    shared->Release();
    // Still held once: the other thread cannot have the lock yet.
    EXPECT_NE(takenElsewhere.wait_for(std::chrono::milliseconds(0)), std::future_status::ready);
    locked.Release();
    EXPECT_TRUE(other.Ends());
  }));
  EXPECT_EQ(takenElsewhere.wait_for(std::chrono::milliseconds(0)), std::future_status::ready);
}

TEST(ThreadLockedTest, AValueIncrementedFromSeveralThreadsLosesNoUpdate) {
  constexpr int kThreads = 4, kIncrements = 20000;
  std::atomic<int> destroyed{0};
  const Locked<TTracked*> tally = new TTracked(destroyed);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([tally] {
      for (int i = 0; i < kIncrements; ++i) {
        tally.Acquire();
        TTracked* value = tally;
        const int64_t before = value->Count;
        tally.Acquire();  // nested, as a callee that locks again would
        value->Count = before + 1;
        tally.Release();
        tally.Release();
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(static_cast<TTracked*>(tally)->Count, int64_t{kThreads} * kIncrements);
  tally.Free();
  EXPECT_EQ(destroyed, 1);
}

}  // namespace
}  // namespace Quorvex::Thread::Locked
