// Writes a drawing back: unchanged records as their original bytes, changed ones from tags.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "base/atomic_file.h"
#include "base/file_read.h"
#include "dxf/document.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"

namespace dxf {

namespace {

constexpr std::string_view kBinarySentinel{"AutoCAD Binary DXF\r\n\x1a\0", 22};

template <typename Out, typename T>
void appendLittleEndian(Out& out, T value) {
  char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  out.append(std::string_view(bytes, sizeof(T)));
}

// The text of a group code line, from a table made once: changed records are written tag by
// tag, and formatting each code would dominate the time.
std::string_view codeText(int code, bool padded) {
  struct Table {
    std::string padded[kMaxGroupCode + 1];
    std::string plain[kMaxGroupCode + 1];
    Table() {
      char buf[16];
      for (int c = 0; c <= kMaxGroupCode; ++c) {
        padded[c].assign(buf, static_cast<size_t>(std::snprintf(buf, sizeof buf, "%3d", c)));
        plain[c].assign(buf, static_cast<size_t>(std::snprintf(buf, sizeof buf, "%d", c)));
      }
    }
  };
  static const Table kTable;
  if (code >= 0 && code <= kMaxGroupCode) return padded ? kTable.padded[code] : kTable.plain[code];
  thread_local char buf[16];
  return {buf, static_cast<size_t>(std::snprintf(buf, sizeof buf, padded ? "%3d" : "%d", code))};
}

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 0;
}

}  // namespace

// Writes to a file descriptor through a buffer, so that saving never holds the whole
// output in memory; the first failure is kept and later writes are dropped.
class FileOut {
 public:
  explicit FileOut(int fd) : fd_(fd), buffer_(std::make_unique_for_overwrite<char[]>(kSize)) {}
  // Changed records go out a few bytes at a time: a copy into the buffer, no more.
  void append(std::string_view bytes) {
    if (bytes.size() > kSize - used_) {
      flush();
      if (bytes.size() >= kSize) {
        writeAll(bytes);
        return;
      }
    }
    std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
  }
  void push_back(char c) { append(std::string_view(&c, 1)); }
  void flush() {
    writeAll({buffer_.get(), used_});
    used_ = 0;
  }
  int error() const { return errno_; }

 private:
  static constexpr size_t kSize = size_t{1} << 20;
  void writeAll(std::string_view bytes) {
    while (!bytes.empty() && errno_ == 0) {
      ssize_t n = ::write(fd_, bytes.data(), bytes.size());
      if (n < 0) {
        if (errno != EINTR) errno_ = errno;
        continue;
      }
      bytes.remove_prefix(static_cast<size_t>(n));
    }
  }
  int fd_;
  int errno_ = 0;
  std::unique_ptr<char[]> buffer_;
  size_t used_ = 0;
};

std::string Document::serialize() const {
  std::string out;
  out.reserve(raw_.size() + raw_.size() / 8 + 1024);
  writeTo(out);
  return out;
}

