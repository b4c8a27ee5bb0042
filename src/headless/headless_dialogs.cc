#include "headless/headless_dialogs.h"

#include <algorithm>
#include <filesystem>

#include "host/editor.h"

namespace headless {

namespace {

std::wstring absolute(const std::wstring& path) {
  std::error_code ec;
  std::filesystem::path p = std::filesystem::absolute(std::filesystem::path(path), ec);
  return ec ? path : p.lexically_normal().wstring();
}

}  // namespace

std::optional<std::wstring> HeadlessDialogs::openFile(const std::wstring& title,
                                                      const std::vector<std::wstring>&,
                                                      const std::wstring&) {
  // No "<default>" is offered: an empty answer is the Cancel button, so that a script can
  // cancel the dialog.
  console_.prompt(L"File to open, " + title + L": ");
  host::StringInput answer = console_.readAnswer(true, 4096);
  if (answer.status != host::InputStatus::kNormal || answer.text.empty()) return std::nullopt;
  return absolute(answer.text);
}

std::optional<std::wstring> HeadlessDialogs::saveFile(const std::wstring& title,
                                                      const std::wstring& default_extension) {
  console_.prompt(L"File to save, " + title + L": ");
  host::StringInput answer = console_.readAnswer(true, 4096);
  if (answer.status != host::InputStatus::kNormal || answer.text.empty()) return std::nullopt;
  std::filesystem::path p(answer.text);
  if (!p.has_extension() && !default_extension.empty()) p += L"." + default_extension;
  return absolute(p.wstring());
}

std::optional<bool> HeadlessDialogs::askFlag(const std::wstring& label, bool current) {
  for (;;) {
    console_.prompt(label + L" [0/1] <" + (current ? L"1" : L"0") + L">: ");
    host::StringInput answer = console_.readAnswer(false, host::Editor::kMaxInput);
    if (answer.status != host::InputStatus::kNormal) return std::nullopt;
    if (answer.text.empty()) return current;
    if (answer.text == L"0" || answer.text == L"1") return answer.text == L"1";
    console_.print(L"Answer 0 or 1.\n");
  }
}

bool HeadlessDialogs::checkBoxes(const std::wstring& title, std::vector<host::CheckBox>& boxes) {
  console_.prompt(title + L"\n");
  std::vector<host::CheckBox> answered = boxes;
  for (host::CheckBox& box : answered) {
    std::optional<bool> flag = askFlag(box.label, box.checked);
    if (!flag) return false;
    box.checked = *flag;
  }
  boxes = std::move(answered);
  return true;
}

std::optional<std::vector<std::wstring>> HeadlessDialogs::chooseItems(
    const std::wstring& title, const std::vector<std::wstring>& items) {
  std::vector<std::wstring> sorted = items;
  std::sort(sorted.begin(), sorted.end());
  console_.prompt(title + L"\n");
  std::optional<bool> all = askFlag(L"Select All", false);
  if (!all) return std::nullopt;
  if (*all) return sorted;
  std::vector<std::wstring> chosen;
  for (const std::wstring& item : sorted) {
    std::optional<bool> flag = askFlag(item, false);
    if (!flag) return std::nullopt;
    if (*flag) chosen.push_back(item);
  }
  return chosen;
}

void HeadlessDialogs::textBox(const std::wstring& title, const std::wstring& text) {
  console_.print(title + L"\n" + text);
  if (!text.empty() && text.back() != L'\n') console_.print(L"\n");
}

void HeadlessDialogs::messageBox(const std::wstring& caption, const std::wstring& text,
                                 host::MessageKind) {
  console_.print(caption + L": " + text);
  if (text.empty() || text.back() != L'\n') console_.print(L"\n");
}

}  // namespace headless
