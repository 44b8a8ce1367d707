#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "Quorvex.DateTime.Counter.hpp"
#include "Quorvex.Rtl.Exceptions.hpp"
#include "Quorvex.TestSupport.hpp"

namespace Quorvex::DateTime::Counter {
namespace {

void SleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

TEST(DateTimeCounterTest, SumsOnlyRunningPeriods) {
  TTimeCounter counter{};
  counter.Reset();
  counter.SetElapsed(1000);
  SleepMs(20);
  EXPECT_TRUE(counter.GetSuspended());
  EXPECT_EQ(counter.GetElapsed(), 1000u);
  counter.Resume();
  SleepMs(100);
  counter.Suspend();
  SleepMs(100);
  counter.Resume();
  SleepMs(50);
  counter.Suspend();
  EXPECT_GE(counter.GetElapsed(), 1150u);
  EXPECT_LT(counter.GetElapsed(), 2000u);
  // Resume, SetElapsed and Reset each drop a running counter's period so far.
  counter.Resume();
  SleepMs(100);
  counter.Resume();
  EXPECT_LT(counter.GetElapsed(), counter.FElapsed + 100);
  SleepMs(100);
  counter.SetElapsed(5000);
  EXPECT_LT(counter.GetElapsed(), 5100u);
  SleepMs(100);
  counter.Reset();
  EXPECT_FALSE(counter.GetSuspended());
  EXPECT_LT(counter.GetElapsed(), 100u);
}

TEST(DateTimeCounterTest, WrappedTickCountOverflows) {
  // A start above every 32-bit tick stands for a count that has wrapped.
  constexpr uint64_t kAboveTicks = uint64_t{1} << 32;
  TTimeCounter counter{0, kAboveTicks};
  EXPECT_RAISES(Rtl::Exceptions::EIntOverflow, counter.GetElapsed(), u"Integer overflow");
  EXPECT_RAISES(Rtl::Exceptions::EIntOverflow, counter.Suspend(), u"Integer overflow");
  // Enough elapsed time absorbs the difference.
  counter.FElapsed = kAboveTicks;
  counter.Suspend();
  EXPECT_LT(counter.GetElapsed(), kAboveTicks);
}

}  // namespace
}  // namespace Quorvex::DateTime::Counter
