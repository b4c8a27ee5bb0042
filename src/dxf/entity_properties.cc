#include "dxf/entity_properties.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/property_tags.h"
#include "dxf/record_edit.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

using namespace props;

enum class Kind : uint8_t {
  kInt,
  kReal,
  kAngle,  // radians in the API, degrees in the drawing
  kText,
  kName,  // text naming a table entry
  kFlag,  // integer 0/1: one bit of a flags tag
};

// The symbol table whose entries a name property must name.
enum class Names : uint8_t { kNone, kLayer, kLinetype, kTextStyle, kDimStyle, kBlock };

bool validLineweight(int64_t value) {
  static constexpr std::array<int, 27> kValid = {-3, -2, -1,  0,   5,   9,   13,  15,  18,
                                                 20, 25, 30,  35,  40,  50,  53,  60,  70,
                                                 80, 90, 100, 106, 120, 140, 158, 200, 211};
  return std::find(kValid.begin(), kValid.end(), value) != kValid.end();
}
bool validAttachment(int64_t value) { return value >= 1 && value <= 9; }
bool validMlineJustification(int64_t value) { return value >= 0 && value <= 2; }

// A property held by one tag of one subclass group.
struct PlainProp {
  Prop prop;
  std::string_view types;    // space-separated DXF type names, "*" for every entity
  std::string_view markers;  // the subclass group; '|' separates alternatives
  int code = 0;
  Kind kind = Kind::kInt;
  double fallback = 0;  // what a CAD program assumes when the tag is absent
  std::wstring_view fallback_text = {};
  Names names = Names::kNone;
  int mask = 0;  // kFlag: the bit
  // A missing tag goes before the first of these in its group: the repeated data (vertices,
  // knots, boundary paths) that follows it in DXF; 0 ends the list.
  std::array<int16_t, 5> before = {};
  bool r13_and_later = false;  // R12 has no such tag
  bool (*valid)(int64_t) = nullptr;
};

