#include "dxf/tags.h"

#include <algorithm>

namespace dxf {

TagScan::iterator::iterator(const TagSource& source)
    : origin_(source.bytes),
      at_(source.bytes),
      end_(source.bytes + source.size),
      origin_pos_(source.pos),
      left_(source.count),
      ascii_(source.ascii) {
  if (left_ > 0) decode();
}

// The reader checked every line when the file was loaded, so decoding only has to stay
// within the record's bytes.
void TagScan::iterator::decode() {
  const char* p = at_;
  if (ascii_) {
    while (p < end_ && (*p == ' ' || *p == '\t')) ++p;
    bool negative = p < end_ && *p == '-';
    if (negative) ++p;
    int code = 0;
    for (; p < end_ && *p >= '0' && *p <= '9'; ++p) code = code * 10 + (*p - '0');
    const void* nl = p < end_ ? std::memchr(p, '\n', static_cast<size_t>(end_ - p)) : nullptr;
    const char* value = nl ? static_cast<const char*>(nl) + 1 : end_;
    nl = value < end_ ? std::memchr(value, '\n', static_cast<size_t>(end_ - value)) : nullptr;
    const char* value_end = nl ? static_cast<const char*>(nl) : end_;
    at_ = nl ? value_end + 1 : end_;
    if (value_end > value && value_end[-1] == '\r') --value_end;
    tag_.code = static_cast<int16_t>(negative ? -code : code);
    tag_.value = {origin_pos_ + static_cast<uint32_t>(value - origin_),
                  static_cast<uint32_t>(value_end - value)};
    return;
  }
  if (end_ - p < 3) {
    left_ = 1;  // a damaged encoding ends the scan rather than reading past it
    tag_ = {};
    return;
  }
  auto lo = static_cast<unsigned char>(p[0]);
  auto hi = static_cast<unsigned char>(p[1]);
  tag_.code = static_cast<int16_t>(lo | (hi << 8));
  p += 2;
  uint32_t length = 0;
  for (int shift = 0; p < end_ && shift < 35; shift += 7) {
    auto byte = static_cast<unsigned char>(*p++);
    length |= static_cast<uint32_t>(byte & 0x7F) << shift;
    if ((byte & 0x80) == 0) break;
  }
  length = std::min<uint32_t>(length, static_cast<uint32_t>(end_ - p));
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

void encodeTag(int code, std::string_view value, std::string& out) {
  auto bits = static_cast<uint16_t>(static_cast<int16_t>(code));
  out.push_back(static_cast<char>(bits & 0xFF));
  out.push_back(static_cast<char>(bits >> 8));
  auto length = static_cast<uint32_t>(value.size());
  while (length >= 0x80) {
    out.push_back(static_cast<char>((length & 0x7F) | 0x80));
    length >>= 7;
  }
  out.push_back(static_cast<char>(length));
  out.append(value);
}

void encodeTags(std::span<const Tag> tags, const TextStore& text, std::string& out) {
  for (const Tag& tag : tags) encodeTag(tag.code, text.view(tag.value), out);
}

}  // namespace dxf
