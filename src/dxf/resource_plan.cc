// Decides what a copy between drawings takes: the records named, what they use and the
// target lacks, and the handles and names the copies get.
#include <charconv>
#include <set>

#include "dxf/blocks.h"
#include "dxf/dictionary.h"
#include "dxf/objects.h"
#include "dxf/resource_internal.h"
#include "dxf/symbol_tables.h"

namespace dxf::resource_detail {

namespace {

const char* tableOf(Named kind) {
  switch (kind) {
    case Named::kLayer:
      return "LAYER";
    case Named::kLinetype:
      return "LTYPE";
    case Named::kTextStyle:
      return "STYLE";
    case Named::kDimStyle:
      return "DIMSTYLE";
    case Named::kAppId:
      return "APPID";
    default:
      return nullptr;
  }
}

const wchar_t* dictionaryOf(Named kind) {
  return kind == Named::kMlineStyle ? L"ACAD_MLINESTYLE" : L"ACAD_MLEADERSTYLE";
}

constexpr const char* kTables[] = {"VPORT", "LTYPE", "LAYER",    "STYLE",       "VIEW",
                                   "UCS",   "APPID", "DIMSTYLE", "BLOCK_RECORD"};

// Pointers that make their target part of the copy when the target drawing lacks it.
bool isHardPointer(int code) {
  return (code >= 340 && code <= 349) || (code >= 360 && code <= 369) ||
         (code >= 390 && code <= 399) || code == 480 || code == 481;
}

bool isLayoutBlock(std::wstring_view name) {
  std::wstring u = upper(name);
  return u == L"*MODEL_SPACE" || u.starts_with(L"*PAPER_SPACE");
}
bool isAnonymousBlock(std::wstring_view name) {
  return name.starts_with(L"*") && !isLayoutBlock(name);
}

bool isDimensionLike(std::string_view type) {
  return type == "DIMENSION" || type == "ARC_DIMENSION" || type == "LARGE_RADIAL_DIMENSION";
}

bool knownToR12(std::string_view type) {
  static const std::set<std::string_view> kTypes = {
      "LINE",   "POINT",  "CIRCLE", "ARC",      "TRACE",    "SOLID",  "TEXT",
      "SHAPE",  "BLOCK",  "ENDBLK", "INSERT",   "ATTDEF",   "ATTRIB", "POLYLINE",
      "VERTEX", "SEQEND", "3DFACE", "VIEWPORT", "DIMENSION"};
  return kTypes.contains(type);
}

}  // namespace

Handle parseHandle(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  Handle h = 0;
  auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), h, 16);
  return ec == std::errc() && ptr == text.data() + text.size() ? h : 0;
}

bool isPointer(int code) {
  return (code >= 330 && code <= 369) || (code >= 390 && code <= 399) || code == 480 ||
         code == 481 || code == 1005;
}

bool namesBlock(std::string_view type) {
  return type == "INSERT" || isDimensionLike(type) || type == "ACAD_TABLE";
}

CopyPlan::CopyPlan(Document& target, const Document& source)
    : target_(target),
      source_(source),
      downgrade_(target.isR12() && !source.isR12()),
      handles_(usesHandles(target)) {
  indexSource();
}

void CopyPlan::request(Named kind, std::wstring_view name) { enqueueNamed(kind, name); }

void CopyPlan::collect() {
  for (size_t i = 0; i < items_.size(); ++i) {
    Item item = items_[i];  // scanning adds items
    scan(item);
  }
}

bool CopyPlan::targetHas(Named kind, std::wstring_view name) const {
  if (name.empty()) return false;
  if (kind == Named::kBlock) return findBlock(target_, name) != kNoRecord;
  if (kind == Named::kMlineStyle || kind == Named::kMLeaderStyle) {
    return !target_.isR12() && findStyle(target_, dictionaryOf(kind), name) != kNoRecord;
  }
  return findTableEntry(target_, tableOf(kind), name) != kNoRecord;
}

Handle CopyPlan::newHandle(RecordId r) const {
  auto it = new_handle_.find(r);
  return it == new_handle_.end() ? 0 : it->second;
}

const CopyPlan::Listing* CopyPlan::listing(RecordId r) const {
  auto it = listing_.find(source_.record(r).handle);
  return it == listing_.end() ? nullptr : &it->second;
}

const std::wstring* CopyPlan::renamedBlock(std::wstring_view name) const {
  auto it = block_rename_.find(upper(name));
  return it == block_rename_.end() ? nullptr : &it->second;
}