// clang-format off
const PlainProp kPlainProps[] = {
    {.prop = Prop::kLayer, .types = "*", .markers = "AcDbEntity", .code = 8,
     .kind = Kind::kName, .fallback_text = L"0", .names = Names::kLayer},
    {.prop = Prop::kLinetype, .types = "*", .markers = "AcDbEntity", .code = 6,
     .kind = Kind::kName, .fallback_text = L"ByLayer", .names = Names::kLinetype},
    {.prop = Prop::kLinetypeScale, .types = "*", .markers = "AcDbEntity", .code = 48,
     .kind = Kind::kReal, .fallback = 1.0, .r13_and_later = true},
    {.prop = Prop::kLineweight, .types = "*", .markers = "AcDbEntity", .code = 370,
     .kind = Kind::kInt, .fallback = -1, .r13_and_later = true, .valid = validLineweight},
    {.prop = Prop::kClosed, .types = "LWPOLYLINE", .markers = "AcDbPolyline", .code = 70,
     .kind = Kind::kFlag, .mask = 1, .before = {10}},
    {.prop = Prop::kClosed, .types = "POLYLINE",
     .markers = "AcDb2dPolyline|AcDb3dPolyline|AcDbPolygonMesh", .code = 70,
     .kind = Kind::kFlag, .mask = 1},
    {.prop = Prop::kClosed, .types = "SPLINE", .markers = "AcDbSpline", .code = 70,
     .kind = Kind::kFlag, .mask = 1, .before = {40, 10, 11, 12, 13}},
    {.prop = Prop::kClosed, .types = "MLINE", .markers = "AcDbMline", .code = 71,
     .kind = Kind::kFlag, .fallback = 1, .mask = 2, .before = {72, 73, 10, 11}},
    {.prop = Prop::kRotation, .types = "INSERT", .markers = "AcDbBlockReference", .code = 50,
     .kind = Kind::kAngle},
    {.prop = Prop::kRotation, .types = "TEXT", .markers = "AcDbText", .code = 50,
     .kind = Kind::kAngle},
    {.prop = Prop::kBlockName, .types = "INSERT", .markers = "AcDbBlockReference", .code = 2,
     .kind = Kind::kName, .names = Names::kBlock},
    {.prop = Prop::kRadius, .types = "CIRCLE ARC", .markers = "AcDbCircle", .code = 40,
     .kind = Kind::kReal},
    {.prop = Prop::kDimensionStyle, .types = "DIMENSION", .markers = "AcDbDimension", .code = 3,
     .kind = Kind::kName, .fallback_text = L"Standard", .names = Names::kDimStyle},
    {.prop = Prop::kEllipseStart, .types = "ELLIPSE", .markers = "AcDbEllipse", .code = 41,
     .kind = Kind::kReal},
    {.prop = Prop::kEllipseEnd, .types = "ELLIPSE", .markers = "AcDbEllipse", .code = 42,
     .kind = Kind::kReal, .fallback = 2 * std::numbers::pi},
    {.prop = Prop::kPattern, .types = "HATCH", .markers = "AcDbHatch", .code = 2,
     .kind = Kind::kText, .fallback_text = L"SOLID", .before = {70, 71, 91}},
    {.prop = Prop::kPattern, .types = "MPOLYGON", .markers = "AcDbMPolygon", .code = 2,
     .kind = Kind::kText, .before = {71, 91}},
    {.prop = Prop::kMlineScale, .types = "MLINE", .markers = "AcDbMline", .code = 40,
     .kind = Kind::kReal, .fallback = 1.0, .before = {70, 71, 72, 73, 10}},
    {.prop = Prop::kMlineJustification, .types = "MLINE", .markers = "AcDbMline", .code = 70,
     .kind = Kind::kInt, .before = {71, 72, 73, 10, 11}, .valid = validMlineJustification},
    {.prop = Prop::kAttachment, .types = "MTEXT", .markers = "AcDbMText", .code = 71,
     .kind = Kind::kInt, .fallback = 1, .valid = validAttachment},
    {.prop = Prop::kTextHeight, .types = "TEXT", .markers = "AcDbText", .code = 40,
     .kind = Kind::kReal, .fallback = 2.5},
    {.prop = Prop::kTextHeight, .types = "MTEXT", .markers = "AcDbMText", .code = 40,
     .kind = Kind::kReal, .fallback = 2.5},
    {.prop = Prop::kTextStyle, .types = "TEXT", .markers = "AcDbText", .code = 7,
     .kind = Kind::kName, .fallback_text = L"Standard", .names = Names::kTextStyle},
    {.prop = Prop::kTextStyle, .types = "MTEXT", .markers = "AcDbMText", .code = 7,
     .kind = Kind::kName, .fallback_text = L"Standard", .names = Names::kTextStyle},
    {.prop = Prop::kContents, .types = "TEXT", .markers = "AcDbText", .code = 1,
     .kind = Kind::kText},
    {.prop = Prop::kConstantWidth, .types = "LWPOLYLINE", .markers = "AcDbPolyline", .code = 43,
     .kind = Kind::kReal, .before = {10}},
    {.prop = Prop::kElevation, .types = "LWPOLYLINE", .markers = "AcDbPolyline", .code = 38,
     .kind = Kind::kReal, .before = {10}},
};
// clang-format on

PropValue getScale(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  TagRange range = subclassGroup(doc, tags, "AcDbBlockReference");
  auto factor = [&](int code) {
    int at = findCode(doc, tags, range, code);
    double out = 1.0;
    return at >= 0 && parseDouble(doc.text(tags[at]), out) ? out : 1.0;
  };
  return Point3{factor(41), factor(42), factor(43)};
}

base::Status setScale(Document& doc, RecordId id, const PropValue& value) {
  const Point3* scale = std::get_if<Point3>(&value);
  if (!scale || !std::isfinite(scale->x) || !std::isfinite(scale->y) || !std::isfinite(scale->z)) {
    return wrongValue("three finite scale factors");
  }
  RecordEdit edit(doc, id);
  bool changed = false;
  for (auto [code, factor] : {std::pair{41, scale->x}, {42, scale->y}, {43, scale->z}}) {
    TagRange range = subclassGroup(doc, edit.tags(), "AcDbBlockReference");
    changed |= putInRange(doc, edit, range, code, formatDouble(factor));
  }
  if (changed) edit.commit();
  return base::Status::ok();
}

