// Throughput of the string toolbox against a plain copy of the same bytes.
// Every benchmark reports "x_copy": its time divided by the time of copying
// its input once, so results read as ratios that survive a change of machine.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>

#include "Quorvex.Utils.Strings.hpp"

namespace {

using Quorvex::Rtl::Strings::TStringDynArray;
using Quorvex::Rtl::Strings::UnicodeString;
using Quorvex::Utils::Strings::gString;
using Clock = std::chrono::steady_clock;

// Fastest of several plain copies of `bytes` bytes, in seconds.
double CopySeconds(size_t bytes) {
  std::vector<char> from(bytes, 'x');
  std::vector<char> to(bytes);
  double best = 1e9;
  for (int run = 0; run < 5; ++run) {
    const auto start = Clock::now();
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::DoNotOptimize(to.data());
    best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
  }
  return best;
}

// Runs `body` under manual timing and reports its ratio to a copy of
// `bytes` bytes.
template <typename Body>
void TimeAgainstCopy(benchmark::State& state, size_t bytes, Body&& body) {
  double total = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    body();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    state.SetIterationTime(seconds);
    total += seconds;
  }
  const double perIteration = total / static_cast<double>(state.iterations());
  const double copy = CopySeconds(bytes);
  state.counters["copy_ms"] = copy * 1e3;
  state.counters["x_copy"] = perIteration / copy;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

// Comma-separated words of 1 to 15 letters, about `chars` characters.
UnicodeString MakeCsv(size_t chars) {
  std::mt19937 random(42);
  UnicodeString text;
  text.reserve(chars + 16);
  while (text.size() < chars) {
    const int length = 1 + static_cast<int>(random() % 15);
    for (int i = 0; i < length; ++i) text.push_back(static_cast<char16_t>(u'a' + random() % 26));
    text.push_back(u',');
  }
  return text;
}

void BM_Split(benchmark::State& state) {
  const UnicodeString text = MakeCsv((static_cast<size_t>(state.range(0)) << 20) / sizeof(char16_t));
  TimeAgainstCopy(state, text.size() * sizeof(char16_t), [&] { benchmark::DoNotOptimize(gString::Split(text, u",")); });
}

void BM_Join(benchmark::State& state) {
  const TStringDynArray items =
      gString::Split(MakeCsv((static_cast<size_t>(state.range(0)) << 20) / sizeof(char16_t)), u",");
  size_t bytes = 0;
  for (const auto& item : items) bytes += (item.size() + 1) * sizeof(char16_t);
  TimeAgainstCopy(state, bytes, [&] { benchmark::DoNotOptimize(gString::Join(items, u",")); });
}

// Add grows one string value by value; it must stay amortised linear.
void BM_Add(benchmark::State& state) {
  const TStringDynArray items =
      gString::Split(MakeCsv((static_cast<size_t>(state.range(0)) << 20) / sizeof(char16_t)), u",");
  size_t bytes = 0;
  for (const auto& item : items) bytes += (item.size() + 1) * sizeof(char16_t);
  TimeAgainstCopy(state, bytes, [&] {
    UnicodeString s;
    for (const auto& item : items) gString::Add(s, item, u",");
    benchmark::DoNotOptimize(s);
  });
}

void BM_SpaceCompress(benchmark::State& state) {
  std::mt19937 random(7);
  const char16_t blanks[] = {u' ', u' ', u' ', u'\r', u'\n', u'\t'};
  UnicodeString text;
  while (text.size() < (1u << 20)) {
    text.push_back(static_cast<char16_t>(u'a' + random() % 26));
    for (unsigned i = random() % 5; i > 0; --i) text.push_back(blanks[random() % 6]);
  }
  TimeAgainstCopy(state, text.size() * sizeof(char16_t),
                  [&] { benchmark::DoNotOptimize(gString::SpaceCompress(text)); });
}

// The byte formatter over a spread of magnitudes; the baseline is copying
// the produced text once.
void BM_FormatBytes(benchmark::State& state) {
  std::vector<int64_t> values;
  std::mt19937_64 random(3);
  for (int i = 0; i < 1000; ++i) values.push_back(static_cast<int64_t>(random() >> (random() % 60)));
  size_t bytes = 0;
  for (int64_t v : values) bytes += gString::FormatBytes(v).size() * sizeof(char16_t);
  TimeAgainstCopy(state, bytes, [&] {
    for (int64_t v : values) benchmark::DoNotOptimize(gString::FormatBytes(v));
  });
}

void BM_FormatBitsPerSec(benchmark::State& state) {
  size_t bytes = 0;
  for (int64_t v = 1; v < 1000000000000000; v *= 7) bytes += gString::FormatBitsPerSec(v).size() * sizeof(char16_t);
  TimeAgainstCopy(state, bytes, [&] {
    for (int64_t v = 1; v < 1000000000000000; v *= 7) benchmark::DoNotOptimize(gString::FormatBitsPerSec(v));
  });
}

}  // namespace

// 32 and 64 MiB: the x_copy ratio must not grow with the size (linear work).
BENCHMARK(BM_Split)->Arg(32)->Arg(64)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_Join)->Arg(32)->Arg(64)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_Add)->Arg(32)->Arg(64)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_SpaceCompress)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FormatBytes)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FormatBitsPerSec)->UseManualTime()->Unit(benchmark::kMicrosecond);
