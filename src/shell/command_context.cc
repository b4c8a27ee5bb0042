#include "shell/command_context.h"

#include <algorithm>

#include "base/crt_numbers.h"

namespace shell {

std::wstring CommandContext::text(StringId id, std::initializer_list<FormatArg> args) const {
  return strings_.format(id, args);
}

void CommandContext::print(StringId id, std::initializer_list<FormatArg> args) {
  host_.editor().print(text(id, args));
}

std::optional<std::wstring> CommandContext::ask(bool allow_spaces, std::wstring_view prompt) {
  host::StringInput answer = host_.editor().getString(allow_spaces, prompt);
  if (answer.status != host::InputStatus::kNormal) return std::nullopt;
  return std::move(answer.text);
}

std::optional<int> CommandContext::askMode(StringId prompt, int initial, int max) {
  auto key = std::make_pair(command_, prompt);
  auto [it, inserted] = state_.prompt_defaults.try_emplace(key, initial);
  int current = it->second;
  std::optional<std::wstring> answer = ask(false, text(prompt, {current}));
  if (!answer) return std::nullopt;
  if (!answer->empty()) current = std::clamp(base::wtoi(*answer), 0, max);
  it->second = current;
  return current;
}

}  // namespace shell
