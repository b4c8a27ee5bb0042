// Runs the bytes of an input as command lines and prompt answers through the headless command
// line, on a small classified drawing with a small class file loaded. A line "~c" stands for
// entry c (its byte, modulo the table's size) of kPicks, a command or a typical answer;
// every other line is typed as it is, so that the dictionary and plain scripts reach the
// commands too. After every input:
// - every command has popped what it pushed (resource handles, document locks);
// - the drawing is written and read back; the written drawing writes back the same;
// - every object the session left untouched keeps its bytes;
// - every record of every entity reads back whole (each record container decodes into as
//   many values per record as its stored table has fields).
// Files are never touched per input: the drawing is parsed from memory, the class file is
// parsed once, a file dialog only ever names the class file, and files are "written" to
// memory.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <system_error>

#include "base/utf.h"
#include "catalogue/binding.h"
#include "catalogue/parser.h"
#include "dxf/document.h"
#include "dxf/sample_drawing.h"
#include "fakes/forwarding_host.h"
#include "objdata/record_cursor.h"
#include "objdata/stored_table.h"
#include "session/session.h"
#include "shell/state.h"

namespace {

[[noreturn]] void failWith(const std::string& what) {
  std::fprintf(stderr, "command_session_fuzzer: %s\n", what.c_str());
  std::abort();
}

// Two classes told apart by colour on one layer, with a shared table; a class of lines; a
// class of arcs whose values are templates; groups, one of them disabled.
constexpr const char* kClasses =
    "define\tWALLTYPE\tPolyline\n"
    "class\tBuildings\t1\tBuildings and walls\n"
    "obj_name\tWall\t1\t10\n"
    "obj_type\t$(walltype)\n"
    "obj_prop\tlayer\tWalls\n"
    "obj_prop\tcolor\t3\t*\n"
    "vel_name\tWALLS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tHEIGHT\tHeight\trequired real\t2.5\t2:3\n"
    "vel_fld\tMATERIAL\tMaterial\tcharacter\tbrick\tbrick,concrete\n"
    "vel_fld\tNOTE\tNote\tnotempty character\n"
    "obj_name\tPartition\t1\t11\n"
    "obj_type\tPolyline\n"
    "obj_prop\tlayer\tWalls\n"
    "obj_prop\tcolor\t2\t*\n"
    "vel_name\tWALLS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tHEIGHT\tHeight\trequired real\t2.5\t2:3\n"
    "vel_fld\tMATERIAL\tMaterial\tcharacter\tbrick\tbrick,concrete\n"
    "vel_fld\tNOTE\tNote\tnotempty character\n"
    "/class\n"
    "class\tNetworks\t1\n"
    "autoconst\t1\n"
    "obj_name\tCable\t1\t5\n"
    "obj_type\tLine\n"
    "vel_name\tCABLES\n"
    "vel_key\tCLASS\n"
    "vel_fld\tKIND\tKind\tcharacter\tpower\tpower\n"
    "vel_fld\tCOUNT\tCount\tinteger\t3\t1:12\n"
    "vel_name\tOWNERS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tOWNER\tOwner\tcharacter\t$(user_name)\n"
    "autoconst\t0\n"
    "class\tOld\t0\n"
    "obj_name\tDuct\t1\t4\n"
    "obj_type\tLine,Arc\n"
    "vel_name\tCABLES\n"
    "vel_key\tCLASS\n"
    "vel_fld\tKIND\tKind\tcharacter\tpower\tpower\n"
    "vel_fld\tCOUNT\tCount\tinteger\t3\t1:12\n"
    "/class\n"
    "/class\n"
    "obj_name\tMarker\t1\t1\n"
    "obj_type\tArc\n"
    "obj_prop\tcolor\t6\n"
    "vel_name\tMARKERS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tLABEL\tLabel\tcharacter\t$(obj_name)-c\t$(obj_name)-a:$(obj_name)-m\n"
    "vel_fld\tUNTIL\tUntil\tinteger\t2999\t$(year):2999\n"
    "vel_fld\tSCALE\tScale\treal\t0.5\n"
    "obj_name\tLabel\t1\t9000\n"
    "obj_type\tText,MText\n"
    "obj_prop\theight\t3\n"
    "vel_name\tLABELS\n"
    "vel_key\tCLASS\n"
    "vel_fld\tTEXT\tText\tcharacter\n";

// What the drawing is classified with before any input: one script run once.
constexpr const char* kClassifyFirst =
    "TAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n"
    "AI_DESELECT\nTAXOR_CLASSIFY\nCable\n1\n1\n0\n100\n\n"
    "AI_DESELECT\nTAXOR_CLASSIFY\nCable\n1\n1\n0\n100\n\n"
    "AI_DESELECT\nTAXOR_CLASSIFY\nMarker\n1\n1\n0\n104\n\n"
    "AI_DESELECT\nTAXOR_CLASSIFY\nDuct\n0\n1\n0\n104\n\n"
    "AI_DESELECT\n";

// Commands and answers an input picks with "~c". The class-file path is added at run time.
// clang-format off
constexpr std::string_view kPicks[] = {
    "TAXOR_CLASSIFY", "TAXOR_CLASSIFY_AUTO", "TAXOR_DRAW", "TAXOR_GUI", "TAXOR_PROPERTIES",
    "TAXOR_LOAD", "TAXOR_RESTORE", "TAXOR_RELOAD", "TAXOR_REMOVE", "TAXOR_REMOVE_ALL", "TAXOR_SEL",
    "TAXOR_SEL_CLASS", "TAXOR_SEL_EXT", "TAXOR_SEL_ALL", "TAXOR_SEL_NULL", "TAXOR_ASSERT",
    "TAXOR_SORT", "TAXOR_SEL_CLASSIFIED", "TAXOR_SEL_DUPLICATES", "TAXOR_DEL_DUPLICATES",
    "TAXOR_ROUND", "TAXOR_TEMPLATE", "TAXOR_TYPE", "TAXOR_STAT", "TAXOR_ABOUT", "TAXOR_IMPL_INSRT",
    "TAXOR_IMPL_TXT", "TAXOR_IMPL_MTXT", "AI_DESELECT", "REGEN", "ATTSYNC", "taxor_sel",
    "_.TAXOR_STAT",
    // Answers.
    "", "", "", "0", "1", "2", "5", "-3", "ALL", "L", "P", "R", "A", "F", "N", "First", "Last",
    "Wall", "Partition", "Cable", "Duct", "Marker", "Label", "wall", "CABLE", "Nothing",
    "Buildings", "Networks", "Old", "buildings", "WALLS", "CABLES", "MARKERS", "100", "101", "102",
    "103", "104", "105", "106", "107", "108", "10A", "10B", "10D", "10E", "10F", "113", "FFFF", "0",
    "2.5", "-1e308", "1e400", "nan", "power", "brick,concrete", "$(obj_name)", "$(user_name)",
    "%s%i%n", "\x1b", "classes.txt", "template.txt", "Wall Partition", "*", "?", ":", ",", " ",
    "\t",
};
// clang-format on

// The class file lives in a folder of its own, written once per process.
std::wstring classFilePath() {
  static const std::wstring path = [] {
    std::error_code ec;
    std::filesystem::path dir =
        std::filesystem::temp_directory_path(ec) / "taxor_command_session_fuzzer";
    std::filesystem::create_directories(dir, ec);
    std::ofstream(dir / "classes.txt", std::ios::binary) << kClasses;
    return base::fromUtf8((dir / "classes.txt").string());
  }();
  return path;
}

// The host the commands run on: the headless one, but a file dialog names only the class
// file (or a file that does not exist), and text files are written nowhere.
class SandboxHost final : public fakes::ForwardingHost {
 public:
  using ForwardingHost::ForwardingHost;

