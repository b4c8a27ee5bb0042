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

std::string formatHandle(uint64_t handle) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  char buf[16];
  char* p = buf + sizeof buf;
  do {
    *--p = kHex[handle & 15];
    handle >>= 4;
  } while (handle != 0);
  return std::string(p, buf + sizeof buf);
}

}  // namespace dxf
