#include "drawing_generator.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdio>

namespace bench {

namespace {

// Handles of the fixed structure. Entities start at kFirstEntityHandle; with XRECORDs each
// entity takes three consecutive handles (entity, extension dictionary, XRECORD).
enum : uint64_t {
  kLayerTable = 0x1,
  kLtypeTable = 0x2,
  kAppidTable = 0x3,
  kDimstyleTable = 0x4,
  kStyleTable = 0x5,
  kUcsTable = 0x6,
  kViewTable = 0x7,
  kVportTable = 0x8,
  kBlockRecordTable = 0x9,
  kModelSpaceRecord = 0x10,
  kPaperSpaceRecord = 0x11,
  kMarkRecord = 0x12,
  kModelSpaceBlock = 0x13,
  kModelSpaceEnd = 0x14,
  kPaperSpaceBlock = 0x15,
  kPaperSpaceEnd = 0x16,
  kMarkBlock = 0x17,
  kMarkCircle = 0x18,
  kMarkEnd = 0x19,
  kLtypeByBlock = 0x1A,
  kLtypeByLayer = 0x1B,
  kLtypeContinuous = 0x1C,
  kStyleStandard = 0x1D,
  kAppidAcad = 0x1E,
  kDimstyleStandard = 0x1F,
  kVportActive = 0x20,
  kRootDictionary = 0x21,
  kGroupDictionary = 0x22,
  kLayoutDictionary = 0x23,
  kModelLayout = 0x24,
  kPaperLayout = 0x25,
  kFirstLayer = 0x30,
  kFirstEntityHandle = 0x100,
};

constexpr std::array<std::string_view, 21> kLayers = {
    "0",        "WALLS",   "DOORS",     "WINDOWS", "FURNITURE",  "ELECTRICAL", "LIGHTING",
    "PLUMBING", "HVAC",    "STRUCTURE", "GRID",    "DIMENSIONS", "TEXT",       "HATCH",
    "ROADS",    "PARCELS", "CONTOURS",  "TREES",   "UTILITIES",  "SURVEY",     "ANNOTATION"};

// splitmix64: tiny, and its output is fixed by the algorithm, unlike the standard
// distributions whose results differ between library implementations.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}
  uint64_t next() {
    uint64_t z = (state_ += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }
  int64_t below(int64_t n) { return static_cast<int64_t>(next() % static_cast<uint64_t>(n)); }
  // A coordinate with three decimals, so values print short and exactly.
  double coordinate(int64_t range) { return static_cast<double>(below(range * 1000)) / 1000.0; }

 private:
  uint64_t state_;
};

class Writer {
 public:
  explicit Writer(const std::function<void(std::string_view)>& sink) : sink_(sink) {
    buffer_.reserve(kChunk + 4096);
  }
  ~Writer() { flush(); }

  void code(int group_code) {
    char digits[8];
    auto end = std::to_chars(digits, digits + sizeof digits, group_code).ptr;
    // Right-aligned in three columns, as most CAD programs write them.
    for (std::ptrdiff_t pad = 3 - (end - digits); pad > 0; --pad) buffer_ += ' ';
    buffer_.append(digits, end);
    buffer_ += '\n';
  }
  void tag(int group_code, std::string_view text) {
    code(group_code);
    buffer_ += text;
    buffer_ += '\n';
    if (buffer_.size() >= kChunk) flush();
  }
  void tag(int group_code, double value) {
    char text[32];
    auto end = std::to_chars(text, text + sizeof text, value).ptr;
    std::string_view view(text, end - text);
    // "12" would read back the same, but CAD programs always write a decimal point.
    if (view.find_first_of(".e") == std::string_view::npos) {
      *end++ = '.';
      *end++ = '0';
    }
    tag(group_code, std::string_view(text, end - text));
  }
  void integer(int group_code, int64_t value) {
    char text[24];
    auto end = std::to_chars(text, text + sizeof text, value).ptr;
    tag(group_code, std::string_view(text, end - text));
  }
  void handle(int group_code, uint64_t value) {
    char text[24];
    auto end = std::to_chars(text, text + sizeof text, value, 16).ptr;
    for (char* p = text; p != end; ++p) {
      if (*p >= 'a' && *p <= 'f') *p = static_cast<char>(*p - 'a' + 'A');
    }
    tag(group_code, std::string_view(text, end - text));
  }
  void point(int base_code, double x, double y, double z) {
    tag(base_code, x);
    tag(base_code + 10, y);
    tag(base_code + 20, z);
  }
  void point(int base_code, double x, double y) {
    tag(base_code, x);
    tag(base_code + 10, y);
  }
  void flush() {
    if (!buffer_.empty()) sink_(buffer_);
    buffer_.clear();
  }

