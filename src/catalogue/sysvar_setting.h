// System-variable settings of the class file (`variable` lines): global ones applied once
// when a file loads, and a class's own applied when it is drawn.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "host/types.h"

namespace catalogue {

// Numbered as the class-file format has them; the comments give the host's result type.
enum class SettingKind : uint32_t {
  kUnknown = 0,  // no value
  kLong = 1,     // RTLONG
  kPoint2 = 2,   // RTPOINT
  kPoint3 = 3,   // RT3DPOINT
  kReal = 4,     // RTREAL
  kShort = 5,    // RTSHORT
  kText = 6,     // RTSTR
};

struct SysVarSetting {
  std::wstring name;
  SettingKind kind = SettingKind::kUnknown;
  // Empty for kUnknown; a Point3 with z = 0 for kPoint2.
  std::variant<std::monostate, int32_t, int16_t, double, host::Point3, std::wstring> value;

  bool operator==(const SysVarSetting&) const = default;
};

// The kind of a variable whose current value is `current`. The host reports two-dimensional
// points as three-dimensional ones, so kPoint2 comes only from makeSetting's callers.
SettingKind settingKindOf(const host::SysVar& current);

// The setting of variable `name` of kind `kind` to the text `value`: integers and reals read
// as _wtoi and _wtof do; a point is cut at commas, each part trimmed, empty parts dropped,
// and must give exactly two (kPoint2) or three (kPoint3) numbers, else nothing is returned.
// kUnknown keeps no value.
std::optional<SysVarSetting> makeSetting(std::wstring_view name, SettingKind kind,
                                         std::wstring_view value);

// The value to give the host for `setting`; nothing for kUnknown.
std::optional<host::SysVar> toSysVar(const SysVarSetting& setting);

}  // namespace catalogue
