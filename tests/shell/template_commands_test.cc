// TAXOR_TEMPLATE and TAXOR_TYPE on the headless command line.
#include <gtest/gtest.h>

#include <string>

#include "draw/conformity.h"
#include "draw/entity_definition.h"
#include "dxf/entity_factory.h"
#include "maintenance/candidates.h"
#include "shell/commands_fixture.h"
#include "test_paths.h"

namespace {

using commands_fixture::has;
using headless::DxfDatabase;

class TemplateCommandsTest : public commands_fixture::CommandsTest {
 protected:
  std::string path() const { return (dir_ / "template.txt").string(); }

  // Makes `picked` the pick-first set, after the class file is loaded (loading empties it).
  void pick(const std::vector<host::ObjectId>& picked) {
    run("");
    session().host->editor().setImpliedSelection(picked);
  }

  // Runs TAXOR_TEMPLATE on `picked` with the format answer `format`.
  std::string writeTemplate(const std::vector<host::ObjectId>& picked,
                            const std::string& format = "") {
    pick(picked);
    return run("TAXOR_TEMPLATE\n" + format + "\n" + path() + "\n", true);
  }

  host::ObjectId add(base::Result<dxf::RecordId> record) {
    EXPECT_TRUE(record);
    return DxfDatabase::toId(*record);
  }
};

// Equal entities give one class, anonymous blocks none.
TEST_F(TemplateCommandsTest, OneClassPerDistinctDefinition) {
  dxf::Document& doc = session().drawing;
  host::ObjectId a = add(dxf::addLine(doc, {.layer = L"Walls"}, {0, 0, 0}, {1, 0, 0}));
  host::ObjectId b = add(dxf::addLine(doc, {.layer = L"Walls"}, {5, 5, 0}, {9, 1, 0}));
  ASSERT_TRUE(dxf::addBlock(doc, L"*U7", {0, 0, 0}));
  host::ObjectId anonymous = add(dxf::addInsert(doc, {}, {.block_name = L"*U7"}));
  EXPECT_TRUE(
      has(writeTemplate({a, b, anonymous, id(commands_fixture::kInsert)}), "Completed: 2/4\n"));
  std::string text = testing_paths::readFile(path());
  EXPECT_TRUE(text.starts_with("\xEF\xBB\xBF#BlockReference\t"));
  EXPECT_TRUE(has(text, "obj_name\tline_1_Walls\t1\t5000\tIcons/Line.png\n"));
  EXPECT_TRUE(has(text, "obj_name\tblockreference_1_0\t"));
  EXPECT_TRUE(has(text, "\t\tobj_prop\tblockName\tDoor\n"));
  for (const char* absent : {"line_2", "blockreference_2", "*U7"})
    EXPECT_EQ(text.find(absent), std::string::npos) << absent;
}

TEST_F(TemplateCommandsTest, RefusedFormatsAndFiles) {
  host::ObjectId line = id(commands_fixture::kLine);
  EXPECT_TRUE(has(writeTemplate({line}, "%T"),
                  "Command: TAXOR_TEMPLATE\nFormat<%t_%i_%L>: %T\n"
                  "Error: invalid format (%T/%t, %i are required).\nCommand: "));
  EXPECT_FALSE(std::filesystem::exists(path()));
  // An accepted format is kept for the next run.
  writeTemplate({line}, "%t%i");
  pick({line});
  std::string out = run("TAXOR_TEMPLATE\n\n" + (dir_ / "none" / "t.txt").string() + "\n", true);
  EXPECT_TRUE(has(out, "Format<%t%i>: "));
  EXPECT_TRUE(has(out, "Error: Error: unable to open '%s'.\n"));
  EXPECT_EQ(out.find("Completed"), std::string::npos);
}

TEST_F(TemplateCommandsTest, TypeReport) {
  pick({id(commands_fixture::kLine), id(commands_fixture::kCircle), id(commands_fixture::kText),
        id(commands_fixture::kLine)});
  EXPECT_EQ(run("TAXOR_TYPE\n", true), "Command: TAXOR_TYPE\nCircle\nLine\nText\nCommand: \n");
  EXPECT_EQ(run("TAXOR_TYPE\n\n"),
            "Command: TAXOR_TYPE\nSelect objects: \nError: no objects selected.\nCommand: \n");
}

// A template of a real drawing loads, and classifying the drawing with it gives every entity
// that made a class one.
TEST_F(TemplateCommandsTest, TemplateOfARealDrawingClassifiesIt) {
  const std::string file = testing_paths::corpusDir() + "/acadsharp__sample_AC1015_ascii.dxf";
  std::string drawing = testing_paths::readFile(file);
  if (drawing.empty()) GTEST_SKIP() << "no " << file;
  restart(drawing);
  session().run("TAXOR_TEMPLATE\nALL\n\n\n" + path() + "\n");

  host::Database& db = database();
  std::vector<host::ObjectId> candidates = db.modelSpaceEntities();
  maintenance::pruneCandidates(db, candidates);
  int described = 0;
  for (host::ObjectId entity : candidates) {
    draw::DrawingProperties p =
        draw::buildDefinitionFromEntity(db, entity, draw::linearPrecision(db));
    if (p.object_types.empty()) continue;
    if (p.block_name.isSet() &&
        (p.block_name.value.starts_with(L'*') || db.isExternalReference(p.block_name.value)))
      continue;
    ++described;
  }
  ASSERT_GT(described, 0);

  ASSERT_TRUE(has(session().out(), "Completed: "));
  size_t before = session().out().size();
  session().run("TAXOR_LOAD\n" + path() + "\nTAXOR_CLASSIFY_AUTO\n0\n0\nALL\n\n");
  std::string out = session().out().substr(before);
  EXPECT_EQ(out.find("rror"), std::string::npos) << out;
  EXPECT_TRUE(has(out, "Completed: " + std::to_string(described) + "/" +
                           std::to_string(candidates.size()) + "\n"));
}

}  // namespace
