// DICTIONARY objects (and ACDBDICTIONARYWDFLT): ordered keys naming objects by handle.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "dxf/document.h"

namespace dxf {

struct DictionaryEntry {
  std::wstring key;
  Handle value = 0;
  bool hard_owner = false;  // 360 rather than 350
};

// The root dictionary: the first object of the OBJECTS section, or kNoRecord.
RecordId namedObjectsDictionary(const Document& doc);

// Calls `visit(key, value)` with the tags of each entry in order, the key's (3) and its
// object's (350 or 360) as the dictionary holds them, until it returns false: for walks that
// need no key decoded.
template <typename Visit>
void forEachEntryTag(const Document& doc, RecordId dict, Visit visit) {
  Tag key{-1, {}};
  for (const Tag& tag : doc.scan(dict)) {
    if (key.code == 3 && (tag.code == 350 || tag.code == 360) && !visit(key, tag)) return;
    key = tag;
  }
}

// Entries in the order the dictionary keeps them.
std::vector<DictionaryEntry> dictionaryEntries(const Document& doc, RecordId dict);
// The same into `out`, reusing its keys' storage: for walks over many dictionaries.
void dictionaryEntries(const Document& doc, RecordId dict, std::vector<DictionaryEntry>& out);
// The record an entry names (keys compare case-insensitively, as CAD programs do), or
// kNoRecord when the key is absent or names nothing.
RecordId dictionaryGet(const Document& doc, RecordId dict, std::wstring_view key);
bool dictionaryHas(const Document& doc, RecordId dict, std::wstring_view key);
// Adds or replaces an entry; sets the entry object's owner (330) to the dictionary. An
// object the replaced entry named is erased when the dictionary owned it.
void dictionarySet(Document& doc, RecordId dict, std::wstring_view key, RecordId value,
                   bool hard_owner);
// Removes an entry (not the object it names); returns true iff the key was there.
bool dictionaryRemove(Document& doc, RecordId dict, std::wstring_view key);
// Removes the entry that names `object`; false when none does.
bool dictionaryRemoveObject(Document& doc, RecordId dict, Handle object);
// The duplicate-record cloning flag (281): 0 not applicable, 1 keep existing ...
int dictionaryDuplicateFlag(const Document& doc, RecordId dict);

// Creates an empty DICTIONARY (or XRECORD with no data) and enters it under `key` in
// `owner`, hard-owned. Fails on R12 drawings.
base::Result<RecordId> createDictionary(Document& doc, RecordId owner, std::wstring_view key);
// An XRECORD is made holding `data`, its tags after the cloning flag (appendXrecordData).
base::Result<RecordId> createXrecord(Document& doc, RecordId owner, std::wstring_view key,
                                     std::span<const Tag> data = {});

}  // namespace dxf
