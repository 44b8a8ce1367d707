// The serializer against raw pugixml on the same document, both timed in
// the processor time of the benchmark's thread: a collection of
// small items with five properties of mixed kinds. Each benchmark reports
// "speed_vs_raw", the time raw pugixml takes to build and save (or to parse
// and walk) the same document divided by the serializer's time: 1 is as
// fast as pugixml alone, 0.25 a quarter of its speed. The figures read as
// ratios that survive a change of machine; two item counts show that the
// time grows linearly.
#include <benchmark/benchmark.h>

#include <pugixml.hpp>
#include <sstream>
#include <string>

#include "Quorvex.BenchSupport.hpp"
#include "Quorvex.Rtl.Classes.hpp"
#include "Quorvex.Rtti.XMLSerializer.hpp"

namespace {

using Quorvex::Rtl::Classes::TCollection;
using Quorvex::Rtl::Classes::TCollectionItem;
using Quorvex::Rtl::Classes::TPersistent;
using Quorvex::Rtl::Objects::IntfPtr;
using Quorvex::Rtl::Objects::TObject;
using Quorvex::Rtl::Strings::IntToStr;
using Quorvex::Rtl::Strings::UnicodeString;
using Quorvex::Rtti::XMLSerializer::IXmlSerializer;
using Quorvex::Bench::ThreadCpuSeconds;

QX_ENUM(TBenchKind, uint8_t, bkSmall, bkMedium, bkLarge);

class TBenchItem : public TCollectionItem {
  QX_CLASS(TBenchItem, TCollectionItem, "Quorvex.Bench")
 public:
  UnicodeString Name;
  int Count = 0;
  double Weight = 0;
  bool Active = false;
  TBenchKind Kind = bkSmall;
  QX_PROPERTY(published, Name, Name, Name);
  QX_PROPERTY(published, Count, Count, Count);
  QX_PROPERTY(published, Weight, Weight, Weight);
  QX_PROPERTY(published, Active, Active, Active);
  QX_PROPERTY(published, Kind, Kind, Kind);
};

class TBenchStore : public TPersistent {
  QX_CLASS(TBenchStore, TPersistent, "Quorvex.Bench")
  TCollection FItems{TBenchItem::StaticClass()};

 public:
  TCollection* GetItems() { return &FItems; }
  QX_READONLY_PROPERTY(published, Items, GetItems);
};

void Fill(TBenchStore& store, int count) {
  for (int i = 0; i < count; ++i) {
    auto* item = static_cast<TBenchItem*>(store.GetItems()->Add());
    item->Name = u"item-" + IntToStr(i);
    item->Count = i;
    item->Weight = i * 0.25;
    item->Active = i % 2 == 0;
    item->Kind = static_cast<TBenchKind>(i % 3);
  }
}

const char* const kKindNames[] = {"bkSmall", "bkMedium", "bkLarge"};

// The same document as the serializer writes, built with pugixml directly.
std::string RawSave(int count) {
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "UTF-8";
  pugi::xml_node items = document.append_child("Root").append_child("Items");
  char text[32];
  for (int i = 0; i < count; ++i) {
    pugi::xml_node item = items.append_child("Item");
    item.append_child("Name").text().set(("item-" + std::to_string(i)).c_str());
    item.append_child("Count").text().set(i);
    std::snprintf(text, sizeof text, "%.15g", i * 0.25);
    item.append_child("Weight").text().set(text);
    item.append_child("Active").text().set(i % 2 == 0 ? "True" : "False");
    item.append_child("Kind").text().set(kKindNames[i % 3]);
  }
  std::ostringstream out;
  document.save(out, "  ", pugi::format_indent, pugi::encoding_utf8);
  return out.str();
}

// Parses the document and reads every value into plain variables.
int64_t RawLoad(const std::string& text) {
  pugi::xml_document document;
  document.load_buffer(text.data(), text.size());
  int64_t sum = 0;
  for (pugi::xml_node item : document.child("Root").child("Items").children()) {
    sum += static_cast<int64_t>(std::string(item.child("Name").text().get()).size());
    sum += item.child("Count").text().as_int();
    sum += static_cast<int64_t>(item.child("Weight").text().as_double());
    sum += std::string(item.child("Active").text().get()) == "True";
    sum += std::string(item.child("Kind").text().get()).size();
  }
  return sum;
}

void BM_SerializeAndSave(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  TBenchStore store;
  Fill(store, count);
  double ours = 0;
  double raw = 0;
  for (auto _ : state) {
    ours += ThreadCpuSeconds([&] {
      IntfPtr<IXmlSerializer<TObject>> serializer = Quorvex::Rtti::XMLSerializer::NewXmlSerializer();
      serializer->Serialize(&store);
      benchmark::DoNotOptimize(serializer->GetDocument().SaveToText());
    });
    raw += ThreadCpuSeconds([&] { benchmark::DoNotOptimize(RawSave(count)); });
  }
  state.counters["speed_vs_raw"] = raw / ours;
  state.counters["items_per_s"] = benchmark::Counter(static_cast<double>(count) * state.iterations() / ours);
}

void BM_LoadAndDeserialize(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  TBenchStore source;
  Fill(source, count);
  IntfPtr<IXmlSerializer<TObject>> writer = Quorvex::Rtti::XMLSerializer::NewXmlSerializer();
  writer->Serialize(&source);
  const UnicodeString text = writer->GetDocument().SaveToText();
  const std::string utf8 = RawSave(count);
  double ours = 0;
  double raw = 0;
  for (auto _ : state) {
    ours += ThreadCpuSeconds([&] {
      TBenchStore store;
      IntfPtr<IXmlSerializer<TObject>> serializer = Quorvex::Rtti::XMLSerializer::NewXmlSerializer();
      serializer->GetDocument().LoadFromText(text);
      serializer->Deserialize(&store);
      benchmark::DoNotOptimize(store.GetItems()->Count());
    });
    raw += ThreadCpuSeconds([&] { benchmark::DoNotOptimize(RawLoad(utf8)); });
  }
  state.counters["speed_vs_raw"] = raw / ours;
  state.counters["items_per_s"] = benchmark::Counter(static_cast<double>(count) * state.iterations() / ours);
}

BENCHMARK(BM_SerializeAndSave)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_LoadAndDeserialize)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
