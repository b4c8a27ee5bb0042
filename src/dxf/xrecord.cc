#include "dxf/xrecord.h"

#include <algorithm>

#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/record_edit.h"

namespace dxf {

TypedValue TypedValue::ofText(std::wstring value) {
  TypedValue v;
  v.code = 1;
  v.type = Type::kText;
  v.text = std::move(value);
  return v;
}

TypedValue TypedValue::ofPoint(double x, double y, double z) {
  TypedValue v;
  v.code = 10;
  v.type = Type::kPoint;
  v.xyz[0] = x;
  v.xyz[1] = y;
  v.xyz[2] = z;
  return v;
}

TypedValue TypedValue::ofReal(double value) {
  TypedValue v;
  v.code = 40;
  v.type = Type::kReal;
  v.xyz[0] = value;
  return v;
}

TypedValue TypedValue::ofInteger(int32_t value) {
  TypedValue v;
  v.code = 90;
  v.type = Type::kInteger;
  v.integer = value;
  return v;
}

bool hasCloningFlag(const Document& doc) { return doc.version() >= "AC1015"; }

namespace {

// Index of the first data tag: after "100 AcDbXrecord" and the cloning flag that follows it;
// -1 when the record has no such marker.
int dataStart(const Document& doc, std::span<const Tag> tags) {
  for (size_t i = 1; i < tags.size(); ++i) {
    if (tags[i].code == 100 && doc.text(tags[i]) == "AcDbXrecord") {
      bool flag = hasCloningFlag(doc) && i + 1 < tags.size() && tags[i + 1].code == 280;
      return static_cast<int>(flag ? i + 2 : i + 1);
    }
  }
  return -1;
}

}  // namespace

std::vector<TypedValue> readXrecord(const Document& doc, RecordId id) {
  std::vector<TypedValue> out;
  readXrecord(doc, id, out);
  return out;
}

void readXrecord(const Document& doc, RecordId id, std::vector<TypedValue>& out) {
  // One pass over the record as it lies: walks read the data of every entity.
  size_t count = 0;
  auto next = [&]() -> TypedValue& {
    if (count == out.size()) out.emplace_back();
    return out[count++];
  };
  auto add = [&](const Tag& tag) {
    std::string_view text = doc.text(tag);
    TypedValue& v = next();
    v.code = tag.code;
    v.type = TypedValue::Type::kRaw;
    switch (tag.code) {
      case 1:
        v.type = TypedValue::Type::kText;
        v.text.clear();
        doc.codec().decode(text, v.text);
        break;
      case 40:
        v.type = parseDouble(text, v.xyz[0]) ? TypedValue::Type::kReal : TypedValue::Type::kRaw;
        break;
      case 90: {
        int64_t n = 0;
        v.type = parseInt(text, n) ? TypedValue::Type::kInteger : TypedValue::Type::kRaw;
        v.integer = static_cast<int32_t>(n);
        break;
      }
      default:
        break;
    }
    if (v.type == TypedValue::Type::kRaw) v.raw.assign(text);
  };
  // A point is 10, 20 and 30; a 10 without them is kept as written. Held until known.
  Tag held[2];
  int held_count = 0;
  auto release = [&] {
    for (int i = 0; i < held_count; ++i) add(held[i]);
    held_count = 0;
  };
  enum class Place { kHeader, kFlag, kData } place = Place::kHeader;
  bool first = true;
  for (const Tag& tag : doc.scan(id)) {
    if (first) {
      first = false;
      continue;
    }
    if (place == Place::kHeader) {
      if (tag.code == 100 && doc.text(tag) == "AcDbXrecord") {
        place = hasCloningFlag(doc) ? Place::kFlag : Place::kData;
      }
      continue;
    }
    if (place == Place::kFlag) {
      place = Place::kData;
      if (tag.code == 280) continue;
    }
    if (held_count == 1 && tag.code == 20) {
      held[held_count++] = tag;
      continue;
    }
    if (held_count == 2 && tag.code == 30) {
      double xyz[3];
      if (parseDouble(doc.text(held[0]), xyz[0]) && parseDouble(doc.text(held[1]), xyz[1]) &&
          parseDouble(doc.text(tag), xyz[2])) {
        TypedValue& v = next();
        v.code = held[0].code;
        v.type = TypedValue::Type::kPoint;
        std::copy(xyz, xyz + 3, v.xyz);
        held_count = 0;
        continue;
      }
      release();
      add(tag);
      continue;
    }
    release();
    if (tag.code == 10) {
      held[held_count++] = tag;
    } else {
      add(tag);
    }
  }
  release();
  out.resize(count);
}

void writeXrecord(Document& doc, RecordId id, const std::vector<TypedValue>& values) {
  RecordEdit edit(doc, id);
  std::vector<Tag>& tags = edit.tags();
  int start = dataStart(doc, tags);
  if (start < 0) {
    // Readers expect the data after the subclass marker and its cloning flag.
    tags.push_back(doc.makeTag(100, "AcDbXrecord"));
    if (hasCloningFlag(doc)) tags.push_back(doc.makeTag(280, "1"));
    start = static_cast<int>(tags.size());
  }
  tags.resize(static_cast<size_t>(start));
  appendXrecordData(doc, values, tags);
  edit.commit();
}

void appendXrecordData(Document& doc, const std::vector<TypedValue>& values,
                       std::vector<Tag>& tags) {
  forEachDataTag(doc, values, [&](int code, std::string_view value) {
    tags.push_back(doc.makeTag(code, value));
  });
}

}  // namespace dxf
