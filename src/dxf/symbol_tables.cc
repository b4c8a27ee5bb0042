#include "dxf/symbol_tables.h"

#include "base/text_case.h"
#include "dxf/dictionary.h"

namespace dxf {

bool sameName(std::wstring_view a, std::wstring_view b) { return base::equalsIgnoringCase(a, b); }

std::vector<RecordId> tableEntries(const Document& doc, std::string_view table) {
  std::vector<RecordId> out;
  Span span = doc.table(table);
  if (span.head == kNoRecord) return out;
  for (RecordId id = doc.next(span.head); id != span.tail && id != kNoRecord; id = doc.next(id)) {
    out.push_back(id);
  }
  return out;
}

std::wstring recordName(const Document& doc, RecordId id) {
  return doc.codec().decode(doc.value(id, 2));
}

RecordId findTableEntry(const Document& doc, std::string_view table, std::wstring_view name) {
  Span span = doc.table(table);
  if (span.head == kNoRecord) return kNoRecord;
  for (RecordId id = doc.next(span.head); id != span.tail && id != kNoRecord; id = doc.next(id)) {
    if (sameName(recordName(doc, id), name)) return id;
  }
  return kNoRecord;
}

LayerState layerState(const Document& doc, RecordId layer) {
  int64_t flags = doc.intValue(layer, 70, 0);
  LayerState state;
  state.frozen = flags & 1;
  state.locked = flags & 4;
  state.off = doc.intValue(layer, 62, 7) < 0;
  return state;
}

RecordId findStyle(const Document& doc, std::wstring_view dictionary, std::wstring_view name) {
  RecordId root = namedObjectsDictionary(doc);
  if (root == kNoRecord) return kNoRecord;
  RecordId dict = dictionaryGet(doc, root, dictionary);
  return dict == kNoRecord ? kNoRecord : dictionaryGet(doc, dict, name);
}

std::wstring styleName(const Document& doc, std::wstring_view dictionary, RecordId style) {
  RecordId root = namedObjectsDictionary(doc);
  RecordId dict = root == kNoRecord ? kNoRecord : dictionaryGet(doc, root, dictionary);
  if (dict == kNoRecord) return {};
  for (const DictionaryEntry& entry : dictionaryEntries(doc, dict)) {
    if (entry.value == doc.record(style).handle) return entry.key;
  }
  return {};
}

}  // namespace dxf
