// The host boundary on a DXF drawing and a text command line.
#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "dxf/document.h"
#include "headless/console.h"
#include "headless/dxf_database.h"
#include "headless/headless_dialogs.h"
#include "headless/headless_editor.h"
#include "headless/input_stream.h"
#include "host/host.h"

namespace headless {

class HeadlessHost : public host::Host, public host::Document, public host::CommandStack {
 public:
  // Works on `drawing` (read from `file_name`, reported as its full path) with commands read from
  // `input`; everything must outlive the host. See Console for `echo` and `quiet`.
  HeadlessHost(dxf::Document& drawing, std::wstring file_name, InputStream& input,
               std::ostream& out, std::ostream& err, bool echo, bool quiet = false);

  // Reads and runs commands until the input ends; a prompt pending then is cancelled.
  void run();

  // How many resource handles and document locks are held now (0 between commands).
  int resourceDepth() const { return resource_depth_; }
  int lockDepth() const { return lock_depth_; }

  // host::Host
  host::Document& document() override { return *this; }
  host::Editor& editor() override { return editor_; }
  host::Dialogs& dialogs() override { return dialogs_; }
  host::CommandStack& commands() override { return *this; }
  // Environment values live in memory, seeded from the process environment (the support
  // path "ACAD" comes from the ACAD variable); changes last for the session.
  std::optional<std::wstring> getEnv(std::wstring_view name) override;
  bool setEnv(std::wstring_view name, std::wstring_view value) override;
  std::wstring computerName() override;
  std::wstring userName() override;
  void pushResourceHandle() override { ++resource_depth_; }
  void popResourceHandle() override { --resource_depth_; }

  // host::Document
  host::Database& database() override { return database_; }
  std::wstring fileName() override { return file_name_; }
  void sendStringToExecute(std::wstring_view text) override { queued_ += text; }
  void lock() override { ++lock_depth_; }
  void unlock() override { --lock_depth_; }

  // host::CommandStack
  base::Status addCommand(std::wstring_view group, std::wstring_view name, int flags,
                          host::CommandFunction function) override;
  void removeGroup(std::wstring_view group) override;
  std::vector<std::wstring> commandsOf(std::wstring_view group) const override;

  DxfDatabase& dxfDatabase() { return database_; }
  Console& console() { return console_; }

 private:
  struct Command {
    std::wstring group;
    std::wstring name;  // upper case
    int flags = 0;
    host::CommandFunction function;
  };

  void runCommand(const std::wstring& typed);
  void registerHostCommands();
  void attsync();

  Console console_;
  DxfDatabase database_;
  HeadlessEditor editor_;
  HeadlessDialogs dialogs_;
  std::wstring file_name_;
  std::vector<Command> commands_;
  std::wstring queued_;
  std::map<std::wstring, std::wstring, std::less<>> environment_;
  int resource_depth_ = 0;
  int lock_depth_ = 0;
  // Set by a command of this host that could not do what it was asked.
  bool command_failed_ = false;
};

}  // namespace headless
