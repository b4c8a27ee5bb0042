// Ownership between records: owners, extension dictionaries, the OBJECTS section, erasing.
#pragma once

#include <span>
#include <string_view>

#include "base/status.h"
#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/xrecord.h"

namespace dxf {

// The owner handle (330 outside application groups), or 0.
Handle ownerOf(const Document& doc, RecordId id);
// The extension dictionary's handle (the 360 of "102 {ACAD_XDICTIONARY"), or 0.
Handle extensionDictionaryOf(const Document& doc, RecordId id);
// The extension dictionary of `id`, made (empty, hard-owned by `id`) when missing.
// Fails on an R12 drawing, which cannot hold dictionaries.
base::Result<RecordId> ensureExtensionDictionary(Document& doc, RecordId id);
// Enters a new XRECORD holding `values` under `key` in the extension dictionary of `id`,
// made when missing, as ensureExtensionDictionary and then createXrecord would, but writing
// a new dictionary once, with its entry. The objects made are announced once all are
// written. Fails on an R12 drawing.
base::Result<RecordId> attachXrecord(Document& doc, RecordId id, std::wstring_view key,
                                     const std::vector<TypedValue>& values);
// Removes the extension dictionary of `id` iff it has no entries; returns true iff removed.
bool releaseExtensionDictionary(Document& doc, RecordId id);

// Adds an object record at the end of the OBJECTS section (made when missing) with the
// handle `handle` (a new one when 0), written as its code 5 tag right after the code 0 tag.
// `tags` holds the code 0 tag and what follows the handle. Fails on R12 drawings.
base::Result<RecordId> appendObject(Document& doc, std::vector<Tag> tags, Handle handle = 0);

// Erases `id` and what it hard-owns: its extension dictionary, the 360 entries of a
// dictionary, and the ATTRIB / VERTEX / SEQEND records that follow an entity. An object
// that a dictionary lists is also taken out of that dictionary.
void eraseObject(Document& doc, RecordId id);
// The same for a DICTIONARY whose entries the caller has just read with dictionaryEntries
// (keys aside), unchanged since: they are not read again.
void eraseObject(Document& doc, RecordId id, std::span<const DictionaryEntry> entries);

// The error for storing objects in a drawing that cannot hold them.
base::Status requireObjects(const Document& doc);

}  // namespace dxf
