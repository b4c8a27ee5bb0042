#include <cwctype>

#include "headless/host_commands/host_command.h"

namespace headless::host_commands {

namespace {

constexpr Entry kTable[] = {
    {L"REGEN", regen},
    {L"ATTSYNC", attsync},
    {L"AI_DESELECT", aiDeselect},
};

}  // namespace

std::span<const Entry> table() { return kTable; }

std::wstring upperCase(std::wstring_view text) {
  std::wstring out(text);
  for (wchar_t& c : out) c = static_cast<wchar_t>(std::towupper(c));
  return out;
}

std::wstring commandWord(std::wstring_view typed) {
  // "_" asks for the untranslated name, "." for the built-in command over a redefinition.
  while (!typed.empty() && (typed.front() == L'_' || typed.front() == L'.')) typed.remove_prefix(1);
  return upperCase(typed);
}

}  // namespace headless::host_commands
