#include "dxf/tags.h"

#include <algorithm>

namespace dxf {

TagScan::iterator::iterator(const TagSource& source) : source_(&source) { enterPart(0); }

void TagScan::iterator::enterPart(int part) {
  for (part_ = part; part_ < source_->part_count; ++part_) {
    const TagSegment& segment = source_->parts[part_];
    if (segment.count == 0) continue;
    origin_ = at_ = segment.bytes;
    end_ = segment.bytes + segment.size;
    origin_pos_ = segment.pos;
    left_ = segment.count;
    ascii_ = segment.ascii;
    shared_ = segment.shared;
    decode();
    return;
  }
}

void TagScan::iterator::decode() {
  const char* p = at_;
  start_pos_ = origin_pos_ + static_cast<uint32_t>(p - origin_);
  if (ascii_) {
    AsciiTag read = readAsciiTag(p, end_);
    at_ = read.next;
    tag_.code = static_cast<int16_t>(read.code);
    tag_.value = {origin_pos_ + static_cast<uint32_t>(read.value - origin_),
                  static_cast<uint32_t>(read.value_end - read.value)};
    return;
  }
  if (end_ - p < 2) {
    part_ = source_->part_count;  // a damaged encoding ends the scan rather than reading past it
    tag_ = {};
    return;
  }
  auto first = static_cast<unsigned char>(*p);
  uint32_t code = first;
  if (first < 0x80) {
    ++p;
  } else {
    code = decodeVarint(p, end_);
  }
  tag_.code = static_cast<int16_t>(static_cast<uint16_t>(code - kCodeBias));
  uint32_t word = decodeVarint(p, end_);
  if ((word & 1) != 0) {
    uint32_t index = word >> 1;
    tag_.value = index < shared_.size() ? shared_[index] : TextRef{};
    at_ = p;
    return;
  }
  uint32_t length = std::min<uint32_t>(word >> 1, static_cast<uint32_t>(end_ - p));
  tag_.value = {origin_pos_ + static_cast<uint32_t>(p - origin_), length};
  at_ = p + length;
}

TagList::TagList(const TagScan& scan) {
  Tag* out = reserve(scan.size());
  size_t n = 0;
  for (const Tag& tag : scan) out[n++] = tag;
  size_ = static_cast<uint32_t>(n);
}

Tag* TagList::reserve(size_t count) {
  if (count <= kInline) {
    heap_.reset();
    return inline_;
  }
  heap_ = std::make_unique_for_overwrite<Tag[]>(count);
  return heap_.get();
}

void TagList::assign(const Tag* tags, size_t count) {
  Tag* out = reserve(count);
  std::copy(tags, tags + count, out);
  size_ = static_cast<uint32_t>(count);
}

uint32_t decodeLongVarint(const char*& at, const char* end) {
  uint32_t value = 0;
  for (int shift = 0; at < end && shift < 35; shift += 7) {
    auto byte = static_cast<unsigned char>(*at++);
    value |= static_cast<uint32_t>(byte & 0x7F) << shift;
    if ((byte & 0x80) == 0) break;
  }
  return value;
}

namespace {

void encodeCode(int code, std::string& out) {
  encodeVarint(static_cast<uint16_t>(static_cast<int16_t>(code) + kCodeBias), out);
}

}  // namespace

void encodeTag(int code, std::string_view value, std::string& out) {
  encodeCode(code, out);
  encodeVarint(static_cast<uint32_t>(value.size()) << 1, out);
  out.append(value);
}

void encodeSharedTag(int code, uint32_t index, std::string& out) {
  encodeCode(code, out);
  encodeVarint(index << 1 | 1, out);
}

}  // namespace dxf
