// Parsing of a generated 100 000-line class-definition file from memory, against an empty
// generated drawing on the headless host.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "catalogue/binding.h"
#include "catalogue/parser.h"
#include "drawing_generator.h"
#include "dxf/document.h"
#include "session/session.h"

namespace {

constexpr int kClassesPerGroup = 50;
constexpr int kTableNames = 40;

// About 20 lines per class: a type, properties, a table of eight fields, comments and
// macros, in groups of kClassesPerGroup classes. Classes share kTableNames tables.
std::string generateClassFile(int lines) {
  std::string out =
      "# generated class file\n"
      "define\tmaterials\tPE,PVC,Cast iron,Steel\n"
      "define\tdn\t80,100,150,200\n"
      "autoconst\t1\n";
  int count = 4;
  for (int i = 0; count < lines; ++i) {
    std::string n = std::to_string(i);
    if (i % kClassesPerGroup == 0) {
      if (i > 0) out += "/class\n";
      out += "class\tGroup " + n + "\t1\tGenerated group\n";
      count += 2;
    }
    std::string table = "TABLE_" + std::to_string(i % kTableNames);
    out += "obj_name\tClass " + n + "\t1\t" + n + "\n";
    out += "obj_type\tPolyline, Line\n";
    out += "obj_prop\tlayer\t0\n";
    out += "obj_prop\tcolor\tbylayer\t1,2,3\n";
    out += "obj_prop\tlinetypescale\t1\t0.5:2\n";
    out += "obj_prop\tconstantwidth\t0.2\n";
    out += "# the table of class " + n + "\n";
    out += "vel_name\t" + table + "\n";
    out += "vel_key\tCLASS\n";
    out += "vel_fld\tDN\tNominal diameter\trequired integer\t100\t$(dn)\n";
    out += "vel_fld\tMATERIAL\tMaterial\tnotempty character\tPE\t$(materials)\n";
    out += "vel_fld\tDEPTH\tDepth\treal\t1.2\t0.5:4\n";
    out += "vel_fld\tLAID\tYear laid\tinteger\t1990\t1900:2100\n";
    out += "vel_fld\tNOTE\tRemark\tcharacter\n";
    out += "vel_fld\tOWNER\tOwner\tconst character\tCity\tCity\n";
    out += "vel_fld\tLENGTH\tLength\treal\t0\n";
    out += "vel_fld\tSTATE\tState\tcharacter\texisting\tplanned,existing\n";
    out += "\n";
    count += 18;
  }
  out += "/class\n";
  return out;
}

void BM_ParseClassFile(benchmark::State& state) {
  const std::string text = generateClassFile(static_cast<int>(state.range(0)));
  auto drawing = dxf::Document::parse(bench::generateDrawing({.entities = 0}), "empty.dxf");
  if (!drawing) {
    std::fprintf(stderr, "drawing: %s\n", drawing.status().message().c_str());
    std::abort();
  }
  std::ostringstream out, err;
  auto opened = session::Session::open(std::move(drawing.value()), L"empty.dxf", out, err,
                                       {.echo = false, .quiet = true, .wrap = {}});
  if (!opened) {
    std::fprintf(stderr, "session: %s\n", opened.status().message().c_str());
    std::abort();
  }
  headless::HeadlessHost& host = (*opened)->host();
  size_t classes = 0;
  catalogue::HostEnvironment environment(host);
  for (auto _ : state) {
    // As loading does it: the parse, then binding to the drawing.
    catalogue::Binding result = catalogue::bindCatalogue(
        catalogue::parseClassDefinitions(text, L"/generated/classes.txt", environment),
        host.database());
    if (!result.ok || !result.messages.empty()) {
      state.SkipWithError("the generated file did not parse cleanly");
      break;
    }
    classes = result.catalogue->objects.size();
    benchmark::DoNotOptimize(classes);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * text.size()));
  state.counters["lines"] = static_cast<double>(state.range(0));
  state.counters["classes"] = static_cast<double>(classes);
  state.counters["lines/s"] = benchmark::Counter(
      static_cast<double>(state.range(0)) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ParseClassFile)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
