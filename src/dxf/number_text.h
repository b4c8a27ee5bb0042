// Number formatting for values the system writes into a drawing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace dxf {

// The shortest text that reads back as exactly `value`, always with a decimal point or an
// exponent so that readers see a real ("100.0", "0.1", "1e+20").
std::string formatDouble(double value);

std::string formatInt(int64_t value);

}  // namespace dxf

namespace dxf {
// A handle as DXF writes it: upper-case hexadecimal without leading zeros.
std::string formatHandle(uint64_t handle);
// The same text kept inline, for handles written by the million.
class HandleText {
 public:
  explicit HandleText(uint64_t handle);
  std::string_view view() const { return {digits_ + begin_, sizeof digits_ - begin_}; }

 private:
  char digits_[16];
  uint8_t begin_;
};
// Reads a handle (hexadecimal, blanks around allowed); 0, which names nothing, when the
// text is not one.
uint64_t parseHandle(std::string_view text);
}  // namespace dxf
