#include "dxf/blocks.h"

#include "dxf/number_text.h"
#include "dxf/symbol_tables.h"

namespace dxf {

bool isSubentity(std::string_view type) {
  return type == "ATTRIB" || type == "VERTEX" || type == "SEQEND";
}

std::vector<RecordId> modelSpaceEntities(const Document& doc) {
  std::vector<RecordId> out;
  Span span = doc.section("ENTITIES");
  if (span.head == kNoRecord) return out;
  for (RecordId id = doc.next(span.head); id != span.tail && id != kNoRecord; id = doc.next(id)) {
    if (!isSubentity(doc.type(id)) && !doc.record(id).paper) out.push_back(id);
  }
  return out;
}

RecordId findBlock(const Document& doc, std::wstring_view name) {
  Span span = doc.section("BLOCKS");
  if (span.head == kNoRecord) return kNoRecord;
  for (RecordId id = doc.next(span.head); id != span.tail && id != kNoRecord; id = doc.next(id)) {
    if (doc.type(id) == "BLOCK" && sameName(recordName(doc, id), name)) return id;
  }
  return kNoRecord;
}

RecordId blockEnd(const Document& doc, RecordId block) {
  for (RecordId id = doc.next(block); id != kNoRecord; id = doc.next(id)) {
    std::string_view type = doc.type(id);
    if (type == "ENDBLK") return id;
    if (type == "BLOCK" || type == "ENDSEC") return kNoRecord;
  }
  return kNoRecord;
}

std::vector<RecordId> blockEntities(const Document& doc, RecordId block) {
  std::vector<RecordId> out;
  for (RecordId id = doc.next(block); id != kNoRecord; id = doc.next(id)) {
    std::string_view type = doc.type(id);
    if (type == "ENDBLK" || type == "BLOCK" || type == "ENDSEC") break;
    if (!isSubentity(type)) out.push_back(id);
  }
  return out;
}

RecordId findBlockRecord(const Document& doc, std::wstring_view name) {
  return findTableEntry(doc, "BLOCK_RECORD", name);
}

RecordId modelSpaceBlockRecord(const Document& doc) {
  RecordId named = findBlockRecord(doc, L"*Model_Space");
  if (named != kNoRecord) return named;
  // Some writers give model space another name (LibreDWG's R14 output calls it "*U").
  for (RecordId id : modelSpaceEntities(doc)) {
    RecordId owner = doc.byHandle(parseHandle(doc.value(id, 330)));
    if (owner != kNoRecord && doc.type(owner) == "BLOCK_RECORD") return owner;
  }
  return kNoRecord;
}

RecordId modelSpaceInsertPoint(const Document& doc) { return doc.section("ENTITIES").tail; }

}  // namespace dxf
