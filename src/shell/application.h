// The program as the host sees it: commands registered at initialisation, everything
// released in order at unload.
#pragma once

#include "host/host.h"
#include "shell/state.h"
#include "shell/string_table.h"

namespace shell {

inline constexpr wchar_t kCommandGroup[] = L"TAXOR";

class Application {
 public:
  // `host` and `strings` must outlive the application.
  Application(host::Host& host, const StringTable& strings) : host_(host), strings_(strings) {}
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  // Registers the commands of the command table, in table order, in the group "TAXOR".
  base::Status initialize();
  // The unload sequence: the favorites and then the recent list are written where they
  // exist, the catalogue is released, then the command group removed.
  void unload();

  ProcessState& state() { return state_; }

 private:
  void run(const struct CommandSpec& command);

  host::Host& host_;
  const StringTable& strings_;
  ProcessState state_;
};

}  // namespace shell
