#include "draw/object_properties.h"

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

#include "base/crt_numbers.h"
#include "base/text_case.h"

namespace draw {

namespace {

using Choices = std::pair<std::wstring_view, int>;

constexpr Choices kCircleModes[] = {{L"center", 0}, {L"2p", 0}, {L"3p", 0}};
constexpr Choices kDimensionModes[] = {{L"aligned", 0},  {L"angular", 0}, {L"arc", 0},
                                       {L"diameter", 0}, {L"jogged", 0},  {L"linear", 0},
                                       {L"ordinate", 0}, {L"radius", 0}};
constexpr Choices kEllipseModes[] = {{L"arc", 0}, {L"center", 0}};
constexpr Choices kMeshModes[] = {{L"box", 0},    {L"cone", 0},  {L"cylinder", 0}, {L"pyramid", 0},
                                  {L"sphere", 0}, {L"wedge", 0}, {L"torus", 0}};
constexpr Choices kHatchModes[] = {{L"boundary", 0}, {L"point", 0}};
constexpr Choices kMlineJustifications[] = {{L"top", 0}, {L"zero", 1}, {L"bottom", 2}};
// Numbered as the host numbers an mtext's attachment point.
constexpr Choices kMtextAttachmentPoints[] = {
    {L"topleft", 1},      {L"topcenter", 2},    {L"topright", 3},     {L"middleleft", 4},
    {L"middlecenter", 5}, {L"middleright", 6},  {L"bottomleft", 7},   {L"bottomcenter", 8},
    {L"bottomright", 9},  {L"baseleft", 10},    {L"basecenter", 11},  {L"baseright", 12},
    {L"basealign", 13},   {L"bottomalign", 14}, {L"middlealign", 15}, {L"topalign", 16},
    {L"basefit", 17},     {L"bottomfit", 18},   {L"middlefit", 19},   {L"topfit", 20},
    {L"basemid", 21},     {L"bottommid", 22},   {L"middlemid", 23},   {L"topmid", 24}};
constexpr Choices kTextJustifications[] = {
    {L"left", 0},        {L"center", 1},        {L"right", 2},         {L"aligned", 3},
    {L"middle", 4},      {L"fit", 5},           {L"topleft", 6},       {L"topcenter", 7},
    {L"topright", 8},    {L"middleleft", 9},    {L"middlecenter", 10}, {L"middleright", 11},
    {L"bottomleft", 12}, {L"bottomcenter", 13}, {L"bottomright", 14}};

template <typename T>
void applyValue(PropertyConstraint<T>& constraint, T value, ConstraintMode mode) {
  if (constraint.mode == ConstraintMode::kUnset) {
    constraint.mode = ConstraintMode::kSingle;
    constraint.value = std::move(value);
    constraint.alternatives.clear();
  } else {
    constraint.mode = mode;
    constraint.alternatives.push_back(std::move(value));
  }
}

// Splits the text between the parentheses of "(a b c)" at blanks; nothing when the token
// has no "(" or no ")" after it.
std::optional<std::vector<std::wstring_view>> parenthesisParts(std::wstring_view token) {
  size_t open = token.find(L'(');
  size_t close = open == std::wstring_view::npos ? open : token.find(L')', open + 1);
  if (close == std::wstring_view::npos) return std::nullopt;
  std::wstring_view inner = token.substr(open + 1, close - open - 1);
  std::vector<std::wstring_view> parts;
  size_t start = 0;
  while (start < inner.size()) {
    size_t blank = inner.find(L' ', start);
    if (blank == std::wstring_view::npos) blank = inner.size();
    if (blank > start) parts.push_back(inner.substr(start, blank - start));
    start = blank + 1;
  }
  return parts;
}

// Reads "(a b c)": exactly three numbers.
std::optional<std::vector<std::wstring_view>> numericTriple(std::wstring_view token) {
  auto parts = parenthesisParts(token);
  if (!parts || parts->size() != 3) return std::nullopt;
  for (std::wstring_view part : *parts) {
    if (!isNumericText(part)) return std::nullopt;
  }
  return parts;
}

std::optional<ColorSpec> parseColor(std::wstring_view token, bool allow_none) {
  std::wstring lower = base::lowerCase(token);
  if (lower == L"byblock") return ColorSpec{0};
  if (lower == L"bylayer") return ColorSpec{256};
  if (allow_none && lower == L"none") return ColorSpec{-1};
  if (lower.find(L'(') != std::wstring::npos) {
    auto parts = numericTriple(lower);
    if (!parts) return std::nullopt;
    return ColorSpec{base::wtoi((*parts)[0]), base::wtoi((*parts)[1]), base::wtoi((*parts)[2])};
  }
  if (!isNumericText(lower)) return std::nullopt;
  return ColorSpec{base::wtoi(lower)};
}

std::optional<Scale3> parseScale(std::wstring_view token) {
  if (token.find(L'(') != std::wstring_view::npos) {
    auto parts = numericTriple(token);
    if (!parts) return std::nullopt;
    return Scale3{base::wtof((*parts)[0]), base::wtof((*parts)[1]), base::wtof((*parts)[2])};
  }
  if (!isNumericText(token)) return std::nullopt;
  double n = base::wtof(token);
  return Scale3{n, n, n};
}

std::optional<int> findChoice(std::span<const Choices> choices, std::wstring_view lower) {
  for (const auto& [name, code] : choices) {
    if (name == lower) return code;
  }
  return std::nullopt;
}

// What one token does to the properties; false when the key does not accept it.
using Applier = bool (*)(DrawingProperties&, std::wstring_view token, ConstraintMode mode);

template <auto Member>
bool colorKey(DrawingProperties& p, std::wstring_view token, ConstraintMode) {
  auto color = parseColor(token, Member == &DrawingProperties::background_color);
  if (!color) return false;
  (p.*Member).push_back(std::move(*color));
  return true;
}

template <auto Member>
bool lowerTextKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  applyValue(p.*Member, base::lowerCase(token), mode);
  return true;
}

bool textKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  applyValue(p.text, std::wstring(token), mode);
  return true;
}

