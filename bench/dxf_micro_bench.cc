// Parse and serialize of an in-memory 10 000-entity drawing, without file I/O, and records
// attached to its entities.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "drawing_generator.h"
#include "dxf/document.h"
#include "dxf/objects.h"
#include "dxf/xrecord.h"

namespace {

const std::string& drawing(bool with_xrecords) {
  static const std::string plain = bench::generateDrawing({.entities = 10000});
  static const std::string xrecords =
      bench::generateDrawing({.entities = 10000, .with_xrecords = true});
  return with_xrecords ? xrecords : plain;
}

dxf::Document parseOrDie(std::string bytes) {
  auto doc = dxf::Document::parse(std::move(bytes), "generated.dxf");
  if (!doc) {
    std::fprintf(stderr, "parse failed: %s\n", doc.status().message().c_str());
    std::abort();
  }
  return std::move(doc).value();
}

void BM_Parse(benchmark::State& state) {
  const std::string& bytes = drawing(state.range(0) != 0);
  for (auto _ : state) {
    // parse() takes the buffer by value; the copy is part of every real load too.
    dxf::Document doc = parseOrDie(bytes);
    benchmark::DoNotOptimize(doc.recordCount());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

void BM_Serialize(benchmark::State& state) {
  const std::string& bytes = drawing(state.range(0) != 0);
  dxf::Document doc = parseOrDie(bytes);
  for (auto _ : state) {
    std::string out = doc.serialize();
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

void BM_ParseSerialize(benchmark::State& state) {
  const std::string& bytes = drawing(state.range(0) != 0);
  for (auto _ : state) {
    dxf::Document doc = parseOrDie(bytes);
    std::string out = doc.serialize();
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes.size()));
}

// Each entity gets its XRECORD attached and then rewritten, as classifying one at a time
// does: every step must cost the same however many came before.
void BM_AttachThenRewrite(benchmark::State& state) {
  const std::string& bytes = drawing(false);
  const std::vector<dxf::TypedValue> values = {dxf::TypedValue::ofText(L"WALL"),
                                               dxf::TypedValue::ofReal(2.5)};
  const std::vector<dxf::TypedValue> rewritten = {dxf::TypedValue::ofText(L"DOOR"),
                                                  dxf::TypedValue::ofReal(0.9)};
  for (auto _ : state) {
    state.PauseTiming();
    dxf::Document doc = parseOrDie(bytes);
    const dxf::Span entities = doc.section("ENTITIES");
    state.ResumeTiming();
    for (dxf::RecordId id = doc.next(entities.head); id != entities.tail; id = doc.next(id)) {
      auto xrecord = dxf::attachXrecord(doc, id, L"DATA", values);
      if (xrecord.isOk()) dxf::writeXrecord(doc, *xrecord, rewritten);
    }
    benchmark::DoNotOptimize(doc.attachedEnd());
  }
}

// Argument: 0 = plain drawing, 1 = every entity with an extension dictionary and XRECORD.
BENCHMARK(BM_Parse)->ArgName("xrecords")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Serialize)->ArgName("xrecords")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseSerialize)->ArgName("xrecords")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AttachThenRewrite)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
