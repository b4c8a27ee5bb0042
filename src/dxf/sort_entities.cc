#include "dxf/sort_entities.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/record_edit.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

constexpr std::string_view kMarker = "AcDbSortentsTable";

// Index of the first tag after the table's subclass marker, or the tag count when absent.
size_t dataStart(const Document& doc, std::span<const Tag> tags) {
  for (size_t i = 1; i < tags.size(); ++i) {
    if (tags[i].code == 100 && doc.text(tags[i]) == kMarker) return i + 1;
  }
  return tags.size();
}

// The block record a table sorts: the 330 inside its own subclass group.
Handle tableBlockRecord(const Document& doc, RecordId table) {
  auto tags = doc.tags(table);
  for (size_t i = dataStart(doc, tags); i < tags.size(); ++i) {
    if (tags[i].code == 330) return parseHandle(doc.text(tags[i]));
  }
  return 0;
}

// CAD programs draw an entity whose sort handle is 0 after all others.
constexpr Handle kLast = UINT64_MAX;

std::unordered_map<Handle, Handle> sortMap(const Document& doc, RecordId table) {
  std::unordered_map<Handle, Handle> map;
  if (table == kNoRecord) return map;
  for (const SortEntry& entry : sortEntries(doc, table)) {
    map.emplace(entry.entity, entry.sort == 0 ? kLast : entry.sort);
  }
  return map;
}

std::string sortHandleText(Handle key) { return formatHandle(key == kLast ? 0 : key); }

Handle sortKey(const std::unordered_map<Handle, Handle>& map, Handle entity) {
  auto it = map.find(entity);
  return it == map.end() ? entity : it->second;
}

}  // namespace

RecordId findSortEntsTable(const Document& doc, RecordId block_record) {
  if (block_record == kNoRecord) return kNoRecord;
  Handle xdict = extensionDictionaryOf(doc, block_record);
  RecordId dict = xdict == 0 ? kNoRecord : doc.byHandle(xdict);
  if (dict == kNoRecord) return kNoRecord;
  RecordId table = dictionaryGet(doc, dict, L"ACAD_SORTENTS");
  return table != kNoRecord && doc.type(table) == "SORTENTSTABLE" ? table : kNoRecord;
}

base::Result<RecordId> ensureSortEntsTable(Document& doc, RecordId block_record) {
  if (RecordId found = findSortEntsTable(doc, block_record); found != kNoRecord) return found;
  if (base::Status status = requireObjects(doc); !status) return status;
  if (block_record == kNoRecord) return base::Status::invalid("no block record to order");
  if (doc.type(block_record) != "BLOCK_RECORD") {
    return base::Status::invalid("a draw order table belongs to a BLOCK_RECORD, not to " +
                                 std::string(doc.type(block_record)));
  }
  auto xdict = ensureExtensionDictionary(doc, block_record);
  if (!xdict) return xdict.status();
  std::string xdict_handle = formatHandle(doc.record(*xdict).handle);
  auto table =
      appendObject(doc, {doc.makeTag(0, "SORTENTSTABLE"), doc.makeTag(102, "{ACAD_REACTORS"),
                         doc.makeTag(330, xdict_handle), doc.makeTag(102, "}"),
                         doc.makeTag(330, xdict_handle), doc.makeTag(100, kMarker),
                         doc.makeTag(330, formatHandle(doc.record(block_record).handle))});
  if (!table) return table.status();
  dictionarySet(doc, *xdict, L"ACAD_SORTENTS", *table, true);
  return *table;
}

std::vector<SortEntry> sortEntries(const Document& doc, RecordId table) {
  std::vector<SortEntry> out;
  auto tags = doc.tags(table);
  for (size_t i = dataStart(doc, tags); i + 1 < tags.size(); ++i) {
    if (tags[i].code == 331 && tags[i + 1].code == 5) {
      out.push_back({parseHandle(doc.text(tags[i])), parseHandle(doc.text(tags[i + 1]))});
      ++i;
    }
  }
  return out;
}

std::vector<RecordId> modelSpaceDrawOrder(const Document& doc) {
  std::vector<RecordId> entities = modelSpaceEntities(doc);
  RecordId table = kNoRecord;
  if (!doc.isR12()) {
    RecordId model = modelSpaceBlockRecord(doc);
    if (model != kNoRecord) table = findSortEntsTable(doc, model);
  }
  auto map = sortMap(doc, table);
  std::stable_sort(entities.begin(), entities.end(), [&](RecordId a, RecordId b) {
    return sortKey(map, doc.record(a).handle) < sortKey(map, doc.record(b).handle);
  });
  return entities;
}

base::Status setRelativeDrawOrder(Document& doc, RecordId table,
                                  std::span<const RecordId> ordered) {
  if (doc.type(table) != "SORTENTSTABLE") {
    return base::Status::invalid("the record is not a SORTENTSTABLE");
  }
  Handle block_record = tableBlockRecord(doc, table);
  auto map = sortMap(doc, table);
  std::vector<Handle> keys;
  std::unordered_set<Handle> seen;
  for (RecordId id : ordered) {
    const Record& r = doc.record(id);
    if (r.erased || r.handle == 0) {
      return base::Status::invalid("draw order: an entity has no handle or was erased");
    }
    // Entities written without an owner are taken to belong where the caller says.
    Handle owner = ownerOf(doc, id);
    if (owner != 0 && owner != block_record) {
      return base::Status::invalid("draw order: entity " + formatHandle(r.handle) +
                                   " belongs to another block");
    }
    if (!seen.insert(r.handle).second) {
      return base::Status::invalid("draw order: entity " + formatHandle(r.handle) +
                                   " is listed twice");
    }
    keys.push_back(sortKey(map, r.handle));
  }
  std::sort(keys.begin(), keys.end());

  RecordEdit edit(doc, table);
  std::unordered_map<Handle, size_t> sort_tag;  // entity handle -> index of its 5 tag
  for (size_t i = dataStart(doc, edit.tags()); i + 1 < edit.tags().size(); ++i) {
    if (edit.tags()[i].code == 331 && edit.tags()[i + 1].code == 5) {
      sort_tag.emplace(parseHandle(edit.text(i)), i + 1);
      ++i;
    }
  }
  std::vector<std::pair<Handle, Handle>> appended;
  for (size_t i = 0; i < ordered.size(); ++i) {
    Handle entity = doc.record(ordered[i]).handle;
    auto it = sort_tag.find(entity);
    if (it != sort_tag.end()) {
      edit.setText(it->second, sortHandleText(keys[i]));
    } else if (keys[i] != entity) {
      appended.emplace_back(entity, keys[i]);
    }
  }
  size_t end = edit.endOfSubclass(kMarker);
  for (const auto& [entity, key] : appended) {
    edit.insert(end++, 331, formatHandle(entity));
    edit.insert(end++, 5, sortHandleText(key));
  }
  edit.commit();
  return base::Status::ok();
}

}  // namespace dxf
