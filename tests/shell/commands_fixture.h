// A class file in a temporary folder and the sample drawing on the headless command line, for
// the tests of the classifying, validating and removing commands.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "base/utf.h"
#include "dxf/sample_drawing.h"
#include "headless/session.h"
#include "objdata/record_cursor.h"
#include "test_paths.h"

namespace commands_fixture {

// A polyline class on layer Walls that only its colour tells from the other.
inline std::string wallClass(const std::string& name, int color) {
  return "obj_name\t" + name + "\t1\t10\nobj_type\tPolyline\nobj_prop\tlayer\tWalls\n" +
         "obj_prop\tcolor\t" + std::to_string(color) + "\t*\nvel_name\tWALLS\nvel_key\tCLASS\n" +
         "vel_fld\tHEIGHT\tHeight\trequired real\t2.5\t2:3\n"
         "vel_fld\tMATERIAL\tMaterial\tcharacter\tbrick\tbrick,concrete\n"
         "vel_fld\tNOTE\tNote\tcharacter\n\n";
}

// Walls and partitions; cables are lines. Markers are arcs of colour 6, which the sample's
// arc is not, whose allowed values are templates.
inline const std::string kClasses =
    wallClass("Wall", 1) + wallClass("Partition", 2) +
    "obj_name\tCable\t1\t5\nobj_type\tLine\nvel_name\tCABLES\nvel_key\tCLASS\n"
    "vel_fld\tKIND\tKind\tcharacter\tpower\n\n"
    "obj_name\tMarker\t1\t1\nobj_type\tArc\nobj_prop\tcolor\t6\nvel_name\tMARKERS\nvel_key\tCLASS\n"
    "vel_fld\tOWNER\tOwner\tcharacter\t$(user_name)\t$(user_name),nobody\n"
    "vel_fld\tLABEL\tLabel\tcharacter\t$(obj_name)-c\t$(obj_name)-a:$(obj_name)-m\n"
    "vel_fld\tUNTIL\tUntil\tinteger\t2999\t$(year):2999\n";

constexpr const char* kPolyline = "101";  // layer Walls, colour 3
constexpr const char* kLine = "100";      // layer 0
constexpr const char* kCircle = "103";
constexpr const char* kArc = "104";
constexpr const char* kText = "105";    // height 3
constexpr const char* kInsert = "107";  // of block Door

// Whether `text` holds `part`; on failure both are shown.
inline ::testing::AssertionResult has(const std::string& text, const std::string& part) {
  if (text.find(part) != std::string::npos) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "no \"" << part << "\" in:\n" << text;
}

// Answers to the classification dialog: assign properties, attach records, change object.
inline std::string classify(const char* handle, const char* name, const char* boxes = "1\n1\n1\n") {
  return std::string("AI_DESELECT\nTAXOR_CLASSIFY\n") + name + "\n" + boxes + handle + "\n\n";
}

class CommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = temp_dir_.path();
    writeClasses(kClasses);
  }

  void writeClasses(const std::string& text) { std::ofstream(dir_ / "classes.txt") << text; }

  // The session, opened on drawing_ through wrap_ at first use.
  testing_session::Session& session() {
    if (!session_) session_ = std::make_unique<testing_session::Session>(drawing_, wrap_);
    return *session_;
  }

  // Starts again on `drawing` with the class file as it is then.
  void restart(std::string drawing) {
    drawing_ = std::move(drawing);
    session_.reset();
    loaded_ = false;
  }
  // Starts again on the sample drawing with each `lines` put before the first `before`.
  void restartWith(std::initializer_list<std::pair<std::string_view, std::string_view>> edits) {
    std::string compact = sample::readCompact("sample_drawing.txt");
    for (const auto& [before, lines] : edits) {
      size_t at = compact.find(before);
      if (at == std::string::npos) throw std::runtime_error("no " + std::string(before));
      compact.insert(at, lines);
    }
    restart(sample::toDxf(compact));
  }

  // Loads the class file, runs `script`, and returns what the commands printed after
  // loading. Commands that select leave a pick-first set behind; each script starts without
  // one unless `keep_pick_first`.
  std::string run(const std::string& script, bool keep_pick_first = false) {
    if (!loaded_) {
      session().run("TAXOR_LOAD\n" + (dir_ / "classes.txt").string() + "\n");
      loaded_ = true;
    }
    if (!keep_pick_first) session().run("AI_DESELECT\n");
    size_t before = session().out().size();
    session().run(script);
    return session().out().substr(before);
  }

  host::ObjectId id(const char* handle) {
    return session().host->dxfDatabase().idForHandle(base::fromUtf8(handle));
  }
  host::Database& database() { return session().host->dxfDatabase(); }

  // The records of an entity as "TABLE:value,value|TABLE:..." for short comparisons.
  std::string records(const char* handle) {
    objdata::TableDirectory tables(database(), objdata::findTableDictionary(database()));
    objdata::RecordCursor cursor;
    std::string out;
    if (objdata::openCursor(tables, cursor, id(handle)) != objdata::kStatusOk) return out;
    for (; !objdata::cursorDone(cursor); objdata::nextRecord(tables, cursor)) {
      objdata::TableRecord record;
      objdata::readRecord(tables, cursor, record);
      if (!out.empty()) out += "|";
      out += base::toUtf8(record.table_name) + ":";
      for (size_t i = 0; i < record.fields.size(); ++i) {
        out += (i ? "," : "") + base::toUtf8(objdata::asText(record.fields[i].value));
      }
    }
    return out;
  }

  // Overwrites field `field` of the entity's first record of `table`; returns the text it
  // held.
  std::wstring setField(const char* handle, const wchar_t* table, const wchar_t* field,
                        std::wstring_view text) {
    objdata::TableDirectory tables(database(), objdata::findTableDictionary(database()));
    objdata::RecordCursor cursor;
    cursor.table_filter = table;
    objdata::TableRecord record;
    int index = -1;
    if (objdata::openCursor(tables, cursor, id(handle)) == objdata::kStatusOk &&
        objdata::readRecord(tables, cursor, record) == objdata::kStatusOk)
      index = objdata::findField(record.fields, field);
    if (index < 0) {
      ADD_FAILURE() << "no field " << base::toUtf8(field) << " on " << handle;
      return {};
    }
    std::wstring held = objdata::asText(record.fields[index].value);
    objdata::assign(record.fields[index].value,
                    objdata::makeValue(objdata::ValueType::kCharacter, text));
    EXPECT_EQ(objdata::updateRecord(tables, cursor, record), objdata::kStatusOk);
    return held;
  }

  int color(const char* handle) {
    return std::get<host::Color>(database().getProperty(id(handle), host::EntityProperty::kColor))
        .index;
  }
  void setColor(const char* handle, int index) {
    ASSERT_TRUE(
        database().setProperty(id(handle), host::EntityProperty::kColor, host::Color{index}));
  }

  testing_paths::TempDir temp_dir_{"taxor_classify"};
  std::filesystem::path dir_;
  std::string drawing_ = sample::drawing();
  testing_session::HostWrapper wrap_;
  std::unique_ptr<testing_session::Session> session_;
  bool loaded_ = false;
};

}  // namespace commands_fixture
