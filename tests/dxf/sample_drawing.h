// Small hand-written drawings for tests, one entity of each kind the property code handles.
// They are written one "code value" pair per line and turned into DXF by toDxf.
#pragma once

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "dxf/document.h"

namespace sample {

// A file kept in tests/data.
inline std::string dataPath(const std::string& name) {
  return std::string(TAXOR_SOURCE_DIR) + "/tests/data/" + name;
}

// The compact text of a drawing kept in tests/data.
inline std::string readCompact(const std::string& name) {
  std::ifstream in(dataPath(name), std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// Turns "code value" lines into ASCII DXF; the value is everything after the first blank.
inline std::string toDxf(std::string_view compact) {
  std::string out;
  while (!compact.empty()) {
    size_t eol = compact.find('\n');
    std::string_view line = compact.substr(0, eol);
    compact.remove_prefix(eol == std::string_view::npos ? compact.size() : eol + 1);
    while (!line.empty() && line.front() == ' ') line.remove_prefix(1);
    if (line.empty()) continue;
    size_t blank = line.find(' ');
    std::string code(line.substr(0, blank));
    out += std::string(code.size() < 3 ? 3 - code.size() : 0, ' ') + code + "\n";
    out += std::string(blank == std::string_view::npos ? "" : line.substr(blank + 1)) + "\n";
  }
  return out;
}

// As toDxf, with '|' separating pairs as well, so that a record fits on one line.
inline std::string pipes(std::string_view records) {
  std::string lines(records);
  std::ranges::replace(lines, '|', '\n');
  return toDxf(lines);
}

// The drawing `bytes` holds; a test that cannot read it fails (gtest reports the exception).
inline dxf::Document parse(const std::string& bytes, const std::string& name = "test.dxf") {
  auto doc = dxf::Document::parse(bytes, name);
  if (!doc.isOk()) throw std::runtime_error(doc.status().message());
  return std::move(doc).value();
}

// Handles of the sample's entities.
namespace handle {
constexpr const char* kLine = "100";
constexpr const char* kLwPolyline = "101";
constexpr const char* kPolyline = "102";
constexpr const char* kCircle = "103";
constexpr const char* kArc = "104";
constexpr const char* kText = "105";
constexpr const char* kMtext = "106";
constexpr const char* kInsert = "107";
constexpr const char* kDimension = "108";
constexpr const char* kEllipse = "109";
constexpr const char* kSpline = "10A";
constexpr const char* kHatch = "10B";
constexpr const char* kSolidHatch = "10C";
constexpr const char* kMline = "10D";
constexpr const char* kPlainText = "10E";
constexpr const char* kMLeader = "10F";
constexpr const char* kColumnMtext = "113";  // has an embedded object
}  // namespace handle

// An AutoCAD 2013 drawing (UTF-8).
inline std::string drawing() { return toDxf(readCompact("sample_drawing.txt")); }

// An R12 drawing: no handles, no subclass markers.
inline std::string r12Drawing() { return toDxf(readCompact("sample_drawing_r12.txt")); }

}  // namespace sample
