// What a load notes besides the records: the handles it indexes, and the faults it reads
// past, each with its place in the file.
#include <algorithm>
#include <optional>

#include "base/utf.h"
#include "dxf/document.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"

namespace dxf {

void Document::addFault(uint32_t offset, const std::string& name, std::string what) {
  pending_faults_.emplace_back(offset, placeOf(name, offset) + std::move(what));
}

uint32_t Document::offsetOf(RecordId id, const Tag* tag) const {
  if (tag != nullptr && format_ == Format::kAscii && !records_[id].changed) return tag->value.pos;
  return fileBytes(id).first;
}

// "LINE 2F", naming an object as a CAD program's audit does.
static std::string objectName(std::string_view type, Handle handle) {
  return std::string(type) + " " + formatHandle(handle);
}

// The first object with a handle keeps it: references in the file most likely mean that one.
void Document::indexLoadedHandles(const std::string& name) {
  auto duplicate = [&](Handle handle, RecordId first, RecordId id) {
    records_[id].rehandle = true;
    addFault(offsetOf(id), name,
             "warning: " + objectName(type(id), handle) + " uses the handle of " +
                 objectName(type(first), handle) + " at " + lineOf(offsetOf(first)) +
                 "; references to the handle mean the first, and this one is given a new "
                 "handle when it is changed (an audit in a CAD program repairs the file)");
  };
  Handle largest = 0;
  for (const auto& [handle, id] : handles_) largest = std::max(largest, handle);
  handle_count_ = handles_.size();
  if (!handles_.empty()) next_handle_ = largest + 1;
  dense_ = denseEnough(largest);
  dense_handles_.clear();
  if (dense_) {
    // Writers count handles up, so a direct index is the rule: filled in file order, it
    // finds the handles used twice without sorting.
    if (!handles_.empty()) dense_handles_.assign(largest + 1, kNoRecord);
    handle_count_ = 0;
    for (const auto& [handle, id] : handles_) {
      RecordId& slot = dense_handles_[handle];
      if (slot != kNoRecord) {
        duplicate(handle, slot, id);
        continue;
      }
      slot = id;
      ++handle_count_;
    }
    handles_.clear();
    handles_.shrink_to_fit();  // the direct index answers alone
    return;
  }
  std::sort(handles_.begin(), handles_.end());  // equal handles: file order, ids rising
  size_t kept = 0;
  for (size_t i = 0; i < handles_.size(); ++i) {
    auto [handle, id] = handles_[i];
    if (kept == 0 || handle != handles_[kept - 1].first) {
      handles_[kept++] = handles_[i];
      continue;
    }
    duplicate(handle, handles_[kept - 1].second, id);
  }
  handles_.resize(kept);
  handle_count_ = kept;
}

// Dangling entries of ordinary dictionaries are common in real drawings and are treated as
// absent where they are read; a dangling extension dictionary is reported, since data
// attached to the object later replaces it.
void Document::noteDanglingExtensionDictionaries(const std::string& name) {
  for (RecordId id : xdict_candidates_) {
    Handle xdict = records_[id].xdict;
    if (xdict != 0 && byHandle(xdict) != kNoRecord) continue;
    TagScan record_tags = scan(id);
    std::optional<Tag> pointer;
    bool in_group = false;
    for (const Tag& tag : record_tags) {
      if (tag.code == 100) break;
      if (tag.code == 102) in_group = text(tag) == "{ACAD_XDICTIONARY";
      if (in_group && tag.code != 102) {
        pointer = tag;
        break;
      }
    }
    std::string value = pointer ? std::string(text(*pointer)) : std::string();
    // Never given to a new object: that one would become this object's dictionary.
    next_handle_ = std::max(next_handle_, xdict + 1);
    addFault(offsetOf(id, pointer ? &*pointer : nullptr), name,
             "warning: " + objectName(type(id), records_[id].handle) +
                 ": the extension dictionary handle '" + value +
                 "' names no object; the object is read as having none, and attaching data "
                 "to it gives it a new one");
  }
  xdict_candidates_.clear();
  xdict_candidates_.shrink_to_fit();
}

// Text that is not UTF-8 in a drawing that declares it is read with U+FFFD in its place
// and written back as it came. One report, naming the first: such files are usually
// wrong throughout (another code page saved as UTF-8).
void Document::noteTextThatIsNotUtf8(const std::string& name) {
  std::optional<std::pair<RecordId, Tag>> first;
  size_t count = 0;
  for (RecordId id = first_; id != kNoRecord; id = records_[id].next) {
    for (const Tag& tag : scan(id)) {
      if (valueKind(tag.code) != ValueKind::kString || base::isValidUtf8(text(tag))) continue;
      if (!first) first.emplace(id, tag);
      ++count;
    }
  }
  if (!first) return;
  auto [id, tag] = *first;
  std::string more = count == 1 ? "" : " (and " + std::to_string(count - 1) + " more values)";
  addFault(offsetOf(id, &tag), name,
           "warning: group code " + std::to_string(tag.code) + " of " +
               objectName(type(id), records_[id].handle) + " holds bytes that are not UTF-8" +
               more +
               "; they read as U+FFFD and are written back unchanged (save the drawing "
               "again from the program that made it to repair it)");
}

uint64_t Document::lineNumber(uint32_t offset) const {
  if (line_ends_.empty()) {
    for (size_t at = raw_.find('\n'); at != std::string::npos; at = raw_.find('\n', at + 1)) {
      line_ends_.push_back(static_cast<uint32_t>(at));
    }
    line_ends_.push_back(UINT32_MAX);  // the last line, and a mark that the ends were found
  }
  return 1 + (std::lower_bound(line_ends_.begin(), line_ends_.end(), offset) - line_ends_.begin());
}

std::string Document::lineOf(uint32_t offset) const {
  if (format_ == Format::kBinary) return "byte " + std::to_string(offset);
  return "line " + std::to_string(lineNumber(offset));
}

std::string Document::placeOf(const std::string& name, uint32_t offset) const {
  if (format_ == Format::kBinary) return name + ": byte " + std::to_string(offset) + ": ";
  return name + ":" + std::to_string(lineNumber(offset)) + ": ";
}

}  // namespace dxf
