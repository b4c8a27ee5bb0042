#include "headless/headless_host.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cwctype>
#include <filesystem>

#include "base/utf.h"
#include "dxf/attributes.h"

namespace headless {

namespace {

std::wstring upper(std::wstring_view text) {
  std::wstring out(text);
  for (wchar_t& c : out) c = static_cast<wchar_t>(std::towupper(c));
  return out;
}

// Command names may carry "_" (the untranslated name) and "." (the built-in command, not a
// redefinition) in front, in either order.
std::wstring_view withoutPrefixes(std::wstring_view name) {
  while (!name.empty() && (name.front() == L'_' || name.front() == L'.')) name.remove_prefix(1);
  return name;
}

// A CAD program names a document by its full path, however it was opened.
std::wstring fullPath(const std::wstring& path) {
  if (path.empty()) return path;
  std::error_code error;
  std::filesystem::path full = std::filesystem::absolute(std::filesystem::path(path), error);
  return error ? path : full.lexically_normal().wstring();
}

}  // namespace

HeadlessHost::HeadlessHost(dxf::Document& drawing, std::wstring file_name, InputStream& input,
                           std::ostream& out, std::ostream& err, bool echo, bool quiet)
    : console_(input, out, err, echo, quiet),
      database_(drawing),
      editor_(console_, database_),
      dialogs_(console_),
      file_name_(fullPath(file_name)) {
  registerHostCommands();
}

base::Status HeadlessHost::addCommand(std::wstring_view group, std::wstring_view name, int flags,
                                      host::CommandFunction function) {
  std::wstring key = upper(name);
  for (const Command& c : commands_) {
    if (c.name == key)
      return base::Status::invalid("command " + base::toUtf8(key) + " exists already");
  }
  commands_.push_back({std::wstring(group), key, flags, std::move(function)});
  return base::Status::ok();
}

void HeadlessHost::removeGroup(std::wstring_view group) {
  std::erase_if(commands_, [&](const Command& c) { return c.group == group; });
}

std::vector<std::wstring> HeadlessHost::commandsOf(std::wstring_view group) const {
  std::vector<std::wstring> out;
  for (const Command& c : commands_) {
    if (c.group == group) out.push_back(c.name);
  }
  return out;
}

std::optional<std::wstring> HeadlessHost::getEnv(std::wstring_view name) {
  if (auto it = environment_.find(name); it != environment_.end()) return it->second;
  const char* value = std::getenv(base::toUtf8(name).c_str());
  if (value == nullptr) return std::nullopt;
  return environment_.emplace(std::wstring(name), base::fromUtf8(value)).first->second;
}

bool HeadlessHost::setEnv(std::wstring_view name, std::wstring_view value) {
  environment_.insert_or_assign(std::wstring(name), std::wstring(value));
  return true;
}

std::wstring HeadlessHost::computerName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0) return {};
  return base::fromUtf8(name);
}

std::wstring HeadlessHost::userName() {
  // The account the process runs as; the login name can be absent (no terminal, containers).
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(4096);
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found)
    return base::fromUtf8(found->pw_name);
  if (const char* user = std::getenv("USER")) return base::fromUtf8(user);
  return {};
}

void HeadlessHost::run() {
  InputStream& input = console_.input();
  for (;;) {
    if (!queued_.empty()) input.pushFront(std::exchange(queued_, {}));
    console_.prompt(L"Command: ");
    int next = input.peek();
    if (next == InputStream::kEnd) {
      console_.prompt(L"\n");
      return;
    }
    host::StringInput typed = console_.readAnswer(false, 4096);
    if (typed.status != host::InputStatus::kNormal || typed.text.empty()) continue;
    runCommand(typed.text);
  }
}

void HeadlessHost::runCommand(const std::wstring& typed) {
  std::wstring name = upper(withoutPrefixes(typed));
  auto it = std::find_if(commands_.begin(), commands_.end(),
                         [&](const Command& c) { return c.name == name; });
  if (it == commands_.end()) {
    console_.error(L"Unknown command \"" + upper(typed) +
                   L"\"; taxor --help lists the commands.\n");
    return;
  }
  // The function is copied: a command may remove its own group (an unload).
  host::CommandFunction function = it->function;
  (void)editor_.takeCancelled();
  command_failed_ = false;
  function();
  // A cancel wins over a failure: the user stopped the command before it could finish.
  // Copies of the list: a reactor may remove itself while it is told.
  bool cancelled = editor_.takeCancelled();
  for (host::EditorReactor* reactor : std::vector(editor_.reactors())) {
    if (cancelled) {
      reactor->commandCancelled(name);
    } else if (command_failed_) {
      reactor->commandFailed(name);
    } else {
      reactor->commandEnded(name);
    }
  }
}

void HeadlessHost::registerHostCommands() {
  // What the system queues to the host and needs no drawing input now.
  (void)addCommand(L"ACAD", L"REGEN", 0, [] {});
  (void)addCommand(L"ACAD", L"ATTSYNC", 0, [this] { attsync(); });
  // A script's way to empty the pick-first set, which commands that select leave behind.
  (void)addCommand(L"ACAD", L"AI_DESELECT", 0, [this] { editor_.setImpliedSelection({}); });
}

void HeadlessHost::attsync() {
  host::StringInput option =
      editor_.getString(false, L"Enter an option [?/Name/Select] <Select>: ");
  if (option.status != host::InputStatus::kNormal) return;
  std::wstring word = upper(withoutPrefixes(option.text));
  if (word != L"N" && word != L"NAME") {
    console_.error(L"ATTSYNC: only the Name option is available here.\n");
    command_failed_ = true;
    return;
  }
  host::StringInput name = editor_.getString(true, L"Enter name of block to synchronize: ");
  if (name.status != host::InputStatus::kNormal) return;
  base::Result<int> updated = dxf::synchronizeAttributes(database_.drawing(), name.text);
  if (!updated) {
    console_.error(base::fromUtf8(updated.status().message()) + L"\n");
    command_failed_ = true;
    return;
  }
  console_.print(L"ATTSYNC block " + name.text + L": " + std::to_wstring(*updated) +
                 L" references updated.\n");
}

}  // namespace headless
