#include "fakes/fake_host.h"

#include <algorithm>
#include <cwctype>
#include <filesystem>

#include "base/utf.h"

namespace fakes {

namespace {

template <typename T>
std::optional<T> takeFront(std::deque<std::optional<T>>& script) {
  if (script.empty()) return std::nullopt;
  std::optional<T> out = std::move(script.front());
  script.pop_front();
  return out;
}

std::wstring withNewline(const std::wstring& text) {
  return text.empty() || text.back() != L'\n' ? text + L"\n" : text;
}

// Command names may carry "_" (the untranslated name) and "." (the built-in command) in
// front, in either order.
std::wstring_view withoutPrefixes(std::wstring_view name) {
  while (!name.empty() && (name.front() == L'_' || name.front() == L'.')) name.remove_prefix(1);
  return name;
}

}  // namespace

// --- FakeDialogs

void FakeDialogs::fileAnswers(std::vector<FileAnswer> more) {
  files_.insert(files_.end(), more.begin(), more.end());
}

void FakeDialogs::checkBoxAnswers(std::vector<CheckBoxAnswer> more) {
  check_boxes_.insert(check_boxes_.end(), more.begin(), more.end());
}

void FakeDialogs::itemAnswers(std::vector<ItemsAnswer> more) {
  items_.insert(items_.end(), more.begin(), more.end());
}

std::optional<std::wstring> FakeDialogs::takeFile(const std::wstring& title) {
  std::optional<std::wstring> path = takeFront(files_);
  transcript_ += title + L" file name: " + path.value_or(L"*Cancel*") + L"\n";
  return path;
}

std::optional<std::wstring> FakeDialogs::openFile(const std::wstring& title,
                                                  const std::vector<std::wstring>&,
                                                  const std::wstring&) {
  return takeFile(title);
}

std::optional<std::wstring> FakeDialogs::saveFile(const std::wstring& title,
                                                  const std::wstring& default_extension) {
  std::optional<std::wstring> path = takeFile(title);
  if (path && !default_extension.empty() && !std::filesystem::path(*path).has_extension()) {
    *path += L"." + default_extension;
  }
  return path;
}

bool FakeDialogs::checkBoxes(const std::wstring& title, std::vector<host::CheckBox>& boxes) {
  std::optional<std::vector<bool>> states = takeFront(check_boxes_);
  if (states) {
    for (size_t i = 0; i < boxes.size() && i < states->size(); ++i) boxes[i].checked = (*states)[i];
  }
  transcript_ += title + L"\n";
  for (const host::CheckBox& box : boxes) {
    transcript_ += (box.checked ? L"[x] " : L"[ ] ") + box.label + L"\n";
  }
  if (!states) transcript_ += L"*Cancel*\n";
  return states.has_value();
}

std::optional<std::vector<std::wstring>> FakeDialogs::chooseItems(
    const std::wstring& title, const std::vector<std::wstring>& items) {
  std::optional<std::vector<std::wstring>> answer = takeFront(items_);
  std::vector<std::wstring> sorted = items;
  std::sort(sorted.begin(), sorted.end());
  std::vector<std::wstring> chosen;
  transcript_ += title + L"\n";
  for (const std::wstring& item : sorted) {
    bool picked = answer && std::find(answer->begin(), answer->end(), item) != answer->end();
    if (picked) chosen.push_back(item);
    transcript_ += (picked ? L"[x] " : L"[ ] ") + item + L"\n";
  }
  if (!answer) {
    transcript_ += L"*Cancel*\n";
    return std::nullopt;
  }
  return chosen;
}

void FakeDialogs::textBox(const std::wstring& title, const std::wstring& text) {
  transcript_ += title + L"\n" + withNewline(text);
}

void FakeDialogs::messageBox(const std::wstring& caption, const std::wstring& text,
                             host::MessageKind kind) {
  messages_.push_back({caption, text, kind});
  transcript_ += caption + L": " + withNewline(text);
}

// --- FakeCommandStack

const FakeCommandStack::Command* FakeCommandStack::find(std::wstring_view name) const {
  name = withoutPrefixes(name);
  for (const Command& command : commands_) {
    if (sameText(command.name, name)) return &command;
  }
  return nullptr;
}

std::optional<host::CommandFunction> FakeCommandStack::function(std::wstring_view name) const {
  const Command* command = find(name);
  if (!command) return std::nullopt;
  return command->function;
}

std::optional<int> FakeCommandStack::flags(std::wstring_view name) const {
  const Command* command = find(name);
  if (!command) return std::nullopt;
  return command->flags;
}

base::Status FakeCommandStack::addCommand(std::wstring_view group, std::wstring_view name,
                                          int flags, host::CommandFunction function) {
  if (find(name)) {
    return base::Status::invalid("command " + base::toUtf8(name) + " exists already");
  }
  commands_.push_back({std::wstring(group), std::wstring(name), flags, std::move(function)});
  return base::Status::ok();
}

void FakeCommandStack::removeGroup(std::wstring_view group) {
  std::erase_if(commands_, [&](const Command& command) { return command.group == group; });
}

std::vector<std::wstring> FakeCommandStack::commandsOf(std::wstring_view group) const {
  std::vector<std::wstring> out;
  for (const Command& command : commands_) {
    if (command.group == group) out.push_back(command.name);
  }
  return out;
}

// --- FakeHost

base::Status FakeHost::runCommand(std::wstring_view name) {
  // A copy: the command may remove its own group (an unload).
  std::optional<host::CommandFunction> function = commands_.function(name);
  if (!function) {
    return base::Status::notFound("unknown command " + base::toUtf8(name));
  }
  (void)editor_.takeCancelled();
  (*function)();
  // Hosts name the command to reactors in upper case, whatever was typed.
  std::wstring upper(withoutPrefixes(name));
  for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(c));
  if (editor_.takeCancelled()) {
    editor_.tellCommandCancelled(upper);
  } else {
    editor_.tellCommandEnded(upper);
  }
  return base::Status::ok();
}

}  // namespace fakes
