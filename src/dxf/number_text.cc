#include "dxf/number_text.h"

#include <charconv>

namespace dxf {

std::string formatDouble(double value) {
  char buf[40];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, value);
  std::string out(buf, end);
  if (out.find_first_of(".eEna") == std::string::npos) out += ".0";
  return out;
}

std::string formatInt(int64_t value) {
  char buf[24];
  return std::string(buf, std::to_chars(buf, buf + sizeof buf, value).ptr);
}

}  // namespace dxf

namespace dxf {

HandleText::HandleText(uint64_t handle) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  char* p = digits_ + sizeof digits_;
  do {
    *--p = kHex[handle & 15];
    handle >>= 4;
  } while (handle != 0);
  begin_ = static_cast<uint8_t>(p - digits_);
}

std::string formatHandle(uint64_t handle) { return std::string(HandleText(handle).view()); }

}  // namespace dxf

namespace dxf {

uint64_t parseHandle(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  if (text.empty() || text.size() > 16) return 0;
  uint64_t handle = 0;
  auto [ptr, ec] = std::from_chars(text.data(), text.data() + text.size(), handle, 16);
  return ec == std::errc() && ptr == text.data() + text.size() ? handle : 0;
}

}  // namespace dxf
