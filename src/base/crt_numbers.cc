#include "base/crt_numbers.h"

#include <climits>
#include <cwchar>
#include <cwctype>
#include <string>

namespace base {

int wtoi(std::wstring_view text) {
  size_t i = 0;
  while (i < text.size() && std::iswspace(text[i])) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == L'+' || text[i] == L'-')) negative = text[i++] == L'-';
  long long value = 0;
  for (; i < text.size() && text[i] >= L'0' && text[i] <= L'9'; ++i) {
    value = value * 10 + (text[i] - L'0');
    if (value > static_cast<long long>(INT_MAX) + 1) break;
  }
  if (negative) value = -value;
  if (value > INT_MAX) return INT_MAX;
  if (value < INT_MIN) return INT_MIN;
  return static_cast<int>(value);
}

double wtof(std::wstring_view text) {
  std::wstring copy(text);
  return std::wcstod(copy.c_str(), nullptr);
}

}  // namespace base
