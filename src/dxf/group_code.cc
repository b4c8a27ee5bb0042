#include "dxf/group_code.h"

#include <array>
#include <charconv>
#include <cmath>

namespace dxf {

namespace {

struct KindTable {
  std::array<ValueKind, kMaxGroupCode + 1> kinds{};

  KindTable() {
    kinds.fill(ValueKind::kString);
    auto set = [this](int first, int last, ValueKind kind) {
      for (int code = first; code <= last; ++code) kinds[code] = kind;
    };
    set(10, 59, ValueKind::kDouble);
    set(60, 79, ValueKind::kInt16);
    set(90, 99, ValueKind::kInt32);
    set(110, 149, ValueKind::kDouble);
    set(160, 169, ValueKind::kInt64);
    set(170, 179, ValueKind::kInt16);
    set(210, 239, ValueKind::kDouble);
    set(270, 289, ValueKind::kInt16);
    set(290, 299, ValueKind::kBool);
    set(310, 319, ValueKind::kBinary);
    set(370, 389, ValueKind::kInt16);
    set(400, 409, ValueKind::kInt16);
    set(420, 429, ValueKind::kInt32);
    set(440, 459, ValueKind::kInt32);
    set(460, 469, ValueKind::kDouble);
    set(1004, 1004, ValueKind::kBinary);
    set(1010, 1059, ValueKind::kDouble);
    set(1060, 1070, ValueKind::kInt16);
    set(1071, 1071, ValueKind::kInt32);
  }
};

const KindTable kTable;

std::string_view trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
    text.remove_suffix(1);
  }
  return text;
}

}  // namespace

ValueKind valueKind(int code) {
  if (code < 0 || code > kMaxGroupCode) return ValueKind::kString;
  return kTable.kinds[code];
}

bool parseDouble(std::string_view text, double& out) {
  text = trim(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return false;
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, out);
  if (ptr != end) return false;
  // Out-of-range reals are still numbers; the writer meant a huge value.
  return ec == std::errc() || ec == std::errc::result_out_of_range;
}

bool parseInt(std::string_view text, int64_t& out) {
  text = trim(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return false;
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, out);
  if (ec == std::errc() && ptr == end) return true;
  double real = 0;
  // A real beyond the 64-bit range is not an integer any writer meant.
  if (!parseDouble(text, real) || !(real > -9.2e18 && real < 9.2e18)) return false;
  out = static_cast<int64_t>(real);
  return true;
}

namespace {

// Whether `text` is a plain decimal: [-]digits[.digits][(e|E)[+|-]digits], with a digit
// before the exponent. Such a text always reads as a double; other texts need the parse.
bool isPlainDecimal(std::string_view text) {
  const char* p = text.data();
  const char* end = p + text.size();
  auto digits = [&] {
    const char* start = p;
    while (p < end && *p >= '0' && *p <= '9') ++p;
    return p > start;
  };
  if (p < end && *p == '-') ++p;
  bool mantissa = digits();
  if (p < end && *p == '.') {
    ++p;
    mantissa |= digits();
  }
  if (!mantissa) return false;
  if (p < end && (*p == 'e' || *p == 'E')) {
    ++p;
    if (p < end && (*p == '+' || *p == '-')) ++p;
    if (!digits()) return false;
  }
  return p == end;
}

}  // namespace

bool isValidNumber(ValueKind kind, std::string_view text) {
  if (kind == ValueKind::kDouble) {
    // The load checks every real of the file: most are plain and need no conversion.
    std::string_view trimmed = trim(text);
    if (!trimmed.empty() && trimmed.front() == '+') trimmed.remove_prefix(1);
    if (isPlainDecimal(trimmed)) return true;
    double unused;
    return parseDouble(text, unused);
  }
  int64_t unused;
  return parseInt(text, unused);
}

}  // namespace dxf
