// Feeds arbitrary bytes to the class-file parser as the contents of a file (any encoding,
// byte-order mark or none, CR LF, NUL bytes, lines longer than the line buffer). Besides the
// sanitizers' own checks:
// - every message of a line carries a line number within the file and every message of the
//   whole file none, and each reads "error" or "warning" as printed;
// - the parse fails exactly when a message is fatal, and then leaves an empty catalogue;
// - a catalogue that parsed is consistent: its groups and its table index name classes it
//   holds, keyed by their lower-case names;
// - each class written back as a class file parses again alone, to the same name, types
//   and tables, when the format can hold its texts (see writable).
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <system_error>

#include "base/text_case.h"
#include "base/utf.h"
#include "catalogue/class_writer.h"
#include "catalogue/line_reader.h"
#include "catalogue/parser.h"
#include "shell/load_commands.h"
#include "shell/string_table.h"

namespace {

using catalogue::Diagnostic;
using catalogue::ParseMessage;

[[noreturn]] void failWith(const std::string& what) {
  // Names may hold any character, a NUL too: the whole text is written.
  std::fprintf(stderr, "class_file_fuzzer: ");
  std::fwrite(what.data(), 1, what.size(), stderr);
  std::fprintf(stderr, "\n");
  std::abort();
}

// An environment that knows a few variables, one of each kind, and keeps ACAD in memory.
class FuzzEnvironment final : public catalogue::ParseEnvironment {
 public:
  base::Result<host::SysVar> getVar(std::string_view name) const override {
    std::string lower(name);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower == "ltscale") return host::SysVar{1.0};
    if (lower == "osmode") return host::SysVar{int16_t{0}};
    if (lower == "clayer") return host::SysVar{std::wstring(L"0")};
    if (lower == "insbase") return host::SysVar{host::Point3{}};
    return base::Status::notFound("no variable " + std::string(name));
  }
  std::optional<std::wstring> getEnv(std::wstring_view name) const override {
    auto it = env_.find(std::wstring(name));
    if (it == env_.end()) return std::nullopt;
    return it->second;
  }
  bool setEnv(std::wstring_view name, std::wstring_view value) override {
    env_[std::wstring(name)] = value;
    return true;
  }

 private:
  std::map<std::wstring, std::wstring> env_;
};

// A folder with one file of each kind that the resource keywords accept, so that relative
// resource lines resolve; made once per process.
const std::wstring& classFilePath() {
  static const std::wstring path = [] {
    std::error_code ec;
    std::filesystem::path dir =
        std::filesystem::temp_directory_path(ec) / "taxor_class_file_fuzzer";
    std::filesystem::create_directories(dir, ec);
    for (const char* name :
         {"blocks.dxf", "Door.dwg", "lines.lin", "hatch.pat", "styles.mln", "font.shx"}) {
      std::ofstream(dir / name) << "0\nEOF\n";
    }
    return base::fromUtf8((dir / "classes.txt").string());
  }();
  return path;
}

// Messages before the end-of-file ones are about a line; of those after them, some are
// about a line and some about the whole file.
bool isLineMessage(ParseMessage message) {
  return static_cast<int>(message) < static_cast<int>(ParseMessage::kUnclosedClass);
}

// Whether a message stops the parse; "invalid definition" does so only for a wrong token
// count (see below), not for a macro with a bad name.
bool isFatal(const Diagnostic& d, const std::wstring& text) {
  return text.find(L"error") != std::wstring::npos && d.message != ParseMessage::kInvalidDefinition;
}

size_t lineCount(std::string_view bytes) {
  std::wstring text = catalogue::decodeClassFile(bytes);
  catalogue::LineReader reader(text);
  std::wstring_view line;
  size_t count = 0;
  while (reader.next(line)) ++count;
  return count;
}

void checkMessages(std::string_view bytes, const catalogue::ParsedClasses& parsed) {
  const size_t lines = lineCount(bytes);
  bool fatal = false;
  std::string all;
  for (const Diagnostic& d : parsed.messages) {
    all += base::toUtf8(shell::diagnosticText(shell::StringTable::builtIn(), d));
  }
  for (const Diagnostic& d : parsed.messages) {
    std::wstring text = shell::diagnosticText(shell::StringTable::builtIn(), d);
    std::string shown = base::toUtf8(text);
    if (isLineMessage(d.message) || d.line != 0) {
      if (d.line < 1 || static_cast<size_t>(d.line) > lines) {
        failWith("message \"" + shown + "\" has line " + std::to_string(d.line) + " of " +
                 std::to_string(lines));
      }
      if (!text.starts_with(std::to_wstring(d.line) + L": ")) {
        failWith("message \"" + shown + "\" does not start with its line number");
      }
    } else if (!text.empty() && std::iswdigit(text.front())) {
      failWith("message \"" + shown + "\" of the whole file shows a line number");
    }
    if (text.find(L"error") == std::wstring::npos && text.find(L"warning") == std::wstring::npos) {
      failWith("message \"" + shown + "\" says neither error nor warning");
    }
    fatal = fatal || isFatal(d, text);
  }
  // "invalid definition" stops the parse for a wrong token count: then it is the last word.
  if (!parsed.ok && !fatal && !parsed.messages.empty() &&
      parsed.messages.back().message == ParseMessage::kInvalidDefinition) {
    fatal = true;
  }
  if (parsed.ok == fatal) {
    failWith(std::string("the parse ") + (parsed.ok ? "succeeded after" : "failed without") +
             " a fatal message; messages:\n" + all);
  }
  if (!parsed.catalogue) failWith("no catalogue");
  if (!parsed.ok && !parsed.catalogue->empty()) failWith("a failed parse left classes");
}

