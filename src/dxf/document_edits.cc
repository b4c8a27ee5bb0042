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

void Document::encode(std::span<const TagText> tags, std::string& out) {
  for (const TagText& tag : tags) encodeOne(tag.code, tag.value, out);
}

void Document::encodeOne(int code, std::string_view value, std::string& out) {
  constexpr size_t kMaxShared = 1 << 16;
  constexpr size_t kLongest = 64;
  // Code 1 holds, besides other texts, the values of records' text fields, which repeat
  // from entity to entity.
  bool recurring = code == 0 || code == 1 || code == 2 || code == 3 || code == 6 || code == 7 ||
                   code == 8 || code == 100 || code == 102 || code == 1001;
  if (!recurring || value.empty() || value.size() > kLongest) {
    encodeTag(code, value, out);
    return;
  }
  // The values an operation makes again and again repeat those it made just before: a
  // small cache, checked against the text, spares most of the hash lookups.
  const size_t slot = (value.size() * 131 + static_cast<unsigned char>(value.front()) * 31 +
                       static_cast<unsigned char>(value.back())) %
                      recent_shared_.size();
  if (uint32_t index = recent_shared_[slot];
      index < shared_.size() && text_.view(shared_[index]) == value) {
    encodeSharedTag(code, index, out);
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
  recent_shared_[slot] = it->second;
  encodeSharedTag(code, it->second, out);
}

// The splice header: the file bytes' first byte and length, their count of tags, the index
// of the first tag replaced, the offset into the bytes where it lies, the count of tags
// replaced and their length in bytes; then the new tags.
Document::SpliceHeader Document::spliceHeader(const Record& r) const {
  std::string_view code = text_.view({r.pos, r.size});
  const char* at = code.data();
  const char* end = at + code.size();
  const auto raw_length = static_cast<uint32_t>(raw_.size());
  SpliceHeader h;
  h.raw_begin = std::min(decodeVarint(at, end), raw_length);
  h.raw_size = std::min(decodeVarint(at, end), raw_length - h.raw_begin);
  h.file_tags = decodeVarint(at, end);
  h.first = std::min(decodeVarint(at, end), h.file_tags);
  h.offset = std::min(decodeVarint(at, end), h.raw_size);
  h.cut_tags = std::min(decodeVarint(at, end), h.file_tags - h.first);
  h.resume = h.offset + std::min(decodeVarint(at, end), h.raw_size - h.offset);
  h.header_size = static_cast<uint32_t>(at - code.data());
  return h;
}

TagSource Document::splicedSource(const Record& r, std::string_view* file, uint32_t* insert_at,
                                  uint32_t* resume_at) const {
  SpliceHeader h = spliceHeader(r);
  if (file != nullptr) *file = std::string_view(raw_).substr(h.raw_begin, h.raw_size);
  if (insert_at != nullptr) *insert_at = h.offset;
  if (resume_at != nullptr) *resume_at = h.resume;
  uint32_t kept = h.file_tags - h.cut_tags;
  TagSource source;
  source.part_count = 3;
  const char* raw = raw_.data() + h.raw_begin;
  source.parts[0] = {raw, h.raw_begin, h.offset, h.first, true, {}};
  source.parts[1] = encodedSegment(r.pos + h.header_size, r.size - h.header_size,
                                   r.tag_count > kept ? r.tag_count - kept : 0);
  source.parts[2] = {raw + h.resume, h.raw_begin + h.resume, h.raw_size - h.resume,
                     kept - h.first, true, {}};
  return source;
}

bool Document::trySplice(RecordId id, std::span<const Tag> tags) {
  Record& r = entry(id);
  if (!spliceable(r)) return false;
  // The file's tags, with where each begins in the file bytes.
  uint32_t file_begin = r.pos;
  uint32_t file_size = r.size;
  uint32_t file_tags = r.tag_count;
  if (r.spliced) {
    SpliceHeader h = spliceHeader(r);
    file_begin = h.raw_begin;
    file_size = h.raw_size;
    file_tags = h.file_tags;
  }
  std::string_view file = std::string_view(raw_).substr(file_begin, file_size);
  TagSource source({file.data(), file_begin, file_size, file_tags, true, {}});
  TagScan scan(source);
  std::vector<uint32_t>& starts = splice_starts_;
  std::vector<Tag>& old = splice_tags_;
  starts.clear();
  old.clear();
  for (auto it = scan.begin(); it != scan.end(); ++it) {
    starts.push_back(it.position() - file_begin);
    old.push_back(*it);
  }
  starts.push_back(static_cast<uint32_t>(file.size()));
  auto same = [](const Tag& a, const Tag& b) {
    return a.code == b.code && a.value.pos == b.value.pos && a.value.len == b.value.len;
  };
  size_t n = old.size();
  size_t m = tags.size();
  size_t prefix = 0;
  while (prefix < n && prefix < m && same(old[prefix], tags[prefix])) ++prefix;
  size_t suffix = 0;
  while (suffix < n - prefix && suffix < m - prefix &&
         same(old[n - 1 - suffix], tags[m - 1 - suffix])) {
    ++suffix;
  }
  // What was put in is taken out again: the record is its file bytes once more.
  const bool unchanged = prefix + suffix == n && n == m;
  // A splice costs its header: keeping a couple of tags is not worth one.
  if (!unchanged && prefix + suffix < 3) return false;
  keepFileBytes(r, file_begin, file_size, file_tags);
  if (unchanged) return true;
  auto cut_tags = static_cast<uint32_t>(n - prefix - suffix);
  splice(id, static_cast<uint32_t>(prefix), starts[prefix], cut_tags,
         starts[prefix + cut_tags] - starts[prefix], tags.subspan(prefix, m - prefix - suffix));
  return true;
}

void Document::keepFileBytes(Record& r, uint32_t begin, uint32_t size, uint32_t tag_count) {
  r.pos = begin;
  r.size = size;
  r.tag_count = tag_count;
  r.spliced = false;
}

template <typename T>
void Document::splice(RecordId id, uint32_t first, uint32_t offset, uint32_t cut_tags,
                      uint32_t cut_size, std::span<const T> added) {
  Record& r = entry(id);
  encode_scratch_.clear();
  encodeVarint(r.pos, encode_scratch_);
  encodeVarint(r.size, encode_scratch_);
  encodeVarint(r.tag_count, encode_scratch_);
  encodeVarint(first, encode_scratch_);
  encodeVarint(offset, encode_scratch_);
  encodeVarint(cut_tags, encode_scratch_);
  encodeVarint(cut_size, encode_scratch_);
  encode(added, encode_scratch_);
  TextRef code = text_.add(encode_scratch_, TextStore::Lane::kEncodings);
  r.pos = code.pos;
  r.size = code.len;
  r.tag_count = r.tag_count - cut_tags + static_cast<uint32_t>(added.size());
  r.spliced = true;
}

template <typename T>
bool Document::spliceFileBytes(RecordId id, size_t index, size_t cut, std::span<const T> added) {
  const Record& r = entry(id);
  if (r.spliced || !spliceable(r) || index + cut > r.tag_count) return false;
  // One pass finds where the run lies and reads the record's facts as they will be. The
  // file's tags keep their place in the file bytes, which the record keeps.
  RecordFactsReader facts;
  std::string_view type_name;
  bool first = true;
  const char* file_start = raw_.data() + r.pos;
  auto note = [&](int code, std::string_view value, const char* record_start) {
    if (first && code == 0) type_name = value;
    first = false;
    facts.add(code, value, record_start);
  };
  uint32_t offset = r.size;
  uint32_t resume = r.size;
  size_t at = 0;
  TagScan old = scan(id);
  auto it = old.begin();
  for (; it != old.end(); ++it, ++at) {
    if (at == index) offset = it.position() - r.pos;
    if (at == index + cut) {
      resume = it.position() - r.pos;
      break;
    }
    if (at < index) note(it->code, text(*it), file_start);
  }
  for (const T& tag : added) note(tag.code, textOf(tag), nullptr);
  for (; it != old.end() && !facts.done(); ++it) note(it->code, text(*it), file_start);
  // Tags put in after the first leave the structure name as it was.
  uint16_t type = index == 0 ? internType(type_name) : r.type;
  splice(id, static_cast<uint32_t>(index), offset, static_cast<uint32_t>(cut), resume - offset,
         added);
  setFacts(id, type, facts.facts());
  return true;
}

void Document::insertTags(RecordId id, size_t index, std::span<const TagText> tags) {
  if (tags.empty() || spliceFileBytes(id, index, 0, tags)) return;
  std::vector<Tag> made;
  made.reserve(tags.size());
  for (const TagText& tag : tags) made.push_back(makeTag(tag.code, tag.value));
  insertTags(id, index, std::span<const Tag>(made));
}

void Document::insertTags(RecordId id, size_t index, std::span<const Tag> tags) {
  if (tags.empty() || spliceFileBytes(id, index, 0, tags)) return;
  TagList old = this->tags(id);
  std::vector<Tag> all(old.begin(), old.end());
  index = std::min(index, all.size());
  all.insert(all.begin() + static_cast<std::ptrdiff_t>(index), tags.begin(), tags.end());
  setTags(id, all);
}

void Document::insertExtensionGroup(RecordId id, Handle dictionary) {
  // The group's place: after the handle (5, or 105 for a DIMSTYLE) and the reactors.
  size_t index = 0;
  size_t at = 1;
  uint32_t offset = 0;  // where the tag at `at` begins
  bool in_reactors = false;
  TagScan tags = scan(id);
  for (auto it = tags.begin(); it != tags.end(); ++it) {
    const size_t i = index++;
    if (i == at) offset = it.position();
    if (i == 0) continue;
    if (i == 1 && (it->code == 5 || it->code == 105)) {
      at = 2;
    } else if (in_reactors) {
      if (it->code == 102 && text(*it) == "}") {
        in_reactors = false;
        at = i + 1;
      }
    } else if (i == at && it->code == 102 && text(*it) == "{ACAD_REACTORS") {
      in_reactors = true;
    } else {
      break;
    }
  }
  if (in_reactors || at >= index) at = index;
  const HandleText handle(dictionary);
  const TagText group[] = {{102, "{ACAD_XDICTIONARY"}, {360, handle.view()}, {102, "}"}};
  const Record& r = entry(id);
  if (r.spliced || !spliceable(r) || r.xdict != 0 || at == index) {
    insertTags(id, at, std::span<const TagText>(group));
    return;
  }
  // Before the first subclass marker and after the handle, a whole group changes nothing the
  // record's facts hold but its extension dictionary; the layer keeps its place in the file.
  offset -= r.pos;
  splice(id, static_cast<uint32_t>(at), offset, 0, 0, std::span<const TagText>(group));
  entry(id).xdict = dictionary;
  ++revision_;
}

void Document::cutExtensionGroup(RecordId id) {
  size_t begin = SIZE_MAX;
  size_t end = SIZE_MAX;
  size_t index = 0;
  uint32_t begin_at = 0;
  uint32_t end_at = UINT32_MAX;  // where the tags after the group begin
  bool common = true;            // before the first subclass marker
  // The group lies before the first marker, and no tag after it there is one the record's
  // facts are read from (a handle, another such group): then it holds the only fact that
  // goes with it, the extension dictionary.
  bool plain = false;
  TagScan tags = scan(id);
  for (auto it = tags.begin(); it != tags.end(); ++it, ++index) {
    if (index == end) end_at = it.position();
    const int code = it->code;
    if (begin == SIZE_MAX) {
      if (code == 102 && text(*it) == "{ACAD_XDICTIONARY") {
        begin = index;
        begin_at = it.position();
        plain = common;
      }
      common = common && code != 100;
    } else if (end == SIZE_MAX) {
      if (code == 102 && text(*it) == "}") end = index + 1;
    } else if (code == 100) {
      break;
    } else if (code == 5 || code == 105 || (code == 102 && text(*it) == "{ACAD_XDICTIONARY")) {
      plain = false;
    }
  }
  const Record& r = entry(id);
  if (begin == SIZE_MAX || begin + 2 >= r.tag_count) return;
  if (end == SIZE_MAX || begin == 0 || !plain || r.spliced || !spliceable(r)) {
    eraseTags(id, begin, (end == SIZE_MAX ? r.tag_count : end) - begin);
    return;
  }
  if (end_at == UINT32_MAX) end_at = r.pos + r.size;
  splice(id, static_cast<uint32_t>(begin), begin_at - r.pos, static_cast<uint32_t>(end - begin),
         end_at - begin_at, std::span<const Tag>());
  entry(id).xdict = 0;
  ++revision_;
}

void Document::eraseTags(RecordId id, size_t index, size_t count) {
  if (count == 0) return;
  // A cut from the first tag on would take the structure name: that record is rewritten.
  if (index > 0 && spliceFileBytes(id, index, count, std::span<const Tag>())) return;
  Record& r = entry(id);
  if (index > 0 && r.spliced) {
    SpliceHeader h = spliceHeader(r);
    if (h.cut_tags == 0 && h.first == index && r.tag_count - h.file_tags == count) {
      // Exactly what a splice put in: the record is its file bytes again.
      keepFileBytes(r, h.raw_begin, h.raw_size, h.file_tags);
      noteFacts(id);
      return;
    }
  }
  TagList old = tags(id);
  std::vector<Tag> kept(old.begin(), old.end());
  index = std::min(index, kept.size());
  auto from = kept.begin() + static_cast<std::ptrdiff_t>(index);
  kept.erase(from, from + static_cast<std::ptrdiff_t>(std::min(count, kept.size() - index)));
  setTags(id, kept);
}

// The record made or changed last is rewritten where it lies: an operation that makes an
// object fills it in several edits. Any other record gets a new encoding.
void Document::setTags(RecordId id, std::span<const Tag> tags) {
  if (entry(id).rehandle) {
    std::vector<Tag> renamed(tags.begin(), tags.end());
    giveFreshHandle(id, renamed);
    setTags(id, renamed);
    return;
  }
  if (trySplice(id, tags)) {
    auto first = tags.begin();
    noteFacts(id, first != tags.end() && first->code == 0 ? internType(text(*first)) : 0);
    return;
  }
  // Read before the rewrite in place, which may overwrite the values `tags` point to.
  noteTags(id, tags);
  encode_scratch_.clear();
  encode(tags, encode_scratch_);
  Record& r = entry(id);
  std::optional<TextRef> in_place;
  if (r.changed && !r.row) in_place = text_.replaceLast({r.pos, r.size}, encode_scratch_);
  TextRef code = in_place ? *in_place : text_.add(encode_scratch_, TextStore::Lane::kEncodings);
  r.pos = code.pos;
  r.size = code.len;
  r.tag_count = static_cast<uint32_t>(tags.size());
  r.changed = true;
  r.spliced = false;
  r.row = false;
}

void Document::giveFreshHandle(RecordId id, std::vector<Tag>& tags) {
  entry(id).rehandle = false;
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
