#include "shell/application.h"

#include <exception>
#include <new>
#include <string>

#include "base/utf.h"
#include "shell/command_table.h"
#include "shell/load_commands.h"

namespace shell {

namespace {

// Keeps the program's string resources current for the length of a command, so that no
// return path can leave them pushed.
class ResourceScope {
 public:
  explicit ResourceScope(host::Host& host) : host_(host) { host_.pushResourceHandle(); }
  ~ResourceScope() { host_.popResourceHandle(); }
  ResourceScope(const ResourceScope&) = delete;
  ResourceScope& operator=(const ResourceScope&) = delete;

 private:
  host::Host& host_;
};

constexpr int kCommandFlags =
    host::kCommandUsePickSet | host::kCommandRedraw | host::kCommandNoPaperSpace;

// What the exception being handled says, for the user.
std::wstring describeCurrentException() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return L"out of memory";
  } catch (const std::exception& e) {
    return base::fromUtf8(e.what());
  } catch (int code) {
    return L"a value could not be converted (code " + std::to_wstring(code) + L")";
  } catch (...) {
    return L"an unexpected fault";
  }
}

}  // namespace

base::Status Application::initialize() {
  for (const CommandSpec& command : commandTable()) {
    base::Status status = host_.commands().addCommand(kCommandGroup, command.name, kCommandFlags,
                                                      [this, &command] { run(command); });
    if (!status) return status.withContext("registering the commands");
  }
  return base::Status::ok();
}

void Application::run(const CommandSpec& command) {
  ResourceScope resources(host_);
  CommandContext context(host_, state_, strings_, command.name);
  if (command.needs_catalogue && !state_.catalogue) {
    context.print(StringId::kErrorNoFileLoaded);
    return;
  }
  // A fault ends this command only: the drawing and the session stay usable.
  try {
    command.handler(context);
  } catch (...) {
    context.print(StringId::kErrorCommandFailed, {command.name, describeCurrentException()});
  }
}

void Application::unload() {
  {
    // The lists of the palettes that exist are written for the file they belong to,
    // favorites first.
    ResourceScope resources(host_);
    CommandContext context(host_, state_, strings_, L"");
    saveFavoritesList(context);
    saveRecentList(context);
  }
  state_.catalogue.reset();
  state_.resources.reset();
  host_.commands().removeGroup(kCommandGroup);
}

}  // namespace shell
