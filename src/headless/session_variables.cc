#include "headless/session_variables.h"

#include <algorithm>
#include <array>
#include <string>

namespace headless {

namespace {

using Type = SessionVariable::Type;

// Sorted by name. Some were header variables of old DXF versions (ATTDIA, ATTREQ and OSMODE
// in R12): a drawing whose header holds one is read there first.
constexpr std::array kVariables = {
    SessionVariable{"APERTURE", Type::kShort, 10},
    SessionVariable{"ATTDIA", Type::kShort, 0},
    SessionVariable{"ATTREQ", Type::kShort, 1},
    SessionVariable{"AUTOSNAP", Type::kShort, 63},
    SessionVariable{"CMDDIA", Type::kShort, 1},
    SessionVariable{"CMDECHO", Type::kShort, 1},
    SessionVariable{"CURSORSIZE", Type::kShort, 5},
    SessionVariable{"DYNMODE", Type::kShort, 3},
    SessionVariable{"EXPERT", Type::kShort, 0},
    SessionVariable{"FILEDIA", Type::kShort, 1},
    SessionVariable{"GRIPS", Type::kShort, 2},
    SessionVariable{"GRIPSIZE", Type::kShort, 5},
    SessionVariable{"HIGHLIGHT", Type::kShort, 1},
    SessionVariable{"HPANG", Type::kReal, 0},
    SessionVariable{"HPASSOC", Type::kShort, 1},
    SessionVariable{"HPNAME", Type::kText, 0, 0, L"ANSI31"},
    SessionVariable{"HPSCALE", Type::kReal, 1},
    SessionVariable{"MENUECHO", Type::kShort, 0},
    SessionVariable{"NOMUTT", Type::kShort, 0},
    SessionVariable{"OSMODE", Type::kShort, 4133},
    SessionVariable{"OSNAPCOORD", Type::kShort, 2},
    SessionVariable{"PEDITACCEPT", Type::kShort, 0},
    SessionVariable{"PICKADD", Type::kShort, 2},
    SessionVariable{"PICKBOX", Type::kShort, 3},
    SessionVariable{"PICKFIRST", Type::kShort, 1},
    SessionVariable{"PICKSTYLE", Type::kShort, 1},
    SessionVariable{"PLINETYPE", Type::kShort, 2},
    SessionVariable{"SAVETIME", Type::kShort, 10},
    SessionVariable{"SELECTIONPREVIEW", Type::kShort, 3},
    SessionVariable{"SNAPANG", Type::kReal, 0},
    SessionVariable{"SNAPBASE", Type::kPoint2, 0, 0},
    SessionVariable{"SNAPMODE", Type::kShort, 0},
    SessionVariable{"TEXTEVAL", Type::kShort, 0},
    SessionVariable{"TRIMMODE", Type::kShort, 1},
    SessionVariable{"ZOOMFACTOR", Type::kShort, 60},
};

static_assert(std::is_sorted(kVariables.begin(), kVariables.end(),
                             [](const SessionVariable& a, const SessionVariable& b) {
                               return a.name < b.name;
                             }),
              "kVariables must be sorted by name");

}  // namespace

host::SysVar SessionVariable::initial() const {
  switch (type) {
    case Type::kShort:
      return host::SysVar{static_cast<int16_t>(number)};
    case Type::kReal:
      return host::SysVar{number};
    case Type::kText:
      return host::SysVar{std::wstring(text)};
    case Type::kPoint2:
      return host::SysVar{host::Point2{number, y}};
  }
  return host::SysVar{};
}

const SessionVariable* findSessionVariable(std::string_view upper_name) {
  auto it = std::lower_bound(
      kVariables.begin(), kVariables.end(), upper_name,
      [](const SessionVariable& v, std::string_view name) { return v.name < name; });
  return it != kVariables.end() && it->name == upper_name ? &*it : nullptr;
}

}  // namespace headless
