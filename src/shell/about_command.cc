#include "shell/about_command.h"

namespace shell {

const wchar_t* productVersion() { return TAXOR_VERSION_WIDE; }

void aboutCommand(CommandContext& context) {
  context.host().dialogs().messageBox(
      context.text(StringId::kCaptionMessage),
      context.text(StringId::kAboutProduct) + L"\n" +
          context.text(StringId::kAboutVersion, {std::wstring(productVersion())}),
      host::MessageKind::kInformation);
}

}  // namespace shell
