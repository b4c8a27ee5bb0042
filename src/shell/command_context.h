// What a command handler works with: the host, the shared state, the string table, and the
// prompting conventions every command follows.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "host/host.h"
#include "shell/state.h"
#include "shell/string_table.h"

namespace shell {

class CommandContext {
 public:
  CommandContext(host::Host& host, ProcessState& state, const StringTable& strings,
                 std::wstring command)
      : host_(host), state_(state), strings_(strings), command_(std::move(command)) {}

  host::Host& host() { return host_; }
  host::Database& database() { return host_.database(); }
  host::Editor& editor() { return host_.editor(); }
  ProcessState& state() { return state_; }
  const StringTable& strings() const { return strings_; }
  const std::wstring& command() const { return command_; }

  std::wstring text(StringId id, std::initializer_list<FormatArg> args = {}) const;
  // Prints a message of the string table.
  void print(StringId id, std::initializer_list<FormatArg> args = {});

  // Reads an answer with the host's string input. Anything but a normal answer (cancel,
  // error) gives nothing: the command then ends silently.
  std::optional<std::wstring> ask(bool allow_spaces, std::wstring_view prompt);

  // A yes/no or mode prompt whose text shows the current default through its one "%i".
  // An empty answer keeps the default; any other is read as _wtoi does and clamped into
  // [0, max]. The result is remembered for the next run of this command. `initial` is the
  // default before the prompt was ever answered.
  std::optional<int> askMode(StringId prompt, int initial, int max);

 private:
  host::Host& host_;
  ProcessState& state_;
  const StringTable& strings_;
  std::wstring command_;
};

}  // namespace shell
