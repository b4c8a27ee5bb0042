// Hatch pattern files (.pat): "*NAME, description" lines, each followed by definition lines
// "angle, x-origin, y-origin, delta-x, delta-y [, dash...]".
#include <algorithm>
#include <unordered_set>

#include "base/utf.h"
#include "dxf/resource_copy.h"
#include "dxf/resource_internal.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

using resource_detail::lineError;
using resource_detail::trim;

std::string quoted(std::wstring_view text) { return "'" + base::toUtf8(text) + "'"; }

// SOLID and the patterns of acad.pat, which CAD programs know without loading a file.
constexpr std::wstring_view kPredefinedPatterns[] = {
    L"SOLID",       L"ANGLE",       L"ANSI31",    L"ANSI32",    L"ANSI33",     L"ANSI34",
    L"ANSI35",      L"ANSI36",      L"ANSI37",    L"ANSI38",    L"AR-B816",    L"AR-B816C",
    L"AR-B88",      L"AR-BRELM",    L"AR-BRSTD",  L"AR-CONC",   L"AR-HBONE",   L"AR-PARQ1",
    L"AR-RROOF",    L"AR-RSHKE",    L"AR-SAND",   L"BOX",       L"BRASS",      L"BRICK",
    L"BRSTONE",     L"CLAY",        L"CORK",      L"CROSS",     L"DASH",       L"DOLMIT",
    L"DOTS",        L"EARTH",       L"ESCHER",    L"FLEX",      L"GOST_GLASS", L"GOST_WOOD",
    L"GOST_GROUND", L"GRASS",       L"GRATE",     L"GRAVEL",    L"HEX",        L"HONEY",
    L"HOUND",       L"INSUL",       L"ISO02W100", L"ISO03W100", L"ISO04W100",  L"ISO05W100",
    L"ISO06W100",   L"ISO07W100",   L"ISO08W100", L"ISO09W100", L"ISO10W100",  L"ISO11W100",
    L"ISO12W100",   L"ISO13W100",   L"ISO14W100", L"ISO15W100", L"JIS_LC_20",  L"JIS_LC_20A",
    L"JIS_LC_8",    L"JIS_LC_8A",   L"JIS_RC_10", L"JIS_RC_15", L"JIS_RC_18",  L"JIS_RC_30",
    L"JIS_STN_1E",  L"JIS_STN_2.5", L"JIS_WOOD",  L"LINE",      L"MUDST",      L"NET",
    L"NET3",        L"PLAST",       L"PLASTI",    L"SACNCR",    L"SQUARE",     L"STARS",
    L"STEEL",       L"SWAMP",       L"TRANS",     L"TRIANG",    L"ZIGZAG"};

// Parses one definition line; returns an empty string or what is wrong.
std::string parseLine(std::wstring_view text, PatternLine& out) {
  std::vector<double> numbers;
  size_t start = 0;
  while (start <= text.size()) {
    size_t comma = std::min(text.find(L',', start), text.size());
    std::wstring_view field = trim(text.substr(start, comma - start));
    double value = 0;
    // A trailing comma leaves an empty last field, which some files have.
    if (!(field.empty() && comma == text.size() && !numbers.empty())) {
      if (!resource_detail::parseReal(field, value)) return quoted(field) + " is not a number";
      numbers.push_back(value);
    }
    start = comma + 1;
  }
  if (numbers.size() < 5) {
    return "a definition line needs angle, x-origin, y-origin, delta-x and delta-y";
  }
  out = {numbers[0], numbers[1], numbers[2],
         numbers[3], numbers[4], std::vector<double>(numbers.begin() + 5, numbers.end())};
  return {};
}

}  // namespace

bool isPredefinedPattern(std::wstring_view name) {
  return std::any_of(std::begin(kPredefinedPatterns), std::end(kPredefinedPatterns),
                     [&](std::wstring_view known) { return sameName(known, name); });
}

base::Result<std::vector<PatternDefinition>> parsePatternFile(std::string_view bytes,
                                                              const std::string& name) {
  std::vector<PatternDefinition> defs;
  std::unordered_set<std::wstring> seen;
  PatternDefinition current;
  int header_line = 0;  // 0 before the first header
  auto finish = [&]() -> base::Status {
    if (header_line == 0) return base::Status::ok();
    if (current.lines.empty()) {
      return lineError(name, header_line,
                       "pattern " + quoted(current.name) + " has no definition lines");
    }
    // CAD programs take the first definition of a name.
    if (seen.insert(resource_detail::upper(current.name)).second)
      defs.push_back(std::move(current));
    return base::Status::ok();
  };
  for (const resource_detail::SourceLine& line : resource_detail::splitLines(bytes)) {
    std::wstring_view text = line.text;
    text = trim(text.substr(0, text.find(L';')));
    if (text.empty()) continue;
    if (text.front() == L'*') {
      if (base::Status status = finish(); !status) return status;
      text.remove_prefix(1);
      size_t comma = text.find(L',');
      current = {};
      current.name = trim(text.substr(0, comma));
      if (comma != std::wstring_view::npos) current.description = trim(text.substr(comma + 1));
      if (current.name.empty())
        return lineError(name, line.number, "a pattern needs a name after '*'");
      header_line = line.number;
      continue;
    }
    if (header_line == 0) {
      return lineError(name, line.number, "a definition line must follow a *NAME line");
    }
    PatternLine pattern_line;
    if (std::string error = parseLine(text, pattern_line); !error.empty()) {
      return lineError(name, line.number, error);
    }
    current.lines.push_back(std::move(pattern_line));
  }
  if (base::Status status = finish(); !status) return status;
  return defs;
}

}  // namespace dxf
