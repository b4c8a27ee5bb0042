#include "headless/command_line.h"

#include <algorithm>

#include "base/utf.h"

namespace headless {

CommandLine::CommandLine(Console& console, DxfDatabase& database, HeadlessEditor& editor,
                         HeadlessDocument& document)
    : console_(console),
      editor_(editor),
      document_(document),
      host_commands_(console, database, editor) {
  for (const host_commands::Entry& command : host_commands::table()) {
    (void)addCommand(L"ACAD", command.name, 0, [this, run = command.run] { run(host_commands_); });
  }
}

base::Status CommandLine::addCommand(std::wstring_view group, std::wstring_view name, int flags,
                                     host::CommandFunction function) {
  std::wstring key = host_commands::upperCase(name);
  for (const Command& c : commands_) {
    if (c.name == key)
      return base::Status::invalid("command " + base::toUtf8(key) + " exists already");
  }
  commands_.push_back({std::wstring(group), key, flags, std::move(function)});
  return base::Status::ok();
}

void CommandLine::removeGroup(std::wstring_view group) {
  std::erase_if(commands_, [&](const Command& c) { return c.group == group; });
}

std::vector<std::wstring> CommandLine::commandsOf(std::wstring_view group) const {
  std::vector<std::wstring> out;
  for (const Command& c : commands_) {
    if (c.group == group) out.push_back(c.name);
  }
  return out;
}

void CommandLine::run() {
  InputStream& input = console_.input();
  for (;;) {
    if (std::wstring queued = document_.takeQueued(); !queued.empty()) input.pushFront(queued);
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

void CommandLine::runCommand(const std::wstring& typed) {
  std::wstring name = host_commands::commandWord(typed);
  auto it = std::find_if(commands_.begin(), commands_.end(),
                         [&](const Command& c) { return c.name == name; });
  if (it == commands_.end()) {
    console_.error(L"Unknown command \"" + host_commands::upperCase(typed) +
                   L"\"; taxor --help lists the commands.\n");
    return;
  }
  // The function is copied: a command may remove its own group (an unload).
  host::CommandFunction function = it->function;
  (void)editor_.takeCancelled();
  (void)host_commands_.takeFailed();
  function();
  // A cancel wins over a failure: the user stopped the command before it could finish.
  // Copies of the list: a reactor may remove itself while it is told.
  bool cancelled = editor_.takeCancelled();
  bool failed = host_commands_.takeFailed();
  for (host::EditorReactor* reactor : std::vector(editor_.reactors())) {
    if (cancelled) {
      reactor->commandCancelled(name);
    } else if (failed) {
      reactor->commandFailed(name);
    } else {
      reactor->commandEnded(name);
    }
  }
}

}  // namespace headless
