// The data of an XRECORD as an ordered chain of typed values.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dxf/document.h"
#include "dxf/number_text.h"

namespace dxf {

// One value of the chain. Codes 1 (text), 10 (point), 40 (real) and 90 (integer) are typed;
// every other code is kept as the text it was written with, so it survives a rewrite.
struct TypedValue {
  enum class Type : uint8_t { kText, kPoint, kReal, kInteger, kRaw };

  int16_t code = 0;
  Type type = Type::kRaw;
  std::wstring text;          // kText
  double xyz[3] = {0, 0, 0};  // kPoint; kReal uses xyz[0]
  int32_t integer = 0;        // kInteger
  std::string raw;            // kRaw: the value as written in the file

  static TypedValue ofText(std::wstring value);
  static TypedValue ofPoint(double x, double y, double z);
  static TypedValue ofReal(double value);
  static TypedValue ofInteger(int32_t value);
  bool operator==(const TypedValue&) const = default;
};

// The data of the XRECORD `id` (the tags after its cloning flag).
std::vector<TypedValue> readXrecord(const Document& doc, RecordId id);
// The same into `out`, reusing its values' storage: for walks over many XRECORDs.
void readXrecord(const Document& doc, RecordId id, std::vector<TypedValue>& out);
// Replaces the data of the XRECORD `id`; the record's header tags are kept.
void writeXrecord(Document& doc, RecordId id, const std::vector<TypedValue>& values);
// Whether XRECORDs carry the cloning flag (280) after their subclass marker: it came with
// R2000, and earlier readers would take it for data.
bool hasCloningFlag(const Document& doc);
// Appends to `tags` the tags that hold `values` as an XRECORD's data.
void appendXrecordData(Document& doc, const std::vector<TypedValue>& values,
                       std::vector<Tag>& tags);
// Calls add(code, value text) for each of those tags in turn.
template <typename Add>
void forEachDataTag(const Document& doc, const std::vector<TypedValue>& values, Add&& add) {
  for (const TypedValue& v : values) {
    switch (v.type) {
      case TypedValue::Type::kText:
        add(v.code, doc.codec().encode(v.text));
        break;
      case TypedValue::Type::kPoint:
        add(v.code, formatDouble(v.xyz[0]));
        add(v.code + 10, formatDouble(v.xyz[1]));
        add(v.code + 20, formatDouble(v.xyz[2]));
        break;
      case TypedValue::Type::kReal:
        add(v.code, formatDouble(v.xyz[0]));
        break;
      case TypedValue::Type::kInteger:
        add(v.code, formatInt(v.integer));
        break;
      case TypedValue::Type::kRaw:
        add(v.code, v.raw);
        break;
    }
  }
}

}  // namespace dxf
