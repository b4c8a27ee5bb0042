// Attached record pairs: their rows, handle runs and shapes, read and made.
#include <algorithm>
#include <functional>

#include "dxf/attachment_builder.h"
#include "dxf/document.h"
#include "dxf/number_text.h"

namespace dxf {

void Document::indexAttachedHandle(RecordId id, Handle handle) {
  if (handle_runs_.empty() || handle - handle_runs_.back().handle != handle_runs_.back().count ||
      id - handle_runs_.back().id != handle_runs_.back().count ||
      handle_runs_.back().count == UINT32_MAX) {
    // A run starts only above every handle indexed so far, so that runs stay sorted and
    // never hold a handle the index holds.
    const HandleRun* last = handle_runs_.empty() ? nullptr : &handle_runs_.back();
    const bool above_runs =
        !last || (handle >= last->handle && handle - last->handle >= last->count);
    const bool above_index = dense_ ? handle >= dense_handles_.size()
                                    : handles_.empty() || handle > handles_.back().first;
    if (!above_runs || !above_index) {
      indexHandle(id, handle);
      return;
    }
    handle_runs_.push_back({handle, id, 0});
  }
  ++handle_runs_.back().count;
  ++handle_count_;
  if (handle >= next_handle_) next_handle_ = handle + 1;
}

Record Document::attachedEntry(RecordId id) const {
  const size_t k = id - kAttachedBase;
  if (k < attached_records_.size()) return attached_records_[k];
  const Attachment& a = attachments_[k / 2];
  const bool dictionary = k % 2 == 0;
  Record r;
  r.tag_count = dictionary ? kOwnDictionaryTags + kShapeDictionaryTags
                           : kOwnXrecordTags + shapes_[a.shape].xrecord_tags;
  r.type = dictionary ? dictionary_type_ : xrecord_type_;
  r.changed = true;
  r.row = true;
  r.erased = (a.erased >> (k % 2) & 1) != 0;
  return r;
}

Handle Document::runHandle(RecordId id) const {
  // The last run whose first id is not above `id`.
  auto run = std::upper_bound(handle_runs_.begin(), handle_runs_.end(), id,
                              [](RecordId i, const HandleRun& r) { return i < r.id; });
  if (run == handle_runs_.begin() || id - (--run)->id >= run->count) return 0;
  return run->handle + (id - run->id);
}

Document::OwnTags Document::unencodedOwnTags(size_t pair) const {
  const auto dictionary = static_cast<RecordId>(kAttachedBase + 2 * pair);
  return {HandleText(attachments_[pair].pos), HandleText(runHandle(dictionary)),
          HandleText(runHandle(dictionary + 1))};
}

void Document::encodeOwnTags(size_t pair, const OwnTags& own) const {
  // Each head but its structure name, whose encoding is made once.
  auto encodeHead = [](const std::array<TagText, 3>& head, std::string& out) {
    for (size_t i = 1; i < head.size(); ++i) encodeTag(head[i].code, head[i].value, out);
  };
  std::string& out = own_tags_scratch_;
  out = dictionary_tag_;
  encodeHead(own.dictionaryHead(), out);
  const auto entry_at = static_cast<uint8_t>(out.size());
  encodeTag(own.entry().code, own.entry().value, out);
  const auto xrecord_at = static_cast<uint8_t>(out.size());
  out += xrecord_tag_;
  encodeHead(own.xrecordHead(), out);
  TextRef code = text_.add(out, TextStore::Lane::kEncodings);
  Attachment& a = attachments_[pair];
  a.pos = code.pos;
  a.size = static_cast<uint8_t>(code.len);
  a.entry_at = entry_at;
  a.xrecord_at = xrecord_at;
}

TagSegment Document::shapePart(const Shape& shape, bool dictionary) const {
  const uint32_t begin = dictionary ? 0 : shape.dictionary_size;
  const uint32_t end = dictionary ? shape.dictionary_size : shape.size;
  return encodedSegment(shape.pos + begin, end - begin,
                        dictionary ? kShapeDictionaryTags : shape.xrecord_tags);
}

TagSource Document::attachedSource(size_t k) const {
  if (attachments_[k / 2].size == 0) encodeOwnTags(k / 2, unencodedOwnTags(k / 2));
  const Attachment& a = attachments_[k / 2];
  // Tags [begin, end) of the pair's own tags.
  auto own = [&](uint32_t begin, uint32_t end, uint32_t count) {
    return encodedSegment(a.pos + begin, end - begin, count);
  };
  const Shape& shape = shapes_[a.shape];
  TagSource source;
  if (k % 2 == 0) {
    source.part_count = 3;
    source.parts[0] = own(0, a.entry_at, kOwnDictionaryTags - 1);
    source.parts[1] = shapePart(shape, true);
    source.parts[2] = own(a.entry_at, a.xrecord_at, 1);
  } else {
    source.part_count = 2;
    source.parts[0] = own(a.xrecord_at, a.size, kOwnXrecordTags);
    source.parts[1] = shapePart(shape, false);
  }
  return source;
}

Record Document::attachedRecord(RecordId id) const {
  Record r = attachedEntry(id);
  if (r.handle == 0) r.handle = runHandle(id);
  if (r.handle == 0) {
    // Not in a run: the handle follows the code 0 tag in the record's own tags.
    TagScan::iterator it(attachedSource(id - kAttachedBase));
    if (++it, it->code == 5) r.handle = parseHandle(text(*it));
  }
  return r;
}

Record& Document::entry(RecordId id) {
  if (!isAttached(id)) return records_[id];
  // Every attached record so far gets its entry: ids stay as they are, and the next change
  // finds its entry made.
  const size_t count = 2 * attachments_.size();
  // Exactly what is asked the first time, when every pair made so far is promoted at once;
  // geometric after, when pairs attached one at a time are each edited in turn.
  if (count > attached_records_.capacity()) {
    attached_records_.reserve(std::max(count, 2 * attached_records_.capacity()));
  }
  while (attached_records_.size() < count) {
    auto k = static_cast<RecordId>(attached_records_.size());
    attached_records_.push_back(attachedRecord(kAttachedBase + k));
  }
  return attached_records_[id - kAttachedBase];
}

bool AttachmentBuilder::reuseShape(std::string_view source) {
  auto& cache = doc_.shape_sources_;
  if (cache.empty()) cache.resize(Document::kShapeSourceCacheSize);
  Document::ShapeSource& slot =
      cache[std::hash<std::string_view>()(source) % Document::kShapeSourceCacheSize];
  if (slot.shape != UINT32_MAX && slot.source == source) {
    shape_ = slot.shape;
    return true;
  }
  slot.source.assign(source);
  slot.shape = UINT32_MAX;
  source_noted_ = &slot;
  return false;
}

AttachmentBuilder& AttachmentBuilder::begin(std::string_view key, bool cloning_flag) {
  std::string& out = doc_.builder_scratch_;
  out.clear();
  doc_.encodeOne(100, "AcDbDictionary", out);
  // Extension dictionaries own their entries (280 1), which are therefore 360s.
  doc_.encodeOne(280, "1", out);
  doc_.encodeOne(281, "1", out);
  doc_.encodeOne(3, key, out);
  dictionary_size_ = static_cast<uint32_t>(out.size());
  doc_.encodeOne(100, "AcDbXrecord", out);
  xrecord_tags_ = 1;
  if (cloning_flag) add(280, "1");
  return *this;
}

AttachmentBuilder& AttachmentBuilder::add(int code, std::string_view value) {
  ++xrecord_tags_;
  doc_.encodeOne(code, value, doc_.builder_scratch_);
  return *this;
}

RecordId AttachmentBuilder::finish(Handle owner, Handle dictionary, Handle xrecord) {
  Document& doc = doc_;
  if (doc.dictionary_type_ == 0) {
    doc.dictionary_type_ = doc.internType("DICTIONARY");
    doc.xrecord_type_ = doc.internType("XRECORD");
  }
  // The shape: the one reused, one made before with the same bytes, or a new one.
  if (shape_ == UINT32_MAX) {
    const std::string_view shared = doc.builder_scratch_;
    if (doc.shape_cache_.empty()) {
      doc.shape_cache_.assign(Document::kShapeCacheSize, UINT32_MAX);
    }
    uint32_t& cached =
        doc.shape_cache_[std::hash<std::string_view>()(shared) % Document::kShapeCacheSize];
    // Equal bytes are equal tags, split alike: the dictionary's part is its first four.
    if (cached >= doc.shapes_.size() ||
        doc.text_.view({doc.shapes_[cached].pos, doc.shapes_[cached].size}) != shared) {
      TextRef made = doc.text_.add(shared, TextStore::Lane::kEncodings);
      doc.shapes_.push_back({made.pos, made.len, dictionary_size_, xrecord_tags_});
      cached = static_cast<uint32_t>(doc.shapes_.size() - 1);
    }
    shape_ = cached;
    if (source_noted_) source_noted_->shape = cached;
  }
  if (doc.dictionary_tag_.empty()) {
    doc.encodeOne(0, "DICTIONARY", doc.dictionary_tag_);
    doc.encodeOne(0, "XRECORD", doc.xrecord_tag_);
  }
  // Classifying gives most objects a pair: room for one each costs address space only, and
  // spares copying the list as it grows.
  if (doc.attachments_.capacity() == 0) doc.attachments_.reserve(doc.records_.size());
  doc.attachments_.push_back({static_cast<uint32_t>(owner), shape_, 0, 0, 0, 0});
  const auto first = static_cast<RecordId>(kAttachedBase + 2 * (doc.attachments_.size() - 1));
  doc.indexAttachedHandle(first, dictionary);
  doc.indexAttachedHandle(first + 1, xrecord);
  // Its own tags wait until read, when the row and the runs can give them back.
  if (owner > UINT32_MAX || doc.runHandle(first) != dictionary ||
      doc.runHandle(first + 1) != xrecord) {
    doc.encodeOwnTags(doc.attachments_.size() - 1,
                      {HandleText(owner), HandleText(dictionary), HandleText(xrecord)});
  }
  ++doc.revision_;
  doc.notify(first, true);
  doc.notify(first + 1, true);
  return first + 1;
}

}  // namespace dxf
