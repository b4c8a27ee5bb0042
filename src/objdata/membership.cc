#include "objdata/membership.h"

#include "base/text_case.h"

namespace objdata {

namespace {

// A group listing its own name, directly or through others, would never end.
constexpr int kMaxDepth = 64;

}  // namespace

bool Membership::carries(std::span<const TableRecord> records, std::wstring_view name) {
  return carries(records, name, 0);
}

bool Membership::belongsTo(std::span<const TableRecord> records, const catalogue::Group& group) {
  return belongsTo(records, group, 0);
}

bool Membership::carries(std::span<const TableRecord> records, std::wstring_view name, int depth) {
  const catalogue::Catalogue& catalogue = classifier_.catalogue();
  if (const catalogue::ObjectClass* cls = catalogue.findObject(name))
    return classifier_.isClassifiedAs(records, *cls);
  const catalogue::Group* group = catalogue.findGroup(base::lowerCase(name));
  return group && belongsTo(records, *group, depth + 1);
}

bool Membership::belongsTo(std::span<const TableRecord> records, const catalogue::Group& group,
                           int depth) {
  if (depth > kMaxDepth || records.empty()) return false;
  for (const std::wstring& member : group.members) {
    if (carries(records, member, depth)) return true;
  }
  for (const catalogue::Group& child : group.children) {
    if (belongsTo(records, child, depth + 1)) return true;
  }
  return false;
}

}  // namespace objdata
