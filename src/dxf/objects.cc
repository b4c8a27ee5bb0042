#include "dxf/objects.h"

#include <charconv>

#include "dxf/attachment_builder.h"
#include "dxf/dictionary.h"
#include "dxf/number_text.h"
#include "dxf/record_edit.h"

namespace dxf {

namespace {

bool isFollower(std::string_view type) {
  return type == "ATTRIB" || type == "VERTEX" || type == "SEQEND";
}

}  // namespace

Handle ownerOf(const Document& doc, RecordId id) {
  bool in_group = false;
  for (const Tag& tag : doc.scan(id)) {
    if (tag.code == 102) {
      std::string_view t = doc.text(tag);
      in_group = !t.empty() && t.front() == '{';
    } else if (tag.code == 330 && !in_group) {
      return parseHandle(doc.text(tag));
    } else if (tag.code == 100) {
      // The owner comes before the first subclass marker.
      return 0;
    }
  }
  return 0;
}

Handle extensionDictionaryOf(const Document& doc, RecordId id) { return doc.record(id).xdict; }

base::Status requireObjects(const Document& doc) {
  if (!doc.isR12()) return base::Status::ok();
  return base::Status::unsupported(
      "an R12 drawing cannot store dictionaries or XRECORDs; save it as R2000 or later first");
}

namespace {

// The end of the OBJECTS section, where objects are added; the section is made when missing.
RecordId objectsEnd(Document& doc) {
  Span objects = doc.section("OBJECTS");
  if (objects.head == kNoRecord) {
    objects = doc.addSection("OBJECTS");
    // A drawing without OBJECTS still needs its root dictionary, owned by nobody.
    Tag root[] = {doc.makeTag(0, "DICTIONARY"), doc.makeTag(5, formatHandle(doc.allocateHandle())),
                  doc.makeTag(330, "0"), doc.makeTag(100, "AcDbDictionary"), doc.makeTag(281, "1")};
    doc.insertBefore(objects.tail, doc.newRecord(root));
  }
  return objects.tail;
}

}  // namespace

base::Result<RecordId> appendObject(Document& doc, std::vector<Tag> tags, Handle handle) {
  if (base::Status status = requireObjects(doc); !status) return status;
  RecordId end = objectsEnd(doc);
  if (handle == 0) handle = doc.allocateHandle();
  tags.insert(tags.begin() + 1, doc.makeTag(5, formatHandle(handle)));
  RecordId id = doc.newRecord(tags);
  doc.insertBefore(end, id);
  return id;
}

namespace {

// The extension dictionary `handle` of `owner`, at the end of the objects.
base::Result<RecordId> appendDictionary(Document& doc, RecordId owner, Handle handle) {
  std::string owner_text = formatHandle(doc.record(owner).handle);
  return appendObject(doc,
                      {doc.makeTag(0, "DICTIONARY"), doc.makeTag(330, owner_text),
                       doc.makeTag(100, "AcDbDictionary"), doc.makeTag(280, "1"),
                       doc.makeTag(281, "1")},
                      handle);
}

}  // namespace

base::Result<RecordId> ensureExtensionDictionary(Document& doc, RecordId id) {
  Handle existing = extensionDictionaryOf(doc, id);
  if (existing != 0) {
    RecordId dict = doc.byHandle(existing);
    if (dict != kNoRecord) return dict;
  }
  if (base::Status status = requireObjects(doc); !status) return status;
  // The entity is rewritten first so that the new dictionary is the record made last, which
  // the entry added to it next can grow in place.
  Handle dict_handle_value = doc.allocateHandle();
  std::string dict_handle = formatHandle(dict_handle_value);
  if (existing == 0 && doc.record(id).handle != 0) {
    // The common case: a group inserted, the rest of the record kept as it lies.
    doc.insertExtensionGroup(id, dict_handle_value);
    return appendDictionary(doc, id, dict_handle_value);
  }
  RecordEdit edit(doc, id);
  if (doc.record(id).handle == 0) {
    Handle h = doc.allocateHandle();
    edit.insert(1, 5, formatHandle(h));
    doc.indexHandle(id, h);
  }
  if (existing != 0) {
    // A dangling pointer: replace it rather than add a second group.
    int at = -1;
    for (size_t i = 0; i < edit.tags().size(); ++i) {
      if (edit.tags()[i].code == 360 && i > 0 && edit.text(i - 1) == "{ACAD_XDICTIONARY") {
        at = static_cast<int>(i);
        break;
      }
    }
    if (at >= 0) edit.setText(static_cast<size_t>(at), dict_handle);
  } else {
    edit.commit();  // the new handle goes in first: the group's place follows it
    doc.insertExtensionGroup(id, dict_handle_value);
    return appendDictionary(doc, id, dict_handle_value);
  }
  edit.commit();
  return appendDictionary(doc, id, dict_handle_value);
}

namespace {

// The key, the flag and the values as bytes, to compare without formatting or encoding them.
std::string shapeSource(std::wstring_view key, bool cloning_flag,
                        const std::vector<TypedValue>& values) {
  std::string out;
  out.reserve(256);
  auto put = [&out](const auto& value) {
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
  };
  auto putText = [&](const auto& text) {
    put(text.size());
    out.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof text[0]);
  };
  putText(key);
  put(cloning_flag);
  for (const TypedValue& v : values) {
    put(v.code);
    put(v.type);
    switch (v.type) {
      case TypedValue::Type::kText:
        putText(v.text);
        break;
      case TypedValue::Type::kPoint:
        put(v.xyz);
        break;
      case TypedValue::Type::kReal:
        put(v.xyz[0]);
        break;
      case TypedValue::Type::kInteger:
        put(v.integer);
        break;
      case TypedValue::Type::kRaw:
        putText(v.raw);
        break;
    }
  }
  return out;
}

}  // namespace

