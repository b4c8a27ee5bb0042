// Block commands.
#include "base/utf.h"
#include "dxf/attributes.h"
#include "headless/host_commands/host_command.h"

namespace headless::host_commands {

// Only the Name option: selecting a block reference needs a pick the command line lacks.
void attsync(Context& context) {
  HeadlessEditor& editor = context.editor();
  host::StringInput option = editor.getString(false, L"Enter an option [?/Name/Select] <Select>: ");
  if (option.status != host::InputStatus::kNormal) return;
  std::wstring word = commandWord(option.text);
  if (word != L"N" && word != L"NAME") {
    context.console().error(L"ATTSYNC: only the Name option is available here.\n");
    context.fail();
    return;
  }
  host::StringInput name = editor.getString(true, L"Enter name of block to synchronize: ");
  if (name.status != host::InputStatus::kNormal) return;
  base::Result<int> updated = dxf::synchronizeAttributes(context.database().drawing(), name.text);
  if (!updated) {
    context.console().error(base::fromUtf8(updated.status().message()) + L"\n");
    context.fail();
    return;
  }
  context.console().print(L"ATTSYNC block " + name.text + L": " + std::to_wstring(*updated) +
                          L" references updated.\n");
}

}  // namespace headless::host_commands
