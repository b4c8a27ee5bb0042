// A starting class-definition file made from a drawing: one class per distinct kind of
// entity, grouped by type, after commented resource lines and two drawing variables, and
// followed by the object-data tables the drawing stores, commented out.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "draw/object_properties.h"

namespace maintenance {

inline constexpr std::wstring_view kInitialNameFormat = L"%t_%i_%L";

// Whether a class-name format names the type ("%T" or "%t") and the number ("%i").
bool isValidNameFormat(std::wstring_view format);

// The class name `format` gives: every "%i" replaced by `number`, then "%L" by the layer,
// "%l" by the layer lowered, "%T" by the type and "%t" by the type lowered, in that order,
// so that what one step puts in (a layer named "%t") is expanded by the steps after it.
std::wstring expandClassName(std::wstring_view format, int number, std::wstring_view layer,
                             std::wstring_view type);

// The class name the template gives: the expanded format, cut to the longest name a class
// file may hold (never inside a character) and without blanks at its end.
std::wstring className(std::wstring_view format, int number, std::wstring_view layer,
                       std::wstring_view type);

// The distinct definitions of a drawing's entities, in the order first met.
class DefinitionList {
 public:
  // Adds `definition` unless a draw::sameDefinition one is there already.
  void add(draw::DrawingProperties definition);
  const std::deque<draw::DrawingProperties>& definitions() const { return definitions_; }
  std::deque<draw::DrawingProperties> take();

 private:
  // A deque: definitions are large, and a vector would move them all each time it grows.
  std::deque<draw::DrawingProperties> definitions_;
  // Indexes into definitions_ by a hash of the properties that tell most definitions apart:
  // a drawing may hold thousands of kinds of one type on one layer.
  std::unordered_multimap<size_t, size_t> by_hash_;
};

// An object-data table as the drawing stores it: its fields' names and value types (1
// integer, 2 real, 3 character, 4 point).
struct StoredTableOutline {
  std::wstring name;
  std::vector<std::pair<std::wstring, int>> fields;
};

struct TemplateSource {
  std::wstring drawing_path;
  // (name, value as text); a variable without a value is left out.
  std::vector<std::pair<std::wstring, std::wstring>> variables;
  std::deque<draw::DrawingProperties> definitions;
  // In the drawing's order; tables of other applications' prefixes are left out.
  std::vector<StoredTableOutline> tables;
  std::wstring name_format{kInitialNameFormat};
  // The drawing's LUPREC: the decimals of every number written.
  int precision = 4;
};

// The file's whole text. Type groups come in plain text order of the type names, and
// definitions are numbered from 1 within their group, in list order.
std::wstring composeTemplate(TemplateSource source);

}  // namespace maintenance
