#include "fakes/fake_editor.h"

#include <cwchar>

#include "base/utf.h"

namespace fakes {

namespace {

// Reads "x,y" or "x,y,z"; false when the text is not a point.
bool parsePoint(const std::wstring& text, host::Point3& out) {
  double v[3] = {0, 0, 0};
  size_t start = 0;
  for (int part = 0;; ++part) {
    size_t comma = text.find(L',', start);
    std::wstring piece =
        text.substr(start, comma == std::wstring::npos ? std::wstring::npos : comma - start);
    if (part == 3 || piece.empty()) return false;
    wchar_t* end = nullptr;
    v[part] = std::wcstod(piece.c_str(), &end);
    if (*end != L'\0') return false;
    if (comma == std::wstring::npos) {
      if (part == 0) return false;
      break;
    }
    start = comma + 1;
  }
  out = {v[0], v[1], v[2]};
  return true;
}

}  // namespace

void FakeEditor::tellCommandEnded(std::wstring_view name) {
  // Copies: a reactor may remove itself while told.
  for (host::EditorReactor* reactor : std::vector(reactors_)) reactor->commandEnded(name);
}

void FakeEditor::tellCommandCancelled(std::wstring_view name) {
  for (host::EditorReactor* reactor : std::vector(reactors_)) reactor->commandCancelled(name);
}

void FakeEditor::showPrompt(std::wstring_view prompt) {
  transcript_ += prompt;
}

host::StringInput FakeEditor::readAnswer(bool allow_spaces) {
  host::StringInput result;
  if (answers_.empty() || answers_.front().status == host::InputStatus::kCancel) {
    if (!answers_.empty()) answers_.pop_front();
    transcript_ += L"*Cancel*\n";
    cancelled_ = true;
    return result;
  }
  Answer answer = std::move(answers_.front());
  answers_.pop_front();
  if (answer.status == host::InputStatus::kError) {
    transcript_ += L"*Invalid*\n";
    result.status = host::InputStatus::kError;
    return result;
  }
  if (size_t blank = answer.text.find(L' '); !allow_spaces && blank != std::wstring::npos) {
    answers_.emplace_front(answer.text.substr(blank + 1));
    answer.text.resize(blank);
  }
  transcript_ += answer.text + L"\n";
  if (base::utf16Length(answer.text) > kMaxInput) {
    result.status = host::InputStatus::kError;
    return result;
  }
  result.status = host::InputStatus::kNormal;
  result.text = std::move(answer.text);
  return result;
}

host::StringInput FakeEditor::getString(bool allow_spaces, std::wstring_view prompt) {
  showPrompt(prompt);
  return readAnswer(allow_spaces);
}

host::PointInput FakeEditor::getPoint(std::wstring_view prompt) {
  for (;;) {
    showPrompt(prompt);
    host::StringInput answer = readAnswer(false);
    host::PointInput result;
    result.status = answer.status;
    if (answer.status != host::InputStatus::kNormal) return result;
    if (answer.text.empty()) {
      result.status = host::InputStatus::kNone;
      return result;
    }
    if (parsePoint(answer.text, result.point)) return result;
    transcript_ += L"Invalid point.\n";
  }
}

std::vector<host::ObjectId> FakeEditor::impliedSelection() {
  std::vector<host::ObjectId> out;
  for (host::ObjectId id : pick_first_) {
    if (database_.isValid(id)) out.push_back(id);
  }
  return out;
}

host::SelectionInput FakeEditor::select() {
  showPrompt(L"Select objects: ");
  host::SelectionInput result;
  if (selections_.empty()) {
    transcript_ += L"*Cancel*\n";
    cancelled_ = true;
    return result;
  }
  Selection selection = std::move(selections_.front());
  selections_.pop_front();
  result.status = selection.status;
  if (selection.status != host::InputStatus::kNormal) {
    transcript_ += L"*Cancel*\n";
    cancelled_ = true;
    return result;
  }
  transcript_ += std::to_wstring(selection.ids.size()) + L" found\n";
  result.ids = std::move(selection.ids);
  return result;
}

}  // namespace fakes
