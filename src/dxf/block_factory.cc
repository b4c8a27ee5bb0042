// Block definitions, attribute definitions and block references.
#include <cmath>

#include "dxf/blocks.h"
#include "dxf/entity_factory.h"
#include "dxf/entity_factory_internal.h"
#include "dxf/number_text.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

using factory::Builder;
using factory::quoted;
using factory::Target;

using factory::finite;
using factory::kPi;

bool isLayoutName(std::wstring_view name) {
  return sameName(name, L"*Model_Space") ||
         (name.size() >= 12 && sameName(name.substr(0, 12), L"*Paper_Space"));
}

// Where the ATTDEF data of a block ends up in an insert of it.
struct Placement {
  Point3 base, position, scale;
  double rotation_rad = 0;

  Point3 apply(const Point3& p) const {
    double x = (p.x - base.x) * scale.x;
    double y = (p.y - base.y) * scale.y;
    double c = std::cos(rotation_rad), s = std::sin(rotation_rad);
    return {position.x + x * c - y * s, position.y + x * s + y * c,
            position.z + (p.z - base.z) * scale.z};
  }
};

Point3 pointOf(const Document& doc, RecordId id, int code) {
  return {doc.realValue(id, code, 0), doc.realValue(id, code + 10, 0),
          doc.realValue(id, code + 20, 0)};
}

// An ATTRIB from the ATTDEF `def`, owned by the insert `owner`.
void addAttribute(Document& doc, const Target& target, std::vector<Builder>& out,
                  const std::string& owner, RecordId def, const Placement& placement,
                  double rotation_deg) {
  Builder& b = out.emplace_back(doc, target, "ATTRIB", owner);
  b.subclass("AcDbText");
  b.point(10, placement.apply(pointOf(doc, def, 10)));
  b.real(40, doc.realValue(def, 40, 2.5) * std::abs(placement.scale.y));
  b.raw(1, doc.value(def, 1));
  double rotation = doc.realValue(def, 50, 0) + rotation_deg;
  if (rotation != 0) b.real(50, rotation);
  if (auto style = doc.find(def, 7)) b.raw(7, doc.text(*style));
  int64_t halign = doc.intValue(def, 72, 0);
  int64_t valign = doc.intValue(def, 74, 0);
  if (halign != 0) b.integer(72, halign);
  // Aligned text is placed by its alignment point, which must move with the insert too.
  if ((halign != 0 || valign != 0) && doc.find(def, 11)) {
    b.point(11, placement.apply(pointOf(doc, def, 11)));
  }
  b.subclass("AcDbAttribute");
  b.raw(2, doc.value(def, 2));
  b.integer(70, doc.intValue(def, 70, 0) & ~int64_t{2});
  if (valign != 0) b.integer(74, valign);
}

}  // namespace

base::Result<RecordId> addBlock(Document& doc, std::wstring_view name, const Point3& base_point) {
  if (name.empty()) return base::Status::invalid("a block needs a name");
  if (!finite(base_point)) return base::Status::invalid("coordinates must be finite numbers");
  bool r12 = doc.isR12();
  if (findBlock(doc, name) != kNoRecord || (!r12 && findBlockRecord(doc, name) != kNoRecord)) {
    return base::Status::invalid("block " + quoted(name) + " already exists");
  }
  Span blocks = doc.section("BLOCKS");
  if (blocks.head == kNoRecord) return base::Status::invalid("the drawing has no BLOCKS section");
  Span records = doc.table("BLOCK_RECORD");
  if (!r12 && (records.head == kNoRecord || doc.record(records.head).handle == 0)) {
    return base::Status::invalid("the drawing has no BLOCK_RECORD table");
  }

  Target target;
  target.r12 = r12;
  target.handles = factory::usesHandles(doc);
  target.before = blocks.tail;
  RecordId layer = findTableEntry(doc, "LAYER", L"0");
  target.layer = layer == kNoRecord ? "0" : std::string(doc.value(layer, 2));
  std::string encoded = doc.codec().encode(name);

  if (!r12) {
    Handle handle = doc.allocateHandle();
    target.owner = formatHandle(handle);
    std::vector<Tag> tags = {doc.makeTag(0, "BLOCK_RECORD"),
                             doc.makeTag(5, target.owner),
                             doc.makeTag(330, formatHandle(doc.record(records.head).handle)),
                             doc.makeTag(100, "AcDbSymbolTableRecord"),
                             doc.makeTag(100, "AcDbBlockTableRecord"),
                             doc.makeTag(2, encoded),
                             doc.makeTag(340, "0")};
    if (doc.version() >= "AC1021") {
      // Insert units, explodability and scalability, which later versions always write.
      tags.push_back(doc.makeTag(70, "0"));
      tags.push_back(doc.makeTag(280, "1"));
      tags.push_back(doc.makeTag(281, "0"));
    }
    doc.insertBefore(records.tail, doc.newRecord(tags));
  }
  Builder begin(doc, target, "BLOCK");
  begin.subclass("AcDbBlockBegin");
  begin.raw(2, encoded);
  begin.integer(70, 0);
  begin.point(10, base_point);
  begin.raw(3, encoded);
  if (!r12) begin.raw(1, "");
  Builder end(doc, target, "ENDBLK");
  end.subclass("AcDbBlockEnd");
  RecordId id = begin.finish();
  end.finish();
  return id;
}

