#include "dxf/attributes.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "base/utf.h"
#include "dxf/blocks.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/record_edit.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

struct Definition {
  RecordId record;
  std::wstring tag;
};

// The tag name of an ATTDEF or ATTRIB: the code 2 of its attribute subclass (2 is free in
// the text subclass, so the first 2 of the record is it).
std::wstring attributeTag(const Document& doc, RecordId id) {
  return doc.codec().decode(doc.value(id, 2));
}

// An ATTRIB for `def` as `insert` places it.
std::vector<Tag> attributeFrom(Document& doc, RecordId def, RecordId insert) {
  double ix = doc.realValue(insert, 10, 0), iy = doc.realValue(insert, 20, 0);
  double iz = doc.realValue(insert, 30, 0);
  double sx = doc.realValue(insert, 41, 1), sy = doc.realValue(insert, 42, 1);
  double rotation = doc.realValue(insert, 50, 0) * std::numbers::pi / 180;
  RecordId block = findBlock(doc, doc.codec().decode(doc.value(insert, 2)));
  double bx = block == kNoRecord ? 0 : doc.realValue(block, 10, 0);
  double by = block == kNoRecord ? 0 : doc.realValue(block, 20, 0);
  auto place = [&](double x, double y, double& ox, double& oy) {
    double dx = (x - bx) * sx, dy = (y - by) * sy;
    ox = ix + dx * std::cos(rotation) - dy * std::sin(rotation);
    oy = iy + dx * std::sin(rotation) + dy * std::cos(rotation);
  };
  std::vector<Tag> out = {doc.makeTag(0, "ATTRIB")};
  if (doc.record(insert).handle != 0 || !doc.isR12()) {
    out.push_back(doc.makeTag(5, formatHandle(doc.allocateHandle())));
  }
  if (!doc.isR12()) out.push_back(doc.makeTag(330, formatHandle(doc.record(insert).handle)));
  bool in_definition_subclass = false;
  const bool turns_itself = doc.find(def, 50).has_value();
  auto tags = doc.tags(def);
  for (size_t i = 1; i < tags.size(); ++i) {
    const Tag& tag = tags[i];
    std::string_view text = doc.text(tag);
    if (tag.code == 5 || tag.code == 330 || tag.code == 102 || tag.code >= 1000) continue;
    if (tag.code == 100 && text == "AcDbAttributeDefinition") {
      out.push_back(doc.makeTag(100, "AcDbAttribute"));
      in_definition_subclass = true;
      continue;
    }
    // The prompt belongs to the definition only.
    if (tag.code == 3 && (in_definition_subclass || doc.isR12())) continue;
    if (tag.code == 10 || tag.code == 11) {
      double x = 0, y = 0;
      place(doc.realValue(def, tag.code, 0), doc.realValue(def, tag.code + 10, 0), x, y);
      out.push_back(doc.makeTag(tag.code, x));
      out.push_back(doc.makeTag(tag.code + 10, y));
      out.push_back(doc.makeTag(tag.code + 20, iz + doc.realValue(def, tag.code + 20, 0)));
      continue;
    }
    if (tag.code == 20 || tag.code == 30 || tag.code == 21 || tag.code == 31) continue;
    if (tag.code == 50) {
      out.push_back(doc.makeTag(50, doc.realValue(def, 50, 0) + rotation * 180 / std::numbers::pi));
      continue;
    }
    out.push_back(tag);
    // A definition at no angle may leave its rotation out; a turned insert turns it.
    if (tag.code == 1 && !turns_itself && rotation != 0) {
      out.push_back(doc.makeTag(50, rotation * 180 / std::numbers::pi));
    }
  }
  return out;
}

std::vector<Tag> seqendFor(Document& doc, RecordId insert) {
  std::vector<Tag> out = {doc.makeTag(0, "SEQEND")};
  if (!doc.isR12() || doc.record(insert).handle != 0) {
    out.push_back(doc.makeTag(5, formatHandle(doc.allocateHandle())));
  }
  if (!doc.isR12()) {
    out.push_back(doc.makeTag(330, formatHandle(doc.record(insert).handle)));
    out.push_back(doc.makeTag(100, "AcDbEntity"));
  }
  out.push_back(doc.makeTag(8, doc.value(insert, 8, "0")));
  return out;
}

