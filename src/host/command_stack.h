// Registration of commands with the host's command line.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"

namespace host {

// Command flags, numbered as the host's programming interface has them.
enum CommandFlags : int {
  kCommandUsePickSet = 0x02,
  kCommandRedraw = 0x04,
  kCommandNoPaperSpace = 0x40,
};

using CommandFunction = std::function<void()>;

class CommandStack {
 public:
  CommandStack() = default;
  CommandStack(const CommandStack&) = delete;
  CommandStack& operator=(const CommandStack&) = delete;
  virtual ~CommandStack() = default;

  // Registers `name` (global and local name alike) in `group`; a name already registered
  // is a kInvalid error.
  virtual base::Status addCommand(std::wstring_view group, std::wstring_view name, int flags,
                                  CommandFunction function) = 0;
  // Removes every command of `group`; afterwards their names are unknown commands.
  virtual void removeGroup(std::wstring_view group) = 0;
  // Names of the commands of `group`, in registration order.
  virtual std::vector<std::wstring> commandsOf(std::wstring_view group) const = 0;
};

}  // namespace host
