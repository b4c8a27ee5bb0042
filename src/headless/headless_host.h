// The host boundary on a DXF drawing and a text command line.
#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "dxf/document.h"
#include "headless/command_line.h"
#include "headless/console.h"
#include "headless/dxf_database.h"
#include "headless/headless_dialogs.h"
#include "headless/headless_document.h"
#include "headless/headless_editor.h"
#include "headless/input_stream.h"
#include "host/host.h"

namespace headless {

class HeadlessHost : public host::Host {
 public:
  // Works on `drawing` (read from `file_name`, reported as its full path) with commands read from
  // `input`; everything must outlive the host. See Console for `echo` and `quiet`.
  HeadlessHost(dxf::Document& drawing, std::wstring file_name, InputStream& input,
               std::ostream& out, std::ostream& err, bool echo, bool quiet = false);

  // Reads and runs commands until the input ends; a prompt pending then is cancelled.
  void run() { command_line_.run(); }

  // How many resource handles and document locks are held now (0 between commands).
  int resourceDepth() const { return resource_depth_; }
  int lockDepth() const { return document_.lockDepth(); }

  // host::Host
  host::Document& document() override { return document_; }
  host::Editor& editor() override { return editor_; }
  host::Dialogs& dialogs() override { return dialogs_; }
  host::CommandStack& commands() override { return command_line_; }
  // Environment values live in memory, seeded from the process environment (the support
  // path "ACAD" comes from the ACAD variable); changes last for the session.
  std::optional<std::wstring> getEnv(std::wstring_view name) override;
  bool setEnv(std::wstring_view name, std::wstring_view value) override;
  // Through a temporary file beside `path`, flushed, then renamed over it.
  base::Status writeTextFile(const std::wstring& path, std::string_view contents) override;
  std::wstring computerName() override;
  std::wstring userName() override;
  void pushResourceHandle() override { ++resource_depth_; }
  void popResourceHandle() override { --resource_depth_; }

  // The document's database, with the DXF-specific calls.
  DxfDatabase& dxfDatabase() { return database_; }
  Console& console() { return console_; }

 private:
  Console console_;
  DxfDatabase database_;
  HeadlessEditor editor_;
  HeadlessDialogs dialogs_;
  HeadlessDocument document_;
  CommandLine command_line_;
  std::map<std::wstring, std::wstring, std::less<>> environment_;
  int resource_depth_ = 0;
};

}  // namespace headless
