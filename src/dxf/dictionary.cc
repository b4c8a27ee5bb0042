#include "dxf/dictionary.h"

#include <charconv>
#include <optional>

#include "dxf/number_text.h"
#include "dxf/objects.h"
#include "dxf/record_edit.h"
#include "dxf/symbol_tables.h"
#include "dxf/xrecord.h"

namespace dxf {

namespace {

// Index of the code 3 tag of `key`, or -1.
int findKey(const Document& doc, const RecordEdit& edit, std::wstring_view key) {
  const auto& tags = edit.tags();
  for (size_t i = 0; i + 1 < tags.size(); ++i) {
    if (tags[i].code == 3 && (tags[i + 1].code == 350 || tags[i + 1].code == 360) &&
        sameName(doc.codec().decode(edit.text(i)), key)) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

void setOwner(Document& doc, RecordId id, Handle owner) {
  std::string owner_text = formatHandle(owner);
  RecordEdit edit(doc, id);
  bool in_group = false;
  for (size_t i = 1; i < edit.tags().size(); ++i) {
    int code = edit.tags()[i].code;
    if (code == 102) {
      in_group = !edit.text(i).empty() && edit.text(i).front() == '{';
    } else if (code == 330 && !in_group) {
      if (edit.text(i) == owner_text) return;
      edit.setText(i, owner_text);
      edit.commit();
      return;
    } else if (code == 100) {
      edit.insert(i, 330, owner_text);
      edit.commit();
      return;
    }
  }
  edit.insert(edit.tags().size(), 330, owner_text);
  edit.commit();
}

// Adds the entry naming `handle`; returns the object the entry named before, if the
// dictionary owned it, for the caller to erase.
RecordId putEntry(Document& doc, RecordId dict, std::wstring_view key, Handle handle,
                  bool hard_owner) {
  std::string handle_text = formatHandle(handle);
  int value_code = hard_owner ? 360 : 350;
  RecordEdit edit(doc, dict);
  int at = findKey(doc, edit, key);
  RecordId replaced = kNoRecord;
  if (at >= 0) {
    const Tag& old = edit.tags()[static_cast<size_t>(at) + 1];
    replaced = doc.byHandle(parseHandle(edit.text(static_cast<size_t>(at) + 1)));
    if (replaced != kNoRecord && old.code != 360 &&
        ownerOf(doc, replaced) != doc.record(dict).handle) {
      replaced = kNoRecord;  // listed here but owned elsewhere: it stays
    }
    edit.tags()[static_cast<size_t>(at) + 1] = doc.makeTag(value_code, handle_text);
  } else {
    size_t end = edit.endOfSubclass("AcDbDictionary");
    // ACDBDICTIONARYWDFLT closes with its own subclass; entries stay in AcDbDictionary.
    edit.insert(end, 3, doc.codec().encode(key));
    edit.insert(end + 1, value_code, handle_text);
  }
  edit.commit();
  return replaced;
}

base::Result<RecordId> createEntry(Document& doc, RecordId owner, std::wstring_view key,
                                   std::vector<Tag> body) {
  if (base::Status status = requireObjects(doc); !status) return status;
  // The entry is written before the object exists, so that the object is the record made
  // last and a following write of its data can grow it in place.
  Handle handle = doc.allocateHandle();
  // Entries of a hard-owning dictionary (extension dictionaries) are written as 360.
  RecordId replaced = putEntry(doc, owner, key, handle, doc.intValue(owner, 280, 0) == 1);
  if (replaced != kNoRecord) eraseObject(doc, replaced);
  body.insert(body.begin() + 1, doc.makeTag(330, formatHandle(doc.record(owner).handle)));
  return appendObject(doc, std::move(body), handle);
}

}  // namespace

RecordId namedObjectsDictionary(const Document& doc) {
  Span objects = doc.section("OBJECTS");
  if (objects.head == kNoRecord) return kNoRecord;
  RecordId first = doc.next(objects.head);
  return first != objects.tail && doc.type(first) == "DICTIONARY" ? first : kNoRecord;
}

std::vector<DictionaryEntry> dictionaryEntries(const Document& doc, RecordId dict) {
  std::vector<DictionaryEntry> out;
  dictionaryEntries(doc, dict, out);
  return out;
}

void dictionaryEntries(const Document& doc, RecordId dict, std::vector<DictionaryEntry>& out) {
  size_t count = 0;
  forEachEntryTag(doc, dict, [&](const Tag& key, const Tag& value) {
    if (count == out.size()) out.emplace_back();
    DictionaryEntry& entry = out[count++];
    entry.key.clear();
    doc.codec().decode(doc.text(key), entry.key);
    entry.value = parseHandle(doc.text(value));
    entry.hard_owner = value.code == 360;
    return true;
  });
  out.resize(count);
}

RecordId dictionaryGet(const Document& doc, RecordId dict, std::wstring_view key) {
  Tag name{-1, {}};
  for (const Tag& tag : doc.scan(dict)) {
    if (name.code == 3 && (tag.code == 350 || tag.code == 360) &&
        sameName(doc.codec().decode(doc.text(name)), key)) {
      return doc.byHandle(parseHandle(doc.text(tag)));
    }
    name = tag;
  }
  return kNoRecord;
}

bool dictionaryHas(const Document& doc, RecordId dict, std::wstring_view key) {
  return dictionaryGet(doc, dict, key) != kNoRecord;
}

void dictionarySet(Document& doc, RecordId dict, std::wstring_view key, RecordId value,
                   bool hard_owner) {
  RecordId replaced = putEntry(doc, dict, key, doc.record(value).handle, hard_owner);
  setOwner(doc, value, doc.record(dict).handle);
  // As in CAD programs, an object the dictionary owned goes with the entry that named it.
  if (replaced != kNoRecord && replaced != value) eraseObject(doc, replaced);
}

namespace {

// Takes out the first entry for which `matches(key tag, value tag)` holds, found by a scan:
// the record is not decoded into a copy, and a dictionary kept as its file bytes stays so.
template <typename Match>
bool removeEntry(Document& doc, RecordId dict, Match matches) {
  size_t index = 0;
  std::optional<Tag> key;
  for (const Tag& tag : doc.scan(dict)) {
    if (key && (tag.code == 350 || tag.code == 360) && matches(*key, tag)) {
      doc.eraseTags(dict, index - 1, 2);
      return true;
    }
    key = tag.code == 3 ? std::optional<Tag>(tag) : std::nullopt;
    ++index;
  }
  return false;
}

}  // namespace

bool dictionaryRemove(Document& doc, RecordId dict, std::wstring_view key) {
  return removeEntry(doc, dict, [&](const Tag& name, const Tag&) {
    return sameName(doc.codec().decode(doc.text(name)), key);
  });
}

bool dictionaryRemoveObject(Document& doc, RecordId dict, Handle object) {
  return removeEntry(doc, dict, [&](const Tag&, const Tag& value) {
    return parseHandle(doc.text(value)) == object;
  });
}

int dictionaryDuplicateFlag(const Document& doc, RecordId dict) {
  return static_cast<int>(doc.intValue(dict, 281, 0));
}

base::Result<RecordId> createDictionary(Document& doc, RecordId owner, std::wstring_view key) {
  return createEntry(
      doc, owner, key,
      {doc.makeTag(0, "DICTIONARY"), doc.makeTag(100, "AcDbDictionary"), doc.makeTag(281, "1")});
}

base::Result<RecordId> createXrecord(Document& doc, RecordId owner, std::wstring_view key,
                                     std::span<const Tag> data) {
  std::vector<Tag> body = {doc.makeTag(0, "XRECORD"), doc.makeTag(100, "AcDbXrecord")};
  if (hasCloningFlag(doc)) body.push_back(doc.makeTag(280, "1"));
  body.insert(body.end(), data.begin(), data.end());
  return createEntry(doc, owner, key, std::move(body));
}

}  // namespace dxf
