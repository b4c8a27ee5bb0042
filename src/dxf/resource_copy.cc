// Copies named records between drawings with a map from old to new handles, as CAD
// programs' deep clone does; resource_plan.cc decides what is copied.
#include "dxf/resource_copy.h"

#include "dxf/dictionary.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/resource_internal.h"
#include "dxf/symbol_tables.h"

namespace dxf {

namespace {

using resource_detail::CopyPlan;
using resource_detail::Named;

constexpr std::pair<uint32_t, Named> kKinds[] = {
    {resource::kBlocks, Named::kBlock},
    {resource::kDimensionStyles, Named::kDimStyle},
    {resource::kLayers, Named::kLayer},
    {resource::kLinetypes, Named::kLinetype},
    {resource::kMLeaderStyles, Named::kMLeaderStyle},
    {resource::kMlineStyles, Named::kMlineStyle},
    {resource::kTextStyles, Named::kTextStyle},
};

// The code of a record's own handle: DIMSTYLE entries use 105, since their 5 named a block.
int handleCode(std::string_view type) { return type == "DIMSTYLE" ? 105 : 5; }

// Codes of later formats that an R12 record drops (pointers and groups are handled apart).
bool laterThanR12(int code, std::string_view type) {
  if (code == 100 || (code >= 90 && code <= 99) || (code >= 160 && code <= 169) ||
      (code >= 270 && code <= 329) || (code >= 370 && code <= 389) ||
      (code >= 410 && code <= 481)) {
    return true;
  }
  // R12 linetypes hold plain dashes only.
  return type == "LTYPE" && (code == 74 || code == 75 || code == 46 || code == 50 || code == 44 ||
                             code == 45 || code == 9);
}

// Writes the planned records into the target.
class Writer {
 public:
  Writer(Document& target, const Document& source, CopyPlan& plan)
      : target_(target),
        source_(source),
        plan_(plan),
        downgrade_(target.isR12() && !source.isR12()),
        same_codec_(target.codec().name() == source.codec().name()) {}

  base::Status write();

 private:
  std::string reencode(std::string_view raw) const;
  std::vector<Tag> transform(const CopyPlan::Item& item);
  base::Status prepare();

