// A starting class-definition file made from a drawing: one class per distinct kind of
// entity, grouped by type, after commented resource lines and two drawing variables, and
// followed by the object-data tables the drawing stores, commented out.
#pragma once

#include <map>
#include <string>
#include <string_view>
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

// An object-data table as the drawing stores it: its fields' names and value types (1
// integer, 2 real, 3 character, 4 point).
struct StoredTableOutline {
  std::wstring name;
  std::vector<std::pair<std::wstring, int>> fields;
};

// The file's text, in UTF-8, made class by class as definitions come: a drawing's definitions
// need not all be kept. Type groups come in plain text order of the type names, and
// definitions are numbered from 1 within their group, in the order added.
class TemplateWriter {
 public:
  TemplateWriter(std::wstring name_format, int precision);

  // Writes the class of `definition`; one without a type is left out. Callers add each
  // definition once.
  void add(const draw::DrawingProperties& definition);
  int classes() const { return classes_; }
  // Appends the whole text to `out`: resource lines naming `drawing_path`, the `variables`
  // (name, value as text) that have a value, the classes, and then `tables` in their order,
  // commented out, but for those of other applications' prefixes.
  void finish(std::wstring_view drawing_path,
              const std::vector<std::pair<std::wstring, std::wstring>>& variables,
              const std::vector<StoredTableOutline>& tables, std::string& out) const;

 private:
  struct Group {
    int members = 0;
    std::string text;
  };

  std::wstring name_format_;
  int precision_;
  int classes_ = 0;
  std::map<std::wstring, Group, std::less<>> groups_;
  std::wstring chunk_;  // the class being written, before it is encoded
};

}  // namespace maintenance
