// Variables in default and allowed values of fields ("$(obj_name)", "$(file_name)",
// "$(day)"...), replaced when a value is needed.
#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <string_view>

#include "host/host.h"

namespace objdata {

// What the variables stand for besides the class: gathered once per command run.
struct TemplateEnvironment {
  std::wstring file_name;      // of the drawing, as the host reports it
  std::wstring computer_name;  // "unknown" when the system reports none
  std::wstring user_name;      // likewise
  // Local time now; read anew for each date or time variable.
  std::function<std::tm()> clock;
};

// The environment of `host`'s current drawing, with the system clock.
TemplateEnvironment templateEnvironment(host::Host& host);

// Replaces every variable in `text`. Each pass replaces all occurrences of each variable
// found, in a fixed order; passes repeat until one replaces nothing, so a replacement that
// holds a variable is expanded too. Names are case-sensitive: "$(OBJ_NAME)" stays.
std::wstring expandTemplates(std::wstring text, std::wstring_view class_name,
                             const TemplateEnvironment& environment);

}  // namespace objdata
