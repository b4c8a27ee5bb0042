// Resource files of every kind, and the helpers their readers share.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <filesystem>
#include <fstream>

#include "base/file_read.h"
#include "base/utf.h"
#include "dxf/dictionary.h"
#include "dxf/group_code.h"
#include "dxf/number_text.h"
#include "dxf/record_edit.h"
#include "dxf/resource_copy.h"
#include "dxf/resource_internal.h"
#include "dxf/symbol_tables.h"

extern char** environ;

namespace dxf {

namespace resource_detail {

bool usesHandles(const Document& doc) {
  if (!doc.isR12()) return true;
  std::vector<Tag> handling = doc.headerVariable("$HANDLING");
  if (!handling.empty() &&
      doc.text(handling.front()).find_first_of("123456789") != std::string_view::npos) {
    return true;
  }
  for (RecordId id = doc.first(); id != kNoRecord; id = doc.next(id)) {
    if (doc.record(id).handle != 0) return true;
  }
  return false;
}

RecordId addTableEntry(Document& doc, std::string_view table, std::span<const Tag> tags) {
  Span span = doc.addTable(table);
  RecordId entry = doc.newRecord(tags);
  doc.insertBefore(span.tail, entry);
  RecordEdit head(doc, span.head);
  if (int at = head.find(70); at >= 0) {
    int64_t count = doc.intValue(span.head, 70, 0);
    head.setText(static_cast<size_t>(at), formatInt(count + 1));
  }
  // AutoCAD lists the DIMSTYLE table's entries in its head (71 count, 340 each).
  if (table == "DIMSTYLE" && doc.record(entry).handle != 0) {
    if (int at = head.find(71); at >= 0) {
      int64_t count = doc.intValue(span.head, 71, 0);
      head.setText(static_cast<size_t>(at), formatInt(count + 1));
      size_t pos = static_cast<size_t>(at) + 1;
      while (pos < head.tags().size() && head.tags()[pos].code == 340) ++pos;
      head.insert(pos, 340, formatHandle(doc.record(entry).handle));
    }
  }
  head.commit();
  return entry;
}

base::Result<RecordId> ensureRootDictionary(Document& doc) {
  if (doc.isR12()) {
    return base::Status::unsupported(
        "an R12 drawing cannot store dictionaries; save it as R2000 or later first");
  }
  RecordId root = namedObjectsDictionary(doc);
  if (root != kNoRecord) return root;
  Span objects = doc.addSection("OBJECTS");
  Tag tags[] = {doc.makeTag(0, "DICTIONARY"), doc.makeTag(5, formatHandle(doc.allocateHandle())),
                doc.makeTag(330, "0"), doc.makeTag(100, "AcDbDictionary"), doc.makeTag(281, "1")};
  root = doc.newRecord(tags);
  doc.insertBefore(doc.next(objects.head), root);
  return root;
}

base::Result<RecordId> ensureRootEntry(Document& doc, std::wstring_view key) {
  auto root = ensureRootDictionary(doc);
  if (!root) return root;
  RecordId dict = dictionaryGet(doc, *root, key);
  if (dict != kNoRecord) return dict;
  return createDictionary(doc, *root, key);
}

std::vector<SourceLine> splitLines(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  std::wstring text;
  if (base::isValidUtf8(bytes)) {
    text = base::fromUtf8(bytes);
  } else {
    // Codecs are not shared between threads, so each file gets its own.
    base::Result<Codec> windows = Codec::forDrawing("AC1015", "ANSI_1252");
    text = windows ? windows.value().decode(bytes) : base::fromUtf8(bytes);
  }
  std::vector<SourceLine> lines;
  int number = 1;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find(L'\n', start);
    if (end == std::wstring::npos) end = text.size();
    std::wstring line = text.substr(start, end - start);
    if (!line.empty() && line.back() == L'\r') line.pop_back();
    if (end < text.size() || !line.empty()) lines.push_back({std::move(line), number});
    ++number;
    start = end + 1;
  }
  return lines;
}

base::Status lineError(const std::string& file, int line, const std::string& message) {
  return base::Status::invalid(file + ":" + std::to_string(line) + ": " + message);
}

std::wstring_view trim(std::wstring_view text) {
  while (!text.empty() && (text.front() == L' ' || text.front() == L'\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == L' ' || text.back() == L'\t')) text.remove_suffix(1);
  return text;
}

bool parseReal(std::wstring_view text, double& out) {
  text = trim(text);
  if (text.empty()) return false;
  std::string ascii;
  for (wchar_t c : text) {
    if (c > 0x7F) return false;
    ascii.push_back(static_cast<char>(c));
  }
  return parseDouble(ascii, out);
}

std::wstring upper(std::wstring_view text) {
  std::wstring out(text);
  for (wchar_t& c : out) c = static_cast<wchar_t>(std::towupper(c));
  return out;
}

}  // namespace resource_detail

namespace {

std::string extensionOf(const std::string& path) {
  std::string ext = std::filesystem::path(path).extension().string();
  std::transform(ext.begin(), ext.end(), ext.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ext;
}

// Linetype, multiline and pattern libraries take kilobytes, the largest some megabytes.
constexpr size_t kMaxResourceFileBytes = size_t{64} << 20;

base::Result<std::string> readFile(const std::string& path) {
  auto bytes = base::readFileUpTo(path, kMaxResourceFileBytes);
  if (bytes.status().code() == base::Code::kInvalid) {
    return base::Status::invalid("cannot read '" + path + "': larger than 64 MB, more than " +
                                 "a resource file holds; check the class file's resource line");
  }
  return bytes;
}

// Runs `program input output`; returns its exit status, or -1 when it cannot be started.
int runConverter(const std::string& program, const std::string& input, const std::string& output) {
  std::vector<std::string> args = {program, input, output};
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  pid_t pid = 0;
  if (posix_spawnp(&pid, program.c_str(), nullptr, nullptr, argv.data(), environ) != 0) return -1;
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

const std::vector<std::wstring>* namesOf(const ResourceNameMap& needed, uint32_t mask,
                                         uint32_t kind) {
  if (!(mask & kind)) return nullptr;
  auto it = needed.find(kind);
  return it == needed.end() ? nullptr : &it->second;
}

template <typename Def>
const Def* findDefinition(const std::vector<Def>& defs, std::wstring_view name) {
  for (const Def& def : defs) {
    if (sameName(def.name, name)) return &def;
  }
  return nullptr;
}

base::Result<ResourceNameMap> importLinetypes(Document& target, std::string_view bytes,
                                              const std::string& path,
                                              const std::vector<std::wstring>* names) {
  auto defs = parseLinetypeFile(bytes, path);
  if (!defs) return defs.status();
  ResourceNameMap provided;
  if (!names) return provided;
  auto& out = provided[resource::kLinetypes];
  for (const std::wstring& name : *names) {
    if (findTableEntry(target, "LTYPE", name) != kNoRecord) {
      out.push_back(name);
    } else if (const LinetypeDefinition* def = findDefinition(*defs, name)) {
      if (addLinetype(target, *def)) out.push_back(name);
    }
  }
  return provided;
}

base::Result<ResourceNameMap> importMlineStyles(Document& target, std::string_view bytes,
                                                const std::string& path,
                                                const std::vector<std::wstring>* names) {
  auto defs = parseMlineFile(bytes, path);
  if (!defs) return defs.status();
  ResourceNameMap provided;
  if (!names) return provided;
  if (target.isR12() && !names->empty()) {
    return base::Status::unsupported(
        "an R12 drawing cannot hold multiline styles; save it as R2000 or later first");
  }
  auto& out = provided[resource::kMlineStyles];
  for (const std::wstring& name : *names) {
    if (findStyle(target, L"ACAD_MLINESTYLE", name) != kNoRecord) {
      out.push_back(name);
    } else if (const MlineStyleDefinition* def = findDefinition(*defs, name)) {
      if (addMlineStyle(target, *def)) out.push_back(name);
    }
  }
  return provided;
}

base::Result<ResourceNameMap> importPatterns(std::vector<PatternDefinition>& patterns,
                                             std::string_view bytes, const std::string& path,
                                             const std::vector<std::wstring>* names) {
  auto defs = parsePatternFile(bytes, path);
  if (!defs) return defs.status();
  ResourceNameMap provided;
  if (!names) return provided;
  auto& out = provided[resource::kPatterns];
  for (const std::wstring& name : *names) {
    if (const PatternDefinition* def = findDefinition(*defs, name)) {
      auto known = std::find_if(patterns.begin(), patterns.end(),
                                [&](const PatternDefinition& p) { return sameName(p.name, name); });
      if (known != patterns.end()) {
        *known = *def;
      } else {
        patterns.push_back(*def);
      }
      out.push_back(name);
    } else if (isPredefinedPattern(name) || findDefinition(patterns, name)) {
      out.push_back(name);
    }
  }
  return provided;
}

}  // namespace

base::Result<Document> loadDrawingForResources(const std::string& path) {
  std::string ext = extensionOf(path);
  if (ext != ".dwg" && ext != ".dwt") return Document::load(path);
  const char* converter = std::getenv("TAXOR_DWG_CONVERTER");
  if (converter == nullptr || *converter == '\0') {
    return base::Status::unsupported(
        "cannot read '" + path +
        "': DWG files need a converter; set TAXOR_DWG_CONVERTER or save the drawing as DXF");
  }
  std::error_code ec;
  if (!std::filesystem::is_regular_file(path, ec)) {
    return base::Status::io("cannot read '" + path + "': no such file");
  }
  std::string dir_template =
      (std::filesystem::temp_directory_path(ec) / "taxor-dwg-XXXXXX").string();
  if (mkdtemp(dir_template.data()) == nullptr) {
    return base::Status::io("cannot read '" + path +
                            "': cannot make a temporary folder: " + std::strerror(errno));
  }
  std::string output = dir_template + "/converted.dxf";
  auto convert = [&]() -> base::Result<Document> {
    int exit_code = runConverter(converter, path, output);
    std::string prefix = "cannot read '" + path + "': the converter '" + converter + "'";
    if (exit_code < 0) return base::Status::io(prefix + " could not be started");
    if (exit_code > 0) {
      return base::Status::io(prefix + " failed with exit code " + std::to_string(exit_code));
    }
    if (!std::filesystem::is_regular_file(output))
      return base::Status::io(prefix + " wrote no DXF file");
    auto doc = Document::load(output);
    if (!doc) return doc.status().withContext("cannot read '" + path + "' as converted to DXF");
    return doc;
  };
  base::Result<Document> doc = convert();
  std::filesystem::remove_all(dir_template, ec);
  return doc;
}

base::Result<ResourceNameMap> importResourceFile(Document& target,
                                                 std::vector<PatternDefinition>& patterns,
                                                 const std::string& path, uint32_t mask,
                                                 const ResourceNameMap& needed) {
  // Copied objects are announced once their references and dictionary entries are written.
  ChangeBatch batch(target);
  std::string ext = extensionOf(path);
  if (ext == ".dxf" || ext == ".dwg" || ext == ".dwt") {
    if ((mask & resource::kLayouts) && needed.count(resource::kLayouts)) {
      return base::Status::unsupported("cannot import from '" + path +
                                       "': importing layouts is not supported");
    }
    auto source = loadDrawingForResources(path);
    if (!source) return source.status();
    return copyResources(target, *source, mask, needed);
  }
  if (ext != ".lin" && ext != ".mln" && ext != ".pat") {
    return base::Status::invalid("cannot read '" + path +
                                 "': not a resource file (.dxf, .dwg, .dwt, .lin, .mln or .pat)");
  }
  auto bytes = readFile(path);
  if (!bytes) return bytes.status();
  if (ext == ".lin") {
    return importLinetypes(target, *bytes, path, namesOf(needed, mask, resource::kLinetypes));
  }
  if (ext == ".mln") {
    return importMlineStyles(target, *bytes, path, namesOf(needed, mask, resource::kMlineStyles));
  }
  return importPatterns(patterns, *bytes, path, namesOf(needed, mask, resource::kPatterns));
}

}  // namespace dxf
