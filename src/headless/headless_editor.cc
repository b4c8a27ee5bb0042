#include "headless/headless_editor.h"

#include <algorithm>
#include <cwchar>
#include <cwctype>

namespace headless {

namespace {

std::wstring upper(std::wstring text) {
  for (wchar_t& c : text) c = static_cast<wchar_t>(std::towupper(c));
  return text;
}

// Reads "x,y" or "x,y,z"; false when the text is not a point.
bool parsePoint(const std::wstring& text, host::Point3& out) {
  double v[3] = {0, 0, 0};
  size_t start = 0;
  int parts = 0;
  for (;;) {
    size_t comma = text.find(L',', start);
    std::wstring part = text.substr(start, comma == std::wstring::npos ? comma : comma - start);
    wchar_t* end = nullptr;
    if (parts == 3 || part.empty()) return false;
    v[parts++] = std::wcstod(part.c_str(), &end);
    if (*end != L'\0') return false;
    if (comma == std::wstring::npos) break;
    start = comma + 1;
  }
  if (parts < 2) return false;
  out = {v[0], v[1], v[2]};
  return true;
}

}  // namespace

host::StringInput HeadlessEditor::getString(bool allow_spaces, std::wstring_view prompt) {
  console_.prompt(prompt);
  host::StringInput answer = console_.readAnswer(allow_spaces, kMaxInput);
  if (answer.status == host::InputStatus::kCancel) cancelled_ = true;
  return answer;
}

host::PointInput HeadlessEditor::getPoint(std::wstring_view prompt) {
  for (;;) {
    console_.prompt(prompt);
    host::StringInput answer = console_.readAnswer(false, kMaxInput);
    if (answer.status == host::InputStatus::kCancel) cancelled_ = true;
    host::PointInput result;
    result.status = answer.status;
    if (answer.status != host::InputStatus::kNormal) return result;
    if (answer.text.empty()) {
      result.status = host::InputStatus::kNone;
      return result;
    }
    if (parsePoint(answer.text, result.point)) return result;
    console_.print(L"Invalid point.\n");
  }
}

std::vector<host::ObjectId> HeadlessEditor::impliedSelection() {
  std::vector<host::ObjectId> out;
  for (host::ObjectId id : pick_first_) {
    if (database_.isValid(id)) out.push_back(id);
  }
  return out;
}

host::SelectionInput HeadlessEditor::select() {
  host::SelectionInput result;
  std::vector<host::ObjectId> chosen;
  // "ALL" picks every entity: marking the picked ones by id keeps that linear. Ids of this
  // host are record numbers, so the marks stay as small as the drawing.
  std::vector<bool> picked;
  auto add = [&](const std::vector<host::ObjectId>& ids) {
    size_t found = 0;
    // Growing by doubling would copy a whole drawing's ids, more than once.
    if (chosen.capacity() < chosen.size() + ids.size()) {
      chosen.reserve(std::max(chosen.size() + ids.size(), 2 * chosen.capacity()));
    }
    for (host::ObjectId id : ids) {
      if (!database_.isValid(id)) continue;
      ++found;
      if (id.value >= picked.size())
        picked.resize(std::max<size_t>(id.value + 1, picked.size() * 2));
      if (picked[id.value]) continue;
      picked[id.value] = true;
      chosen.push_back(id);
    }
    console_.print(std::to_wstring(found) + L" found, " + std::to_wstring(chosen.size()) +
                   L" total\n");
  };
  for (;;) {
    console_.prompt(L"Select objects: ");
    host::StringInput answer = console_.readAnswer(false, kMaxInput);
    if (answer.status != host::InputStatus::kNormal) {
      if (answer.status == host::InputStatus::kCancel) cancelled_ = true;
      result.status = answer.status;
      return result;
    }
    std::wstring word = upper(answer.text);
    if (word.empty()) break;
    if (word == L"ALL") {
      add(database_.modelSpaceEntities());
    } else if (word == L"L") {
      std::vector<host::ObjectId> all = database_.modelSpaceEntities();
      add(all.empty() ? all : std::vector<host::ObjectId>{all.back()});
    } else if (word == L"P") {
      add(previous_.ids());
    } else if (host::ObjectId id = database_.idForHandle(word);
               id && !database_.entityClass(id).empty()) {
      add({id});
    } else {
      console_.print(L"*Invalid selection*\n");
    }
  }
  previous_.assign(chosen);
  result.status = host::InputStatus::kNormal;
  result.ids = std::move(chosen);
  return result;
}

void HeadlessEditor::setImpliedSelection(const std::vector<host::ObjectId>& ids) {
  pick_first_ = ids;
  if (!ids.empty()) previous_.assign(ids);
}

void HeadlessEditor::addReactor(host::EditorReactor* reactor) { reactors_.push_back(reactor); }

void HeadlessEditor::removeReactor(host::EditorReactor* reactor) {
  reactors_.erase(std::remove(reactors_.begin(), reactors_.end(), reactor), reactors_.end());
}

}  // namespace headless
