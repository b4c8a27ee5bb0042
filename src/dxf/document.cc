#include "dxf/document.h"

#include <algorithm>
#include <cstring>

#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/record_facts.h"

namespace dxf {

uint16_t Document::internType(std::string_view name) {
  if (name.empty()) return 0;
  auto it = type_index_.find(name);
  if (it != type_index_.end()) return it->second;
  // Past this many kinds, a file is not a drawing; the rest read as untyped.
  if (type_names_.size() > UINT16_MAX) return 0;
  auto index = static_cast<uint16_t>(type_names_.size());
  type_names_.emplace_back(name);
  type_index_.emplace(type_names_.back(), index);
  return index;
}

namespace {

template <typename Tags>
RecordFacts factsOf(const Document& doc, const Tags& tags) {
  RecordFactsReader reader;
  for (const Tag& tag : tags) {
    reader.add(tag.code, doc.text(tag));
    if (reader.done()) break;
  }
  return reader.facts();
}

}  // namespace

void Document::noteTags(RecordId id, std::span<const Tag> tags) {
  auto first = tags.begin();
  uint16_t type = first != tags.end() && first->code == 0 ? internType(text(*first)) : 0;
  setFacts(id, type, factsOf(*this, tags));
}

void Document::noteFacts(RecordId id) { noteFacts(id, entry(id).type); }

void Document::noteFacts(RecordId id, uint16_t type) {
  // The layer's place is noted when its tag is read from the file bytes the record keeps,
  // not from tags that replaced some of them.
  std::string_view file = keptFileBytes(entry(id));
  const auto file_begin = file.empty() ? 0 : static_cast<uint32_t>(file.data() - raw_.data());
  const auto file_end = static_cast<uint32_t>(file_begin + file.size());
  RecordFactsReader reader;
  TagScan tags = scan(id);
  for (auto it = tags.begin(); it != tags.end() && !reader.done(); ++it) {
    bool in_file = it.position() >= file_begin && it.position() < file_end;
    reader.add(it->code, text(*it), in_file ? file.data() : nullptr);
  }
  setFacts(id, type, reader.facts());
}

void Document::setFacts(RecordId id, uint16_t type, const RecordFacts& facts) {
  ++revision_;
  Record& r = entry(id);
  r.type = type;
  r.xdict = facts.xdict;
  r.paper = facts.paper;
  r.layer_at = facts.layer_at <= UINT8_MAX ? static_cast<uint8_t>(facts.layer_at) : 0;
  r.layer_opens_group = r.layer_at != 0 && facts.layer_opens_group;
}

std::string_view Document::splicedFileBytes(const Record& r) const {
  SpliceHeader h = spliceHeader(r);
  return std::string_view(raw_).substr(h.raw_begin, h.raw_size);
}

std::optional<std::string_view> Document::knownLayer(RecordId id) const {
  if (isAttached(id)) return std::nullopt;
  const Record& r = records_[id];
  std::string_view file = keptFileBytes(r);
  if (r.layer_at == 0 || r.layer_at >= file.size()) return std::nullopt;
  std::string_view value = file.substr(r.layer_at);
  value = value.substr(0, value.find('\n'));
  if (!value.empty() && value.back() == '\r') value.remove_suffix(1);
  return value;
}

bool Document::findInEntityGroup(RecordId id, std::span<const int> codes,
                                 std::span<std::optional<Tag>> found) const {
  for (std::optional<Tag>& tag : found) tag.reset();
  if (isAttached(id)) return false;
  const Record& r = records_[id];
  if (!r.layer_opens_group || format_ != Format::kAscii) return false;
  std::string_view file;
  if (r.spliced) {
    // The tags from the layer on must be the file's own, a replaced run before them.
    SpliceHeader h = spliceHeader(r);
    if (r.layer_at < h.resume) return false;
    file = std::string_view(raw_).substr(h.raw_begin, h.raw_size);
  } else {
    file = keptFileBytes(r);
  }
  if (r.layer_at >= file.size()) return false;
  const char* at = file.data() + r.layer_at;
  const char* end = file.data() + file.size();
  // The tags after the layer's value line.
  const char* nl = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at)));
  at = nl ? nl + 1 : end;
  bool in_app_group = false;
  size_t missing = codes.size();
  while (at < end && missing > 0) {
    AsciiTag read = readAsciiTag(at, end);
    at = read.next;
    const int tag_code = read.code;
    // The group ends at the next subclass marker or where the extended data begins.
    if (tag_code == 100 || tag_code == 101 || tag_code >= 1000) break;
    if (tag_code == 102) {
      in_app_group = read.value < read.value_end && *read.value == '{';
      continue;
    }
    if (in_app_group) continue;
    for (size_t i = 0; i < codes.size(); ++i) {
      if (codes[i] != tag_code || found[i]) continue;
      found[i] = Tag{static_cast<int16_t>(tag_code),
                     {static_cast<uint32_t>(read.value - raw_.data()),
                      static_cast<uint32_t>(read.value_end - read.value)}};
      --missing;
      break;
    }
  }
  return true;
}

