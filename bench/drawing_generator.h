// A deterministic synthetic drawing for the benchmarks: ASCII DXF R2000 with N mixed
// model-space entities, optionally each carrying an extension dictionary with one XRECORD.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace bench {

struct DrawingOptions {
  int64_t entities = 10000;
  bool with_xrecords = false;
  uint64_t seed = 0x7a784f52;  // fixed so that every run compares the same bytes
};

// Writes the drawing piecewise to `sink` (chunks of about 1 MB), so that drawings larger
// than memory comfort can be written straight to a file.
void generateDrawing(const DrawingOptions& options,
                     const std::function<void(std::string_view)>& sink);

// The whole drawing as one string.
std::string generateDrawing(const DrawingOptions& options);

}  // namespace bench