  std::optional<std::wstring> openFile(const std::wstring& title,
                                       const std::vector<std::wstring>& extensions,
                                       const std::wstring& initial) override {
    std::optional<std::wstring> typed = ForwardingHost::openFile(title, extensions, initial);
    if (!typed) return typed;
    return *typed == L"classes.txt" || *typed == classFilePath() ? classFilePath()
                                                                 : classFilePath() + L".missing";
  }
  std::optional<std::wstring> saveFile(const std::wstring& title,
                                       const std::wstring& default_extension) override {
    std::optional<std::wstring> typed = ForwardingHost::saveFile(title, default_extension);
    if (!typed) return typed;
    return classFilePath() + L".written";
  }
  base::Status writeTextFile(const std::wstring&, std::string_view contents) override {
    written_ = contents;
    return base::Status::ok();
  }

 private:
  std::string written_;
};

struct Fixture {
  catalogue::ParsedClasses classes;  // parsed once, bound to each session's drawing
  std::string drawing;               // the sample drawing, classified
};

// Makes the class file current in `s` as TAXOR_LOAD does, without reading it again.
void loadClasses(session::Session& s, const catalogue::ParsedClasses& classes) {
  catalogue::Binding bound = catalogue::bindCatalogue(classes, s.database());
  shell::ProcessState& state = s.application().state();
  state.class_file = classFilePath();
  state.catalogue = std::move(bound.catalogue);
  state.resources = std::make_shared<const catalogue::DrawingResources>(std::move(bound.resources));
}

struct Opened {
  std::ostringstream out;
  std::unique_ptr<session::Session> session;
};

// A session on `drawing_text`, on the sandbox host.
void open(Opened& opened, const std::string& drawing_text) {
  auto parsed = dxf::Document::parse(drawing_text, "fuzz.dxf");
  if (!parsed) failWith("the drawing does not parse: " + parsed.status().message());
  session::HostWrapper wrap = [](headless::HeadlessHost& host) -> std::unique_ptr<host::Host> {
    return std::make_unique<SandboxHost>(host);
  };
  auto made = session::Session::open(std::move(parsed.value()), L"fuzz.dxf", opened.out, opened.out,
                                     {.echo = false, .quiet = true, .wrap = wrap});
  if (!made) failWith("no session: " + made.status().message());
  opened.session = std::move(made.value());
}

const Fixture& fixture() {
  static const Fixture made = [] {
    Fixture f;
    Opened first;
    open(first, sample::drawing());
    catalogue::HostEnvironment environment(first.session->host());
    f.classes = catalogue::readClassDefinitions(classFilePath(), environment);
    if (!f.classes.ok) failWith("the class file does not parse");
    loadClasses(*first.session, f.classes);
    first.session->input().addText(kClassifyFirst);
    first.session->run();
    if (std::getenv("TAXOR_FUZZ_SHOW") != nullptr) {
      std::fprintf(stderr, "%s\n", first.out.str().c_str());
    }
    f.drawing = first.session->drawing().serialize();
    return f;
  }();
  return made;
}

// The input as command text: "~c" lines are picks, others are typed as they are.
std::string scriptOf(std::string_view bytes) {
  std::string script;
  while (!bytes.empty()) {
    size_t end = bytes.find('\n');
    std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (line.size() == 2 && line[0] == '~') {
      size_t pick = static_cast<unsigned char>(line[1]) % (std::size(kPicks) + 1);
      if (pick == std::size(kPicks)) {
        script += base::toUtf8(classFilePath());
      } else {
        script += kPicks[pick];
      }
    } else {
      script += line;
    }
    script += '\n';
  }
  return script;
}

// Every object of `drawing` (read from `original`) that the session did not change, erase
// or create has the bytes it was read with in `written`, the drawing written and read back
// as `again`.
void checkUntouched(const dxf::Document& drawing, const std::string& original,
                    const dxf::Document& again, const std::string& written) {
  for (dxf::RecordId id = 0; id < drawing.recordCount(); ++id) {
    const dxf::Record& r = drawing.record(id);
    if (r.changed || r.spliced || r.erased || r.handle == 0) continue;
    dxf::RecordId found = again.byHandle(r.handle);
    if (found == dxf::kNoRecord) {
      failWith("object " + std::to_string(r.handle) + " left untouched is gone");
    }
    const dxf::Record& w = again.record(found);
    std::string_view was(original.data() + r.pos, r.size);
    std::string_view is(written.data() + w.pos, w.size);
    if (w.changed || was != is) {
      failWith("object with handle " + std::to_string(r.handle) +
               " left untouched has other bytes:\n--- read:\n" + std::string(was) +
               "--- written:\n" + std::string(is));
    }
  }
}

// Every record of every entity reads whole.
void checkRecords(dxf::Document& drawing) {
  headless::DxfDatabase database(drawing);
  objdata::TableDirectory tables(database, objdata::findTableDictionary(database));
  for (host::ObjectId entity : database.modelSpaceEntities()) {
    objdata::RecordCursor cursor;
    int status = objdata::openCursor(tables, cursor, entity);
    if (status == objdata::kStatusNothing) continue;
    if (status != objdata::kStatusOk) failWith("an entity's records cannot be opened");
    for (; !objdata::cursorDone(cursor); objdata::nextRecord(tables, cursor)) {
      objdata::TableRecord record;
      if (objdata::readRecord(tables, cursor, record) != objdata::kStatusOk) {
        failWith("a record of entity " + std::to_string(entity.value) + " does not read");
      }
      const objdata::StoredTable* table = tables.find(record.table_name);
      if (table == nullptr || record.fields.size() != table->fields.size()) {
        failWith("a record of table " + base::toUtf8(record.table_name) + " on entity " +
                 std::to_string(entity.value) + " does not read whole");
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Fixture& f = fixture();
  Opened opened;
  open(opened, f.drawing);
  session::Session& s = *opened.session;
  loadClasses(s, f.classes);
  s.input().addText(scriptOf(std::string_view(reinterpret_cast<const char*>(data), size)));
  s.run();
  // TAXOR_FUZZ_SHOW=1 shows what the commands printed, to follow a reproducer.
  if (static const bool show = std::getenv("TAXOR_FUZZ_SHOW") != nullptr; show) {
    std::fprintf(stderr, "%s\n", opened.out.str().c_str());
  }
  if (s.host().resourceDepth() != 0 || s.host().lockDepth() != 0) {
    failWith("a command left a resource handle or a document lock behind");
  }

  const std::string written = s.drawing().serialize();
  auto again = dxf::Document::parse(written, "fuzz-written.dxf");
  if (!again) failWith("the written drawing does not parse: " + again.status().message());
  if (again->serialize() != written) failWith("the written drawing writes back otherwise");
  checkUntouched(s.drawing(), f.drawing, *again, written);
  checkRecords(*again);
  return 0;
}
