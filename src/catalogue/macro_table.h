// The text macros of a class file: `define NAME VALUE` makes every later "$(NAME)" (in any
// case) stand for VALUE.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace catalogue {

class MacroTable {
 public:
  enum class DefineResult { kDefined, kRedefined, kRecursive };

  // Defines the macro `name` (lower-cased here). A new macro whose value refers to itself
  // is refused (kRecursive, nothing defined); an existing one gets the new value
  // (kRedefined), without that test.
  DefineResult define(std::wstring_view name, std::wstring_view value);

  // Replaces the macro references of `token`: at each "$(...)" from left to right, a known
  // name (compared lower-cased) has every occurrence of that exact reference replaced by its
  // value, and the search goes on at the same place so that references in the value are
  // expanded in turn; an unknown reference is left as it is. A token that needs more than
  // kMaxExpansions replacements (macros that refer to each other) is left as it stands then.
  // All expansions through one table together add at most kMaxAddedCharacters: a
  // replacement that would add more is not made, the token is left as it stands and
  // exhausted() holds from then on.
  void expand(std::wstring& token);

  bool empty() const { return macros_.empty(); }
  bool exhausted() const { return exhausted_; }

  static constexpr int kMaxExpansions = 1000;
  // Macros that double each other's values reach any size within a few lines; real class
  // files add some thousands of characters.
  static constexpr size_t kMaxAddedCharacters = size_t{16} << 20;

 private:
  std::map<std::wstring, std::wstring, std::less<>> macros_;  // by "$(" lower-case name ")"
  size_t added_ = 0;
  bool exhausted_ = false;
};

}  // namespace catalogue
