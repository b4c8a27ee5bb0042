// The host's own commands: what the system queues to the host, and later the drawing
// commands. Handlers live in one file per topic; table.cc only lists them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "headless/console.h"
#include "headless/dxf_database.h"
#include "headless/headless_editor.h"

namespace headless::host_commands {

// What a host command works with. Outlives every command it is passed to.
class Context {
 public:
  Context(Console& console, DxfDatabase& database, HeadlessEditor& editor)
      : console_(console), database_(database), editor_(editor) {}

  Console& console() { return console_; }
  DxfDatabase& database() { return database_; }
  HeadlessEditor& editor() { return editor_; }

  // Marks the running command as not having done what it was asked; the host tells the
  // editor reactors so, unless the command was cancelled.
  void fail() { failed_ = true; }
  // Returns whether fail() was called since the last call, and forgets it.
  bool takeFailed() { return std::exchange(failed_, false); }

 private:
  Console& console_;
  DxfDatabase& database_;
  HeadlessEditor& editor_;
  bool failed_ = false;
};

struct Entry {
  const wchar_t* name;  // upper case, without prefixes
  void (*run)(Context&);
};

// Every host command, registered by the host in the group "ACAD" in this order.
std::span<const Entry> table();

// `text` in upper case (std::towupper: command names are the host's, not the classes').
std::wstring upperCase(std::wstring_view text);
// `typed` in upper case without the "_" and "." prefixes, which may come in either order.
std::wstring commandWord(std::wstring_view typed);

// display.cc
void regen(Context& context);
// blocks.cc
void attsync(Context& context);
// selection.cc
void aiDeselect(Context& context);

}  // namespace headless::host_commands
