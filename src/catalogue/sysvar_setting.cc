#include "catalogue/sysvar_setting.h"

#include <vector>

#include "base/crt_numbers.h"

namespace catalogue {

namespace {

std::vector<std::wstring_view> pointParts(std::wstring_view text) {
  std::vector<std::wstring_view> parts;
  size_t start = 0;
  while (start <= text.size()) {
    size_t comma = text.find(L',', start);
    if (comma == std::wstring_view::npos) comma = text.size();
    std::wstring_view part = text.substr(start, comma - start);
    size_t first = part.find_first_not_of(L" \t");
    if (first != std::wstring_view::npos) {
      size_t last = part.find_last_not_of(L" \t");
      parts.push_back(part.substr(first, last - first + 1));
    }
    start = comma + 1;
  }
  return parts;
}

}  // namespace

SettingKind settingKindOf(const host::SysVar& current) {
  struct Visitor {
    SettingKind operator()(int16_t) const { return SettingKind::kShort; }
    SettingKind operator()(int32_t) const { return SettingKind::kLong; }
    SettingKind operator()(double) const { return SettingKind::kReal; }
    SettingKind operator()(const std::wstring&) const { return SettingKind::kText; }
    SettingKind operator()(const host::Point3&) const { return SettingKind::kPoint3; }
    SettingKind operator()(const host::Point2&) const { return SettingKind::kPoint2; }
  };
  return std::visit(Visitor{}, current.value);
}

std::optional<SysVarSetting> makeSetting(std::wstring_view name, SettingKind kind,
                                         std::wstring_view value) {
  SysVarSetting setting{std::wstring(name), kind, {}};
  switch (kind) {
    case SettingKind::kLong:
      setting.value = int32_t{base::wtoi(value)};
      break;
    case SettingKind::kShort:
      setting.value = static_cast<int16_t>(base::wtoi(value));
      break;
    case SettingKind::kReal:
      setting.value = base::wtof(value);
      break;
    case SettingKind::kText:
      setting.value = std::wstring(value);
      break;
    case SettingKind::kPoint2:
    case SettingKind::kPoint3: {
      std::vector<std::wstring_view> parts = pointParts(value);
      bool flat = kind == SettingKind::kPoint2;
      if (parts.size() != (flat ? 2u : 3u)) return std::nullopt;
      double x = base::wtof(parts[0]), y = base::wtof(parts[1]);
      if (flat) {
        setting.value = host::Point2{x, y};
      } else {
        setting.value = host::Point3{x, y, base::wtof(parts[2])};
      }
      break;
    }
    case SettingKind::kUnknown:
      break;
  }
  return setting;
}

std::optional<host::SysVar> toSysVar(const SysVarSetting& setting) {
  struct Visitor {
    std::optional<host::SysVar> operator()(std::monostate) const { return std::nullopt; }
    std::optional<host::SysVar> operator()(int32_t v) const { return host::SysVar{v}; }
    std::optional<host::SysVar> operator()(int16_t v) const { return host::SysVar{v}; }
    std::optional<host::SysVar> operator()(double v) const { return host::SysVar{v}; }
    std::optional<host::SysVar> operator()(const host::Point3& v) const { return host::SysVar{v}; }
    std::optional<host::SysVar> operator()(const host::Point2& v) const { return host::SysVar{v}; }
    std::optional<host::SysVar> operator()(const std::wstring& v) const { return host::SysVar{v}; }
  };
  return std::visit(Visitor{}, setting.value);
}

}  // namespace catalogue