std::optional<Tag> Document::find(RecordId id, int code) const {
  for (const Tag& tag : scan(id)) {
    if (tag.code == code) return tag;
  }
  return std::nullopt;
}

std::string_view Document::value(RecordId id, int code, std::string_view fallback) const {
  std::optional<Tag> tag = find(id, code);
  return tag ? text(*tag) : fallback;
}

int64_t Document::intValue(RecordId id, int code, int64_t fallback) const {
  std::optional<Tag> tag = find(id, code);
  int64_t out;
  return tag && parseInt(text(*tag), out) ? out : fallback;
}

double Document::realValue(RecordId id, int code, double fallback) const {
  std::optional<Tag> tag = find(id, code);
  double out;
  return tag && parseDouble(text(*tag), out) ? out : fallback;
}

// A record's handle is its code 5 tag (105 for DIMSTYLE) among the tags before the first
// subclass marker; later 5 tags belong to something else ($HANDSEED in the header).
static Handle findOwnHandle(const Document& doc, RecordId id) {
  return factsOf(doc, doc.scan(id)).own_handle;
}

void Document::insertBefore(RecordId pos, RecordId id) {
  link(pos, id);
  notify(id, true);
}

void Document::unlink(RecordId id) {
  if (!exists(id)) return;
  if (isAttached(id)) {
    ++revision_;
    const size_t k = id - kAttachedBase;
    attachments_[k / 2].erased |= static_cast<uint8_t>(1u << (k % 2));
    if (k < attached_records_.size()) attached_records_[k].erased = true;
    notify(id, false);
    return;
  }
  ++revision_;
  unlinkQuietly(id);
  notify(id, false);
}

void Document::moveBefore(RecordId pos, RecordId id) {
  if (isAttached(id)) return;
  unlinkQuietly(id);
  link(pos, id);
}

void Document::link(RecordId pos, RecordId id) {
  Record& r = records_[id];
  r.erased = false;
  r.next = pos;
  r.prev = pos == kNoRecord ? last_ : records_[pos].prev;
  if (r.prev != kNoRecord) {
    records_[r.prev].next = id;
  } else {
    first_ = id;
  }
  if (pos != kNoRecord) {
    records_[pos].prev = id;
  } else {
    last_ = id;
  }
  // A record linked before, or made by a RecordBuilder, knows its handle already.
  Handle h = r.handle != 0 ? r.handle : findOwnHandle(*this, id);
  if (h != 0 && !r.rehandle) indexHandle(id, h);
}

void Document::unlinkQuietly(RecordId id) {
  Record& r = records_[id];
  if (r.erased) return;
  if (r.prev != kNoRecord) {
    records_[r.prev].next = r.next;
  } else {
    first_ = r.next;
  }
  if (r.next != kNoRecord) {
    records_[r.next].prev = r.prev;
  } else {
    last_ = r.prev;
  }
  r.erased = true;
  r.prev = r.next = kNoRecord;
}

void Document::notify(RecordId id, bool added) {
  if (observer_ == nullptr) return;
  // Structure markers are positions in the file, not objects of the drawing.
  std::string_view t = type(id);
  if (t == "SECTION" || t == "ENDSEC" || t == "ENDTAB" || t == "EOF") return;
  if (batch_depth_ > 0) {
    notices_.emplace_back(id, added);
    return;
  }
  if (added) {
    observer_->recordAdded(id);
  } else {
    observer_->recordErased(id);
  }
}

void Document::flushNotices() {
  // Taken out first: the observer may change the drawing and so add notices of its own.
  std::vector<std::pair<RecordId, bool>> notices;
  notices.swap(notices_);
  for (auto [id, added] : notices) {
    if (observer_ == nullptr) break;
    if (added) {
      observer_->recordAdded(id);
    } else {
      observer_->recordErased(id);
    }
  }
  // The list's room serves the next batch: edits open one for every object they change.
  if (notices_.empty()) {
    notices.clear();
    notices_.swap(notices);
  }
}