template <auto Member, const auto& Names>
bool choiceTextKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  std::wstring lower = base::lowerCase(token);
  if (!findChoice(Names, lower)) return false;
  applyValue(p.*Member, std::move(lower), mode);
  return true;
}

template <auto Member, const auto& Names>
bool choiceCodeKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  auto code = findChoice(Names, base::lowerCase(token));
  if (!code) return false;
  using T = decltype((p.*Member).value);
  applyValue(p.*Member, static_cast<T>(*code), mode);
  return true;
}

template <auto Member>
bool realKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  if (!isNumericText(token)) return false;
  applyValue(p.*Member, base::wtof(token), mode);
  return true;
}

bool lineweightKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  std::wstring lower = base::lowerCase(token);
  int32_t weight = 0;
  if (lower == L"byblock") {
    weight = kLineweightByBlock;
  } else if (lower == L"bylayer") {
    weight = kLineweightByLayer;
  } else if (lower == L"default") {
    weight = kLineweightDefault;
  } else if (isNumericText(lower)) {
    weight = base::wtoi(lower);
  } else {
    return false;
  }
  applyValue(p.lineweight, weight, mode);
  return true;
}

bool explodeKey(DrawingProperties& p, std::wstring_view token, ConstraintMode) {
  if (!isNumericText(token)) return false;
  p.explode = base::wtoi(token) > 0;
  return true;
}

bool rotateKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  if (!isNumericText(token)) return false;
  applyValue(p.rotate, static_cast<int8_t>(base::wtoi(token) > 0), mode);
  return true;
}

bool closedKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  if (!isNumericText(token)) return false;
  applyValue(p.closed, static_cast<int8_t>(base::wtoi(token) != 0), mode);
  return true;
}

bool blockScaleKey(DrawingProperties& p, std::wstring_view token, ConstraintMode mode) {
  auto scale = parseScale(token);
  if (!scale) return false;
  applyValue(p.block_scale, *scale, mode);
  return true;
}

using P = DrawingProperties;

constexpr std::pair<std::wstring_view, Applier> kKeys[] = {
    {L"color", colorKey<&P::color>},
    {L"layer", lowerTextKey<&P::layer>},
    {L"linetype", lowerTextKey<&P::linetype>},
    {L"linetypescale", realKey<&P::linetype_scale>},
    {L"lineweight", lineweightKey},
    {L"explode", explodeKey},
    {L"backgroundcolor", colorKey<&P::background_color>},
    {L"blockname", lowerTextKey<&P::block_name>},
    {L"blockscale", blockScaleKey},
    {L"rotate", rotateKey},
    {L"angle", realKey<&P::angle>},
    {L"closed", closedKey},
    {L"circlemode", choiceTextKey<&P::circle_mode, kCircleModes>},
    {L"circleradius", realKey<&P::circle_radius>},
    {L"constantwidth", realKey<&P::constant_width>},
    {L"elevation", realKey<&P::elevation>},
    {L"dimensionmode", choiceTextKey<&P::dimension_mode, kDimensionModes>},
    {L"dimensionstyle", lowerTextKey<&P::dimension_style>},
    {L"ellipsemode", choiceTextKey<&P::ellipse_mode, kEllipseModes>},
    {L"meshmode", choiceTextKey<&P::mesh_mode, kMeshModes>},
    {L"mleaderstyle", lowerTextKey<&P::mleader_style>},
    {L"mlinejustification", choiceCodeKey<&P::mline_justification, kMlineJustifications>},
    {L"mlinescale", realKey<&P::mline_scale>},
    {L"mlinestyle", lowerTextKey<&P::mline_style>},
    {L"mtextattachmentpoint", choiceCodeKey<&P::mtext_attachment_point, kMtextAttachmentPoints>},
    {L"hatchmode", choiceTextKey<&P::hatch_mode, kHatchModes>},
    {L"pattern", lowerTextKey<&P::pattern>},
    {L"patternangle", realKey<&P::pattern_angle>},
    {L"patternscale", realKey<&P::pattern_scale>},
    {L"patterncolor", colorKey<&P::pattern_color>},
    {L"text", textKey},
    {L"textheight", realKey<&P::text_height>},
    {L"textjustification", choiceCodeKey<&P::text_justification, kTextJustifications>},
    {L"textstyle", lowerTextKey<&P::text_style>},
};

