// Feeds a drawing and a list of edits to the DXF writer: what dxf_reader_fuzzer does not do.
// The input is the drawing's bytes (ASCII or binary, R12 or later), optionally followed by
// "\0EDITS" and the edits' bytes; a drawing without them gets a fixed list of edits. The
// edits create records (entities, extension dictionaries, XRECORDs with typed values, some
// of them attached to their entity as one pair), insert tags into unchanged records and
// attached ones and take them out again, take values out of entities,
// remove dictionary entries, erase XRECORDs and extension dictionaries, unlink and move
// entities and set header variables. An entity's
// layer and general properties, read where the load noted them, must then be what its tags
// say. The written drawing must read back to the same records in the same order with the
// same tags, each untouched ASCII record as its very bytes, each XRECORD written to the
// values it was given, and must write back the same.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/utf.h"
#include "dxf/dictionary.h"
#include "dxf/document.h"
#include "dxf/entity_properties.h"
#include "dxf/objects.h"
#include "dxf/xrecord.h"

namespace {

constexpr std::string_view kEditsMark{"\0EDITS", 6};

[[noreturn]] void failWith(const std::string& what) {
  std::fprintf(stderr, "dxf_writer_fuzzer: %s\n", what.c_str());
  std::abort();
}

// The edit bytes, read one at a time; zeros once they run out.
class EditBytes {
 public:
  explicit EditBytes(std::string_view bytes) : bytes_(bytes) {}
  bool done() const { return pos_ >= bytes_.size(); }
  uint8_t next() { return done() ? 0 : static_cast<uint8_t>(bytes_[pos_++]); }
  uint32_t next32() {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = v << 8 | next();
    return v;
  }
  std::string text() {
    size_t n = next() % 24;
    std::string out;
    for (size_t i = 0; i < n && !done(); ++i) out += static_cast<char>(next());
    return out;
  }
  // A value as a file holds it: one line, without the bytes that end a line or a value.
  std::string rawText() {
    std::string out = text();
    for (char& c : out) {
      if (c == '\n' || c == '\r' || c == '\0') c = ' ';
    }
    return out;
  }

 private:
  std::string_view bytes_;
  size_t pos_ = 0;
};

// The edit bytes of drawings given without any.
constexpr uint8_t kDefaultEdits[] = {0, 1, 1, 7, 2, 2, 3, 9, 4, 5, 5, 6, 1, 3, 6, 2};

// The records of `doc` in the order they are written: attached ones just before the end of
// the OBJECTS section.
std::vector<dxf::RecordId> writtenOrder(const dxf::Document& doc) {
  std::vector<dxf::RecordId> out;
  const dxf::RecordId objects_end = doc.section("OBJECTS").tail;
  for (dxf::RecordId id = doc.first(); id != dxf::kNoRecord; id = doc.next(id)) {
    if (id == objects_end) {
      for (dxf::RecordId a = dxf::kAttachedBase; a != doc.attachedEnd(); ++a) {
        if (doc.exists(a)) out.push_back(a);
      }
    }
    out.push_back(id);
  }
  return out;
}

bool isMarker(std::string_view type) {
  return type == "SECTION" || type == "ENDSEC" || type == "EOF" || type == "TABLE" ||
         type == "ENDTAB" || type == "BLOCK" || type == "ENDBLK" || type == "SEQEND";
}

struct XrecordWrite {
  dxf::Handle handle;
  std::vector<dxf::TypedValue> values;
};

class Editor {
 public:
  Editor(dxf::Document& doc, EditBytes& bytes) : doc_(doc), bytes_(bytes) {}

  void run() {
    for (int count = 0; count < 32 && !bytes_.done(); ++count) edit(bytes_.next() % 12);
  }
  const std::vector<XrecordWrite>& xrecords() const { return xrecords_; }
  // The highest handle given out to a record made here; 0 when none was.
  dxf::Handle highestHandle() const {
    dxf::Handle highest = 0;
    for (dxf::RecordId id : made_) highest = std::max(highest, doc_.record(id).handle);
    return highest;
  }