RecordId Document::byHandle(Handle handle) const {
  RecordId id = kNoRecord;
  if (dense_) {
    if (handle < dense_handles_.size()) id = dense_handles_[handle];
  } else {
    auto it =
        std::lower_bound(handles_.begin(), handles_.end(), std::make_pair(handle, RecordId{0}));
    if (it != handles_.end() && it->first == handle) id = it->second;
  }
  if ((id == kNoRecord || !exists(id)) && !handle_runs_.empty()) {
    // The last run whose first handle is not above `handle`.
    auto run = std::upper_bound(handle_runs_.begin(), handle_runs_.end(), handle,
                                [](Handle h, const HandleRun& r) { return h < r.handle; });
    if (run != handle_runs_.begin() && handle - (--run)->handle < run->count) {
      id = run->id + static_cast<RecordId>(handle - run->handle);
    }
  }
  return id == kNoRecord || !exists(id) ? kNoRecord : id;
}

Handle Document::allocateHandle() {
  handles_allocated_ = true;
  // A file may use the largest handle there is (or set $HANDSEED to it); the count then
  // wraps, and new handles fill the gaps below.
  while (next_handle_ == 0 || byHandle(next_handle_) != kNoRecord) ++next_handle_;
  return next_handle_++;
}

void Document::indexHandle(RecordId id, Handle handle) {
  if (!isAttached(id)) {
    records_[id].handle = handle;
  } else if (id - kAttachedBase < attached_records_.size()) {
    attached_records_[id - kAttachedBase].handle = handle;
  }
  if (handle >= next_handle_) next_handle_ = handle + 1;
  if (dense_ && handle >= dense_handles_.size()) {
    if (denseEnough(handle)) {
      // The vector's own growth keeps this linear; only the slots up to `handle` are
      // filled, so the room reserved beyond them takes no memory yet.
      dense_handles_.resize(handle + 1, kNoRecord);
    } else {
      // Too sparse from now on: the sorted list takes over.
      dense_ = false;
      for (Handle h = 0; h < dense_handles_.size(); ++h) {
        if (dense_handles_[h] != kNoRecord) handles_.emplace_back(h, dense_handles_[h]);
      }
      dense_handles_.clear();
      dense_handles_.shrink_to_fit();
    }
  }
  if (dense_) {
    if (dense_handles_[handle] == kNoRecord) ++handle_count_;
    dense_handles_[handle] = id;
    return;
  }
  auto entry = std::make_pair(handle, id);
  if (handles_.empty() || handles_.back().first < handle) {
    handles_.push_back(entry);
    ++handle_count_;
    return;
  }
  auto it = std::lower_bound(handles_.begin(), handles_.end(), std::make_pair(handle, RecordId{0}));
  if (it != handles_.end() && it->first == handle) {
    it->second = id;
  } else {
    handles_.insert(it, entry);
    ++handle_count_;
  }
}

Span Document::section(std::string_view name) const {
  for (const auto& [section_name, span] : sections_) {
    if (section_name == name) return span;
  }
  return {};
}

Span Document::table(std::string_view name) const {
  for (const auto& [table_name, span] : tables_) {
    if (table_name == name) return span;
  }
  return {};
}

Span Document::addSection(std::string_view name) {
  Span existing = section(name);
  if (existing.head != kNoRecord) return existing;
  Tag head_tags[] = {makeTag(0, "SECTION"), makeTag(2, name)};
  Tag tail_tags[] = {makeTag(0, "ENDSEC")};
  Span span{newRecord(head_tags), newRecord(tail_tags)};
  // Sections are written in their conventional order; OBJECTS and later ones go last.
  RecordId before = last_;  // the EOF record
  if (name != "OBJECTS") {
    for (const char* later : {"OBJECTS", "ACDSDATA", "THUMBNAILIMAGE"}) {
      RecordId head = section(later).head;
      if (head != kNoRecord) {
        before = head;
        break;
      }
    }
  }
  insertBefore(before, span.head);
  insertBefore(before, span.tail);
  sections_.emplace_back(std::string(name), span);
  return span;
}

Span Document::addTable(std::string_view name) {
  Span existing = table(name);
  if (existing.head != kNoRecord) return existing;
  Span tables = addSection("TABLES");
  Handle handle = allocateHandle();
  std::vector<Tag> head_tags = {makeTag(0, "TABLE"), makeTag(2, name)};
  if (!isR12()) {
    head_tags.push_back(makeTag(5, formatHandle(handle)));
    head_tags.push_back(makeTag(330, "0"));
    head_tags.push_back(makeTag(100, "AcDbSymbolTable"));
  }
  head_tags.push_back(makeTag(70, "0"));
  Tag tail_tags[] = {makeTag(0, "ENDTAB")};
  Span span{newRecord(head_tags), newRecord(tail_tags)};
  insertBefore(tables.tail, span.head);
  insertBefore(tables.tail, span.tail);
  tables_.emplace_back(std::string(name), span);
  return span;
}