PropValue getDimensionType(const Document& doc, RecordId /*id*/, std::span<const Tag> tags) {
  int at = findCode(doc, tags, subclassGroup(doc, tags, "AcDbDimension"), 70);
  int64_t flags = 0;
  if (at >= 0 && !parseInt(doc.text(tags[at]), flags)) flags = 0;
  return int64_t{flags & 7};
}

// A property that needs more than one plain tag; `set` is null when it is read only.
struct CompoundProp {
  Prop prop;
  std::string_view types;
  PropValue (*get)(const Document&, RecordId, std::span<const Tag>);
  base::Status (*set)(Document&, RecordId, const PropValue&);
};

const CompoundProp kCompoundProps[] = {
    {Prop::kColor, "*", getColor, setColor},
    {Prop::kRotation, "MTEXT", getMtextRotation, setMtextRotation},
    {Prop::kScale, "INSERT", getScale, setScale},
    {Prop::kDimensionType, "DIMENSION", getDimensionType, nullptr},
    {Prop::kPatternAngle, "HATCH MPOLYGON", getPatternAngle, setPatternAngle},
    {Prop::kPatternScale, "HATCH MPOLYGON", getPatternScale, setPatternScale},
    {Prop::kBackgroundColor, "HATCH MPOLYGON", getBackgroundColor, setBackgroundColor},
    {Prop::kMLeaderStyle, "MULTILEADER MLEADER", getMLeaderStyle, setMLeaderStyle},
    {Prop::kMlineStyle, "MLINE", getMlineStyle, setMlineStyle},
    {Prop::kContents, "MTEXT", getMtextContents, setMtextContents},
    {Prop::kTextJustification, "TEXT", getTextJustification, setTextJustification},
};

bool typeMatches(std::string_view types, std::string_view type) {
  if (types == "*") return !type.empty();
  while (!types.empty()) {
    size_t space = types.find(' ');
    if (types.substr(0, space) == type) return true;
    if (space == std::string_view::npos) break;
    types.remove_prefix(space + 1);
  }
  return false;
}

template <typename Row>
const Row* findRow(std::span<const Row> rows, Prop prop, std::string_view type) {
  for (const Row& row : rows) {
    if (row.prop == prop && typeMatches(row.types, type)) return &row;
  }
  return nullptr;
}

std::string_view nameKind(Names names) {
  switch (names) {
    case Names::kLayer:
      return "layer";
    case Names::kLinetype:
      return "linetype";
    case Names::kTextStyle:
      return "text style";
    case Names::kDimStyle:
      return "dimension style";
    case Names::kBlock:
      return "block";
    case Names::kNone:
      break;
  }
  return "name";
}

// The name as the drawing stores it (the table entry's own case), or kNotFound.
base::Result<std::string> storedName(const Document& doc, Names names, const std::wstring& name) {
  RecordId entry = kNoRecord;
  switch (names) {
    case Names::kLayer:
      entry = findTableEntry(doc, "LAYER", name);
      break;
    case Names::kLinetype:
      entry = findTableEntry(doc, "LTYPE", name);
      // Every program knows these two, listed in the table or not.
      if (entry == kNoRecord && sameName(name, L"ByLayer")) {
        return std::string(doc.isR12() ? "BYLAYER" : "ByLayer");
      }
      if (entry == kNoRecord && sameName(name, L"ByBlock")) {
        return std::string(doc.isR12() ? "BYBLOCK" : "ByBlock");
      }
      break;
    case Names::kTextStyle:
      entry = findTableEntry(doc, "STYLE", name);
      break;
    case Names::kDimStyle:
      entry = findTableEntry(doc, "DIMSTYLE", name);
      break;
    case Names::kBlock:
      // R12 lists blocks only in the BLOCKS section.
      entry = doc.table("BLOCK_RECORD").head == kNoRecord ? findBlock(doc, name)
                                                          : findBlockRecord(doc, name);
      break;
    case Names::kNone:
      break;
  }
  if (entry == kNoRecord) {
    return base::Status::notFound(std::string(nameKind(names)) + " '" + base::toUtf8(name) +
                                  "' does not exist");
  }
  return std::string(doc.value(entry, 2));
}