Applier findKey(std::wstring_view lower_key) {
  for (const auto& [key, applier] : kKeys) {
    if (key == lower_key) return applier;
  }
  return nullptr;
}

std::vector<std::wstring_view> split(std::wstring_view text, wchar_t separator) {
  std::vector<std::wstring_view> parts;
  size_t start = 0;
  for (;;) {
    size_t at = text.find(separator, start);
    if (at == std::wstring_view::npos) {
      parts.push_back(text.substr(start));
      return parts;
    }
    parts.push_back(text.substr(start, at - start));
    start = at + 1;
  }
}

std::wstring_view stripToken(std::wstring_view token) {
  size_t first = token.find_first_not_of(L" \t");
  if (first == std::wstring_view::npos) return {};
  size_t last = token.find_last_not_of(L" \t\r\n");
  return token.substr(first, last - first + 1);
}

}  // namespace

bool parseObjectProperty(DrawingProperties& properties, std::wstring_view key,
                         std::wstring_view value, std::wstring_view alternatives) {
  std::wstring lower_key = base::lowerCase(key);
  std::vector<std::wstring_view> tokens = {value};
  ConstraintMode mode = ConstraintMode::kSingle;
  if (alternatives.find(L':') != std::wstring_view::npos) {
    std::vector<std::wstring_view> bounds = split(alternatives, L':');
    if (bounds.size() != 2) return false;
    tokens.insert(tokens.end(), bounds.begin(), bounds.end());
    mode = ConstraintMode::kRange;
  } else if (!alternatives.empty()) {
    std::vector<std::wstring_view> items = split(alternatives, L',');
    tokens.insert(tokens.end(), items.begin(), items.end());
    mode = ConstraintMode::kList;
  }

  Applier applier = findKey(lower_key);
  for (std::wstring_view raw : tokens) {
    std::wstring_view token = stripToken(raw);
    if (token.empty()) continue;
    if (token == kAnyText) {
      if (lower_key == L"color") properties.color.emplace_back();
      if (lower_key == L"backgroundcolor") properties.background_color.emplace_back();
      if (lower_key == L"patterncolor") properties.pattern_color.emplace_back();
      if (lower_key == L"explode") properties.explode = false;
      continue;
    }
    if (applier == nullptr || !applier(properties, token, mode)) return false;
  }
  return true;
}

bool isNumericText(std::wstring_view text) {
  size_t first = text.find_first_not_of(L" \t");
  if (first == std::wstring_view::npos) return false;
  size_t last = text.find_last_not_of(L" \t");
  text = text.substr(first, last - first + 1);
  if (text.front() == L'-') text.remove_prefix(1);
  int points = 0;
  for (wchar_t c : text) {
    if (c == L'.') {
      if (++points > 1) return false;
    } else if (c < L'0' || c > L'9') {
      return false;
    }
  }
  return true;
}

std::wstring formatColorSpec(const ColorSpec& color) {
  if (color.size() == 1) {
    switch (color[0]) {
      case -1:
        return L"None";
      case 0:
        return L"ByBlock";
      case 256:
        return L"ByLayer";
      default:
        return std::to_wstring(color[0]);
    }
  }
  if (color.size() == 3) {
    return L"(" + std::to_wstring(color[0]) + L" " + std::to_wstring(color[1]) + L" " +
           std::to_wstring(color[2]) + L")";
  }
  return {};
}

uint32_t packedRgb(const ColorSpec& color) {
  return static_cast<uint32_t>(color[0] & 0xFF) << 16 |
         static_cast<uint32_t>(color[1] & 0xFF) << 8 | static_cast<uint32_t>(color[2] & 0xFF);
}

bool listsType(const DrawingProperties& properties, std::wstring_view type) {
  const auto& types = properties.object_types;
  return !type.empty() && std::find(types.begin(), types.end(), type) != types.end();
}

}  // namespace draw
