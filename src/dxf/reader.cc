// Splits a DXF file into tags and records. Both formats end in the same model: every value
// as text in the drawing's encoding, every record with the file bytes it came from.
#include <charconv>
#include <cstring>

#include "dxf/document.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/record_facts.h"

namespace dxf {

namespace {

constexpr std::string_view kBinarySentinel{"AutoCAD Binary DXF\r\n\x1a\0", 22};

std::string_view trimBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

std::string quoted(std::string_view text) {
  constexpr size_t kShown = 40;
  std::string out = "'";
  for (char c : text.substr(0, kShown)) {
    unsigned char u = static_cast<unsigned char>(c);
    if (u < 0x20 || u == 0x7F) {
      char buf[8];
      std::snprintf(buf, sizeof buf, "\\x%02X", u);
      out += buf;
    } else {
      out.push_back(c);
    }
  }
  if (text.size() > kShown) out += "...";
  return out + "'";
}

}  // namespace

// Fills a Document's tag and record vectors; the Document checks the structure after.
class DocumentBuilder {
 public:
  DocumentBuilder(Document& doc, const std::string& name) : doc_(doc), name_(name) {}

  base::Status readAscii();
  base::Status readBinary();

 private:
  base::Status errorAt(uint64_t line, const std::string& what) const {
    return base::Status::invalid(name_ + ":" + std::to_string(line) + ": " + what);
  }
  // Opens a new record at file byte `raw_pos` when `code` is 0 (or nothing is open yet);
  // `code_pos` is where its encoded tags start (binary files only). Then counts the tag.
  void addTag(int code, std::string_view value, uint32_t raw_pos, uint32_t code_pos = 0) {
    if (code == 0 || doc_.last_ == kNoRecord) {
      closeRecord(raw_pos, code_pos);
      facts_ = RecordFactsReader();
      Record r;
      if (code == 0) r.type = internType(value);
      if (doc_.format_ == Format::kBinary) {
        r.pos = code_pos;
        doc_.binary_raw_.emplace_back(raw_pos, raw_pos);
      } else {
        r.pos = raw_pos;
        record_start_ = doc_.raw_.data() + raw_pos;
      }
      r.prev = doc_.last_;
      RecordId id = static_cast<RecordId>(doc_.records_.size());
      if (doc_.last_ != kNoRecord) doc_.records_[doc_.last_].next = id;
      if (doc_.first_ == kNoRecord) doc_.first_ = id;
      doc_.records_.push_back(r);
      doc_.last_ = id;
    }
    ++doc_.records_[doc_.last_].tag_count;
    facts_.add(code, value, record_start_);
  }
  // The same structure name follows itself for long runs (entities of one kind).
  uint16_t internType(std::string_view name) {
    if (name != last_type_name_) {
      last_type_ = doc_.internType(name);
      last_type_name_ = doc_.type_names_[last_type_];
    }
    return last_type_;
  }
  void closeRecord(uint32_t raw_pos, uint32_t code_pos = 0) {
    if (doc_.last_ == kNoRecord) return;
    Record& r = doc_.records_[doc_.last_];
    const RecordFacts& facts = facts_.facts();
    r.xdict = facts.xdict;
    r.paper = facts.paper;
    if (facts.layer_at <= UINT8_MAX) {
      r.layer_at = static_cast<uint8_t>(facts.layer_at);
      r.layer_opens_group = r.layer_at != 0 && facts.layer_opens_group;
    }
    if (facts.xdict_group) doc_.xdict_candidates_.push_back(doc_.last_);
    // A section's 5 tags are header variables ($HANDSEED), not a handle of its own.
    if (facts.own_handle != 0 && doc_.type_names_[r.type] != "SECTION") {
      r.handle = facts.own_handle;
      doc_.handles_.emplace_back(facts.own_handle, doc_.last_);
    }
    if (doc_.format_ == Format::kBinary) {
      doc_.binary_raw_.back().second = raw_pos;
      r.size = code_pos - r.pos;
    } else {
      r.size = raw_pos - r.pos;
    }
  }

