// The example class file loads into the example drawing with nothing to report, and brings
// in the resources that its classes need.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "base/utf.h"
#include "catalogue/catalogue.h"
#include "dxf/document.h"
#include "headless/session.h"
#include "test_paths.h"

namespace {

TEST(ExampleClassesTest, LoadIntoTheExampleDrawingCleanly) {
  const std::string examples = std::string(TAXOR_SOURCE_DIR) + "/examples/";
  testing_session::Session session(testing_paths::readFile(examples + "site.dxf"));
  session.run("TAXOR_LOAD\n" + examples + "classes.txt\n");
  std::string out = session.out();
  EXPECT_EQ(out.find("error"), std::string::npos) << out;
  EXPECT_EQ(out.find("warning"), std::string::npos) << out;

  const auto& catalogue = session.app->state().catalogue;
  ASSERT_NE(catalogue, nullptr);
  EXPECT_GE(catalogue->objects.size(), 20u);
  EXPECT_EQ(catalogue->tree.children.size(), 3u);
  const catalogue::ObjectClass* gas = catalogue->findObject(L"GAS MAIN");
  ASSERT_NE(gas, nullptr);
  EXPECT_FALSE(gas->enabled);
  ASSERT_NE(catalogue->findTable(L"water_pipes"), nullptr);
  EXPECT_EQ(catalogue->findTable(L"water_pipes")->objects,
            (std::vector<std::wstring>{L"water main", L"water service"}));
  EXPECT_EQ(catalogue->imports.size(), 3u);  // resources.dxf, linetypes.lin, patterns.pat
  for (const auto& [table, name] : {std::pair{host::SymbolTable::kBlock, L"HYDRANT"},
                                    {host::SymbolTable::kLayer, L"HYDRANTS"},
                                    {host::SymbolTable::kTextStyle, L"NOTES"},
                                    {host::SymbolTable::kLinetype, L"FIBRE"},
                                    {host::SymbolTable::kLinetype, L"GAS"},
                                    {host::SymbolTable::kHatchPattern, L"PAVING"}}) {
    EXPECT_TRUE(session.host->database().hasSymbol(table, name)) << base::toUtf8(name);
  }
}

// An independent reader finds the imported resources in the saved drawing, and its audit
// finds nothing wrong.
TEST(ExampleClassesTest, EzdxfFindsTheImportedResources) {
  TAXOR_SKIP_WITHOUT_EZDXF();
  const std::string examples = std::string(TAXOR_SOURCE_DIR) + "/examples/";
  testing_session::Session session(testing_paths::readFile(examples + "site.dxf"));
  session.run("TAXOR_LOAD\n" + examples + "classes.txt\n");
  const testing_paths::TempDir dir("taxor_example");
  std::filesystem::path saved = dir / "example.dxf";
  ASSERT_TRUE(session.drawing.save(saved.string()));
  std::filesystem::path script = saved;
  script.replace_extension(".py");
  std::ofstream(script) << R"(import sys, ezdxf
doc = ezdxf.readfile(sys.argv[1])
auditor = doc.audit()
problems = [f"audit: {e.message}" for e in auditor.errors]
for table, name in [(doc.layers, "HYDRANTS"), (doc.styles, "NOTES"), (doc.linetypes, "FIBRE"),
                    (doc.linetypes, "GAS")]:
    if name not in table:
        problems.append(f"missing {name}")
if "HYDRANT" not in doc.blocks:
    problems.append("missing block HYDRANT")
print("\n".join(problems))
sys.exit(1 if problems else 0)
)";
  std::string command = "/usr/bin/python3 " + script.string() + " " + saved.string();
  int status = std::system(command.c_str());
  EXPECT_EQ(status, 0) << command;
}

}  // namespace