// The value of `row` that `tag` holds, or the row's fallback when there is no tag.
PropValue plainValue(const Document& doc, const std::optional<Tag>& tag, const PlainProp& row) {
  const int at = tag ? 0 : -1;
  std::string_view raw = tag ? doc.text(*tag) : std::string_view();
  switch (row.kind) {
    case Kind::kInt: {
      int64_t out = 0;
      return at >= 0 && parseInt(raw, out) ? out : static_cast<int64_t>(row.fallback);
    }
    case Kind::kFlag: {
      int64_t flags = 0;
      if (at < 0 || !parseInt(raw, flags)) flags = static_cast<int64_t>(row.fallback);
      return int64_t{(flags & row.mask) != 0 ? 1 : 0};
    }
    case Kind::kReal:
    case Kind::kAngle: {
      double out = 0;
      if (at < 0 || !parseDouble(raw, out)) out = row.fallback;
      return row.kind == Kind::kAngle ? degreesToRadians(out) : out;
    }
    case Kind::kText:
    case Kind::kName:
      return at >= 0 ? doc.codec().decode(raw) : std::wstring(row.fallback_text);
  }
  return {};
}

template <typename Tags>
PropValue getPlain(const Document& doc, const Tags& tags, const PlainProp& row) {
  return plainValue(doc, findInGroup(doc, tags, row.markers, row.code), row);
}

// The raw text `value` takes in the drawing for `row`, given the tag's current text.
base::Result<std::string> rawValue(const Document& doc, const PlainProp& row,
                                   const PropValue& value, std::optional<std::string_view> now) {
  switch (row.kind) {
    case Kind::kInt: {
      std::optional<int64_t> integer = asInt(value);
      if (!integer || (row.valid && !row.valid(*integer))) return wrongValue("a valid integer");
      return formatInt(*integer);
    }
    case Kind::kFlag: {
      std::optional<int64_t> on = asInt(value);
      if (!on) return wrongValue("an integer 0 or 1");
      int64_t flags = static_cast<int64_t>(row.fallback);
      if (now && !parseInt(*now, flags)) flags = 0;
      return formatInt(*on ? flags | row.mask : flags & ~int64_t{row.mask});
    }
    case Kind::kReal:
    case Kind::kAngle: {
      std::optional<double> real = asReal(value);
      if (!real || !std::isfinite(*real)) return wrongValue("a finite number");
      return formatDouble(row.kind == Kind::kAngle ? radiansToDegrees(*real) : *real);
    }
    case Kind::kText: {
      const std::wstring* text = asText(value);
      if (!text) return wrongValue("text");
      if (base::Status status = checkText(*text); !status) return status;
      return doc.codec().encode(*text);
    }
    case Kind::kName: {
      const std::wstring* text = asText(value);
      if (!text) return wrongValue("a name");
      return storedName(doc, row.names, *text);
    }
  }
  return wrongValue("a value");
}

base::Status setPlain(Document& doc, RecordId id, const PlainProp& row, const PropValue& value) {
  if (row.r13_and_later && doc.isR12()) {
    return base::Status::unsupported("R12 drawings have no group code " + formatInt(row.code));
  }
  RecordEdit edit(doc, id);
  TagRange range = subclassGroup(doc, edit.tags(), row.markers);
  int at = findCode(doc, edit.tags(), range, row.code);
  std::optional<std::string_view> now;
  if (at >= 0) now = edit.text(static_cast<size_t>(at));
  base::Result<std::string> raw = rawValue(doc, row, value, now);
  if (!raw) return raw.status();
  size_t insert_at = range.end;
  for (int code : row.before) {
    if (code == 0) break;
    int next = findCode(doc, edit.tags(), range, code);
    if (next >= 0) insert_at = std::min(insert_at, static_cast<size_t>(next));
  }
  if (putTag(edit, at, insert_at, row.code, *raw)) edit.commit();
  return base::Status::ok();
}

}  // namespace

