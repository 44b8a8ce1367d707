// Cost of VerifyUrl: throughput on ordinary URLs, and the time one call
// takes on texts made to backtrack (a short crafted one, a megabyte of
// labels) and on a long valid URL, all of which the automaton decides.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "Quorvex.Types.Url.hpp"

namespace {

using Quorvex::Rtl::Strings::IntToStr;
using Quorvex::Rtl::Strings::UnicodeString;
using Quorvex::Types::Url::TUrl;

// URLs of the shapes applications check: hosts by name and by address,
// ports, paths, queries and anchors, with some invalid ones mixed in.
std::vector<UnicodeString> TypicalUrls(size_t count) {
  const UnicodeString hosts[] = {u"www.example.com", u"10.0.0.1", u"files.example.org", u"intranet.corp.example.net"};
  const UnicodeString tails[] = {u"", u"/", u"/index.html", u"/a/b/c?x=1&y=two", u"/docs/page.html#top", u" bad"};
  std::mt19937 random(42);
  std::vector<UnicodeString> urls;
  urls.reserve(count);
  for (size_t i = 0; i < count; ++i) {
    UnicodeString url = random() % 2 ? u"https://" : u"http://";
    url += hosts[random() % std::size(hosts)];
    if (random() % 4 == 0) url += u":" + IntToStr(1024 + random() % 60000);
    urls.push_back(url + tails[random() % std::size(tails)]);
  }
  return urls;
}

void BM_VerifyTypicalUrls(benchmark::State& state) {
  const std::vector<UnicodeString> urls = TypicalUrls(100'000);
  for (auto _ : state)
    for (const UnicodeString& url : urls) benchmark::DoNotOptimize(TUrl::VerifyUrl(url));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * urls.size()));
}
BENCHMARK(BM_VerifyTypicalUrls)->Unit(benchmark::kMillisecond);

// Sixteen segments and a broken escape: a backtracking matcher tries every
// way of splitting the segments before it can say no.
void BM_VerifyCraftedUrl(benchmark::State& state) {
  UnicodeString crafted = u"http://example.com";
  for (int i = 0; i < 16; ++i) crafted += u"/a";
  crafted += u"/%";
  for (auto _ : state) benchmark::DoNotOptimize(TUrl::VerifyUrl(crafted));
}
BENCHMARK(BM_VerifyCraftedUrl)->Unit(benchmark::kMicrosecond);

void BM_VerifyLongValidUrl(benchmark::State& state) {
  const UnicodeString url = u"http://example.com/" + UnicodeString(49'995, u'a');
  for (auto _ : state) benchmark::DoNotOptimize(TUrl::VerifyUrl(url));
}
BENCHMARK(BM_VerifyLongValidUrl)->Unit(benchmark::kMillisecond);

void BM_VerifyHostileMegabyte(benchmark::State& state) {
  UnicodeString labels;
  for (int i = 0; i < 512 * 1024; ++i) labels += u"a.";
  for (auto _ : state) benchmark::DoNotOptimize(TUrl::VerifyUrl(labels));
}
BENCHMARK(BM_VerifyHostileMegabyte)->Unit(benchmark::kMillisecond);

}  // namespace
