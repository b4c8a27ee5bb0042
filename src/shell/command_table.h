// The commands of the program, in the order they are registered with the host.
#pragma once

#include <span>
#include <string_view>

#include "shell/command_context.h"

namespace shell {

using CommandHandler = void (*)(CommandContext&);

struct CommandSpec {
  const wchar_t* name;
  const char* help;  // one line, for --help
  // Refuses to run ("Error: no file loaded.\n") while no class-definition file is loaded.
  bool needs_catalogue;
  CommandHandler handler;
};

// The 28 commands, in registration order.
std::span<const CommandSpec> commandTable();

}  // namespace shell