std::optional<PropValue> getGeneralProperty(const Document& doc, RecordId id, Prop prop,
                                            EntityGroupTags* memo) {
  if (id >= doc.recordCount()) return std::nullopt;
  const PlainProp* plain = nullptr;
  if (prop == Prop::kColor) {
    // A record without a structure name has a layer group but is no entity.
    if (!findRow<CompoundProp>(kCompoundProps, prop, doc.type(id))) return std::nullopt;
  } else {
    plain = findRow<PlainProp>(kPlainProps, prop, doc.type(id));
    if (!plain || plain->markers != "AcDbEntity") return std::nullopt;
    if (prop == Prop::kLayer) {
      std::optional<std::string_view> layer = doc.knownLayer(id);
      if (!layer) return std::nullopt;
      return doc.codec().decode(*layer);
    }
  }
  // The general properties follow the layer in its group: one read finds them all.
  static constexpr std::array<int, 5> kGroupCodes = {62, 420, 6, 48, 370};
  EntityGroupTags local;
  EntityGroupTags& group = memo ? *memo : local;
  if (!memo || group.id != id || group.revision != doc.revision()) {
    group.id = id;
    group.revision = doc.revision();
    group.known = doc.findInEntityGroup(id, kGroupCodes, group.tags);
  }
  if (!group.known) return std::nullopt;
  if (!plain) return props::colorOf(doc, group.tags[0], group.tags[1]);
  const size_t index = static_cast<size_t>(
      std::find(kGroupCodes.begin(), kGroupCodes.end(), plain->code) - kGroupCodes.begin());
  if (index == kGroupCodes.size()) return std::nullopt;
  return plainValue(doc, group.tags[index], *plain);
}

PropValue getProperty(const Document& doc, RecordId id, Prop prop) {
  if (id >= doc.recordCount()) return {};
  if (std::optional<PropValue> value = getGeneralProperty(doc, id, prop)) return *value;
  std::string_view type = doc.type(id);
  if (const CompoundProp* compound = findRow<CompoundProp>(kCompoundProps, prop, type)) {
    return compound->get(doc, id, doc.tags(id));
  }
  if (const PlainProp* plain = findRow<PlainProp>(kPlainProps, prop, type)) {
    return getPlain(doc, doc.scan(id), *plain);
  }
  return {};
}

PropValue getProperty(const Document& doc, RecordId id, std::span<const Tag> tags, Prop prop) {
  if (id >= doc.recordCount()) return {};
  std::string_view type = doc.type(id);
  if (const CompoundProp* compound = findRow<CompoundProp>(kCompoundProps, prop, type)) {
    return compound->get(doc, id, tags);
  }
  if (const PlainProp* plain = findRow<PlainProp>(kPlainProps, prop, type)) {
    return getPlain(doc, std::span<const Tag>(tags), *plain);
  }
  return {};
}

bool hasProperty(const Document& doc, RecordId id, Prop prop) {
  if (id >= doc.recordCount()) return false;
  std::string_view type = doc.type(id);
  return findRow<CompoundProp>(kCompoundProps, prop, type) ||
         findRow<PlainProp>(kPlainProps, prop, type);
}

base::Status setProperty(Document& doc, RecordId id, Prop prop, const PropValue& value) {
  if (id >= doc.recordCount()) return base::Status::notFound("no such record");
  std::string_view type = doc.type(id);
  if (const CompoundProp* compound = findRow<CompoundProp>(kCompoundProps, prop, type)) {
    if (!compound->set) return base::Status::unsupported("the property is read only");
    return compound->set(doc, id, value);
  }
  if (const PlainProp* plain = findRow<PlainProp>(kPlainProps, prop, type)) {
    return setPlain(doc, id, *plain, value);
  }
  return base::Status::unsupported(std::string(type) + " entities have no such property");
}

}  // namespace dxf