 private:
  // The linked entities of the ENTITIES section that stand alone: not a polyline's or an
  // insert's followers, nor an entity that has them.
  std::vector<dxf::RecordId> entities() const {
    std::vector<dxf::RecordId> out;
    dxf::Span span = doc_.section("ENTITIES");
    if (span.head == dxf::kNoRecord || span.tail == dxf::kNoRecord) return out;
    for (dxf::RecordId id = doc_.next(span.head); id != dxf::kNoRecord && id != span.tail;
         id = doc_.next(id)) {
      dxf::RecordId next = doc_.next(id);
      if (!isMarker(doc_.type(id)) && !isFollower(doc_.type(id)) &&
          (next == dxf::kNoRecord || !isFollower(doc_.type(next)))) {
        out.push_back(id);
      }
    }
    return out;
  }
  static bool isFollower(std::string_view type) {
    return type == "VERTEX" || type == "ATTRIB" || type == "SEQEND";
  }
  // Any linked record but the markers of the file's structure (and the EOF, whose tags
  // would take in the bytes that trail the file).
  std::vector<dxf::RecordId> records() const {
    std::vector<dxf::RecordId> out;
    for (dxf::RecordId id : writtenOrder(doc_)) {
      if (!isMarker(doc_.type(id))) out.push_back(id);
    }
    return out;
  }
  template <typename T>
  bool pick(const std::vector<T>& from, T& out) {
    if (from.empty()) return false;
    out = from[bytes_.next32() % from.size()];
    return true;
  }

  std::vector<dxf::Tag> tagsOf(dxf::RecordId id) const {
    dxf::TagList list = doc_.tags(id);
    return std::vector<dxf::Tag>(list.begin(), list.end());
  }

  dxf::Tag fuzzTag() {
    switch (bytes_.next() % 3) {
      case 0:
        return doc_.makeTag(1000, bytes_.rawText());
      case 1: {
        double v;
        uint64_t bits = uint64_t{bytes_.next32()} << 32 | bytes_.next32();
        std::memcpy(&v, &bits, sizeof v);
        return doc_.makeTag(1040, v);
      }
      default:
        return doc_.makeTag(1071, static_cast<int64_t>(static_cast<int32_t>(bytes_.next32())));
    }
  }

  void edit(int kind) {
    dxf::RecordId id = dxf::kNoRecord;
    editOne(kind, id);
    // An XRECORD edited after it was written holds other values now.
    if (id != dxf::kNoRecord && (kind <= 2 || kind == 8)) {
      std::erase_if(xrecords_,
                    [&](const XrecordWrite& w) { return w.handle == doc_.record(id).handle; });
    }
  }

