// Whether an entity's records carry a class or a group of classes of the tree, as the
// selecting commands ask: by key values alone, with no value rules checked.
#pragma once

#include <span>
#include <string_view>

#include "objdata/classification.h"

namespace objdata {

class Membership {
 public:
  explicit Membership(Classifier& classifier) : classifier_(classifier) {}

  // `name` (any case) names a class the records carry, or a group they belong to. A name
  // that is no class is looked up as a group.
  bool carries(std::span<const TableRecord> records, std::wstring_view name);
  // The records carry a class listed in `group` (a listed name that is no class counts as
  // a group in turn) or belong to one of its child groups.
  bool belongsTo(std::span<const TableRecord> records, const catalogue::Group& group);

 private:
  bool carries(std::span<const TableRecord> records, std::wstring_view name, int depth);
  bool belongsTo(std::span<const TableRecord> records, const catalogue::Group& group, int depth);

  Classifier& classifier_;
};

}  // namespace objdata
