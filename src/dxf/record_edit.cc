#include "dxf/record_edit.h"

namespace dxf {

RecordEdit::RecordEdit(Document& doc, RecordId id) : doc_(doc), id_(id) {
  auto span = doc.tags(id);
  tags_.assign(span.begin(), span.end());
}

int RecordEdit::find(int code, size_t from) const {
  for (size_t i = from; i < tags_.size(); ++i) {
    if (tags_[i].code == code) return static_cast<int>(i);
  }
  return -1;
}

std::pair<size_t, size_t> RecordEdit::subclassRange(std::string_view marker) const {
  size_t end_of_data = tags_.size();
  for (size_t i = 1; i < tags_.size(); ++i) {
    if (tags_[i].code >= 1000) {
      end_of_data = i;
      break;
    }
  }
  for (size_t i = 1; i < end_of_data; ++i) {
    if (tags_[i].code == 100 && text(i) == marker) {
      size_t end = i + 1;
      while (end < end_of_data && tags_[end].code != 100) ++end;
      return {i + 1, end};
    }
  }
  return {1, end_of_data};
}

int RecordEdit::findInSubclass(std::string_view marker, int code) const {
  auto [begin, end] = subclassRange(marker);
  bool in_app_group = false;
  for (size_t i = begin; i < end; ++i) {
    // Tags inside "102 {APP ... 102 }" belong to the application, not the subclass.
    if (tags_[i].code == 102) {
      in_app_group = !text(i).empty() && text(i).front() == '{';
      continue;
    }
    if (!in_app_group && tags_[i].code == code) return static_cast<int>(i);
  }
  return -1;
}

size_t RecordEdit::endOfSubclass(std::string_view marker) const {
  return subclassRange(marker).second;
}

void RecordEdit::setText(size_t index, std::string_view raw) {
  tags_[index] = doc_.makeTag(tags_[index].code, raw);
}

void RecordEdit::insert(size_t index, int code, std::string_view raw) {
  tags_.insert(tags_.begin() + static_cast<std::ptrdiff_t>(index), doc_.makeTag(code, raw));
}

void RecordEdit::erase(size_t index, size_t count) {
  tags_.erase(tags_.begin() + static_cast<std::ptrdiff_t>(index),
              tags_.begin() + static_cast<std::ptrdiff_t>(index + count));
}

void RecordEdit::setInSubclass(std::string_view marker, int code, std::string_view raw) {
  int at = findInSubclass(marker, code);
  if (at >= 0) {
    if (text(static_cast<size_t>(at)) != raw) setText(static_cast<size_t>(at), raw);
    return;
  }
  insert(endOfSubclass(marker), code, raw);
}

void RecordEdit::removeInSubclass(std::string_view marker, int code) {
  int at = findInSubclass(marker, code);
  if (at >= 0) erase(static_cast<size_t>(at));
}

void RecordEdit::commit() { doc_.setTags(id_, tags_); }

}  // namespace dxf