  Document& target_;
  const Document& source_;
  CopyPlan& plan_;
  bool downgrade_;
  bool same_codec_;
};

std::string Writer::reencode(std::string_view raw) const {
  if (same_codec_) return std::string(raw);
  bool plain = true;
  for (char c : raw) plain = plain && static_cast<unsigned char>(c) < 0x80 && c != '\\';
  return plain ? std::string(raw) : target_.codec().encode(source_.codec().decode(raw));
}

std::vector<Tag> Writer::transform(const CopyPlan::Item& item) {
  RecordId r = item.source;
  std::string_view type = source_.type(r);
  auto tags = source_.tags(r);
  Handle own = plan_.newHandle(r);
  bool renames_block =
      type == "BLOCK" || type == "BLOCK_RECORD" || resource_detail::namesBlock(type);
  int handle_code = handleCode(type);
  bool has_handle = false;
  for (size_t i = 1; i < tags.size() && tags[i].code != 100 && tags[i].code != 102; ++i) {
    has_handle = has_handle || tags[i].code == handle_code;
  }

  std::vector<Tag> out;
  out.reserve(tags.size() + 1);
  out.push_back(target_.makeTag(0, source_.text(tags[0])));
  if (own != 0 && !has_handle) out.push_back(target_.makeTag(handle_code, formatHandle(own)));
  bool handle_done = false;
  bool in_group = false;
  size_t group_start = 0;
  bool in_xdata = false;
  for (size_t i = 1; i < tags.size(); ++i) {
    int code = tags[i].code;
    std::string_view raw = source_.text(tags[i]);
    if (code == handle_code && !handle_done && !in_xdata) {
      handle_done = true;
      if (own != 0) out.push_back(target_.makeTag(code, formatHandle(own)));
      continue;
    }
    if (code == 102 && !in_xdata) {
      bool opens = !raw.empty() && raw.front() == '{';
      if (downgrade_) {
        in_group = opens;
      } else if (opens) {
        in_group = true;
        group_start = out.size();
        out.push_back(target_.makeTag(102, raw));
      } else if (in_group && out.size() == group_start + 1) {
        out.pop_back();  // every entry of the group named something not there
        in_group = false;
      } else {
        out.push_back(target_.makeTag(102, raw));
        in_group = false;
      }
      continue;
    }
    if (downgrade_ && in_group) continue;
    in_xdata = in_xdata || code >= 1000;
    if (resource_detail::isPointer(code)) {
      if (downgrade_) continue;
      Handle h = resource_detail::parseHandle(raw);
      Handle mapped = h == 0 ? 0 : plan_.remap(h);
      if (in_group && mapped == 0) continue;
      out.push_back(target_.makeTag(code, formatHandle(mapped)));
      continue;
    }
    if (downgrade_ && laterThanR12(code, type)) continue;
    if (valueKind(code) != ValueKind::kString || (code >= 320 && code <= 329)) {
      out.push_back(target_.makeTag(code, raw));
      continue;
    }
    std::string value = reencode(raw);
    if (renames_block && !in_xdata && (code == 2 || (code == 3 && type == "BLOCK"))) {
      const std::wstring* renamed = plan_.renamedBlock(source_.codec().decode(raw));
      if (renamed) value = target_.codec().encode(*renamed);
    }
    out.push_back(target_.makeTag(code, value));
  }
  return out;
}

// Makes the tables, sections and style dictionaries that the copies go into, so that their
// owners translate to records that exist.
base::Status Writer::prepare() {
  using Place = CopyPlan::Place;
  for (const CopyPlan::Item& item : plan_.items()) {
    if (item.place == Place::kTableEntry) target_.addTable(item.table);
    if (item.place == Place::kBlock) target_.addSection("BLOCKS");
    if (item.place != Place::kObject) continue;
    if (auto root = resource_detail::ensureRootDictionary(target_); !root) return root.status();
    const CopyPlan::Listing* listed = plan_.listing(item.source);
    if (!listed || plan_.taken(listed->dictionary)) continue;
    const CopyPlan::Listing* parent = plan_.listing(listed->dictionary);
    if (plan_.counterpart(listed->dictionary) != 0 || !parent ||
        parent->dictionary != plan_.sourceRoot()) {
      continue;
    }
    auto made = resource_detail::ensureRootEntry(target_, parent->key);
    if (!made) return made.status();
  }
  plan_.forgetCounterparts();  // looked up before the new containers existed
  return base::Status::ok();
}

base::Status Writer::write() {
  if (base::Status status = prepare(); !status) return status;
  for (const CopyPlan::Item& item : plan_.items()) {
    std::vector<Tag> tags = transform(item);
    if (item.place == CopyPlan::Place::kTableEntry) {
      resource_detail::addTableEntry(target_, item.table, tags);
    } else if (item.place == CopyPlan::Place::kBlock) {
      target_.insertBefore(target_.section("BLOCKS").tail, target_.newRecord(tags));
    } else {
      RecordId copy = target_.newRecord(tags);
      target_.insertBefore(target_.section("OBJECTS").tail, copy);
      // An object listed in a dictionary that is not copied gets listed in its counterpart.
      const CopyPlan::Listing* listed = plan_.listing(item.source);
      if (!listed || plan_.taken(listed->dictionary)) continue;
      RecordId dict = target_.byHandle(plan_.counterpart(listed->dictionary));
      if (dict != kNoRecord) dictionarySet(target_, dict, listed->key, copy, listed->hard_owner);
    }
  }
  return base::Status::ok();
}

}  // namespace

base::Result<ResourceNameMap> copyResources(Document& target, const Document& source, uint32_t mask,
                                            const ResourceNameMap& needed) {
  auto needs = [&](uint32_t kind) {
    auto it = needed.find(kind);
    return (mask & kind) && it != needed.end() && !it->second.empty();
  };
  if ((mask & resource::kLayouts) && needed.count(resource::kLayouts)) {
    return base::Status::unsupported("importing layouts is not supported");
  }
  if (target.isR12() && (needs(resource::kMLeaderStyles) || needs(resource::kMlineStyles))) {
    return base::Status::unsupported(
        "an R12 drawing cannot hold multileader or multiline styles; save it as R2000 or "
        "later first");
  }
  if (source.isR12() && !target.isR12()) {
    return base::Status::unsupported(
        "cannot copy from an R12 drawing into a later one; save the source as R2000 or later");
  }
  CopyPlan plan(target, source);
  for (const auto& [kind, named] : kKinds) {
    if (!needs(kind)) continue;
    for (const std::wstring& name : needed.at(kind)) plan.request(named, name);
  }
  plan.collect();
  if (base::Status status = Writer(target, source, plan).write(); !status) return status;
  ResourceNameMap provided;
  for (const auto& [kind, named] : kKinds) {
    if (!(mask & kind) || !needed.count(kind)) continue;
    std::vector<std::wstring>& out = provided[kind];
    for (const std::wstring& name : needed.at(kind)) {
      if (plan.targetHas(named, name)) out.push_back(name);
    }
  }
  return provided;
}

}  // namespace dxf
