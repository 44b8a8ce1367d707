// Locked<T>'s Acquire and Release against a bare std::recursive_mutex's
// lock and unlock, uncontended, on one thread. Each iteration times a batch
// of both; "x_bare" is Locked<T>'s time divided by the bare mutex's, so the
// figure reads as a ratio that survives a change of machine.
#include <benchmark/benchmark.h>

#include <chrono>
#include <mutex>

#include "Quorvex.Thread.Locked.hpp"

namespace {

using Quorvex::Thread::Locked::Locked;
using Clock = std::chrono::steady_clock;

constexpr int kBatch = 1000;

template <typename Body>
double Seconds(Body&& body) {
  const auto start = Clock::now();
  body();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void BM_LockedAcquireRelease(benchmark::State& state) {
  const Locked<int> locked = 0;
  std::recursive_mutex bare;
  double ours = 0;
  double baseline = 0;
  for (auto _ : state) {
    ours += Seconds([&] {
      for (int i = 0; i < kBatch; ++i) {
        locked.Acquire();
        benchmark::ClobberMemory();
        locked.Release();
      }
    });
    baseline += Seconds([&] {
      for (int i = 0; i < kBatch; ++i) {
        bare.lock();
        benchmark::ClobberMemory();
        bare.unlock();
      }
    });
  }
  state.counters["x_bare"] = ours / baseline;
  state.counters["ns_per_pair"] = ours * 1e9 / (static_cast<double>(state.iterations()) * kBatch);
  state.counters["bare_ns_per_pair"] = baseline * 1e9 / (static_cast<double>(state.iterations()) * kBatch);
}
BENCHMARK(BM_LockedAcquireRelease)->UseRealTime();

}  // namespace
