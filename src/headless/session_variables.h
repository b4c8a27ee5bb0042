// The ordinary system variables of a CAD session that a DXF header does not keep (PICKBOX,
// FILEDIA...), with their result types and the initial values a fresh session of a current
// release gives them. Left out: read-only variables that describe the session or the file
// (LOGINNAME, DWGNAME, DWGPREFIX), and variables whose initial value depends on the template
// or the units (GRIDUNIT, SNAPUNIT).
#pragma once

#include <string_view>

#include "host/types.h"

namespace headless {

struct SessionVariable {
  enum class Type { kShort, kReal, kText, kPoint2 };

  std::string_view name;  // upper case
  Type type;
  double number = 0;  // a short's or a real's value; x of a point
  double y = 0;       // y of a point
  std::wstring_view text = {};

  // The initial value, of the variable's result type.
  host::SysVar initial() const;
};

// The session variable named `upper_name` (upper case), or nullptr.
const SessionVariable* findSessionVariable(std::string_view upper_name);

}  // namespace headless