  void editOne(int kind, dxf::RecordId& id) {
    switch (kind) {
      case 0:
      case 1: {  // tags inserted into a record at one place, often an unchanged one
        if (!pick(records(), id)) return;
        size_t count = doc_.tags(id).size();
        if (count == 0) return;
        size_t at = 1 + bytes_.next() % count;
        std::vector<dxf::Tag> added = {doc_.makeTag(1001, "FUZZ"), fuzzTag()};
        doc_.insertTags(id, at, added);
        return;
      }
      case 2: {  // inserted and taken out again: the record is its old self
        if (!pick(records(), id)) return;
        std::vector<dxf::Tag> before = tagsOf(id);
        if (before.empty()) return;
        std::vector<dxf::Tag> added = {doc_.makeTag(1001, "FUZZ")};
        doc_.insertTags(id, before.size(), added);
        doc_.setTags(id, before);
        return;
      }
      case 3: {  // an entity created before another
        if (!pick(entities(), id)) return;
        std::vector<dxf::Tag> tags = {doc_.makeTag(0, "LINE")};
        if (!doc_.isR12()) {
          tags.push_back(doc_.makeTag(5, handleText(doc_.allocateHandle())));
          tags.push_back(doc_.makeTag(100, "AcDbEntity"));
        }
        tags.push_back(doc_.makeTag(8, "0"));
        if (!doc_.isR12()) tags.push_back(doc_.makeTag(100, "AcDbLine"));
        for (int code : {10, 20, 30, 11, 21, 31}) {
          tags.push_back(doc_.makeTag(code, static_cast<double>(bytes_.next32()) / 7.0));
        }
        dxf::RecordId made = doc_.newRecord(tags);
        if (!doc_.isR12()) {
          doc_.indexHandle(made, std::stoull(std::string(doc_.value(made, 5)), nullptr, 16));
        }
        doc_.insertBefore(id, made);
        made_.push_back(made);
        return;
      }
      case 4:  // an entity unlinked
        if (!pick(entities(), id)) return;
        if (doc_.record(id).xdict != 0) return;  // its dictionary would be left dangling
        doc_.unlink(id);
        return;
      case 5: {  // an entity moved before another
        dxf::RecordId to;
        if (!pick(entities(), id) || !pick(entities(), to) || id == to) return;
        doc_.moveBefore(to, id);
        return;
      }
      case 6: {  // an XRECORD with typed values in an entity's extension dictionary
        if (doc_.isR12() || !pick(entities(), id)) return;
        if (doc_.record(id).handle == 0) return;
        std::wstring key = L"FUZZ" + std::to_wstring(bytes_.next());
        std::vector<dxf::TypedValue> values;
        for (int n = bytes_.next() % 6; n > 0; --n) values.push_back(typedValue());
        base::Result<dxf::RecordId> xrecord = dxf::kNoRecord;
        if (bytes_.next() % 2 == 0 && doc_.record(id).xdict == 0) {
          xrecord = dxf::attachXrecord(doc_, id, key, values);
          if (!xrecord.isOk()) return;
        } else {
          auto xdict = dxf::ensureExtensionDictionary(doc_, id);
          if (!xdict.isOk()) return;
          xrecord = dxf::createXrecord(doc_, *xdict, key);
          if (!xrecord.isOk()) return;
          dxf::writeXrecord(doc_, *xrecord, values);
        }
        made_.push_back(*xrecord);
        // No text of a drawing holds a NUL: it is left out when written.
        for (dxf::TypedValue& v : values) std::erase(v.text, L'\0');
        xrecords_.push_back({doc_.record(*xrecord).handle, std::move(values)});
        return;
      }
      case 7: {  // a header variable set
        if (doc_.header() == dxf::kNoRecord) return;
        std::vector<dxf::Tag> value = {doc_.makeTag(70, static_cast<int64_t>(bytes_.next() % 25))};
        doc_.setHeaderVariable(bytes_.next() % 2 ? "$INSUNITS" : "$FUZZVAR", value);
        return;
      }
      case 8: {  // a record's tags set anew, with its values rewritten as numbers
        if (!pick(records(), id)) return;
        std::vector<dxf::Tag> tags = tagsOf(id);
        for (dxf::Tag& tag : tags) {
          if (tag.code >= 40 && tag.code < 60) {
            tag = doc_.makeTag(tag.code, doc_.realValue(id, tag.code, 0.0));
          }
        }
        doc_.setTags(id, tags);
        return;
      }
      case 9: {  // a run of an entity's values taken out: geometry, never its structure
        if (!pick(entities(), id)) return;
        std::vector<dxf::Tag> tags = tagsOf(id);
        size_t at = 1 + bytes_.next() % std::max<size_t>(tags.size(), 1);
        size_t count = 0;
        while (at + count < tags.size() && count < 3 && tags[at + count].code >= 10 &&
               tags[at + count].code < 100) {
          ++count;
        }
        doc_.eraseTags(id, at, count);
        return;
      }
      case 10: {  // an XRECORD, or an entity's extension dictionary, erased
        if (!pick(records(), id)) return;
        if (doc_.type(id) != "XRECORD") {
          id = doc_.byHandle(doc_.record(id).xdict);
          if (id == dxf::kNoRecord) return;
        }
        dxf::eraseObject(doc_, id);
        if (doc_.exists(id)) failWith("an object erased is still there");
        return;
      }
      default:  // a dictionary entry removed
        if (!pick(records(), id) || doc_.type(id) != "DICTIONARY") return;
        if (auto entries = dxf::dictionaryEntries(doc_, id); !entries.empty()) {
          dxf::dictionaryRemove(doc_, id, entries[bytes_.next() % entries.size()].key);
        }
        return;
    }
  }

  dxf::TypedValue typedValue() {
    switch (bytes_.next() % 4) {
      case 0: {
        std::wstring text;
        base::utf8ToWide(bytes_.text(), text);
        return dxf::TypedValue::ofText(text);
      }
      case 1:
        return dxf::TypedValue::ofReal(static_cast<int32_t>(bytes_.next32()) / 1024.0);
      case 2:
        return dxf::TypedValue::ofPoint(bytes_.next(), -static_cast<double>(bytes_.next32()),
                                        bytes_.next32() / 3.0);
      default:
        return dxf::TypedValue::ofInteger(static_cast<int32_t>(bytes_.next32()));
    }
  }