void CopyPlan::indexSource() {
  for (const char* table : kTables) {
    for (RecordId id : tableEntries(source_, table)) entry_table_[id] = table;
  }
  source_root_ = namedObjectsDictionary(source_);
  Span objects = source_.section("OBJECTS");
  if (objects.head == kNoRecord) return;
  // The source is a file as read: none of its objects is attached yet.
  for (RecordId id = source_.next(objects.head); id != objects.tail && id != kNoRecord;
       id = source_.next(id)) {
    objects_.insert(id);
    std::string_view type = source_.type(id);
    if (type != "DICTIONARY" && type != "ACDBDICTIONARYWDFLT") continue;
    Handle own = source_.record(id).handle;
    for (DictionaryEntry& entry : dictionaryEntries(source_, id)) {
      RecordId child = source_.byHandle(entry.value);
      if (child == kNoRecord) continue;
      // An object listed twice belongs to the dictionary that owns it.
      auto it = listing_.find(entry.value);
      if (it == listing_.end() || ownerOf(source_, child) == own) {
        listing_[entry.value] = {id, std::move(entry.key), entry.hard_owner};
      }
    }
  }
}

void CopyPlan::push(RecordId r, Place place, std::string table) {
  queued_.insert(r);
  Handle old_handle = source_.record(r).handle;
  if (handles_) new_handle_[r] = target_.allocateHandle();
  if (old_handle != 0) queued_by_handle_[old_handle] = r;
  items_.push_back({r, place, std::move(table)});
}

void CopyPlan::enqueueNamed(Named kind, std::wstring_view name) {
  if (name.empty()) return;
  if (kind == Named::kBlock) return enqueueBlock(name);
  if (kind == Named::kLinetype && (sameName(name, L"BYLAYER") || sameName(name, L"BYBLOCK")))
    return;
  if (targetHas(kind, name)) return;
  RecordId r = kNoRecord;
  if (kind == Named::kMlineStyle || kind == Named::kMLeaderStyle) {
    if (!source_.isR12()) r = findStyle(source_, dictionaryOf(kind), name);
  } else {
    r = findTableEntry(source_, tableOf(kind), name);
  }
  if (r != kNoRecord) enqueueRecord(r);
}

void CopyPlan::enqueueRecord(RecordId r) {
  if (queued_.contains(r)) return;
  if (auto it = entry_table_.find(r); it != entry_table_.end()) {
    const std::string& table = it->second;
    if (table == "BLOCK_RECORD") return enqueueBlock(recordName(source_, r));
    if (table == "VPORT" || table == "VIEW" || table == "UCS") return;
    push(r, Place::kTableEntry, table);
  } else if (source_.type(r) == "BLOCK") {
    enqueueBlock(recordName(source_, r));
  } else if (objects_.contains(r) && !target_.isR12() && r != source_root_ &&
             source_.type(r) != "LAYOUT") {
    push(r, Place::kObject);
  }
}

void CopyPlan::enqueueBlock(std::wstring_view name) {
  if (isLayoutBlock(name)) return;
  bool anonymous = isAnonymousBlock(name);
  if (!anonymous && targetHas(Named::kBlock, name)) return;
  RecordId block = findBlock(source_, name);
  if (block == kNoRecord || queued_.contains(block)) return;
  if (anonymous) block_rename_[upper(name)] = freeAnonymousName(name);
  RecordId block_record = findBlockRecord(source_, name);
  if (block_record != kNoRecord && !target_.isR12()) {
    push(block_record, Place::kTableEntry, "BLOCK_RECORD");
  }
  bool skipping = false;  // an entity R12 cannot hold, with its subentities
  for (RecordId id = block; id != kNoRecord; id = source_.next(id)) {
    std::string_view type = source_.type(id);
    if (type == "ENDSEC" || (type == "BLOCK" && id != block)) break;
    if (!isSubentity(type)) skipping = downgrade_ && !knownToR12(type);
    if (!skipping) push(id, Place::kBlock);
    if (type == "ENDBLK") break;
  }
}

std::wstring CopyPlan::freeAnonymousName(std::wstring_view old_name) {
  if (!target_blocks_read_) {
    Span blocks = target_.section("BLOCKS");
    for (RecordId id = blocks.head; id != kNoRecord && id != blocks.tail; id = target_.next(id)) {
      if (target_.type(id) == "BLOCK") target_blocks_.insert(upper(recordName(target_, id)));
    }
    target_blocks_read_ = true;
  }
  size_t digits = old_name.find_first_of(L"0123456789");
  std::wstring prefix(
      old_name.substr(0, digits == std::wstring_view::npos ? old_name.size() : digits));
  for (int n = 1;; ++n) {
    std::wstring candidate = prefix + std::to_wstring(n);
    if (target_blocks_.insert(upper(candidate)).second) return candidate;
  }
}

