#include "objdata/membership.h"

#include <algorithm>

#include "base/text_case.h"

namespace objdata {

namespace {

constexpr int kMaxDepth = 64;

}  // namespace

bool Membership::carries(std::span<const TableRecord> records, std::wstring_view name) {
  if (!resolved_ || name != last_name_) {
    const catalogue::Catalogue& catalogue = classifier_.catalogue();
    last_name_.assign(name);
    last_class_ = catalogue.findObject(name);
    last_group_ = last_class_ ? nullptr : catalogue.findGroup(base::lowerCase(name));
    resolved_ = true;
  }
  if (last_class_) return classifier_.isClassifiedAs(records, *last_class_);
  return last_group_ && holdsAny(records, membersOf(*last_group_, 1));
}

bool Membership::belongsTo(std::span<const TableRecord> records, const catalogue::Group& group) {
  return holdsAny(records, membersOf(group, 0));
}

const Membership::Members& Membership::membersOf(const catalogue::Group& root, int depth) {
  auto [it, made] = members_.try_emplace({&root, depth});
  Members& members = it->second;
  if (!made) return members;
  const catalogue::Catalogue& catalogue = classifier_.catalogue();
  // Breadth first, so that every group is reached at its shallowest depth.
  std::vector<std::pair<const catalogue::Group*, int>> queue;
  std::unordered_set<const catalogue::Group*> seen = {&root};
  if (depth <= kMaxDepth) queue.emplace_back(&root, depth);
  auto follow = [&](const catalogue::Group* group, int at) {
    if (at <= kMaxDepth && seen.insert(group).second) queue.emplace_back(group, at);
  };
  for (size_t i = 0; i < queue.size(); ++i) {
    auto [group, at] = queue[i];
    for (const std::wstring& member : group->members) {
      if (const catalogue::ObjectClass* cls = catalogue.findObject(member)) {
        add(*cls, members);
      } else if (const catalogue::Group* listed = catalogue.findGroup(base::lowerCase(member))) {
        follow(listed, at + 1);
      }
    }
    for (const catalogue::Group& child : group->children) follow(&child, at + 1);
  }
  return members;
}

void Membership::add(const catalogue::ObjectClass& cls, Members& members) {
  if (cls.tables.empty()) {
    members.any_without_tables = true;
    return;
  }
  const catalogue::TableDefinition& first = cls.tables.front();
  Classifier::Key key = classifier_.keyOf(first, cls);
  // A table without a key field never names the class: no entity carries it.
  if (key.field.empty()) return;
  auto same = [&](const KeySet& set) {
    return base::equalsIgnoringCase(set.table, first.name) &&
           base::equalsIgnoringCase(set.field, key.field);
  };
  auto set = std::find_if(members.key_sets.begin(), members.key_sets.end(), same);
  if (set == members.key_sets.end()) {
    set = members.key_sets.insert(members.key_sets.end(), {first.name, key.field, {}});
  }
  set->by_value[key.value].push_back(&cls);
}

bool Membership::holdsAny(std::span<const TableRecord> records, const Members& members) {
  if (records.empty()) return false;
  if (members.any_without_tables) return true;
  // A class is carried only by an entity whose record of the class's first table names it,
  // so the classes named so are the only ones to check.
  auto carried = [&](const std::vector<const catalogue::ObjectClass*>& classes) {
    for (const catalogue::ObjectClass* cls : classes) {
      if (classifier_.isClassifiedAs(records, *cls)) return true;
    }
    return false;
  };
  for (const TableRecord& record : records) {
    for (const KeySet& set : members.key_sets) {
      if (!base::equalsIgnoringCase(record.table_name, set.table)) continue;
      int index = findField(record.fields, set.field);
      if (index < 0) continue;
      const Value& value = record.fields[index].value;
      if (value.type != ValueType::kCharacter) {
        // A number names a class only through its text: check every class of the set.
        for (const auto& [text, classes] : set.by_value) {
          if (valueEqualsText(value, text) && carried(classes)) return true;
        }
        continue;
      }
      auto named = set.by_value.find(value.text ? *value.text : std::wstring());
      if (named != set.by_value.end() && carried(named->second)) return true;
    }
  }
  return false;
}

}  // namespace objdata
