// The thread pool against a bare queue of std::function under one mutex and
// two condition variables, worked by the same number of threads: one
// producer hands 1 000 000 empty actions to each, through a queue of the
// same depth. The benchmark's time is the pool's; "vs_bare" is the pool's
// best throughput divided by the bare queue's best (1 means as fast, higher
// is faster).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <functional>
#include <latch>
#include <mutex>
#include <thread>
#include <vector>

#include "Quorvex.BenchSupport.hpp"
#include "Quorvex.System.Actions.hpp"
#include "Quorvex.Thread.ThreadPool.hpp"

namespace {

using Quorvex::Rtl::Objects::CreateObject;
using Quorvex::Rtl::Objects::IntfPtr;
using Quorvex::System::Actions::TAnonAction;
using Quorvex::System::Async::ICancellable;
using Quorvex::Thread::ThreadPool::IThreadPool;
using Quorvex::Thread::ThreadPool::TPoolAction;
using Quorvex::Thread::ThreadPool::TThreadPool;

constexpr int kActions = 1000000;
constexpr int kDepth = 1024;

// The baseline: the least a bounded queue of closures with blocking push
// and pop needs.
class TBareQueue {
 public:
  explicit TBareQueue(int workers) {
    for (int i = 0; i < workers; ++i) FWorkers.emplace_back([this] { Work(); });
  }
  ~TBareQueue() {
    {
      std::lock_guard lock(FLock);
      FStop = true;
    }
    FNotEmpty.notify_all();
    for (auto& worker : FWorkers) worker.join();
  }

  void Push(std::function<void()> item) {
    std::unique_lock lock(FLock);
    FNotFull.wait(lock, [this] { return FItems.size() < kDepth; });
    FItems.push_back(std::move(item));
    lock.unlock();
    FNotEmpty.notify_one();
  }

 private:
  void Work() {
    for (;;) {
      std::unique_lock lock(FLock);
      FNotEmpty.wait(lock, [this] { return FStop || !FItems.empty(); });
      if (FItems.empty()) return;
      std::function<void()> item = std::move(FItems.front());
      FItems.pop_front();
      lock.unlock();
      FNotFull.notify_one();
      item();
    }
  }

  std::mutex FLock;
  std::condition_variable FNotFull;
  std::condition_variable FNotEmpty;
  std::deque<std::function<void()>> FItems;
  bool FStop = false;
  std::vector<std::thread> FWorkers;
};

// Pushes kActions empty items, then one item per worker that holds its
// worker until every worker has one: then every earlier item has run.
// Returns the seconds that took.
template <typename PushEmpty, typename PushBarrier>
double HandOver(int workers, PushEmpty pushEmpty, PushBarrier pushBarrier) {
  std::latch done(workers + 1);
  return Quorvex::Bench::Seconds([&] {
    for (int i = 0; i < kActions; ++i) pushEmpty(i);
    for (int i = 0; i < workers; ++i) pushBarrier(done);
    done.arrive_and_wait();
  });
}

double BareSeconds(int workers) {
  TBareQueue queue(workers);
  return HandOver(
      workers, [&](int) { queue.Push([] {}); },
      [&](std::latch& done) { queue.Push([&done] { done.arrive_and_wait(); }); });
}

// An action over `body`, held in one std::function as the bare queue holds its items.
template <typename Body>
TPoolAction Action(Body body) {
  return CreateObject<TAnonAction<ICancellable>>([body](const IntfPtr<ICancellable>&) { body(); });
}

// The pool runs a few thousand action objects in turn: the figure is the
// pool's own cost, not that of making objects, and no two threads count
// references on one object at once, as they would not with real work.
double PoolSeconds(int workers) {
  IntfPtr<IThreadPool> pool(CreateObject<TThreadPool>(workers, kDepth));
  std::vector<TPoolAction> empty(4 * kDepth);
  for (TPoolAction& action : empty) action = Action([] {});
  return HandOver(
      workers, [&](int i) { pool->Schedule(empty[i % empty.size()]); },
      [&](std::latch& done) { pool->Schedule(Action([&done] { done.arrive_and_wait(); })); });
}

// The two run in turn, and each side's best run counts: on a shared machine
// the slower runs measure the neighbours.
void BM_ThreadPool(benchmark::State& state) {
  const int workers = static_cast<int>(state.range(0));
  double pool = 1e9;
  double bare = 1e9;
  for (auto _ : state) {
    bare = std::min(bare, BareSeconds(workers));
    const double seconds = PoolSeconds(workers);
    pool = std::min(pool, seconds);
    state.SetIterationTime(seconds);
  }
  state.counters["pool_per_s"] = kActions / pool;
  state.counters["bare_per_s"] = kActions / bare;
  state.counters["vs_bare"] = bare / pool;
}
BENCHMARK(BM_ThreadPool)->Arg(1)->Arg(2)->Arg(4)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
