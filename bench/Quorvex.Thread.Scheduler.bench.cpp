// The round trip of one action handed to another thread: the benchmark's
// thread schedules it, the owner thread runs it from its message loop, and
// the benchmark's thread waits until it has run. Beside it, in the same
// iterations, the same round trip through a bare mutex and condition
// variable queue of std::function, the least such a hand-off costs.
// Reports nanoseconds per round trip for both and "x_bare_queue", the
// scheduler's time divided by the bare queue's. Wall-clock time: the work
// crosses threads, so the processor time of one thread would miss half.
#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "Quorvex.BenchSupport.hpp"
#include "Quorvex.Rtl.Messages.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.Thread.Scheduler.hpp"

namespace {

using Quorvex::Bench::Seconds;
using Quorvex::Rtl::Objects::CreateObject;
using Quorvex::Rtl::Objects::IntfPtr;
using Quorvex::System::Actions::IAction;
using Quorvex::System::Actions::TAnonAction;
using Quorvex::Thread::Scheduler::IThreadScheduler;
using Quorvex::Thread::Scheduler::TThreadScheduler;
namespace Messages = Quorvex::Rtl::Messages;

constexpr int kBatch = 1000;

// How many hand-offs have run; the benchmark's thread waits on it.
class TRunCount {
 public:
  void Add() {
    FCount.fetch_add(1, std::memory_order_release);
    FCount.notify_one();
  }
  void WaitFor(uint64_t count) {
    for (uint64_t seen = FCount.load(std::memory_order_acquire); seen < count;
         seen = FCount.load(std::memory_order_acquire))
      FCount.wait(seen);
  }

 private:
  std::atomic<uint64_t> FCount{0};
};

// A thread that owns a scheduler and pumps its messages until told to stop.
class TSchedulerOwner {
 public:
  TSchedulerOwner() : FThread([this] { Run(); }) { FReady.WaitFor(1); }
  ~TSchedulerOwner() {
    FScheduler->Schedule(CreateObject<TAnonAction<>>([this] { FStop = true; }));
    FScheduler.Reset();
    FReleased.Add();
    FThread.join();
  }

  void HandOff(const IntfPtr<IAction<>>& action) { FScheduler->Schedule(action); }

 private:
  void Run() {
    // The owner lets the last reference go, so the window goes on its thread.
    const IntfPtr<IThreadScheduler> own = TThreadScheduler::FromCurrentThreadContext();
    FScheduler = own;
    FReady.Add();
    while (!FStop) {
      Messages::WaitMessage(Messages::kInfinite);
      Messages::ProcessMessages();
    }
    FReleased.WaitFor(1);
  }

  TRunCount FReady, FReleased;
  bool FStop = false;  // read and written on the owner thread only
  IntfPtr<IThreadScheduler> FScheduler;
  std::thread FThread;
};

// The baseline: one mutex, one condition variable, a queue of closures,
// and a thread that runs them until told to stop.
class TBareOwner {
 public:
  TBareOwner()
      : FThread([this] {
          while (!FStop) Pop()();
        }) {}
  ~TBareOwner() {
    HandOff([this] { FStop = true; });
    FThread.join();
  }

  void HandOff(std::function<void()> work) {
    {
      const std::lock_guard lock(FLock);
      FItems.push_back(std::move(work));
    }
    FReady.notify_one();
  }

 private:
  std::function<void()> Pop() {
    std::unique_lock lock(FLock);
    FReady.wait(lock, [this] { return !FItems.empty(); });
    std::function<void()> work = std::move(FItems.front());
    FItems.pop_front();
    return work;
  }

  std::mutex FLock;
  std::condition_variable FReady;
  std::deque<std::function<void()>> FItems;
  bool FStop = false;  // read and written on the owner thread only
  std::thread FThread;
};

void BM_SchedulerRoundTrip(benchmark::State& state) {
  TRunCount runs;
  uint64_t count = 0;
  TSchedulerOwner scheduled;
  TBareOwner bare;
  const IntfPtr<IAction<>> action = CreateObject<TAnonAction<>>([&runs] { runs.Add(); });
  const std::function<void()> work = [&runs] { runs.Add(); };
  double ours = 0;
  double baseline = 0;
  for (auto _ : state) {
    const double batch = Seconds([&] {
      for (int i = 0; i < kBatch; ++i) {
        scheduled.HandOff(action);
        runs.WaitFor(++count);
      }
    });
    baseline += Seconds([&] {
      for (int i = 0; i < kBatch; ++i) {
        bare.HandOff(work);
        runs.WaitFor(++count);
      }
    });
    ours += batch;
    state.SetIterationTime(batch);
  }
  const double trips = static_cast<double>(state.iterations()) * kBatch;
  state.counters["ns_per_round_trip"] = ours * 1e9 / trips;
  state.counters["bare_ns_per_round_trip"] = baseline * 1e9 / trips;
  state.counters["x_bare_queue"] = ours / baseline;
}
BENCHMARK(BM_SchedulerRoundTrip)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
