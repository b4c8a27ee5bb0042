// The drawing's system variables: its header's, and the session's own (session_variables.h).
#include <algorithm>
#include <cctype>

#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "headless/dxf_database.h"
#include "headless/session_variables.h"

namespace headless {

using base::Result;
using base::Status;

namespace {

std::string upperName(std::string_view name) {
  std::string upper(name);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

// A header point is two-dimensional when the drawing stores no z for it ($LIMMIN: 10 and 20).
bool isFlatPoint(const std::vector<dxf::Tag>& tags) {
  return tags.size() == 2 && tags[1].code == tags[0].code + 10;
}

}  // namespace

Result<host::SysVar> DxfDatabase::getVar(std::string_view name) {
  std::string upper = upperName(name);
  std::vector<dxf::Tag> tags = drawing_.headerVariable("$" + upper);
  if (tags.empty()) {
    if (auto it = session_vars_.find(upper); it != session_vars_.end()) return it->second;
    if (const SessionVariable* variable = findSessionVariable(upper)) return variable->initial();
    return Status::notFound("unknown variable " + upper);
  }
  const dxf::Tag& first = tags.front();
  std::string_view text = drawing_.text(first);
  switch (dxf::valueKind(first.code)) {
    case dxf::ValueKind::kDouble: {
      if (first.code >= 10 && first.code <= 18 && tags.size() >= 2) {
        double x = 0, y = 0, z = 0;
        dxf::parseDouble(text, x);
        dxf::parseDouble(drawing_.text(tags[1]), y);
        if (isFlatPoint(tags)) return host::SysVar{host::Point2{x, y}};
        if (tags.size() >= 3) dxf::parseDouble(drawing_.text(tags[2]), z);
        return host::SysVar{host::Point3{x, y, z}};
      }
      double v = 0;
      dxf::parseDouble(text, v);
      return host::SysVar{v};
    }
    case dxf::ValueKind::kInt16:
    case dxf::ValueKind::kBool: {
      int64_t v = 0;
      dxf::parseInt(text, v);
      return host::SysVar{static_cast<int16_t>(v)};
    }
    case dxf::ValueKind::kInt32:
    case dxf::ValueKind::kInt64: {
      int64_t v = 0;
      dxf::parseInt(text, v);
      return host::SysVar{static_cast<int32_t>(v)};
    }
    default:
      return host::SysVar{drawing_.codec().decode(text)};
  }
}

Status DxfDatabase::setVar(std::string_view name, const host::SysVar& value) {
  std::string upper = upperName(name);
  auto current = getVar(upper);
  if (!current) return current.status();
  if (current->value.index() != value.value.index()) {
    return Status::invalid("variable " + upper + " has another type");
  }
  std::vector<dxf::Tag> tags = drawing_.headerVariable("$" + upper);
  if (tags.empty()) {
    session_vars_[upper] = value;
    return Status::ok();
  }
  int code = tags.front().code;
  std::vector<dxf::Tag> out;
  std::visit(
      [&](auto&& v) {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, host::Point3>) {
          out.push_back(drawing_.makeTag(code, v.x));
          out.push_back(drawing_.makeTag(code + 10, v.y));
          out.push_back(drawing_.makeTag(code + 20, v.z));
        } else if constexpr (std::is_same_v<T, host::Point2>) {
          out.push_back(drawing_.makeTag(code, v.x));
          out.push_back(drawing_.makeTag(code + 10, v.y));
        } else if constexpr (std::is_same_v<T, std::wstring>) {
          out.push_back(drawing_.makeTag(code, drawing_.codec().encode(v)));
        } else if constexpr (std::is_same_v<T, double>) {
          out.push_back(drawing_.makeTag(code, v));
        } else {
          out.push_back(drawing_.makeTag(code, int64_t{v}));
        }
      },
      value.value);
  drawing_.setHeaderVariable("$" + upper, out);
  return Status::ok();
}

}  // namespace headless
