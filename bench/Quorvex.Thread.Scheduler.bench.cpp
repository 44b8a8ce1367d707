// The round trip of one action handed to another thread: the benchmark's
// thread schedules it, the owner thread runs it from its message loop, and
// the benchmark's thread waits until it has run. Beside it, the same round
// trip through a bare mutex and condition variable queue of std::function,
// the least such a hand-off costs. Wall-clock time per round trip.
#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "Quorvex.Rtl.Messages.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.Thread.Scheduler.hpp"

namespace {

using Quorvex::Rtl::Objects::CreateObject;
using Quorvex::Rtl::Objects::IntfPtr;
using Quorvex::System::Actions::IAction;
using Quorvex::System::Actions::TAnonAction;
using Quorvex::Thread::Scheduler::IThreadScheduler;
using Quorvex::Thread::Scheduler::TThreadScheduler;
namespace Messages = Quorvex::Rtl::Messages;

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

// Drives `handOff` once per iteration and waits each time until the other
// thread has run what was handed over.
template <typename THandOff>
void RoundTrips(benchmark::State& state, TRunCount& runs, THandOff handOff) {
  uint64_t count = 0;
  for (auto _ : state) {
    handOff();
    runs.WaitFor(++count);
  }
  state.SetItemsProcessed(static_cast<int64_t>(count));
}

void BM_SchedulerRoundTrip(benchmark::State& state) {
  TRunCount ready, runs, released;
  bool stop = false;  // read and written on the owner thread only
  IntfPtr<IThreadScheduler> scheduler;
  std::thread owner([&] {
    // The owner lets the last reference go, so the window goes on its thread.
    const IntfPtr<IThreadScheduler> own = TThreadScheduler::FromCurrentThreadContext();
    scheduler = own;
    ready.Add();
    while (!stop) {
      Messages::WaitMessage(Messages::Infinite);
      Messages::ProcessMessages();
    }
    released.WaitFor(1);
  });
  ready.WaitFor(1);
  const IntfPtr<IAction<>> action = CreateObject<TAnonAction<>>([&runs] { runs.Add(); });
  RoundTrips(state, runs, [&] { scheduler->Schedule(action); });
  scheduler->Schedule(CreateObject<TAnonAction<>>([&stop] { stop = true; }));
  scheduler.Reset();
  released.Add();
  owner.join();
}
BENCHMARK(BM_SchedulerRoundTrip)->UseRealTime();

// The baseline: one mutex, one condition variable, a queue of closures.
class TBareQueue {
 public:
  void Push(std::function<void()> work) {
    {
      const std::lock_guard lock(FLock);
      FItems.push_back(std::move(work));
    }
    FReady.notify_one();
  }
  std::function<void()> Pop() {
    std::unique_lock lock(FLock);
    FReady.wait(lock, [this] { return !FItems.empty(); });
    std::function<void()> work = std::move(FItems.front());
    FItems.pop_front();
    return work;
  }

 private:
  std::mutex FLock;
  std::condition_variable FReady;
  std::deque<std::function<void()>> FItems;
};

void BM_BareQueueRoundTrip(benchmark::State& state) {
  TRunCount runs;
  TBareQueue queue;
  bool stop = false;  // read and written on the owner thread only
  std::thread owner([&] {
    while (!stop) queue.Pop()();
  });
  const std::function<void()> work = [&runs] { runs.Add(); };
  RoundTrips(state, runs, [&] { queue.Push(work); });
  queue.Push([&stop] { stop = true; });
  owner.join();
}
BENCHMARK(BM_BareQueueRoundTrip)->UseRealTime();

}  // namespace
