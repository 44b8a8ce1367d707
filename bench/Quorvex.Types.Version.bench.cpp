// Throughput of version parsing and ordering, in versions (or comparisons)
// per second over a fixed table of varied inputs.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "Quorvex.Types.Version.hpp"

namespace {

using Quorvex::Rtl::Strings::UnicodeString;
using Quorvex::Types::Version::TVersionValue;

constexpr size_t kCount = 1024;

// Versions with fields of every width, fixed by the seed.
std::vector<TVersionValue> MakeVersions() {
  std::mt19937 random(42);
  std::vector<TVersionValue> versions(kCount);
  for (TVersionValue& v : versions) {
    const auto field = [&] { return static_cast<uint16_t>(random() >> (random() % 32)); };
    v = {field(), field(), field(), field()};
  }
  return versions;
}

void BM_VersionFromString(benchmark::State& state) {
  std::vector<UnicodeString> texts;
  for (const TVersionValue& v : MakeVersions()) texts.push_back(v.AsString());
  for (auto _ : state) {
    for (const UnicodeString& text : texts) benchmark::DoNotOptimize(TVersionValue::FromString(text));
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kCount));
}
BENCHMARK(BM_VersionFromString);

void BM_VersionCompare(benchmark::State& state) {
  const std::vector<TVersionValue> versions = MakeVersions();
  for (auto _ : state) {
    size_t less = 0;
    for (size_t i = 1; i < kCount; ++i) less += versions[i - 1] < versions[i];
    benchmark::DoNotOptimize(less);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * (kCount - 1)));
}
BENCHMARK(BM_VersionCompare);

}  // namespace
