// What all commands share for as long as the program runs (all documents alike).
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>

#include "catalogue/class_lists.h"
#include "maintenance/class_template.h"
#include "shell/string_table.h"

namespace catalogue {
class Catalogue;
struct DrawingResources;
}  // namespace catalogue

namespace shell {

// The options of TAXOR_CLASSIFY's dialog.
struct ClassifyOptions {
  bool assign_properties = true;
  bool attach_records = true;
  // Take off the classes the entities carry; only while records are attached.
  bool replace_classes = true;
};

struct ProcessState {
  // The parsed class-definition file; null until a file is loaded.
  std::shared_ptr<const catalogue::Catalogue> catalogue;
  // What binding the catalogue to the drawing brought in; null when it was not bound here.
  std::shared_ptr<const catalogue::DrawingResources> resources;
  // Full path of the class-definition file last chosen.
  std::wstring class_file;
  // Answers to yes/no and mode prompts, remembered per command and prompt.
  std::map<std::pair<std::wstring, StringId>, int> prompt_defaults;
  ClassifyOptions classify_options;
  // The class-name format of TAXOR_TEMPLATE, as last accepted.
  std::wstring template_name_format{maintenance::kInitialNameFormat};
  // The lists of the recent and favorites palettes; null while those palettes do not exist,
  // and then loading neither reads nor writes the list files.
  std::unique_ptr<catalogue::RecentList> recent_list;
  std::unique_ptr<catalogue::FavoritesList> favorites_list;
};

}  // namespace shell
