// dxf_bench: times one task of the DXF library on one or more files and prints one line
//   task=... files=... bytes=... seconds=... peak_rss_kb=... failed=...
// Run one task per process so that the peak resident size belongs to that task alone.
//   dxf_bench load FILE...       parse
//   dxf_bench save FILE...       parse, then write to a temporary file
//   dxf_bench xrecords FILE...   parse, attach one XRECORD to every model-space entity, write
// With --output PATH (one file only) the written drawing is kept there, to check it.

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/objects.h"
#include "dxf/xrecord.h"

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

struct Totals {
  double load = 0;
  double edit = 0;
  double save = 0;
  uintmax_t bytes = 0;
  int64_t entities = 0;
  int failed = 0;
};

// Where the written drawings go; removed after each file so the disk does not fill up.
std::string scratchPath() {
  const char* dir = std::getenv("TMPDIR");
  std::filesystem::path base = dir != nullptr && *dir != '\0' ? dir : "/tmp";
  return (base / ("dxf_bench_" + std::to_string(getpid()) + ".dxf")).string();
}

// Gives every model-space entity an extension dictionary holding one XRECORD.
base::Status attachXrecords(dxf::Document& doc, int64_t& count) {
  std::vector<dxf::RecordId> entities;
  dxf::Span span = doc.section("ENTITIES");
  if (span.head == dxf::kNoRecord) return base::Status::ok();
  for (dxf::RecordId id = doc.next(span.head); id != span.tail; id = doc.next(id)) {
    std::string_view type = doc.type(id);
    // These belong to the entity before them and cannot hold data of their own here.
    if (type == "VERTEX" || type == "SEQEND" || type == "ATTRIB") continue;
    entities.push_back(id);
  }
  const std::vector<dxf::TypedValue> values = {
      dxf::TypedValue::ofText(L"abc"), dxf::TypedValue::ofReal(1.5), dxf::TypedValue::ofInteger(7),
      dxf::TypedValue::ofPoint(1, 2, 3)};
  for (dxf::RecordId id : entities) {
    auto xdict = dxf::ensureExtensionDictionary(doc, id);
    if (!xdict) return xdict.status();
    auto xrecord = dxf::createXrecord(doc, *xdict, L"TAXOR_BENCH");
    if (!xrecord) return xrecord.status();
    dxf::writeXrecord(doc, *xrecord, values);
  }
  count += static_cast<int64_t>(entities.size());
  return base::Status::ok();
}

bool runOne(std::string_view task, const std::string& path, const std::string& scratch, bool keep,
            Totals& totals) {
  std::error_code ec;
  uintmax_t size = std::filesystem::file_size(path, ec);
  if (!ec) totals.bytes += size;

  auto start = Clock::now();
  auto doc = dxf::Document::load(path);
  totals.load += secondsSince(start);
  if (!doc) {
    std::fprintf(stderr, "dxf_bench: %s\n", doc.status().message().c_str());
    return false;
  }
  if (task == "load") return true;

  if (task == "xrecords") {
    start = Clock::now();
    base::Status status = attachXrecords(*doc, totals.entities);
    totals.edit += secondsSince(start);
    if (!status) {
      std::fprintf(stderr, "dxf_bench: %s: %s\n", path.c_str(), status.message().c_str());
      return false;
    }
  }

  start = Clock::now();
  base::Status status = doc->save(scratch);
  totals.save += secondsSince(start);
  if (!keep) std::filesystem::remove(scratch, ec);
  if (!status) {
    std::fprintf(stderr, "dxf_bench: saving %s: %s\n", path.c_str(), status.message().c_str());
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: dxf_bench load|save|xrecords [--output PATH] FILE...\n");
    return 2;
  }
  std::string_view task = argv[1];
  if (task != "load" && task != "save" && task != "xrecords") {
    std::fprintf(stderr, "dxf_bench: unknown task '%s'\n", argv[1]);
    return 2;
  }
  std::string output;
  std::vector<std::string> paths;
  for (int i = 2; i < argc; ++i) {
    std::string_view arg = argv[i];
    if (arg == "--output" && i + 1 < argc) {
      output = argv[++i];
    } else {
      paths.emplace_back(arg);
    }
  }
  if (paths.empty() || (!output.empty() && paths.size() != 1)) {
    std::fprintf(stderr, "dxf_bench: --output takes exactly one input file\n");
    return 2;
  }
  const std::string scratch = output.empty() ? scratchPath() : output;
  Totals totals;
  int files = 0;
  for (const std::string& path : paths) {
    ++files;
    if (!runOne(task, path, scratch, !output.empty(), totals)) ++totals.failed;
  }

  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);  // ru_maxrss is in KiB on Linux
  std::printf(
      "task=%s files=%d bytes=%ju seconds=%.6f load_s=%.6f edit_s=%.6f save_s=%.6f "
      "entities=%lld peak_rss_kb=%ld failed=%d\n",
      std::string(task).c_str(), files, totals.bytes, totals.load + totals.edit + totals.save,
      totals.load, totals.edit, totals.save, static_cast<long long>(totals.entities),
      usage.ru_maxrss, totals.failed);
  return totals.failed == 0 ? 0 : 1;
}
