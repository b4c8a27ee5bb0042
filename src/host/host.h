// Everything the system asks of a CAD application, in one place.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/command_stack.h"
#include "host/database.h"
#include "host/dialogs.h"
#include "host/document.h"
#include "host/editor.h"

namespace host {

// Threads: a host and everything it returns (document, database, editor, dialogs, command
// stack, ids) are used from one thread at a time, and reactors are called on the thread that
// made the change. Several hosts may run on several threads at once; nothing is shared
// between them.
class Host {
 public:
  Host() = default;
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  virtual ~Host() = default;

  // The current document; every command works on it.
  virtual Document& document() = 0;
  virtual Editor& editor() = 0;
  virtual Dialogs& dialogs() = 0;
  virtual CommandStack& commands() = 0;

  // The string resources that prompts and messages come from while a command runs.
  // Every push is matched by a pop on every path of the command.
  virtual void pushResourceHandle() = 0;
  virtual void popResourceHandle() = 0;

  Database& database() { return document().database(); }

  // The host's environment values (the support path "ACAD"...): nothing when unset.
  virtual std::optional<std::wstring> getEnv(std::wstring_view name) {
    (void)name;
    return std::nullopt;
  }
  // Returns false when the value cannot be set.
  virtual bool setEnv(std::wstring_view name, std::wstring_view value) {
    (void)name, (void)value;
    return false;
  }

  // Writes `contents` to the file at `path` whole or not at all: a reader sees the file as it
  // was or as written, never a part, and a failure leaves what was there. kUnsupported where
  // the host writes no files.
  virtual base::Status writeTextFile(const std::wstring& path, std::string_view contents) {
    (void)path, (void)contents;
    return base::Status::unsupported("this host cannot write files");
  }

  // The names of this machine and of the user running the program, as the operating system
  // reports them; empty when it reports none.
  virtual std::wstring computerName() = 0;
  virtual std::wstring userName() = 0;
};

}  // namespace host
