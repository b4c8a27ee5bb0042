// The headless command line: the registered commands and the loop that reads a command name
// at "Command: ", runs the command and tells the editor reactors how it ended.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "headless/console.h"
#include "headless/headless_document.h"
#include "headless/headless_editor.h"
#include "headless/host_commands/host_command.h"
#include "host/command_stack.h"

namespace headless {

class CommandLine : public host::CommandStack {
 public:
  // Registers the host's own commands (host_commands::table()) in the group "ACAD". Every
  // argument must outlive the command line.
  CommandLine(Console& console, DxfDatabase& database, HeadlessEditor& editor,
              HeadlessDocument& document);

  // Reads and runs commands until the input ends; a prompt pending then is cancelled.
  // Text the document queued runs before the rest of the input.
  void run();

  // host::CommandStack
  base::Status addCommand(std::wstring_view group, std::wstring_view name, int flags,
                          host::CommandFunction function) override;
  void removeGroup(std::wstring_view group) override;
  std::vector<std::wstring> commandsOf(std::wstring_view group) const override;

 private:
  struct Command {
    std::wstring group;
    std::wstring name;  // upper case
    int flags = 0;
    host::CommandFunction function;
  };

  void runCommand(const std::wstring& typed);

  Console& console_;
  HeadlessEditor& editor_;
  HeadlessDocument& document_;
  host_commands::Context host_commands_;
  std::vector<Command> commands_;
};

}  // namespace headless
