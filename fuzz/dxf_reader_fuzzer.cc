// Feeds arbitrary bytes to the DXF reader. Besides the sanitizers' own checks, every input
// that parses must survive a second trip: the written drawing parses again and is written
// back the same, serialize(parse(serialize(x))) == serialize(x).
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "dxf/document.h"

namespace {

// Prints where two writes first differ, then aborts so that libFuzzer keeps the input.
[[noreturn]] void failDiffering(const std::string& first, const std::string& second) {
  size_t at = 0;
  while (at < first.size() && at < second.size() && first[at] == second[at]) ++at;
  std::fprintf(stderr,
               "dxf_reader_fuzzer: second write differs from the first at byte %zu "
               "(sizes %zu and %zu)\n",
               at, first.size(), second.size());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  auto doc = dxf::Document::parse(std::string(reinterpret_cast<const char*>(data), size), "fuzz");
  if (!doc.isOk()) return 0;  // refusing bad input is fine; crashing or leaking is not

  const std::string first = doc->serialize();
  auto again = dxf::Document::parse(first, "fuzz-written");
  if (!again.isOk()) {
    std::fprintf(stderr, "dxf_reader_fuzzer: the written drawing does not parse: %s\n",
                 again.status().message().c_str());
    std::abort();
  }
  const std::string second = again->serialize();
  if (second != first) failDiffering(first, second);
  return 0;
}
