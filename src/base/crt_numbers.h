// Number reading as the C runtime's _wtoi and _wtof do it: leading blanks skipped, the
// longest numeric prefix taken, 0 when there is none. Command answers and class files
// are read this way.
#pragma once

#include <string_view>

namespace base {

// Out-of-range values give INT_MAX or INT_MIN.
int wtoi(std::wstring_view text);
double wtof(std::wstring_view text);

}  // namespace base