  static std::string handleText(dxf::Handle handle) {
    char buffer[24];
    std::snprintf(buffer, sizeof buffer, "%llX", static_cast<unsigned long long>(handle));
    return buffer;
  }

  dxf::Document& doc_;
  EditBytes& bytes_;
  std::vector<XrecordWrite> xrecords_;
  std::vector<dxf::RecordId> made_;
};

using TagTexts = std::vector<std::pair<int, std::string>>;

// The tags of `id` as texts; the value of $HANDSEED, which the writer keeps above the handles
// given out (as a handle, code 5), is checked apart (checkHandseed).
TagTexts textsOf(const dxf::Document& doc, dxf::RecordId id) {
  TagTexts out;
  bool seed = false;
  for (const dxf::Tag& tag : doc.scan(id)) {
    out.emplace_back(seed ? 5 : tag.code, seed ? "(seed)" : std::string(doc.text(tag)));
    seed = tag.code == 9 && doc.text(tag) == "$HANDSEED";
  }
  return out;
}

// Every handle given out while editing lies below the written $HANDSEED, when the header has
// one (without it, readers take the highest handle).
// The layer and general properties each record gives without a scan, against a read of all
// its tags: edits keep where the layer lies, and what follows it, in step with the tags.
void checkGeneralProperties(const dxf::Document& doc) {
  auto same = [](const dxf::PropValue& a, const dxf::PropValue& b) {
    const auto* x = std::get_if<double>(&a);
    const auto* y = std::get_if<double>(&b);
    return a == b || (x && y && std::isnan(*x) && std::isnan(*y));
  };
  for (dxf::RecordId id = doc.first(); id != dxf::kNoRecord; id = doc.next(id)) {
    std::optional<dxf::TagList> all;
    for (dxf::Prop prop : {dxf::Prop::kLayer, dxf::Prop::kColor, dxf::Prop::kLinetype,
                           dxf::Prop::kLinetypeScale, dxf::Prop::kLineweight}) {
      std::optional<dxf::PropValue> general = dxf::getGeneralProperty(doc, id, prop);
      if (!general) continue;
      if (!all) all.emplace(doc.scan(id));
      if (!same(*general, dxf::getProperty(doc, id, std::span<const dxf::Tag>(*all), prop))) {
        failWith("property " + std::to_string(static_cast<int>(prop)) + " of " +
                 std::string(doc.type(id)) + " read without a scan differs from its tags");
      }
    }
  }
}

void checkHandseed(const dxf::Document& again, dxf::Handle highest) {
  std::vector<dxf::Tag> seed = again.headerVariable("$HANDSEED");
  if (highest == 0 || seed.empty()) return;
  dxf::Handle written = std::strtoull(std::string(again.text(seed.front())).c_str(), nullptr, 16);
  if (written <= highest) {
    failWith("$HANDSEED " + std::to_string(written) + " is written not above handle " +
             std::to_string(highest) + ", given out before");
  }
}

// The edited drawing `doc` (read from `original`) and `again`, read from its write `written`,
// hold the same records in the same order; untouched ASCII records keep their bytes.
void checkSame(const dxf::Document& doc, const std::string& original, const dxf::Document& again,
               const std::string& written) {
  const std::vector<dxf::RecordId> order = writtenOrder(doc);
  auto at = order.begin();
  dxf::RecordId a = order.empty() ? dxf::kNoRecord : *at, b = again.first();
  for (size_t index = 0; a != dxf::kNoRecord || b != dxf::kNoRecord; ++index) {
    if (a == dxf::kNoRecord || b == dxf::kNoRecord) {
      failWith("the written drawing has another number of records (from record " +
               std::to_string(index) + ")");
    }
    if (TagTexts was = textsOf(doc, a), is = textsOf(again, b); was != is) {
      size_t at = 0;
      while (at < was.size() && at < is.size() && was[at] == is[at]) ++at;
      auto show = [&](const TagTexts& t) {
        return at < t.size() ? std::to_string(t[at].first) + " \"" + t[at].second + "\""
                             : std::string("nothing");
      };
      failWith("record " + std::to_string(index) + " (" + std::string(doc.type(a)) +
               ") reads back otherwise: its tag " + std::to_string(at) + " was " + show(was) +
               ", is " + show(is));
    }
    const dxf::Record r = doc.record(a);
    // The header's $HANDSEED is raised as it is written when handles were given out.
    if (doc.format() == dxf::Format::kAscii && !r.changed && !r.spliced && r.size != 0 &&
        doc.type(a) != "EOF" && a != doc.header()) {
      const dxf::Record w = again.record(b);
      if (std::string_view(original).substr(r.pos, r.size) !=
          std::string_view(written).substr(w.pos, w.size)) {
        failWith("untouched record " + std::to_string(index) + " (" + std::string(doc.type(a)) +
                 ") is written with other bytes");
      }
    }
    a = ++at == order.end() ? dxf::kNoRecord : *at;
    b = again.next(b);
  }
}

// Whether `values` hold a text that reads as an escape ("\\U+0041" is "A"): a text written
// with one cannot read back as it was, in any program, since DXF has no escape for it.
bool holdsEscape(const std::vector<dxf::TypedValue>& values) {
  for (const dxf::TypedValue& v : values) {
    if (v.text.find(L"\\U+") != std::wstring::npos || v.text.find(L"\\M+") != std::wstring::npos) {
      return true;
    }
  }
  return false;
}

void checkXrecords(const dxf::Document& again, const std::vector<XrecordWrite>& writes) {
  for (const XrecordWrite& write : writes) {
    dxf::RecordId id = again.byHandle(write.handle);
    if (id == dxf::kNoRecord || holdsEscape(write.values)) continue;
    std::vector<dxf::TypedValue> read = dxf::readXrecord(again, id);
    if (read != write.values) {
      size_t at = 0;
      while (at < read.size() && at < write.values.size() && read[at] == write.values[at]) ++at;
      auto show = [&](const std::vector<dxf::TypedValue>& values) {
        if (at >= values.size()) return std::string("nothing");
        const dxf::TypedValue& v = values[at];
        char numbers[128];
        std::snprintf(numbers, sizeof numbers, "%d %d (%.17g %.17g %.17g) %d ", v.code,
                      static_cast<int>(v.type), v.xyz[0], v.xyz[1], v.xyz[2], v.integer);
        return numbers + base::toUtf8(v.text) + "|" + v.raw;
      };
      failWith("an XRECORD reads back other values than were written: value " + std::to_string(at) +
               " was " + show(write.values) + ", is " + show(read));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view input(reinterpret_cast<const char*>(data), size);
  std::string_view edits(reinterpret_cast<const char*>(kDefaultEdits), sizeof kDefaultEdits);
  if (size_t mark = input.rfind(kEditsMark); mark != std::string_view::npos) {
    edits = input.substr(mark + kEditsMark.size());
    input = input.substr(0, mark);
  }
  const std::string original(input);
  auto doc = dxf::Document::parse(original, "fuzz");
  if (!doc.isOk()) return 0;

  EditBytes bytes(edits);
  Editor editor(*doc, bytes);
  editor.run();
  checkGeneralProperties(*doc);

  const std::string written = doc->serialize();
  // TAXOR_FUZZ_WRITTEN=PATH keeps the written drawing, to follow a reproducer.
  if (static const char* keep = std::getenv("TAXOR_FUZZ_WRITTEN"); keep != nullptr) {
    if (FILE* f = std::fopen(keep, "wb")) {
      std::fwrite(written.data(), 1, written.size(), f);
      std::fclose(f);
    }
  }
  // An R12 binary file tells its one-byte codes by the first record's type following the
  // first code; with that record erased, an empty type can come first, and the file then
  // starts as one with two-byte codes does: no reader can tell them apart.
  constexpr size_t kFirstCode = 22;
  if (doc->format() == dxf::Format::kBinary && original[kFirstCode + 1] != 0 &&
      written.size() > kFirstCode + 1 && written[kFirstCode + 1] == 0) {
    return 0;
  }
  auto again = dxf::Document::parse(written, "fuzz-written");
  if (!again.isOk()) {
    failWith("the edited drawing written does not parse: " + again.status().message());
  }
  checkSame(*doc, original, *again, written);
  checkXrecords(*again, editor.xrecords());
  checkHandseed(*again, editor.highestHandle());
  if (again->serialize() != written) failWith("the written drawing writes back otherwise");
  return 0;
}
