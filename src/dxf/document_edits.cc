// How a record's tags are kept when they change: made values, encodings, splices into the
// file's bytes, and rewrites in place.
#include <algorithm>

#include "dxf/document.h"
#include "dxf/number_text.h"

namespace dxf {

namespace {

// FNV-1a: short values are hashed for every tag an edit makes.
uint64_t hashOf(std::string_view text) {
  uint64_t hash = 14695981039346656037ull;
  for (char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211ull;
  return hash;
}

}  // namespace

Tag Document::makeTag(int code, std::string_view raw_text) {
  constexpr size_t kShort = 32;
  if (raw_text.size() > kShort) return {static_cast<int16_t>(code), text_.add(raw_text)};
  if (value_cache_.empty()) value_cache_.assign(kValueCacheSize, TextRef{UINT32_MAX, 0});
  TextRef& cached = value_cache_[hashOf(raw_text) % kValueCacheSize];
  if (cached.pos == UINT32_MAX || cached.len != raw_text.size() || text_.view(cached) != raw_text) {
    cached = text_.add(raw_text);
  }
  return {static_cast<int16_t>(code), cached};
}

Tag Document::makeTag(int code, double value) { return makeTag(code, formatDouble(value)); }
Tag Document::makeTag(int code, int64_t value) { return makeTag(code, formatInt(value)); }

void Document::encode(std::span<const Tag> tags, std::string& out) {
  for (const Tag& tag : tags) encodeOne(tag.code, text_.view(tag.value), out);
}

void Document::encodeOne(int code, std::string_view value, std::string& out) {
  constexpr size_t kMaxShared = 1 << 16;
  constexpr size_t kLongest = 64;
  bool recurring = code == 0 || code == 2 || code == 3 || code == 6 || code == 7 || code == 8 ||
                   code == 100 || code == 102 || code == 1001;
  if (!recurring || value.empty() || value.size() > kLongest) {
    encodeTag(code, value, out);
    return;
  }
  auto it = shared_index_.find(value);
  if (it == shared_index_.end()) {
    // Reserved whole at once: scans read the list while it grows.
    if (shared_.capacity() < kMaxShared) shared_.reserve(kMaxShared);
    if (shared_.size() >= kMaxShared) {
      encodeTag(code, value, out);
      return;
    }
    TextRef ref = text_.add(value);
    it = shared_index_.emplace(text_.view(ref), static_cast<uint32_t>(shared_.size())).first;
    shared_.push_back(ref);
  }
  encodeSharedTag(code, it->second, out);
}

// The splice header: the file bytes' first byte and length, the index of the first new
// tag, the offset into the bytes where the new tags go, the count of the file's tags; then
// the new tags.
TagSource Document::splicedSource(const Record& r, std::string_view* file,
                                  uint32_t* insert_at) const {
  std::string_view code = text_.view({r.pos, r.size});
  const char* at = code.data();
  const char* end = at + code.size();
  uint32_t raw_begin =
      std::min<uint32_t>(decodeVarint(at, end), static_cast<uint32_t>(raw_.size()));
  uint32_t raw_size =
      std::min<uint32_t>(decodeVarint(at, end), static_cast<uint32_t>(raw_.size()) - raw_begin);
  uint32_t first_new = decodeVarint(at, end);
  uint32_t offset = std::min(decodeVarint(at, end), raw_size);
  uint32_t file_tags = std::min(decodeVarint(at, end), r.tag_count);
  first_new = std::min(first_new, file_tags);
  if (file != nullptr) *file = std::string_view(raw_).substr(raw_begin, raw_size);
  if (insert_at != nullptr) *insert_at = offset;
  TagSource source;
  source.part_count = 3;
  const char* raw = raw_.data() + raw_begin;
  source.parts[0] = {raw, raw_begin, offset, first_new, true, {}};
  auto header = static_cast<uint32_t>(at - code.data());
  source.parts[1] = {at, r.pos + header, r.size - header, r.tag_count - file_tags, false, shared_};
  source.parts[2] = {
      raw + offset, raw_begin + offset, raw_size - offset, file_tags - first_new, true, {}};
  return source;
}

bool Document::trySplice(RecordId id, std::span<const Tag> tags) {
  Record& r = records_[id];
  if (!spliceable(r) || tags.size() <= r.tag_count) return false;
  auto same = [](const Tag& a, const Tag& b) {
    return a.code == b.code && a.value.pos == b.value.pos && a.value.len == b.value.len;
  };
  TagScan old = scan(id);
  size_t first_new = 0;
  uint32_t offset = r.size;
  for (auto it = old.begin(); it != old.end(); ++it, ++first_new) {
    if (!same(*it, tags[first_new])) {
      offset = it.position() - r.pos;
      break;
    }
  }
  size_t file_tags = r.tag_count;
  size_t added = tags.size() - file_tags;
  size_t index = 0;
  for (const Tag& tag : old) {
    if (index >= first_new && !same(tag, tags[index + added])) return false;
    ++index;
  }
  splice(id, static_cast<uint32_t>(first_new), offset, tags.subspan(first_new, added));
  return true;
}

bool Document::tryUnsplice(RecordId id, std::span<const Tag> tags) {
  Record& r = records_[id];
  if (!r.spliced) return false;
  TagSource parts = splicedSource(r);
  TagSource file;
  file.parts[0] = parts.parts[0];
  file.parts[1] = parts.parts[2];
  file.part_count = 2;
  if (tags.size() != file.count()) return false;
  size_t index = 0;
  for (const Tag& tag : TagScan(file)) {
    const Tag& want = tags[index++];
    if (tag.code != want.code || tag.value.pos != want.value.pos ||
        tag.value.len != want.value.len) {
      return false;
    }
  }
  r.pos = file.parts[0].pos;
  r.size = file.parts[0].size + file.parts[1].size;
  r.tag_count = static_cast<uint32_t>(tags.size());
  r.spliced = false;
  return true;
}

void Document::splice(RecordId id, uint32_t first_new, uint32_t offset,
                      std::span<const Tag> added) {
  Record& r = records_[id];
  encode_scratch_.clear();
  encodeVarint(r.pos, encode_scratch_);
  encodeVarint(r.size, encode_scratch_);
  encodeVarint(first_new, encode_scratch_);
  encodeVarint(offset, encode_scratch_);
  encodeVarint(r.tag_count, encode_scratch_);
  encode(added, encode_scratch_);
  TextRef code = text_.add(encode_scratch_, TextStore::Lane::kEncodings);
  r.pos = code.pos;
  r.size = code.len;
  r.tag_count += static_cast<uint32_t>(added.size());
  r.spliced = true;
}

void Document::insertTags(RecordId id, size_t index, std::span<const Tag> tags) {
  if (tags.empty()) return;
  const Record& r = records_[id];
  if (spliceable(r) && index <= r.tag_count) {
    // One pass finds where the new tags go and reads the record's facts as they will be.
    // The file's tags keep their place in the file bytes, which the record keeps.
    RecordFactsReader facts;
    std::string_view type_name;
    bool first = true;
    const char* file_start = raw_.data() + r.pos;
    auto note = [&](const Tag& tag, const char* record_start) {
      if (first && tag.code == 0) type_name = text(tag);
      first = false;
      facts.add(tag.code, text(tag), record_start);
    };
    uint32_t offset = r.size;
    size_t at = 0;
    TagScan old = scan(id);
    auto it = old.begin();
    for (; it != old.end(); ++it, ++at) {
      if (at == index) {
        offset = it.position() - r.pos;
        break;
      }
      note(*it, file_start);
    }
    for (const Tag& tag : tags) note(tag, nullptr);
    for (; it != old.end() && !facts.done(); ++it) note(*it, file_start);
    // Tags inserted after the first leave the structure name as it was.
    uint16_t type = index == 0 ? internType(type_name) : r.type;
    splice(id, static_cast<uint32_t>(index), offset, tags);
    setFacts(id, type, facts.facts());
    return;
  }
  TagList old = this->tags(id);
  std::vector<Tag> all(old.begin(), old.end());
  index = std::min(index, all.size());
  all.insert(all.begin() + static_cast<std::ptrdiff_t>(index), tags.begin(), tags.end());
  setTags(id, all);
}

// The record made or changed last is rewritten where it lies: an operation that makes an
// object fills it in several edits. Any other record gets a new encoding.
void Document::setTags(RecordId id, std::span<const Tag> tags) {
  if (records_[id].rehandle) {
    std::vector<Tag> renamed(tags.begin(), tags.end());
    giveFreshHandle(id, renamed);
    setTags(id, renamed);
    return;
  }
  if (tryUnsplice(id, tags) || trySplice(id, tags)) {
    noteTags(id, tags);
    return;
  }
  // Read before the rewrite in place, which may overwrite the values `tags` point to.
  noteTags(id, tags);
  encode_scratch_.clear();
  encode(tags, encode_scratch_);
  Record& r = records_[id];
  std::optional<TextRef> in_place;
  if (r.changed) in_place = text_.replaceLast({r.pos, r.size}, encode_scratch_);
  TextRef code = in_place ? *in_place : text_.add(encode_scratch_, TextStore::Lane::kEncodings);
  r.pos = code.pos;
  r.size = code.len;
  r.tag_count = static_cast<uint32_t>(tags.size());
  r.changed = true;
  r.spliced = false;
}

void Document::giveFreshHandle(RecordId id, std::vector<Tag>& tags) {
  records_[id].rehandle = false;
  for (size_t i = 1; i < tags.size() && tags[i].code != 100 && tags[i].code != 102; ++i) {
    if (tags[i].code == 5 || tags[i].code == 105) {
      Handle fresh = allocateHandle();
      tags[i] = makeTag(tags[i].code, formatHandle(fresh));
      indexHandle(id, fresh);
      return;
    }
  }
}

RecordBuilder& RecordBuilder::add(int code, std::string_view value) {
  if (count_++ == 0 && code == 0) type_ = doc_.internType(value);
  facts_.add(code, value);
  doc_.encodeOne(code, value, doc_.builder_scratch_);
  return *this;
}

RecordId RecordBuilder::finish() {
  RecordId id = static_cast<RecordId>(doc_.records_.size());
  Record& r = doc_.records_.emplace_back();
  r.erased = true;  // until linked
  TextRef code = doc_.text_.add(doc_.builder_scratch_, TextStore::Lane::kEncodings);
  r.pos = code.pos;
  r.size = code.len;
  r.tag_count = count_;
  r.changed = true;
  r.handle = facts_.facts().own_handle;
  doc_.setFacts(id, type_, facts_.facts());
  return id;
}

RecordId Document::newRecord(std::span<const Tag> tags) {
  RecordId id = static_cast<RecordId>(records_.size());
  records_.emplace_back();
  records_[id].erased = true;  // until linked
  setTags(id, tags);
  return id;
}

}  // namespace dxf
