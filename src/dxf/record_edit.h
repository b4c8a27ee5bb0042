// Edits one record's tags as a plain vector and writes them back in one step.
#pragma once

#include <string_view>
#include <vector>

#include "dxf/document.h"

namespace dxf {

class RecordEdit {
 public:
  RecordEdit(Document& doc, RecordId id);
  RecordEdit(const RecordEdit&) = delete;
  RecordEdit& operator=(const RecordEdit&) = delete;

  std::vector<Tag>& tags() { return tags_; }
  const std::vector<Tag>& tags() const { return tags_; }
  std::string_view text(size_t index) const { return doc_.text(tags_[index]); }

  // Index of the first tag with `code` at or after `from`, or -1.
  int find(int code, size_t from = 0) const;
  // Index of the first tag with `code` inside the subclass group opened by "100 marker"
  // (the whole record when the record has no such marker, as in R12), or -1.
  int findInSubclass(std::string_view marker, int code) const;
  // Index at which a new tag of subclass `marker` belongs: after the group's last tag,
  // before the next marker or the extended data. For R12 records: before the extended data.
  size_t endOfSubclass(std::string_view marker) const;

  void setText(size_t index, std::string_view raw);
  void insert(size_t index, int code, std::string_view raw);
  void erase(size_t index, size_t count = 1);
  // Sets the first `code` tag of subclass `marker`, adding it at the group's end if absent.
  void setInSubclass(std::string_view marker, int code, std::string_view raw);
  // Removes the first `code` tag of subclass `marker`, if any.
  void removeInSubclass(std::string_view marker, int code);

  // Writes the tags back to the record.
  void commit();

 private:
  // [begin, end) of the subclass group, or the whole record before extended data.
  std::pair<size_t, size_t> subclassRange(std::string_view marker) const;

  Document& doc_;
  RecordId id_;
  std::vector<Tag> tags_;
};

}  // namespace dxf
