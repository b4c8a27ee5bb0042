// A record's tags as callers see them, and the two forms they are kept in: the file's own
// ASCII lines, read again when asked for (an unchanged record costs no memory of its own),
// and a compact encoding for records read from binary files or made or changed since.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "dxf/text_store.h"

namespace dxf {

struct Tag {
  int16_t code = 0;
  TextRef value;
};

// A tag given as its code and its value's text, for edits that encode it where it is kept
// rather than keep its value apart first.
struct TagText {
  int code = 0;
  std::string_view value;
};

// A run of a record's tags: `bytes` starts at text position `pos` (the file itself for
// ASCII lines, the text store for encodings) and holds `count` tags.
// No member initializers: a scan is made for every record read, and the parts a source does
// not use are left as they are.
struct TagSegment {
  const char* bytes;
  uint32_t pos;
  uint32_t size;
  uint32_t count;
  bool ascii;
  // The values an encoding names by number (see encodeTag).
  std::span<const TextRef> shared;
};

// Where a record's tags lie: one run, or three when tags were inserted into an unchanged
// record (its lines before the insertion, the encoded new tags, its lines after).
struct TagSource {
  static constexpr int kMaxParts = 3;
  TagSegment parts[kMaxParts];
  int part_count = 0;

  TagSource() = default;
  explicit TagSource(const TagSegment& only) : part_count(1) { parts[0] = only; }
  uint32_t count() const {
    uint32_t n = 0;
    for (int i = 0; i < part_count; ++i) n += parts[i].count;
    return n;
  }
};

// The tags of one record, decoded one at a time as the range is walked. Nothing is copied,
// so a scan is for reading a record straight through; it must not outlive a change to the
// record (TagList keeps a copy), and its iterators must not outlive it.
class TagScan {
 public:
  class iterator {
   public:
    using value_type = Tag;
    using difference_type = std::ptrdiff_t;
    iterator() = default;
    explicit iterator(const TagSource& source);
    const Tag& operator*() const { return tag_; }
    const Tag* operator->() const { return &tag_; }
    iterator& operator++() {
      advance();
      return *this;
    }
    void operator++(int) { advance(); }
    bool operator==(std::default_sentinel_t) const {
      return source_ == nullptr || part_ >= source_->part_count;
    }
    // The text position of the current tag's first byte (an ASCII tag's code line).
    uint32_t position() const { return start_pos_; }

   private:
    void advance() {
      if (--left_ > 0) {
        decode();
      } else {
        enterPart(part_ + 1);
      }
    }
    // Moves to the first tag of part `part` or, when it has none, of a later one.
    void enterPart(int part);
    void decode();

    const TagSource* source_ = nullptr;
    int part_ = 0;
    const char* origin_ = nullptr;
    const char* at_ = nullptr;
    const char* end_ = nullptr;
    uint32_t origin_pos_ = 0;
    uint32_t start_pos_ = 0;
    uint32_t left_ = 0;  // tags of the part from the current one on
    bool ascii_ = false;
    std::span<const TextRef> shared_;
    Tag tag_;
  };

  TagScan() = default;
  explicit TagScan(const TagSource& source) : size_(source.count()) {
    source_.part_count = source.part_count;
    std::copy(source.parts, source.parts + source.part_count, source_.parts);
  }
  iterator begin() const { return iterator(source_); }
  std::default_sentinel_t end() const { return {}; }
  uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

 private:
  TagSource source_;
  uint32_t size_ = 0;
};

// A decoded copy of a record's tags: random access, and valid whatever happens to the
// drawing afterwards. Most records fit the inline room, so taking one allocates nothing.
class TagList {
 public:
  explicit TagList(const TagScan& scan);
  TagList(const TagList& other) { assign(other.data(), other.size()); }
  TagList& operator=(const TagList& other) {
    if (this != &other) assign(other.data(), other.size());
    return *this;
  }

  const Tag* data() const { return heap_ ? heap_.get() : inline_; }
  const Tag* begin() const { return data(); }
  const Tag* end() const { return data() + size_; }
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const Tag& operator[](size_t i) const { return data()[i]; }
  const Tag& front() const { return data()[0]; }
  const Tag& back() const { return data()[size_ - 1]; }
  // Only from a named list: a span of a temporary would outlive its tags.
  operator std::span<const Tag>() const& { return {data(), size_}; }
  operator std::span<const Tag>() const&& = delete;

 private:
  static constexpr size_t kInline = 24;
  void assign(const Tag* tags, size_t count);
  Tag* reserve(size_t count);

  uint32_t size_ = 0;
  std::unique_ptr<Tag[]> heap_;
  Tag inline_[kInline];
};

// The '\n' in [p, end), or nullptr. Most lines of a drawing are a few bytes long, where
// looking byte by byte beats the call to memchr.
inline const char* lineEnd(const char* p, const char* end) {
  for (int i = 0; i < 16 && p < end; ++i, ++p) {
    if (*p == '\n') return p;
  }
  return p < end ? static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(end - p)))
                 : nullptr;
}

// One tag of an ASCII record's lines: its code, its value's bytes [value, value_end) without
// the line end, and where the next tag begins.
struct AsciiTag {
  int code;
  const char* value;
  const char* value_end;
  const char* next;
};

// Reads the tag whose code line begins at `p` in an ASCII record's lines [p, end). The reader
// checked every line when the file was loaded, so this only has to stay within the bytes.
inline AsciiTag readAsciiTag(const char* p, const char* end) {
  while (p < end && (*p == ' ' || *p == '\t')) ++p;
  bool negative = p < end && *p == '-';
  if (negative) ++p;
  int code = 0;
  for (; p < end && *p >= '0' && *p <= '9'; ++p) code = code * 10 + (*p - '0');
  const char* nl = lineEnd(p, end);
  const char* value = nl ? nl + 1 : end;
  nl = value < end ? lineEnd(value, end) : nullptr;
  const char* value_end = nl ? nl : end;
  const char* next = nl ? value_end + 1 : end;
  if (value_end > value && value_end[-1] == '\r') --value_end;
  return {negative ? -code : code, value, value_end, next};
}

// Codes are encoded as LEB128 of code + kCodeBias, taken as 16 bits: one byte for the codes
// from -8 to 119, which most tags have (the lowest a file uses is -5).
constexpr int kCodeBias = 8;
// Appends one tag's compact encoding to `out`: its code, then twice its value's length
// (LEB128) and the value's bytes.
void encodeTag(int code, std::string_view value, std::string& out);
// Appends a tag whose value is the shared value number `index`: the code, then twice the
// index plus one (LEB128).
void encodeSharedTag(int code, uint32_t index, std::string& out);
// Appends `value` in LEB128 / reads it from [at, end), advancing `at` (0 when cut short).
// Inline: edits encode several small numbers a tag, most of them one byte.
inline void encodeVarint(uint32_t value, std::string& out) {
  if (value < 0x80) {
    out.push_back(static_cast<char>(value));
    return;
  }
  char bytes[5];
  size_t n = 0;
  while (value >= 0x80) {
    bytes[n++] = static_cast<char>((value & 0x7F) | 0x80);
    value >>= 7;
  }
  bytes[n++] = static_cast<char>(value);
  out.append(bytes, n);
}
uint32_t decodeLongVarint(const char*& at, const char* end);
inline uint32_t decodeVarint(const char*& at, const char* end) {
  if (at < end && static_cast<unsigned char>(*at) < 0x80) {
    return static_cast<unsigned char>(*at++);
  }
  return decodeLongVarint(at, end);
}

}  // namespace dxf
