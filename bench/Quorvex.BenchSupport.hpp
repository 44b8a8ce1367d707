// Timing helpers shared by the benchmarks, which report their figures as
// ratios to a baseline measured in the same binary.
#pragma once

#include <algorithm>
#include <chrono>
#include <ctime>

namespace Quorvex::Bench {

using Clock = std::chrono::steady_clock;

// How long one call of `body` takes, in seconds.
template <typename Body>
double Seconds(Body&& body) {
  const auto start = Clock::now();
  body();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// The processor time the calling thread spends in one call of `body`, in
// seconds: unlike the wall clock, it hardly moves when other processes
// compete for the machine.
template <typename Body>
double ThreadCpuSeconds(Body&& body) {
  timespec start{};
  timespec end{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &start);
  body();
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &end);
  return static_cast<double>(end.tv_sec - start.tv_sec) + static_cast<double>(end.tv_nsec - start.tv_nsec) * 1e-9;
}

// Fastest of three runs of `body`, in seconds.
template <typename Body>
double BestSeconds(Body&& body) {
  double best = 1e9;
  for (int run = 0; run < 3; ++run) best = std::min(best, Seconds(body));
  return best;
}

}  // namespace Quorvex::Bench