base::Result<RecordId> attachXrecord(Document& doc, RecordId id, std::wstring_view key,
                                     const std::vector<TypedValue>& values) {
  ChangeBatch batch(doc);
  if (doc.record(id).xdict != 0 || doc.record(id).handle == 0) {
    // An existing (or dangling) dictionary, or an object to give a handle first.
    auto dict = ensureExtensionDictionary(doc, id);
    if (!dict) return dict.status();
    std::vector<Tag> data;
    appendXrecordData(doc, values, data);
    return createXrecord(doc, *dict, key, data);
  }
  if (base::Status status = requireObjects(doc); !status) return status;
  objectsEnd(doc);  // the pair is written at its end
  const Handle dict_handle = doc.allocateHandle();
  const Handle xrecord_handle = doc.allocateHandle();
  doc.insertExtensionGroup(id, dict_handle);
  AttachmentBuilder pair(doc);
  if (!pair.reuseShape(shapeSource(key, hasCloningFlag(doc), values))) {
    pair.begin(doc.codec().encode(key), hasCloningFlag(doc));
    forEachDataTag(doc, values, [&](int code, std::string_view value) { pair.add(code, value); });
  }
  return pair.finish(doc.record(id).handle, dict_handle, xrecord_handle);
}

namespace {

bool holdsEntries(const Document& doc, RecordId dict) {
  bool found = false;
  forEachEntryTag(doc, dict, [&](const Tag&, const Tag&) {
    found = true;
    return false;  // one is enough
  });
  return found;
}

}  // namespace

bool releaseExtensionDictionary(Document& doc, RecordId id) {
  Handle h = extensionDictionaryOf(doc, id);
  if (h == 0) return false;
  RecordId dict = doc.byHandle(h);
  if (dict != kNoRecord && holdsEntries(doc, dict)) return false;
  doc.cutExtensionGroup(id);
  if (dict != kNoRecord) doc.unlink(dict);
  return true;
}

