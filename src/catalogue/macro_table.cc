#include "catalogue/macro_table.h"

#include "base/text_case.h"

namespace catalogue {

MacroTable::DefineResult MacroTable::define(std::wstring_view name, std::wstring_view value) {
  std::wstring key = L"$(" + base::lowerCase(name) + L")";
  auto it = macros_.find(key);
  if (it != macros_.end()) {
    it->second = value;
    return DefineResult::kRedefined;
  }
  if (base::lowerCase(value).find(key) != std::wstring::npos) return DefineResult::kRecursive;
  macros_.emplace(std::move(key), value);
  return DefineResult::kDefined;
}

void MacroTable::expand(std::wstring& token) {
  if (macros_.empty() || exhausted_) return;
  size_t pos = 0;
  int budget = kMaxExpansions;
  for (;;) {
    size_t open = token.find(L"$(", pos);
    if (open == std::wstring::npos) return;
    size_t close = token.find(L')', open + 2);
    if (close == std::wstring::npos) return;
    std::wstring reference = token.substr(open, close - open + 1);
    auto it = macros_.find(base::lowerCase(reference));
    if (it == macros_.end()) {
      pos = close + 1;
      continue;
    }
    const size_t growth =
        it->second.size() > reference.size() ? it->second.size() - reference.size() : 0;
    for (size_t at = token.find(reference); at != std::wstring::npos;
         at = token.find(reference, at + it->second.size())) {
      // Counted before the replacement, so that the memory is never taken.
      if (growth > kMaxAddedCharacters - added_) {
        exhausted_ = true;
        return;
      }
      added_ += growth;
      token.replace(at, reference.size(), it->second);
    }
    if (--budget == 0) return;
  }
}

}  // namespace catalogue
