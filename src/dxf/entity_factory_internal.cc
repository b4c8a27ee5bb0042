#include "dxf/entity_factory_internal.h"

#include <cmath>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/number_text.h"
#include "dxf/symbol_tables.h"

namespace dxf::factory {

bool finite(const Point3& p) {
  return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

std::string quoted(std::wstring_view name) { return "\"" + base::toUtf8(name) + "\""; }

base::Status requireR2000(const Document& doc, std::string_view type) {
  if (!doc.isR12()) return base::Status::ok();
  return base::Status::unsupported("an R12 drawing cannot hold " + std::string(type) +
                                   " entities; save it as R2000 or later first");
}

bool usesHandles(const Document& doc) {
  if (!doc.isR12()) return true;
  std::vector<Tag> handling = doc.headerVariable("$HANDLING");
  if (!handling.empty() &&
      doc.text(handling.front()).find_first_of("123456789") != std::string_view::npos) {
    return true;
  }
  for (RecordId id = doc.first(); id != kNoRecord; id = doc.next(id)) {
    if (doc.record(id).handle != 0) return true;
  }
  return false;
}

base::Result<Target> resolve(Document& doc, const CommonProps& common) {
  Target target;
  target.r12 = doc.isR12();
  RecordId layer = findTableEntry(doc, "LAYER", common.layer);
  if (layer == kNoRecord) {
    return base::Status::notFound("layer " + quoted(common.layer) + " does not exist");
  }
  target.layer = std::string(doc.value(layer, 2));
  if (common.color && (*common.color < 0 || *common.color > 256)) {
    return base::Status::invalid("colour index " + std::to_string(*common.color) +
                                 " is outside 0..256");
  }
  target.color = common.color;

  std::wstring_view block = common.block;
  bool model = block.empty() || sameName(block, L"*Model_Space");
  if (!model && block.size() >= 12 && sameName(block.substr(0, 12), L"*Paper_Space")) {
    return base::Status::unsupported("entities cannot be added to paper space");
  }
  if (!model) {
    RecordId begin = findBlock(doc, block);
    if (begin == kNoRecord)
      return base::Status::notFound("block " + quoted(block) + " does not exist");
    target.before = blockEnd(doc, begin);
    if (target.before == kNoRecord) {
      return base::Status::invalid("block " + quoted(block) + " has no ENDBLK");
    }
  }
  if (!target.r12) {
    std::wstring_view record_name = model ? std::wstring_view(L"*Model_Space") : block;
    RecordId record = model ? modelSpaceBlockRecord(doc) : findBlockRecord(doc, record_name);
    if (record == kNoRecord || doc.record(record).handle == 0) {
      return base::Status::invalid("the drawing has no BLOCK_RECORD for " + quoted(record_name));
    }
    target.owner = formatHandle(doc.record(record).handle);
  }
  if (model) {
    // Only now that nothing can fail: a drawing without entities may lack the section.
    target.before = modelSpaceInsertPoint(doc);
    if (target.before == kNoRecord) target.before = doc.addSection("ENTITIES").tail;
  }
  target.handles = usesHandles(doc);
  return target;
}

Builder::Builder(Document& doc, const Target& target, std::string_view type, std::string_view owner)
    : doc_(doc), target_(target) {
  raw(0, type);
  if (target.handles) {
    handle_ = formatHandle(doc.allocateHandle());
    raw(5, handle_);
  }
  if (!target.r12) {
    raw(330, owner.empty() ? std::string_view(target.owner) : owner);
    subclass("AcDbEntity");
  }
  raw(8, target.layer);
  if (target.color) integer(62, *target.color);
}

void Builder::subclass(std::string_view marker) {
  if (!target_.r12) raw(100, marker);
}

void Builder::raw(int code, std::string_view text) { tags_.push_back(doc_.makeTag(code, text)); }

void Builder::text(int code, std::wstring_view text) { raw(code, doc_.codec().encode(text)); }

void Builder::real(int code, double value) { raw(code, formatDouble(value)); }

void Builder::integer(int code, int64_t value) { raw(code, formatInt(value)); }

void Builder::point(int code, const Point3& p) {
  real(code, p.x);
  real(code + 10, p.y);
  real(code + 20, p.z);
}

void Builder::point2(int code, double x, double y) {
  real(code, x);
  real(code + 10, y);
}

RecordId Builder::finish() {
  RecordId id = doc_.newRecord(tags_);
  doc_.insertBefore(target_.before, id);
  return id;
}

}  // namespace dxf::factory
