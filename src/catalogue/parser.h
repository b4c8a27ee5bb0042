// The class-definition file parser: one file (or its text) in, a catalogue and the parser's
// messages out, without reading or changing any drawing, so that one parse serves many
// drawings (see binding.h for what each drawing then adds).
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/status.h"
#include "catalogue/catalogue.h"
#include "catalogue/parse_message.h"
#include "host/host.h"

namespace catalogue {

// What the parse asks of the program around it: the kinds of system variables and the
// support path that shape fonts are made known through. No drawing is reached through it.
class ParseEnvironment {
 public:
  virtual ~ParseEnvironment() = default;
  // The current value of variable `name`, whose type is the kind of a `variable` line;
  // a failure for a name the host does not know.
  virtual base::Result<host::SysVar> getVar(std::string_view name) const = 0;
  // An environment value ("ACAD", the support path); nothing when unset.
  virtual std::optional<std::wstring> getEnv(std::wstring_view name) const = 0;
  // False when the value cannot be set.
  virtual bool setEnv(std::wstring_view name, std::wstring_view value) = 0;
};

// The environment of a host: its variables and environment values.
class HostEnvironment final : public ParseEnvironment {
 public:
  explicit HostEnvironment(host::Host& host) : host_(host) {}
  base::Result<host::SysVar> getVar(std::string_view name) const override;
  std::optional<std::wstring> getEnv(std::wstring_view name) const override;
  bool setEnv(std::wstring_view name, std::wstring_view value) override;

 private:
  host::Host& host_;
};

// A well-formed table as it closed, to be compared with what a drawing stored: a mismatch
// is an error of `line` that stops the file there, after the first `messages_before`
// messages of the parse.
struct StoredTableCheck {
  TableDefinition table;  // field names and types only
  int line = 0;
  size_t messages_before = 0;
};

struct ParsedClasses {
  // The classes of a file that parsed; after any failure an empty catalogue with only its
  // class-file path set.
  std::shared_ptr<const Catalogue> catalogue;
  // Every error and warning, in the order found.
  std::vector<Diagnostic> messages;
  // In file order, up to where the parse stopped.
  std::vector<StoredTableCheck> table_checks;
  bool ok = false;
};

// Limits that keep a hostile file from taking the machine. A file's text takes nine times
// its size while it is parsed, the catalogue up to some tens of times; real class files,
// of thousands of lines, take some hundred kilobytes and some thousands of classes.
inline constexpr size_t kMaxClassFileBytes = size_t{16} << 20;
// A class takes some kilobytes; a tree of more could not be browsed.
inline constexpr size_t kMaxObjectClasses = 20000;
// Each field is compared with those before it; real tables have some dozens.
inline constexpr size_t kMaxTableFields = 1000;
// Real trees nest a handful of groups; the limit keeps the walks over the tree off the end
// of the stack.
inline constexpr size_t kMaxGroupDepth = 1000;

// Parses `utf8` as the contents of a file at `path`, a full path; relative resource paths
// resolve against its folder. More than kMaxObjectClasses classes or kMaxTableFields fields
// in a table, groups nested deeper than kMaxGroupDepth, and macros that add more than
// MacroTable::kMaxAddedCharacters, are fatal errors of the line that goes beyond.
ParsedClasses parseClassDefinitions(std::string_view utf8, const std::wstring& path,
                                    ParseEnvironment& environment);
// Parses the UTF-8 file at `path`. A file that cannot be read gives an empty catalogue and
// no message; one larger than kMaxClassFileBytes an empty catalogue and the fatal
// kFileTooLarge, without being read.
ParsedClasses readClassDefinitions(const std::wstring& path, ParseEnvironment& environment);

// Parsing and binding to the host's current drawing in one, as loading a file does.
struct ParseResult {
  // Filled on success; empty (only its class-file path set) after any failure.
  Catalogue catalogue;
  // What the binding brought into the drawing.
  DrawingResources resources;
  // Every error and warning, in the order printed.
  std::vector<Diagnostic> messages;
  bool ok = false;
};
ParseResult parseClassFile(const std::wstring& path, host::Host& host);
ParseResult parseClassText(std::string_view utf8, const std::wstring& path, host::Host& host);

}  // namespace catalogue