  Document& doc_;
  const std::string& name_;
  uint16_t last_type_ = 0;
  std::string_view last_type_name_;
  RecordFactsReader facts_;
  const char* record_start_ = nullptr;  // the open record's first byte (ASCII files)
};

base::Status DocumentBuilder::readAscii() {
  const std::string& raw = doc_.raw_;
  doc_.text_.setBase(raw);
  doc_.format_ = Format::kAscii;
  const char* data = raw.data();
  const size_t size = raw.size();
  // Records of real drawings take well over 24 bytes; reserving generously costs address
  // space only, and spares copies of the record list while it grows.
  doc_.records_.reserve(size / 24 + 16);
  doc_.handles_.reserve(size / 24 + 16);

  size_t pos = 0;
  uint64_t line = 1;
  bool first_line = true;
  bool seen_eof = false;
  bool seen_code0 = false;
  auto readLine = [&](std::string_view& out) -> bool {
    if (pos >= size) return false;
    const void* nl = std::memchr(data + pos, '\n', size - pos);
    size_t end = nl ? static_cast<const char*>(nl) - data : size;
    size_t next = nl ? end + 1 : size;
    bool cr = end > pos && data[end - 1] == '\r';
    if (cr) --end;
    if (first_line) {
      doc_.crlf_ = nl && cr;
      first_line = false;
    }
    out = std::string_view(data + pos, end - pos);
    pos = next;
    return true;
  };

  while (pos < size && !seen_eof) {
    size_t code_pos = pos;
    std::string_view code_text, value;
    readLine(code_text);
    std::string_view digits = trimBlanks(code_text);
    int code = 0;
    auto [ptr, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), code);
    if (digits.empty() || ec != std::errc() || ptr != digits.data() + digits.size() ||
        code < -32768 || code > 32767) {
      return errorAt(line, "group code expected, found " + quoted(code_text));
    }
    if (code == 0 && !seen_code0) {
      doc_.padded_codes_ = code_text.size() >= 3;
      seen_code0 = true;
    }
    if (!readLine(value)) {
      return errorAt(
          line, "group code " + std::to_string(code) + " has no value line; the file is truncated");
    }
    ValueKind kind = valueKind(code);
    if (isNumeric(kind) && !isValidNumber(kind, value)) {
      return errorAt(line + 1, "group code " + std::to_string(code) + " needs a number, found " +
                                   quoted(value));
    }
    addTag(code, value, static_cast<uint32_t>(code_pos));
    if (code == 0) seen_eof = value == "EOF";
    line += 2;
  }
  if (doc_.last_ == kNoRecord) return errorAt(1, "the file is empty");
  // Whatever follows EOF stays with the EOF record, so the bytes survive a round trip.
  closeRecord(static_cast<uint32_t>(size));
  if (!seen_eof) return errorAt(line, "the file ends without 'EOF'; it is truncated");
  return base::Status::ok();
}