void checkGroup(const catalogue::Catalogue& c, const catalogue::Group& group) {
  for (const std::wstring& member : group.members) {
    if (!c.objects.contains(member)) failWith("a group lists a class the catalogue lacks");
  }
  for (const catalogue::Group& child : group.children) checkGroup(c, child);
}

void checkCatalogue(const catalogue::Catalogue& c) {
  checkGroup(c, c.tree);
  for (const auto& [key, cls] : c.objects) {
    if (key != base::lowerCase(cls.display_name)) failWith("a class keyed by another name");
    if (c.findObject(cls.display_name) != &cls) failWith("a class not found by its name");
    if (cls.objectTypes().empty()) failWith("a class without a type");
    for (const catalogue::TableDefinition& table : cls.tables) {
      const catalogue::TableEntry* entry = c.findTable(table.name);
      if (entry == nullptr ||
          std::find(entry->objects.begin(), entry->objects.end(), key) == entry->objects.end()) {
        failWith("a table missing from the table index");
      }
    }
  }
  for (const auto& [name, entry] : c.tables) {
    for (const std::wstring& key : entry.objects) {
      if (!c.objects.contains(key)) failWith("the table index names a class the catalogue lacks");
    }
  }
}

// Whether the file format can hold the texts of `cls` as they are: a backslash of their own
// is taken for an escape when read, and a line longer than the line buffer is read in
// pieces.
bool writable(const catalogue::ObjectClass& cls, const std::wstring& written) {
  auto plain = [](const std::wstring& text) { return text.find(L'\\') == std::wstring::npos; };
  bool ok = plain(cls.display_name) && plain(cls.icon);
  for (const catalogue::TableDefinition& table : cls.tables) {
    for (const catalogue::FieldDefinition& field : table.fields) {
      ok = ok && plain(field.description) && plain(field.value);
      for (const std::wstring& v : field.allowed) ok = ok && plain(v);
    }
  }
  catalogue::LineReader reader(written);
  std::wstring_view line;
  while (ok && reader.next(line)) ok = line.ends_with(L'\n');
  return ok;
}

// What a class written back must keep: its name, its types, its tables' names and fields.
void checkWrittenBack(const catalogue::Catalogue& c, FuzzEnvironment& environment) {
  for (const auto& [key, cls] : c.objects) {
    std::wstring text = catalogue::writeClassDefinition(cls, &c, 6);
    if (!writable(cls, text)) continue;
    std::string written = base::toUtf8(text);
    catalogue::ParsedClasses again =
        catalogue::parseClassDefinitions(written, classFilePath(), environment);
    if (!again.ok) {
      std::string shown;
      for (const Diagnostic& d : again.messages) {
        shown += base::toUtf8(shell::diagnosticText(shell::StringTable::builtIn(), d));
      }
      failWith("class \"" + base::toUtf8(cls.display_name) + "\" written back does not parse:\n" +
               written + "--- messages:\n" + shown);
    }
    const catalogue::ObjectClass* read = again.catalogue->findObject(cls.display_name);
    if (read == nullptr || again.catalogue->objects.size() != 1) {
      failWith("class \"" + base::toUtf8(cls.display_name) + "\" written back reads otherwise:\n" +
               written);
    }
    if (read->display_name != cls.display_name || read->objectTypes() != cls.objectTypes() ||
        read->tables.size() != cls.tables.size()) {
      failWith("class \"" + base::toUtf8(cls.display_name) +
               "\" written back has another name, types or tables:\n" + written);
    }
    for (size_t t = 0; t < cls.tables.size(); ++t) {
      const auto& before = cls.tables[t];
      const auto& after = read->tables[t];
      bool same = before.name == after.name && before.fields.size() == after.fields.size();
      for (size_t f = 0; same && f < before.fields.size(); ++f) {
        same = before.fields[f].name == after.fields[f].name &&
               before.fields[f].type == after.fields[f].type &&
               before.fields[f].kind == after.fields[f].kind &&
               before.fields[f].flags == after.fields[f].flags;
      }
      if (!same) {
        failWith("table " + base::toUtf8(before.name) + " of class \"" +
                 base::toUtf8(cls.display_name) + "\" written back reads otherwise:\n" + written);
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  FuzzEnvironment environment;
  catalogue::ParsedClasses parsed =
      catalogue::parseClassDefinitions(bytes, classFilePath(), environment);
  checkMessages(bytes, parsed);
  if (parsed.ok) {
    checkCatalogue(*parsed.catalogue);
    checkWrittenBack(*parsed.catalogue, environment);
  }
  return 0;
}