std::vector<Tag> Document::headerVariable(std::string_view name) const {
  std::vector<Tag> out;
  RecordId head = header();
  if (head == kNoRecord) return out;
  bool inside = false;
  for (const Tag& tag : scan(head)) {
    if (tag.code == 9) {
      if (inside) break;
      inside = text(tag) == name;
    } else if (inside) {
      out.push_back(tag);
    }
  }
  return out;
}

void Document::setHeaderVariable(std::string_view name, std::span<const Tag> value_tags) {
  RecordId head = header();
  if (head == kNoRecord) head = addSection("HEADER").head;
  TagList old = tags(head);
  std::vector<Tag> out;
  out.reserve(old.size() + value_tags.size() + 1);
  bool replaced = false;
  for (size_t i = 0; i < old.size(); ++i) {
    if (old[i].code == 9 && text(old[i]) == name) {
      out.push_back(old[i]);
      out.insert(out.end(), value_tags.begin(), value_tags.end());
      while (i + 1 < old.size() && old[i + 1].code != 9) ++i;
      replaced = true;
    } else {
      out.push_back(old[i]);
    }
  }
  if (!replaced) {
    out.push_back(makeTag(9, name));
    out.insert(out.end(), value_tags.begin(), value_tags.end());
  }
  setTags(head, out);
}

base::Status Document::buildStructure(const std::string& name) {
  auto where = [&](RecordId id) { return placeOf(name, fileBytes(id).first); };
  RecordId open_section = kNoRecord;
  RecordId open_table = kNoRecord;
  std::string section_name;
  for (RecordId id = first_; id != kNoRecord; id = records_[id].next) {
    std::string_view t = type(id);
    if (t == "SECTION") {
      if (open_section != kNoRecord) {
        return base::Status::invalid(where(id) + "section " + section_name +
                                     " is not closed by ENDSEC before the next SECTION");
      }
      open_section = id;
      section_name = std::string(value(id, 2));
      sections_.emplace_back(section_name, Span{id, kNoRecord});
      continue;
    }
    if (t == "ENDSEC") {
      if (open_section == kNoRecord) {
        return base::Status::invalid(where(id) + "ENDSEC without a SECTION");
      }
      if (open_table != kNoRecord) {
        return base::Status::invalid(where(id) + "table " + tables_.back().first +
                                     " is not closed by ENDTAB");
      }
      sections_.back().second.tail = id;
      open_section = kNoRecord;
      continue;
    }
    if (t == "EOF") {
      if (open_section != kNoRecord) {
        return base::Status::invalid(where(id) + "section " + section_name +
                                     " is not closed by ENDSEC before EOF");
      }
      continue;
    }
    if (section_name == "TABLES" && open_section != kNoRecord) {
      if (t == "TABLE") {
        open_table = id;
        tables_.emplace_back(std::string(value(id, 2)), Span{id, kNoRecord});
      } else if (t == "ENDTAB" && open_table != kNoRecord) {
        tables_.back().second.tail = id;
        open_table = kNoRecord;
      }
    }
  }
  if (open_section != kNoRecord) {
    return base::Status::invalid(where(last_) + "section " + section_name + " is not closed");
  }

  indexLoadedHandles(name);
  noteDanglingExtensionDictionaries(name);

  std::vector<Tag> var = headerVariable("$ACADVER");
  if (!var.empty()) version_ = std::string(text(var.front()));
  var = headerVariable("$HANDSEED");
  if (!var.empty() && (file_handseed_ = parseHandle(text(var.front()))) != 0) {
    next_handle_ = std::max(next_handle_, file_handseed_);
  }
  var = headerVariable("$DWGCODEPAGE");
  auto codec = Codec::forDrawing(version_, var.empty() ? std::string_view() : text(var.front()));
  if (!codec) return codec.status().withContext(name);
  codec_ = std::move(codec.value());
  if (codec_.isUtf8()) noteTextThatIsNotUtf8(name);

  std::stable_sort(pending_faults_.begin(), pending_faults_.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (auto& fault : pending_faults_) faults_.push_back(std::move(fault.second));
  pending_faults_.clear();
  pending_faults_.shrink_to_fit();
  line_ends_.clear();
  line_ends_.shrink_to_fit();
  return base::Status::ok();
}

}  // namespace dxf
