// What kind of value a DXF group code carries, from a table built once.
#pragma once

#include <cstdint>
#include <string_view>

namespace dxf {

enum class ValueKind : uint8_t {
  kString,  // text in the drawing's encoding; also handles (hex text)
  kDouble,
  kInt16,
  kInt32,
  kInt64,
  kBool,    // one byte in binary DXF, an integer in ASCII
  kBinary,  // hex text in ASCII, length-prefixed bytes in binary DXF
};

constexpr int kMaxGroupCode = 1071;

// Returns the kind for `code`; codes outside 0..kMaxGroupCode and unassigned ones are kString.
ValueKind valueKind(int code);

inline bool isNumeric(ValueKind kind) {
  return kind != ValueKind::kString && kind != ValueKind::kBinary;
}

// Returns true iff `text` is a number acceptable for `kind`. Leading and trailing blanks are
// allowed, as is a real where an integer is expected, since some writers store integer codes
// as reals.
bool isValidNumber(ValueKind kind, std::string_view text);

// Parses a number written by any DXF writer; returns false when it is not one.
bool parseDouble(std::string_view text, double& out);
bool parseInt(std::string_view text, int64_t& out);

}  // namespace dxf