base::Status DocumentBuilder::readBinary() {
  const std::string& raw = doc_.raw_;
  doc_.format_ = Format::kBinary;
  const auto* data = reinterpret_cast<const unsigned char*>(raw.data());
  const size_t size = raw.size();
  // R12 binary files use one-byte group codes; later ones two bytes.
  doc_.r12_binary_codes_ = size > 23 && data[22] == 0 && data[23] != 0;
  std::string decoded;
  decoded.reserve(size + size / 2);
  doc_.records_.reserve(size / 16 + 16);

  size_t pos = kBinarySentinel.size();
  bool seen_eof = false;
  auto truncated = [&](size_t at) {
    return base::Status::invalid(name_ + ": byte " + std::to_string(at) +
                                 ": the binary file is truncated");
  };
  char buf[32];
  char hex[512];
  std::string real_text;
  while (pos < size && !seen_eof) {
    size_t tag_pos = pos;
    int code;
    if (doc_.r12_binary_codes_) {
      code = data[pos++];
      if (code == 255) {
        if (pos + 2 > size) return truncated(tag_pos);
        code = data[pos] | (data[pos + 1] << 8);
        pos += 2;
      }
    } else {
      if (pos + 2 > size) return truncated(tag_pos);
      code = static_cast<int16_t>(data[pos] | (data[pos + 1] << 8));
      pos += 2;
    }
    size_t code_start = decoded.size();
    std::string_view value;
    auto need = [&](size_t n) { return pos + n <= size; };
    auto number = [&](auto v) {
      value = std::string_view(buf, std::to_chars(buf, buf + sizeof buf, v).ptr - buf);
    };
    switch (valueKind(code)) {
      case ValueKind::kString: {
        const void* nul = std::memchr(data + pos, 0, size - pos);
        if (!nul) return truncated(tag_pos);
        size_t end = static_cast<const unsigned char*>(nul) - data;
        value = std::string_view(reinterpret_cast<const char*>(data + pos), end - pos);
        pos = end + 1;
        break;
      }
      case ValueKind::kDouble: {
        if (!need(8)) return truncated(tag_pos);
        double v;
        std::memcpy(&v, data + pos, 8);
        pos += 8;
        real_text = formatDouble(v);
        value = real_text;
        break;
      }
      case ValueKind::kInt16: {
        if (!need(2)) return truncated(tag_pos);
        int16_t v;
        std::memcpy(&v, data + pos, 2);
        pos += 2;
        number(v);
        break;
      }
      case ValueKind::kInt32: {
        if (!need(4)) return truncated(tag_pos);
        int32_t v;
        std::memcpy(&v, data + pos, 4);
        pos += 4;
        number(v);
        break;
      }
      case ValueKind::kInt64: {
        if (!need(8)) return truncated(tag_pos);
        int64_t v;
        std::memcpy(&v, data + pos, 8);
        pos += 8;
        number(v);
        break;
      }
      case ValueKind::kBool: {
        if (!need(1)) return truncated(tag_pos);
        number(int{data[pos++]});
        break;
      }
      case ValueKind::kBinary: {
        if (!need(1)) return truncated(tag_pos);
        size_t n = data[pos++];
        if (!need(n)) return truncated(tag_pos);
        static constexpr char kHex[] = "0123456789ABCDEF";
        for (size_t i = 0; i < n; ++i) {
          hex[2 * i] = kHex[data[pos + i] >> 4];
          hex[2 * i + 1] = kHex[data[pos + i] & 15];
        }
        value = std::string_view(hex, 2 * n);
        pos += n;
        break;
      }
    }
    addTag(code, value, static_cast<uint32_t>(tag_pos), static_cast<uint32_t>(code_start));
    encodeTag(code, value, decoded);
    if (decoded.size() > TextStore::kMaxBase) {
      return base::Status::invalid(name_ + ": the drawing is larger than 2 GiB of text");
    }
    if (code == 0) seen_eof = value == "EOF";
  }
  if (doc_.last_ == kNoRecord) return truncated(pos);
  // The sentinel belongs to no record; the writer puts it back.
  closeRecord(static_cast<uint32_t>(size), static_cast<uint32_t>(decoded.size()));
  doc_.text_.ownBase(std::move(decoded));
  if (!seen_eof) return truncated(pos);
  return base::Status::ok();
}

base::Result<Document> Document::parse(std::string bytes, const std::string& name) {
  if (bytes.size() > TextStore::kMaxBase) {
    return base::Status::invalid(name + ": the file is larger than 2 GiB; split the drawing");
  }
  Document doc;
  doc.raw_ = std::move(bytes);
  DocumentBuilder builder(doc, name);
  bool binary = doc.raw_.compare(0, kBinarySentinel.size(), kBinarySentinel) == 0;
  base::Status status = binary ? builder.readBinary() : builder.readAscii();
  if (!status) return status;
  status = doc.buildStructure(name);
  if (!status) return status;
  return doc;
}

}  // namespace dxf