void CopyPlan::scan(const Item& item) {
  RecordId r = item.source;
  std::string_view type = source_.type(r);
  bool entity = item.place == Place::kBlock;
  bool own_group = false;
  Handle own = source_.record(r).handle;
  for (const Tag& tag : source_.tags(r)) {
    int code = tag.code;
    std::string_view raw = source_.text(tag);
    if (code == 1001) {
      enqueueNamed(Named::kAppId, source_.codec().decode(raw));
      continue;
    }
    if (code == 102) {
      // Reactors and application data point back or aside; an extension dictionary is owned.
      own_group = !raw.empty() && raw.front() == '{' && raw != "{ACAD_XDICTIONARY";
      continue;
    }
    if (code < 1000 && (entity || type == "LAYER" || type == "MLINESTYLE" || type == "DIMSTYLE")) {
      auto name = [&] { return source_.codec().decode(raw); };
      if (entity && code == 8) enqueueNamed(Named::kLayer, name());
      if (code == 6 && type != "DIMSTYLE") enqueueNamed(Named::kLinetype, name());
      if (entity && code == 7 &&
          (type == "TEXT" || type == "ATTDEF" || type == "ATTRIB" || type == "MTEXT")) {
        enqueueNamed(Named::kTextStyle, name());
      }
      if (entity && code == 3 &&
          (isDimensionLike(type) || type == "LEADER" || type == "TOLERANCE")) {
        enqueueNamed(Named::kDimStyle, name());
      }
      if (entity && code == 2 && namesBlock(type)) enqueueNamed(Named::kBlock, name());
      if (entity && code == 2 && type == "MLINE") enqueueNamed(Named::kMlineStyle, name());
      // R12 dimension styles name their arrow blocks.
      if (type == "DIMSTYLE" && source_.isR12() && code >= 5 && code <= 7) {
        enqueueNamed(Named::kBlock, name());
      }
    }
    if (target_.isR12() || own_group || !isPointer(code)) continue;
    Handle h = parseHandle(raw);
    if (h == 0) continue;
    if (isHardPointer(code)) {
      followHard(h);
    } else if (code >= 350 && code <= 359) {
      // Soft owners own what they list: a dictionary's entries come with it.
      RecordId child = source_.byHandle(h);
      if (child != kNoRecord && ownerOf(source_, child) == own) followHard(h);
    }
  }
}

void CopyPlan::followHard(Handle h) {
  RecordId r = source_.byHandle(h);
  if (r == kNoRecord || queued_.contains(r) || counterpart(r) != 0) return;
  enqueueRecord(r);
}

Handle CopyPlan::counterpart(RecordId r) {
  if (auto it = counterparts_.find(r); it != counterparts_.end()) return it->second;
  counterparts_[r] = 0;  // ends the search should malformed dictionaries list each other
  auto handleOf = [&](RecordId id) {
    return id == kNoRecord ? Handle{0} : target_.record(id).handle;
  };
  Handle result = 0;
  std::string_view type = source_.type(r);
  if (type == "TABLE") {
    result = handleOf(target_.table(source_.value(r, 2)).head);
  } else if (auto entry = entry_table_.find(r); entry != entry_table_.end()) {
    std::wstring name = recordName(source_, r);
    if (!(entry->second == "BLOCK_RECORD" && isAnonymousBlock(name))) {
      result = handleOf(findTableEntry(target_, entry->second, name));
    }
  } else if (type == "BLOCK") {
    std::wstring name = recordName(source_, r);
    if (!isAnonymousBlock(name)) result = handleOf(findBlock(target_, name));
  } else if (type == "ENDBLK") {
    RecordId block = source_.prev(r);
    while (block != kNoRecord && source_.type(block) != "BLOCK") block = source_.prev(block);
    RecordId block_copy = block == kNoRecord ? kNoRecord : target_.byHandle(counterpart(block));
    if (block_copy != kNoRecord) result = handleOf(blockEnd(target_, block_copy));
  } else if (r == source_root_) {
    result = handleOf(namedObjectsDictionary(target_));
  } else if (auto listed = listing_.find(source_.record(r).handle); listed != listing_.end()) {
    RecordId dict = target_.byHandle(counterpart(listed->second.dictionary));
    if (dict != kNoRecord) result = handleOf(dictionaryGet(target_, dict, listed->second.key));
  }
  counterparts_[r] = result;
  return result;
}

Handle CopyPlan::remap(Handle h) {
  auto it = queued_by_handle_.find(h);
  if (it != queued_by_handle_.end()) return newHandle(it->second);
  RecordId r = source_.byHandle(h);
  return r == kNoRecord ? 0 : counterpart(r);
}

}  // namespace dxf::resource_detail