namespace {

// The XRECORD that the DICTIONARY `dict` holds as its one entry, hard-owned, when nothing
// else goes with the two (no extension dictionary of either, no followers; the XRECORD
// owned by the dictionary); kNoRecord otherwise. `entries`, when given, are the
// dictionary's as dictionaryEntries read them, and are not read again: removing records
// reads and then erases one such dictionary for every entity.
RecordId loneXrecordOf(const Document& doc, RecordId dict,
                       const std::span<const DictionaryEntry>* entries) {
  if (doc.type(dict) != "DICTIONARY" || doc.record(dict).xdict != 0) return kNoRecord;
  Tag only{-1, {}};
  size_t count = 0;
  if (entries) {
    count = entries->size();
    if (count == 1 && entries->front().hard_owner) only.code = 360;
  } else {
    forEachEntryTag(doc, dict, [&](const Tag&, const Tag& value) {
      only = value;
      return ++count < 2;
    });
  }
  if (count != 1 || only.code != 360) return kNoRecord;
  const RecordId xrecord =
      doc.byHandle(entries ? entries->front().value : parseHandle(doc.text(only)));
  if (xrecord == kNoRecord || doc.type(xrecord) != "XRECORD" || doc.record(xrecord).xdict != 0 ||
      ownerOf(doc, xrecord) != doc.record(dict).handle) {
    return kNoRecord;
  }
  for (RecordId r : {dict, xrecord}) {
    if (RecordId next = doc.next(r); next != kNoRecord && isFollower(doc.type(next))) {
      return kNoRecord;
    }
  }
  return xrecord;
}

// eraseObject, with the entries of `id` when the caller read them.
void eraseObjectAs(Document& doc, RecordId id, const std::span<const DictionaryEntry>* entries) {
  // The cascade is announced once it is done, owner first.
  ChangeBatch batch(doc);
  std::vector<RecordId> pending = {id};
  std::vector<RecordId> followers;
  // Takes the object with handle `own` out of what its owner `owner` holds or names.
  auto leaveOwner = [&doc](Handle own, Handle owner) {
    RecordId owner_id = owner != 0 ? doc.byHandle(owner) : kNoRecord;
    if (owner_id != kNoRecord &&
        (doc.type(owner_id) == "DICTIONARY" || doc.type(owner_id) == "ACDBDICTIONARYWDFLT")) {
      dictionaryRemoveObject(doc, owner_id, own);
    } else if (owner_id != kNoRecord && doc.record(owner_id).xdict == own) {
      // An extension dictionary: its object must not go on naming it.
      doc.cutExtensionGroup(owner_id);
    }
  };
  while (!pending.empty()) {
    RecordId current = pending.back();
    pending.pop_back();
    if (!doc.exists(current)) continue;
    // A dictionary and its one XRECORD, made together or alone: nothing else goes with them.
    RecordId xrecord = doc.attachedXrecordOf(current);
    if (xrecord == kNoRecord)
      xrecord = loneXrecordOf(doc, current, current == id ? entries : nullptr);
    if (xrecord != kNoRecord) {
      leaveOwner(doc.record(current).handle, ownerOf(doc, current));
      doc.unlink(current);
      doc.unlink(xrecord);
      continue;
    }
    const Record entry = doc.record(current);
    const Handle own = entry.handle;
    // Pushed in reverse so that what the object owns is erased in its own order.
    std::vector<RecordId> owned;
    if (Handle x = entry.xdict; x != 0) {
      if (RecordId dict = doc.byHandle(x); dict != kNoRecord) owned.push_back(dict);
    }
    if (doc.type(current) == "DICTIONARY" || doc.type(current) == "ACDBDICTIONARYWDFLT") {
      forEachEntryTag(doc, current, [&](const Tag&, const Tag& value) {
        RecordId child = doc.byHandle(parseHandle(doc.text(value)));
        if (child != kNoRecord && (value.code == 360 || ownerOf(doc, child) == own)) {
          owned.push_back(child);
        }
        return true;
      });
    }
    pending.insert(pending.end(), owned.rbegin(), owned.rend());
    // Attributes and vertices live only through the entity that they follow.
    followers.clear();
    if (!isFollower(doc.type(current))) {
      for (RecordId next = doc.next(current); next != kNoRecord && isFollower(doc.type(next));
           next = doc.next(next)) {
        followers.push_back(next);
        if (doc.type(next) == "SEQEND") break;
      }
    }
    leaveOwner(own, ownerOf(doc, current));
    doc.unlink(current);
    for (RecordId follower : followers) doc.unlink(follower);
  }
}

}  // namespace

void eraseObject(Document& doc, RecordId id) { eraseObjectAs(doc, id, nullptr); }

void eraseObject(Document& doc, RecordId id, std::span<const DictionaryEntry> entries) {
  eraseObjectAs(doc, id, &entries);
}

}  // namespace dxf