// Rebuilds the attributes of one insert; true iff anything changed.
bool synchronizeInsert(Document& doc, RecordId insert, const std::vector<Definition>& defs) {
  std::vector<RecordId> attribs;
  RecordId seqend = kNoRecord;
  for (RecordId id = doc.next(insert); id != kNoRecord; id = doc.next(id)) {
    std::string_view type = doc.type(id);
    if (type == "ATTRIB") {
      attribs.push_back(id);
    } else {
      if (type == "SEQEND") seqend = id;
      break;
    }
  }
  std::vector<RecordId> wanted;
  bool changed = false;
  for (const Definition& def : defs) {
    RecordId kept = kNoRecord;
    for (RecordId a : attribs) {
      if (sameName(attributeTag(doc, a), def.tag)) {
        kept = a;
        break;
      }
    }
    if (kept == kNoRecord) {
      kept = doc.newRecord(attributeFrom(doc, def.record, insert));
      changed = true;
    }
    wanted.push_back(kept);
  }
  for (RecordId a : attribs) {
    if (std::find(wanted.begin(), wanted.end(), a) == wanted.end()) changed = true;
  }
  if (!changed && wanted == attribs) return false;

  RecordId after = seqend != kNoRecord ? doc.next(seqend)
                   : attribs.empty()   ? doc.next(insert)
                                       : doc.next(attribs.back());
  // Kept attributes and the SEQEND are moved, not erased and added again: they stay the
  // same objects.
  for (RecordId a : attribs) {
    if (std::find(wanted.begin(), wanted.end(), a) == wanted.end()) doc.unlink(a);
  }
  RecordEdit edit(doc, insert);
  if (wanted.empty()) {
    if (seqend != kNoRecord) doc.unlink(seqend);
    int at = edit.find(66);
    if (at >= 0) edit.erase(static_cast<size_t>(at));
    edit.commit();
    return true;
  }
  edit.setInSubclass("AcDbBlockReference", 66, "1");
  edit.commit();
  for (RecordId a : wanted) {
    if (std::find(attribs.begin(), attribs.end(), a) != attribs.end()) {
      doc.moveBefore(after, a);
    } else {
      doc.insertBefore(after, a);
    }
  }
  if (seqend == kNoRecord) {
    doc.insertBefore(after, doc.newRecord(seqendFor(doc, insert)));
  } else {
    doc.moveBefore(after, seqend);
  }
  return true;
}

// Constant attributes live in the block only; inserts carry no reference for them.
bool isVariableAttributeDefinition(const Document& doc, RecordId id) {
  return doc.type(id) == "ATTDEF" && !(doc.intValue(id, 70, 0) & 2);
}

}  // namespace

bool hasAttributeDefinitions(const Document& doc, std::wstring_view block_name) {
  RecordId block = findBlock(doc, block_name);
  if (block == kNoRecord) return false;
  std::vector<RecordId> entities = blockEntities(doc, block);
  return std::any_of(entities.begin(), entities.end(),
                     [&](RecordId id) { return isVariableAttributeDefinition(doc, id); });
}

base::Result<int> synchronizeAttributes(Document& doc, std::wstring_view block_name) {
  RecordId block = findBlock(doc, block_name);
  if (block == kNoRecord) {
    return base::Status::notFound("block '" + base::toUtf8(block_name) + "' does not exist");
  }
  std::vector<Definition> defs;
  for (RecordId id : blockEntities(doc, block)) {
    if (isVariableAttributeDefinition(doc, id)) {
      defs.push_back({id, attributeTag(doc, id)});
    }
  }
  std::vector<RecordId> inserts;
  for (RecordId id = doc.first(); id != kNoRecord; id = doc.next(id)) {
    if (doc.type(id) == "INSERT" && sameName(doc.codec().decode(doc.value(id, 2)), block_name)) {
      inserts.push_back(id);
    }
  }
  int changed = 0;
  for (RecordId insert : inserts) changed += synchronizeInsert(doc, insert, defs) ? 1 : 0;
  return changed;
}

}  // namespace dxf
