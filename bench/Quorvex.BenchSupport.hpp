// Timing helpers shared by the benchmarks, which report their figures as
// ratios to a baseline measured in the same binary.
#pragma once

#include <algorithm>
#include <chrono>

namespace Quorvex::Bench {

using Clock = std::chrono::steady_clock;

// How long one call of `body` takes, in seconds.
template <typename Body>
double Seconds(Body&& body) {
  const auto start = Clock::now();
  body();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Fastest of three runs of `body`, in seconds.
template <typename Body>
double BestSeconds(Body&& body) {
  double best = 1e9;
  for (int run = 0; run < 3; ++run) best = std::min(best, Seconds(body));
  return best;
}

}  // namespace Quorvex::Bench
