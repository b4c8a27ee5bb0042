// Small hand-written drawings for tests, one entity of each kind the property code handles.
// They are written one "code value" pair per line and turned into DXF by toDxf.
#pragma once

#include <algorithm>
#include <cctype>
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

// `bytes` with its version `from` (the first such text) made `to`.
inline std::string withVersion(std::string bytes, std::string_view to,
                               std::string_view from = "AC1027") {
  size_t at = bytes.find(from);
  if (at == std::string::npos) throw std::runtime_error("no " + std::string(from));
  return bytes.replace(at, from.size(), to);
}

// A test name made of a corpus file's path: its stem, other characters than letters and
// digits as '_'.
inline std::string testName(const std::string& path) {
  std::string name = path.substr(path.find_last_of('/') + 1);
  name = name.substr(0, name.rfind('.'));
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
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

// A small R2000 drawing: layers 0 and Walls, a LINE in model space, a block Door with three
// attribute definitions; one record per line, its "code value" pairs separated by '|'.
constexpr std::string_view kSmall = R"(
0 SECTION|2 HEADER|9 $ACADVER|1 AC1015|9 $HANDSEED|5 100|0 ENDSEC|0 SECTION|2 TABLES
0 TABLE|2 LAYER|5 2|330 0|100 AcDbSymbolTable|70 2
0 LAYER|5 10|330 2|100 AcDbSymbolTableRecord|100 AcDbLayerTableRecord|2 0|70 0|62 7|6 Continuous
0 LAYER|5 11|330 2|100 AcDbSymbolTableRecord|100 AcDbLayerTableRecord|2 Walls|70 0|62 1|6 Continuous
0 ENDTAB|0 TABLE|2 BLOCK_RECORD|5 1|330 0|100 AcDbSymbolTable|70 3
0 BLOCK_RECORD|5 1F|330 1|100 AcDbSymbolTableRecord|100 AcDbBlockTableRecord|2 *Model_Space|340 0
0 BLOCK_RECORD|5 1E|330 1|100 AcDbSymbolTableRecord|100 AcDbBlockTableRecord|2 *Paper_Space|340 0
0 BLOCK_RECORD|5 30|330 1|100 AcDbSymbolTableRecord|100 AcDbBlockTableRecord|2 Door|340 0
0 ENDTAB|0 ENDSEC|0 SECTION|2 BLOCKS
0 BLOCK|5 20|330 1F|100 AcDbEntity|8 0|100 AcDbBlockBegin|2 *Model_Space|70 0|10 0.0|20 0.0|30 0.0|3 *Model_Space|1
0 ENDBLK|5 21|330 1F|100 AcDbEntity|8 0|100 AcDbBlockEnd
0 BLOCK|5 31|330 30|100 AcDbEntity|8 0|100 AcDbBlockBegin|2 Door|70 2|10 1.0|20 1.0|30 0.0|3 Door|1
0 ATTDEF|5 33|330 30|100 AcDbEntity|8 0|100 AcDbText|10 2.0|20 1.0|30 0.0|40 0.5|1 D1|100 AcDbAttributeDefinition|3 Number|2 NUMBER|70 0
0 ATTDEF|5 34|330 30|100 AcDbEntity|8 0|100 AcDbText|10 1.0|20 3.0|30 0.0|40 0.5|1 ACME|100 AcDbAttributeDefinition|3 Maker|2 MAKER|70 2
0 ATTDEF|5 35|330 30|100 AcDbEntity|8 0|100 AcDbText|10 1.0|20 2.0|30 0.0|40 0.25|1 900|50 10.0|100 AcDbAttributeDefinition|3 Width|2 WIDTH|70 1
0 ENDBLK|5 32|330 30|100 AcDbEntity|8 0|100 AcDbBlockEnd
0 ENDSEC|0 SECTION|2 ENTITIES
0 LINE|5 40|330 1F|100 AcDbEntity|8 0|100 AcDbLine|10 0.0|20 0.0|30 0.0|11 1.0|21 1.0|31 0.0
0 ENDSEC|0 SECTION|2 OBJECTS|0 DICTIONARY|5 C|330 0|100 AcDbDictionary|281 1|0 ENDSEC|0 EOF
)";

// kSmall as DXF of `version`.
inline std::string small(std::string_view version = "AC1015") {
  return withVersion(pipes(kSmall), version, "AC1015");
}

// An AutoCAD 2013 drawing (UTF-8).
inline std::string drawing() { return toDxf(readCompact("sample_drawing.txt")); }

// An R12 drawing: no handles, no subclass markers.
inline std::string r12Drawing() { return toDxf(readCompact("sample_drawing_r12.txt")); }

}  // namespace sample