 private:
  static constexpr size_t kChunk = 1 << 20;
  const std::function<void(std::string_view)>& sink_;
  std::string buffer_;
};

// Opens a symbol table with its common tags.
void beginTable(Writer& w, std::string_view name, uint64_t handle, int count) {
  w.tag(0, "TABLE");
  w.tag(2, name);
  w.handle(5, handle);
  w.handle(330, 0);
  w.tag(100, "AcDbSymbolTable");
  w.integer(70, count);
}

void beginTableRecord(Writer& w, std::string_view type, uint64_t handle, uint64_t table,
                      std::string_view subclass) {
  w.tag(0, type);
  w.handle(type == "DIMSTYLE" ? 105 : 5, handle);
  w.handle(330, table);
  w.tag(100, "AcDbSymbolTableRecord");
  w.tag(100, subclass);
}

void writeHeader(Writer& w, uint64_t handseed) {
  w.tag(0, "SECTION");
  w.tag(2, "HEADER");
  w.tag(9, "$ACADVER");
  w.tag(1, "AC1015");
  w.tag(9, "$ACADMAINTVER");
  w.integer(70, 6);
  w.tag(9, "$DWGCODEPAGE");
  w.tag(3, "ANSI_1252");
  w.tag(9, "$INSBASE");
  w.point(10, 0.0, 0.0, 0.0);
  w.tag(9, "$EXTMIN");
  w.point(10, 0.0, 0.0, 0.0);
  w.tag(9, "$EXTMAX");
  w.point(10, 10000.0, 10000.0, 0.0);
  w.tag(9, "$CLAYER");
  w.tag(8, "0");
  w.tag(9, "$TEXTSTYLE");
  w.tag(7, "Standard");
  w.tag(9, "$DIMSTYLE");
  w.tag(2, "Standard");
  w.tag(9, "$HANDSEED");
  w.handle(5, handseed);
  w.tag(9, "$MEASUREMENT");
  w.integer(70, 1);
  w.tag(9, "$INSUNITS");
  w.integer(70, 6);  // metres
  w.tag(0, "ENDSEC");

  w.tag(0, "SECTION");
  w.tag(2, "CLASSES");
  w.tag(0, "CLASS");
  w.tag(1, "LAYOUT");
  w.tag(2, "AcDbLayout");
  w.tag(3, "ObjectDBX Classes");
  w.integer(90, 0);
  w.integer(280, 0);
  w.integer(281, 0);
  w.tag(0, "ENDSEC");
}

void writeTables(Writer& w) {
  w.tag(0, "SECTION");
  w.tag(2, "TABLES");

  beginTable(w, "VPORT", kVportTable, 1);
  beginTableRecord(w, "VPORT", kVportActive, kVportTable, "AcDbViewportTableRecord");
  w.tag(2, "*Active");
  w.integer(70, 0);
  w.point(10, 0.0, 0.0);
  w.point(11, 1.0, 1.0);
  w.point(12, 5000.0, 5000.0);
  w.point(13, 0.0, 0.0);
  w.point(14, 0.5, 0.5);
  w.point(15, 0.5, 0.5);
  w.point(16, 0.0, 0.0, 1.0);
  w.point(17, 0.0, 0.0, 0.0);
  w.tag(40, 10000.0);
  w.tag(41, 1.34);
  w.tag(42, 50.0);
  w.tag(43, 0.0);
  w.tag(44, 0.0);
  w.tag(50, 0.0);
  w.tag(51, 0.0);
  w.integer(71, 0);
  w.integer(72, 1000);
  w.integer(73, 1);
  w.integer(74, 3);
  w.integer(75, 0);
  w.integer(76, 0);
  w.integer(77, 0);
  w.integer(78, 0);
  w.tag(0, "ENDTAB");

  beginTable(w, "LTYPE", kLtypeTable, 3);
  const std::pair<std::string_view, uint64_t> ltypes[] = {
      {"ByBlock", kLtypeByBlock}, {"ByLayer", kLtypeByLayer}, {"Continuous", kLtypeContinuous}};
  for (const auto& [name, handle] : ltypes) {
    beginTableRecord(w, "LTYPE", handle, kLtypeTable, "AcDbLinetypeTableRecord");
    w.tag(2, name);
    w.integer(70, 0);
    w.tag(3, name == "Continuous" ? "Solid line" : "");
    w.integer(72, 65);
    w.integer(73, 0);
    w.tag(40, 0.0);
  }
  w.tag(0, "ENDTAB");

  beginTable(w, "LAYER", kLayerTable, static_cast<int>(kLayers.size()));
  for (size_t i = 0; i < kLayers.size(); ++i) {
    beginTableRecord(w, "LAYER", kFirstLayer + i, kLayerTable, "AcDbLayerTableRecord");
    w.tag(2, kLayers[i]);
    w.integer(70, 0);
    w.integer(62, i == 0 ? 7 : static_cast<int>(1 + i % 7));
    w.tag(6, "Continuous");
    w.integer(370, -3);
    w.handle(390, 0);
  }
  w.tag(0, "ENDTAB");

  beginTable(w, "STYLE", kStyleTable, 1);
  beginTableRecord(w, "STYLE", kStyleStandard, kStyleTable, "AcDbTextStyleTableRecord");
  w.tag(2, "Standard");
  w.integer(70, 0);
  w.tag(40, 0.0);
  w.tag(41, 1.0);
  w.tag(50, 0.0);
  w.integer(71, 0);
  w.tag(42, 2.5);
  w.tag(3, "txt");
  w.tag(4, "");
  w.tag(0, "ENDTAB");

  beginTable(w, "VIEW", kViewTable, 0);
  w.tag(0, "ENDTAB");
  beginTable(w, "UCS", kUcsTable, 0);
  w.tag(0, "ENDTAB");

  beginTable(w, "APPID", kAppidTable, 1);
  beginTableRecord(w, "APPID", kAppidAcad, kAppidTable, "AcDbRegAppTableRecord");
  w.tag(2, "ACAD");
  w.integer(70, 0);
  w.tag(0, "ENDTAB");

  beginTable(w, "DIMSTYLE", kDimstyleTable, 1);
  w.tag(100, "AcDbDimStyleTable");
  beginTableRecord(w, "DIMSTYLE", kDimstyleStandard, kDimstyleTable, "AcDbDimStyleTableRecord");
  w.tag(2, "Standard");
  w.integer(70, 0);
  w.tag(0, "ENDTAB");

  beginTable(w, "BLOCK_RECORD", kBlockRecordTable, 3);
  beginTableRecord(w, "BLOCK_RECORD", kModelSpaceRecord, kBlockRecordTable, "AcDbBlockTableRecord");
  w.tag(2, "*Model_Space");
  w.handle(340, kModelLayout);
  beginTableRecord(w, "BLOCK_RECORD", kPaperSpaceRecord, kBlockRecordTable, "AcDbBlockTableRecord");
  w.tag(2, "*Paper_Space");
  w.handle(340, kPaperLayout);
  beginTableRecord(w, "BLOCK_RECORD", kMarkRecord, kBlockRecordTable, "AcDbBlockTableRecord");
  w.tag(2, "MARK");
  w.handle(340, 0);
  w.tag(0, "ENDTAB");

  w.tag(0, "ENDSEC");
}

void writeBlock(Writer& w, std::string_view name, uint64_t record, uint64_t begin, uint64_t end,
                bool with_circle) {
  w.tag(0, "BLOCK");
  w.handle(5, begin);
  w.handle(330, record);
  w.tag(100, "AcDbEntity");
  w.tag(8, "0");
  w.tag(100, "AcDbBlockBegin");
  w.tag(2, name);
  w.integer(70, 0);
  w.point(10, 0.0, 0.0, 0.0);
  w.tag(3, name);
  w.tag(1, "");
  if (with_circle) {
    w.tag(0, "CIRCLE");
    w.handle(5, kMarkCircle);
    w.handle(330, record);
    w.tag(100, "AcDbEntity");
    w.tag(8, "0");
    w.tag(100, "AcDbCircle");
    w.point(10, 0.0, 0.0, 0.0);
    w.tag(40, 1.0);
  }
  w.tag(0, "ENDBLK");
  w.handle(5, end);
  w.handle(330, record);
  w.tag(100, "AcDbEntity");
  w.tag(8, "0");
  w.tag(100, "AcDbBlockEnd");
}

void writeBlocks(Writer& w) {
  w.tag(0, "SECTION");
  w.tag(2, "BLOCKS");
  writeBlock(w, "*Model_Space", kModelSpaceRecord, kModelSpaceBlock, kModelSpaceEnd, false);
  writeBlock(w, "*Paper_Space", kPaperSpaceRecord, kPaperSpaceBlock, kPaperSpaceEnd, false);
  writeBlock(w, "MARK", kMarkRecord, kMarkBlock, kMarkEnd, true);
  w.tag(0, "ENDSEC");
}

uint64_t entityHandle(int64_t index, bool with_xrecords) {
  return kFirstEntityHandle + static_cast<uint64_t>(index) * (with_xrecords ? 3 : 1);
}

void writeEntity(Writer& w, Random& rng, int64_t index, bool with_xrecords) {
  // Weights in percent: LINE 30, LWPOLYLINE 20, CIRCLE 12, ARC 12, TEXT 12, POINT 7,
  // INSERT 7, roughly the mix of a plan drawing.
  static constexpr std::pair<int, std::string_view> kMix[] = {
      {30, "LINE"}, {50, "LWPOLYLINE"}, {62, "CIRCLE"}, {74, "ARC"},
      {86, "TEXT"}, {93, "POINT"},      {100, "INSERT"}};
  int64_t pick = rng.below(100);
  std::string_view type = "INSERT";
  for (const auto& [limit, name] : kMix) {
    if (pick < limit) {
      type = name;
      break;
    }
  }
  uint64_t handle = entityHandle(index, with_xrecords);
  w.tag(0, type);
  w.handle(5, handle);
  if (with_xrecords) {
    w.tag(102, "{ACAD_XDICTIONARY");
    w.handle(360, handle + 1);
    w.tag(102, "}");
  }
  w.handle(330, kModelSpaceRecord);
  w.tag(100, "AcDbEntity");
  w.tag(8, kLayers[1 + rng.below(kLayers.size() - 1)]);
  if (rng.below(4) == 0) w.integer(62, 1 + rng.below(255));  // some override the layer colour

  double x = rng.coordinate(10000);
  double y = rng.coordinate(10000);
  if (type == "LINE") {
    w.tag(100, "AcDbLine");
    w.point(10, x, y, 0.0);
    w.point(11, x + rng.coordinate(100), y + rng.coordinate(100), 0.0);
  } else if (type == "LWPOLYLINE") {
    int64_t count = 2 + rng.below(7);
    w.tag(100, "AcDbPolyline");
    w.integer(90, count);
    w.integer(70, rng.below(2));  // closed or open
    w.tag(43, 0.0);
    for (int64_t i = 0; i < count; ++i) {
      w.point(10, x, y);
      x += rng.coordinate(50);
      y += rng.coordinate(50) - 25.0;
    }
  } else if (type == "CIRCLE" || type == "ARC") {
    w.tag(100, "AcDbCircle");
    w.point(10, x, y, 0.0);
    w.tag(40, 0.5 + rng.coordinate(20));
    if (type == "ARC") {
      w.tag(100, "AcDbArc");
      w.tag(50, static_cast<double>(rng.below(360)));
      w.tag(51, static_cast<double>(rng.below(360)));
    }
  } else if (type == "TEXT") {
    char text[48];
    int length = std::snprintf(text, sizeof text, "Room %lld", static_cast<long long>(index));
    w.tag(100, "AcDbText");
    w.point(10, x, y, 0.0);
    w.tag(40, 2.5);
    w.tag(1, std::string_view(text, static_cast<size_t>(length)));
    w.tag(7, "Standard");
    w.tag(100, "AcDbText");
  } else if (type == "POINT") {
    w.tag(100, "AcDbPoint");
    w.point(10, x, y, 0.0);
  } else {
    w.tag(100, "AcDbBlockReference");
    w.tag(2, "MARK");
    w.point(10, x, y, 0.0);
    w.tag(50, static_cast<double>(rng.below(360)));
  }
}

void writeLayout(Writer& w, uint64_t handle, std::string_view name, int tab_order,
                 uint64_t block_record, bool model) {
  w.tag(0, "LAYOUT");
  w.handle(5, handle);
  w.handle(330, kLayoutDictionary);
  w.tag(100, "AcDbPlotSettings");
  w.tag(1, "");
  w.tag(2, "none_device");
  w.tag(4, "");
  w.tag(6, "");
  w.tag(40, 0.0);
  w.tag(41, 0.0);
  w.tag(42, 0.0);
  w.tag(43, 0.0);
  w.tag(44, 420.0);
  w.tag(45, 297.0);
  w.tag(46, 0.0);
  w.tag(47, 0.0);
  w.tag(48, 0.0);
  w.tag(49, 0.0);
  w.tag(140, 0.0);
  w.tag(141, 0.0);
  w.tag(142, 1.0);
  w.tag(143, 1.0);
  w.integer(70, model ? 1024 : 0);
  w.integer(72, 1);
  w.integer(73, 0);
  w.integer(74, 5);
  w.tag(7, "");
  w.integer(75, 16);
  w.tag(147, 1.0);
  w.tag(148, 0.0);
  w.tag(149, 0.0);
  w.tag(100, "AcDbLayout");
  w.tag(1, name);
  w.integer(70, 1);
  w.integer(71, tab_order);
  w.point(10, 0.0, 0.0);
  w.point(11, 420.0, 297.0);
  w.point(12, 0.0, 0.0, 0.0);
  w.point(14, 0.0, 0.0, 0.0);
  w.point(15, 0.0, 0.0, 0.0);
  w.tag(146, 0.0);
  w.point(13, 0.0, 0.0, 0.0);
  w.point(16, 1.0, 0.0, 0.0);
  w.point(17, 0.0, 1.0, 0.0);
  w.integer(76, 1);
  w.handle(330, block_record);
}

void writeObjects(Writer& w, int64_t entities, bool with_xrecords) {
  w.tag(0, "SECTION");
  w.tag(2, "OBJECTS");

  w.tag(0, "DICTIONARY");
  w.handle(5, kRootDictionary);
  w.handle(330, 0);
  w.tag(100, "AcDbDictionary");
  w.integer(281, 1);
  w.tag(3, "ACAD_GROUP");
  w.handle(350, kGroupDictionary);
  w.tag(3, "ACAD_LAYOUT");
  w.handle(350, kLayoutDictionary);

  w.tag(0, "DICTIONARY");
  w.handle(5, kGroupDictionary);
  w.handle(330, kRootDictionary);
  w.tag(100, "AcDbDictionary");
  w.integer(281, 1);

  w.tag(0, "DICTIONARY");
  w.handle(5, kLayoutDictionary);
  w.handle(330, kRootDictionary);
  w.tag(100, "AcDbDictionary");
  w.integer(281, 1);
  w.tag(3, "Model");
  w.handle(350, kModelLayout);
  w.tag(3, "Layout1");
  w.handle(350, kPaperLayout);

  writeLayout(w, kModelLayout, "Model", 0, kModelSpaceRecord, true);
  writeLayout(w, kPaperLayout, "Layout1", 1, kPaperSpaceRecord, false);

  if (with_xrecords) {
    for (int64_t i = 0; i < entities; ++i) {
      uint64_t entity = entityHandle(i, true);
      w.tag(0, "DICTIONARY");
      w.handle(5, entity + 1);
      w.tag(102, "{ACAD_REACTORS");
      w.handle(330, entity);
      w.tag(102, "}");
      w.handle(330, entity);
      w.tag(100, "AcDbDictionary");
      w.integer(280, 1);
      w.integer(281, 1);
      w.tag(3, "TAXOR_BENCH");
      w.handle(360, entity + 2);

      w.tag(0, "XRECORD");
      w.handle(5, entity + 2);
      w.tag(102, "{ACAD_REACTORS");
      w.handle(330, entity + 1);
      w.tag(102, "}");
      w.handle(330, entity + 1);
      w.tag(100, "AcDbXrecord");
      w.integer(280, 1);
      w.tag(1, "abc");
      w.tag(40, 1.5);
      w.integer(90, 7);
      w.point(10, 1.0, 2.0, 3.0);
    }
  }
  w.tag(0, "ENDSEC");
}

}  // namespace

void generateDrawing(const DrawingOptions& options,
                     const std::function<void(std::string_view)>& sink) {
  Writer w(sink);
  int64_t n = options.entities < 0 ? 0 : options.entities;
  writeHeader(w, entityHandle(n, options.with_xrecords));
  writeTables(w);
  writeBlocks(w);

  w.tag(0, "SECTION");
  w.tag(2, "ENTITIES");
  Random rng(options.seed);
  for (int64_t i = 0; i < n; ++i) writeEntity(w, rng, i, options.with_xrecords);
  w.tag(0, "ENDSEC");

  writeObjects(w, n, options.with_xrecords);
  w.tag(0, "EOF");
}

std::string generateDrawing(const DrawingOptions& options) {
  std::string out;
  generateDrawing(options, [&out](std::string_view chunk) { out += chunk; });
  return out;
}

}  // namespace bench