base::Result<RecordId> addAttributeDefinition(Document& doc, const CommonProps& common,
                                              const AttdefParams& params) {
  if (params.tag.empty() || params.tag.find(L' ') != std::wstring::npos) {
    return base::Status::invalid("an attribute tag must be non-empty and without spaces");
  }
  if (!finite(params.position) || !std::isfinite(params.rotation_deg)) {
    return base::Status::invalid("coordinates must be finite numbers");
  }
  if (!(params.height > 0)) return base::Status::invalid("text height must be > 0");
  auto target = factory::resolve(doc, common);
  if (!target) return target.status();
  Builder b(doc, *target, "ATTDEF");
  b.subclass("AcDbText");
  b.point(10, params.position);
  b.real(40, params.height);
  b.text(1, params.default_value);
  if (params.rotation_deg != 0) b.real(50, params.rotation_deg);
  b.subclass("AcDbAttributeDefinition");
  b.text(3, params.prompt);
  b.text(2, params.tag);
  b.integer(70, 0);
  return b.finish();
}

base::Result<RecordId> addInsert(Document& doc, const CommonProps& common,
                                 const InsertParams& params) {
  const Point3& scale = params.scale;
  if (!finite(params.position) || !finite(scale) || !std::isfinite(params.rotation_deg)) {
    return base::Status::invalid("coordinates must be finite numbers");
  }
  if (scale.x == 0 || scale.y == 0 || scale.z == 0) {
    return base::Status::invalid("scale factors must not be 0");
  }
  if (isLayoutName(params.block_name)) {
    return base::Status::invalid("a layout block cannot be inserted");
  }
  RecordId block = findBlock(doc, params.block_name);
  if (block == kNoRecord) {
    return base::Status::notFound("block " + quoted(params.block_name) + " does not exist");
  }
  if (sameName(params.block_name, common.block)) {
    return base::Status::invalid("a block cannot contain a reference to itself");
  }
  auto target = factory::resolve(doc, common);
  if (!target) return target.status();

  std::vector<RecordId> defs;
  if (params.with_attributes) {
    for (RecordId id : blockEntities(doc, block)) {
      // Constant attributes stay in the block; inserts carry no copy of them.
      if (doc.type(id) == "ATTDEF" && (doc.intValue(id, 70, 0) & 2) == 0) defs.push_back(id);
    }
  }
  Builder insert(doc, *target, "INSERT");
  insert.subclass("AcDbBlockReference");
  if (!defs.empty()) insert.integer(66, 1);
  insert.raw(2, doc.value(block, 2));
  insert.point(10, params.position);
  if (scale.x != 1) insert.real(41, scale.x);
  if (scale.y != 1) insert.real(42, scale.y);
  if (scale.z != 1) insert.real(43, scale.z);
  if (params.rotation_deg != 0) insert.real(50, params.rotation_deg);

  std::vector<Builder> followers;
  followers.reserve(defs.size() + 1);
  Placement placement{pointOf(doc, block, 10), params.position, scale,
                      params.rotation_deg * kPi / 180};
  for (RecordId def : defs) {
    addAttribute(doc, *target, followers, insert.handle(), def, placement, params.rotation_deg);
  }
  if (!defs.empty()) followers.emplace_back(doc, *target, "SEQEND", insert.handle());
  RecordId id = insert.finish();
  for (Builder& f : followers) f.finish();
  return id;
}

}  // namespace dxf
