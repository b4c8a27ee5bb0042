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
  // Empty for kUnknown; the alternative follows the kind (kPoint2 a Point2, kPoint3 a Point3).
  std::variant<std::monostate, int32_t, int16_t, double, host::Point3, std::wstring, host::Point2>
      value;

  bool operator==(const SysVarSetting&) const = default;
};

// The kind of a variable whose current value is `current`: the host reports each variable
// with its own result type, so a Point2 gives kPoint2 and a Point3 kPoint3.
SettingKind settingKindOf(const host::SysVar& current);

// The setting of variable `name` of kind `kind` to the text `value`: integers and reals read
// as _wtoi and _wtof do; a point is cut at commas, each part trimmed, empty parts dropped,
// and must give exactly two (kPoint2) or three (kPoint3) numbers, else nothing is returned.
// kUnknown keeps no value.
std::optional<SysVarSetting> makeSetting(std::wstring_view name, SettingKind kind,
                                         std::wstring_view value);

// The value to give the host for `setting`, of the type the host reported for it (a Point2
// for kPoint2); nothing for kUnknown.
std::optional<host::SysVar> toSysVar(const SysVarSetting& setting);

}  // namespace catalogue
