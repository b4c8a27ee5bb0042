// Whether an entity's records carry a class or a group of classes of the tree, as the
// selecting commands ask: by key values alone, with no value rules checked.
#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "objdata/classification.h"

namespace objdata {

// One Membership serves one command run: what a group holds is resolved once, since a
// walk asks the same of every entity.
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
  // The classes of one group that name themselves in the same key field of the same table
  // (the first of each class), by the key value that names each.
  struct KeySet {
    std::wstring table;
    std::wstring field;
    std::unordered_map<std::wstring, std::vector<const catalogue::ObjectClass*>> by_value;
  };
  // The classes a group holds through the names it lists and its children, nested groups
  // followed to a depth of 64 (a group listing itself would otherwise never end).
  struct Members {
    bool any_without_tables = false;  // carried by any entity that has records
    std::vector<KeySet> key_sets;
  };
  // `depth` is that of `group` itself: 1 when it was named to carries.
  const Members& membersOf(const catalogue::Group& group, int depth);
  void add(const catalogue::ObjectClass& cls, Members& members);
  bool holdsAny(std::span<const TableRecord> records, const Members& members);

  Classifier& classifier_;
  std::map<std::pair<const catalogue::Group*, int>, Members> members_;
  // The last name given to carries, and what it names.
  std::wstring last_name_;
  const catalogue::ObjectClass* last_class_ = nullptr;
  const catalogue::Group* last_group_ = nullptr;
  bool resolved_ = false;
};

}  // namespace objdata