template <typename Out>
void Document::writeTo(Out& out) const {
  if (format_ == Format::kBinary) out.append(kBinarySentinel);

  // $HANDSEED is kept current only here, so that handing out handles costs nothing. Its
  // value is the tag after "9 $HANDSEED" in the header record.
  RecordId head = header();
  size_t handseed_at = SIZE_MAX;
  std::string handseed_text;
  if (head != kNoRecord && handles_allocated_) {
    size_t index = 0;
    for (const Tag& tag : scan(head)) {
      ++index;
      if (tag.code == 9 && text(tag) == "$HANDSEED") {
        handseed_at = index;
        handseed_text = formatHandle(next_handle_);
        break;
      }
    }
  }

  const std::string_view eol = crlf_ ? "\r\n" : "\n";
  auto writeAscii = [&](int code, std::string_view value) {
    out.append(codeText(code, padded_codes_));
    out.append(eol);
    out.append(value);
    // A reader takes one CR before the line feed for the line's end, so a value ending in
    // CR (a file's line ending in two) needs one more where lines end in LF alone.
    if (!crlf_ && !value.empty() && value.back() == '\r') out.push_back('\r');
    out.append(eol);
  };
  auto writeTag = [&](int code, std::string_view value) {
    if (format_ == Format::kAscii) {
      writeAscii(code, value);
      return;
    }
    if (r12_binary_codes_) {
      if (code >= 255 || code < 0) {
        out.push_back(static_cast<char>(255));
        appendLittleEndian(out, static_cast<int16_t>(code));
      } else {
        out.push_back(static_cast<char>(code));
      }
    } else {
      appendLittleEndian(out, static_cast<int16_t>(code));
    }
    ValueKind kind = valueKind(code);
    double real = 0;
    int64_t integer = 0;
    if (kind == ValueKind::kDouble) parseDouble(value, real);
    if (isNumeric(kind) && kind != ValueKind::kDouble) parseInt(value, integer);
    switch (kind) {
      case ValueKind::kString:
        out.append(value);
        out.push_back('\0');
        break;
      case ValueKind::kDouble:
        appendLittleEndian(out, real);
        break;
      case ValueKind::kInt16:
        appendLittleEndian(out, static_cast<int16_t>(integer));
        break;
      case ValueKind::kInt32:
        appendLittleEndian(out, static_cast<int32_t>(integer));
        break;
      case ValueKind::kInt64:
        appendLittleEndian(out, integer);
        break;
      case ValueKind::kBool:
        out.push_back(static_cast<char>(integer));
        break;
      case ValueKind::kBinary: {
        size_t n = std::min<size_t>(value.size() / 2, 255);
        out.push_back(static_cast<char>(n));
        for (size_t i = 0; i < n; ++i) {
          out.push_back(
              static_cast<char>(hexDigit(value[2 * i]) << 4 | hexDigit(value[2 * i + 1])));
        }
        break;
      }
    }
  };
  // Attached records go out just before the end of the OBJECTS section.
  const RecordId attached_at = attachments_.empty() ? kNoRecord : section("OBJECTS").tail;
  const std::string_view raw = raw_;
  for (RecordId id = first_; id != kNoRecord;) {
    const Record& r = records_[id];
    if (id == attached_at) {
      for (RecordId a = kAttachedBase; a != attachedEnd(); ++a) {
        if (!exists(a)) continue;
        const size_t k = a - kAttachedBase;
        if (attachments_[k / 2].size != 0 ||
            (k < attached_records_.size() && !attached_records_[k].row)) {
          for (const Tag& tag : scan(a)) writeTag(tag.code, text(tag));
          continue;
        }
        // Own tags not encoded yet: written as made, not encoded for this.
        const OwnTags own = unencodedOwnTags(k / 2);
        const bool dictionary = k % 2 == 0;
        for (const TagText& tag : dictionary ? own.dictionaryHead() : own.xrecordHead()) {
          writeTag(tag.code, tag.value);
        }
        const TagSource shape(shapePart(shapes_[attachments_[k / 2].shape], dictionary));
        for (const Tag& tag : TagScan(shape)) writeTag(tag.code, text(tag));
        if (dictionary) writeTag(own.entry().code, own.entry().value);
      }
    }
    auto unchanged = [&](RecordId at) {
      return !records_[at].changed && !records_[at].spliced &&
             !(handseed_at != SIZE_MAX && at == head);
    };
    if (unchanged(id)) {
      // Runs of unchanged records that lie one after another in the file go out in one piece.
      auto [begin, end] = fileBytes(id);
      id = r.next;
      while (id != kNoRecord && id != attached_at && unchanged(id) &&
             fileBytes(id).first == end) {
        end = fileBytes(id).second;
        id = records_[id].next;
      }
      out.append(raw.substr(begin, end - begin));
      continue;
    }
    const bool handseed_here = id == head && handseed_at != SIZE_MAX;
    if (r.spliced && !handseed_here) {
      // The file's bytes around the replaced run, and the new tags written as any changed tag.
      std::string_view file;
      uint32_t insert_at = 0;
      uint32_t resume_at = 0;
      TagSource parts = splicedSource(r, &file, &insert_at, &resume_at);
      out.append(file.substr(0, insert_at));
      for (const Tag& tag : TagScan(TagSource(parts.parts[1]))) writeAscii(tag.code, text(tag));
      out.append(file.substr(resume_at));
      id = r.next;
      continue;
    }
    size_t index = 0;
    for (const Tag& tag : scan(id)) {
      // The seed is a handle, code 5, whatever code the file gave it: written with another
      // (an integer's, in a binary file) it would not read back as the handle.
      const bool seed = handseed_here && index++ == handseed_at;
      writeTag(seed ? 5 : tag.code, seed ? std::string_view(handseed_text) : text(tag));
    }
    id = r.next;
  }
}

base::Status Document::save(const std::string& path) const {
  return base::writeFileAtomically(path, [this](int fd) {
    FileOut out(fd);
    writeTo(out);
    out.flush();
    return out.error();
  });
}

base::Result<Document> Document::load(const std::string& path) {
  // One byte past the largest drawing is enough for parse() to refuse it.
  auto bytes = base::readFileUpTo(path, TextStore::kMaxBase + 1);
  if (!bytes) return bytes.status();
  return parse(std::move(bytes.value()), path);
}

}  // namespace dxf
