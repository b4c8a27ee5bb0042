// What all commands share for as long as the program runs (all documents alike).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "shell/string_table.h"

namespace catalogue {
class Catalogue;
}

namespace shell {

struct ProcessState {
  // The parsed class-definition file; null until a file is loaded.
  std::shared_ptr<const catalogue::Catalogue> catalogue;
  // Full path of the class-definition file last chosen.
  std::wstring class_file;
  // Answers to yes/no and mode prompts, remembered per command and prompt.
  std::map<std::pair<std::wstring, StringId>, int> prompt_defaults;
};

}  // namespace shell
