// Throughput of the counted string list. File benchmarks report "x_plain":
// their time divided by the time of a plain read or write of the same bytes,
// and the others "x_copy" against copying their text once, so results read
// as ratios that survive a change of machine.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>
#include <vector>

#include "Quorvex.BenchSupport.hpp"
#include "Quorvex.System.Collections.hpp"

namespace {

using Quorvex::Rtl::Encoding::TBytes;
using Quorvex::Rtl::Streams::fmCreate;
using Quorvex::Rtl::Streams::fmOpenRead;
using Quorvex::Rtl::Streams::TFileStream;
using Quorvex::Rtl::Strings::UnicodeString;
using Quorvex::System::Collections::IntfPtr;
using Quorvex::System::Collections::IStrings;
using Quorvex::System::Collections::TEncoding;
using Quorvex::System::Collections::TInterfacedStringList;
using Quorvex::Bench::BestSeconds;
using Quorvex::Bench::Seconds;

// Runs `body` under manual timing and reports its ratio to `baseline`
// seconds under the counter `name`.
template <typename Body>
void TimeAgainst(benchmark::State& state, const char* name, double baseline, size_t bytes, Body&& body) {
  double total = 0;
  for (auto _ : state) {
    const double seconds = Seconds(body);
    state.SetIterationTime(seconds);
    total += seconds;
  }
  state.counters[name] = total / static_cast<double>(state.iterations()) / baseline;
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(bytes));
}

double CopySeconds(size_t bytes) {
  std::vector<char> from(bytes, 'x');
  std::vector<char> to(bytes);
  return BestSeconds([&] {
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::DoNotOptimize(to.data());
  });
}

// A list of `count` lines of 10 to 70 letters, one in eight with an accent
// so that decoding leaves the ASCII fast paths.
IntfPtr<IStrings> MakeList(size_t count) {
  std::mt19937 random(42);
  const IntfPtr<IStrings> list = TInterfacedStringList::Create();
  list->SetCapacity(static_cast<int>(count));
  for (size_t i = 0; i < count; ++i) {
    UnicodeString line(10 + random() % 61, u'\0');
    for (char16_t& c : line) c = static_cast<char16_t>(u'a' + random() % 26);
    if (i % 8 == 0) line[0] = u'\u00E9';
    list->Add(line);
  }
  return list;
}

size_t TextBytes(const IntfPtr<IStrings>& list) { return list->GetTextStr().size() * sizeof(char16_t); }

// Linear search; the last line is the worst case.
void BM_IndexOf(benchmark::State& state) {
  const IntfPtr<IStrings> list = MakeList(100000);
  const UnicodeString last = list->Get(list->GetCount() - 1);
  TimeAgainst(state, "x_copy", CopySeconds(TextBytes(list)), TextBytes(list),
              [&] { benchmark::DoNotOptimize(list->IndexOf(last)); });
}

// `count` short lines of 4 to 15 letters in mixed case, one in eight
// starting with an accented letter.
std::vector<UnicodeString> ShortLines(size_t count) {
  std::mt19937 random(7);
  std::vector<UnicodeString> lines(count);
  for (size_t i = 0; i < count; ++i) {
    lines[i].resize(4 + random() % 12);
    for (char16_t& c : lines[i]) c = static_cast<char16_t>((random() % 4 == 0 ? u'A' : u'a') + random() % 26);
    if (i % 8 == 0) lines[i][0] = u'\u00C4';
  }
  return lines;
}

// Sorting a million short lines by the user's collation, ignoring case, as
// a ratio to std::sort of the same lines by code units ("x_std_sort").
void BM_SortShortLines(benchmark::State& state) {
  const std::vector<UnicodeString> lines = ShortLines(1000000);
  const double baseline = BestSeconds([&] {
    std::vector<UnicodeString> copy = lines;
    std::sort(copy.begin(), copy.end());
    benchmark::DoNotOptimize(copy.data());
  });
  double total = 0;
  for (auto _ : state) {
    const IntfPtr<IStrings> list = TInterfacedStringList::Create();
    list->AddStrings(lines);
    const double seconds = Seconds([&] { list->AsObject()->Sort(); });
    state.SetIterationTime(seconds);
    total += seconds;
  }
  state.counters["x_std_sort"] = total / static_cast<double>(state.iterations()) / baseline;
}

void BM_CommaTextRoundTrip(benchmark::State& state) {
  const IntfPtr<IStrings> list = MakeList(100000);
  const IntfPtr<IStrings> copy = TInterfacedStringList::Create();
  TimeAgainst(state, "x_copy", CopySeconds(TextBytes(list)), TextBytes(list),
              [&] { copy->SetCommaText(list->GetCommaText()); });
}

// A list of about 64 MiB once encoded, saved in `encoding` to a temporary
// file for the file benchmarks.
struct TBigFile {
  explicit TBigFile(TEncoding* encoding)
      : List(MakeList(encoding == TEncoding::UTF8() ? 1600000 : 800000)),
        Name((std::filesystem::temp_directory_path() / "qxrtl-bench-lines.txt").u16string()) {
    List->SaveToFile(Name, encoding);
    Bytes.resize(static_cast<size_t>(std::filesystem::file_size(std::filesystem::path(Name))));
  }
  ~TBigFile() { std::filesystem::remove(std::filesystem::path(Name)); }

  double PlainReadSeconds() {
    return BestSeconds([&] {
      TFileStream file(Name, fmOpenRead);
      file.ReadBuffer(Bytes.data(), static_cast<int64_t>(Bytes.size()));
    });
  }
  double PlainWriteSeconds() {
    return BestSeconds([&] {
      TFileStream file(Name, fmCreate);
      file.WriteBuffer(Bytes.data(), static_cast<int64_t>(Bytes.size()));
    });
  }

  IntfPtr<IStrings> List;
  UnicodeString Name;
  TBytes Bytes;
};

TEncoding* EncodingOf(const benchmark::State& state) {
  return state.range(0) == 8 ? TEncoding::UTF8() : TEncoding::Unicode();
}

void BM_LoadFromFile(benchmark::State& state) {
  TBigFile file(EncodingOf(state));
  const IntfPtr<IStrings> loaded = TInterfacedStringList::Create();
  TimeAgainst(state, "x_plain", file.PlainReadSeconds(), file.Bytes.size(), [&] { loaded->LoadFromFile(file.Name); });
}

void BM_SaveToFile(benchmark::State& state) {
  TBigFile file(EncodingOf(state));
  TEncoding* encoding = EncodingOf(state);
  TimeAgainst(state, "x_plain", file.PlainWriteSeconds(), file.Bytes.size(),
              [&] { file.List->SaveToFile(file.Name, encoding); });
}

}  // namespace

BENCHMARK(BM_IndexOf)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SortShortLines)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_CommaTextRoundTrip)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
// Argument 8: UTF-8; 16: UTF-16 LE.
BENCHMARK(BM_LoadFromFile)->Arg(8)->Arg(16)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_SaveToFile)->Arg(8)->Arg(16)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);
