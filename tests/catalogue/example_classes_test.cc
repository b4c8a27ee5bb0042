// The example class file loads into the example drawing with nothing to report, and brings
// in the resources that its classes need.
#include <gtest/gtest.h>

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
  EXPECT_EQ(catalogue->loaded_files.size(), 3u);  // resources.dxf, linetypes.lin, patterns.pat
  for (const auto& [kind, name] : {std::pair{host::kResourceBlocks, L"HYDRANT"},
                                   {host::kResourceLayers, L"HYDRANTS"},
                                   {host::kResourceTextStyles, L"NOTES"},
                                   {host::kResourceLinetypes, L"FIBRE"},
                                   {host::kResourceLinetypes, L"GAS"},
                                   {host::kResourcePatterns, L"PAVING"}}) {
    EXPECT_TRUE(catalogue->hasResource(kind, name)) << kind;
  }
  EXPECT_TRUE(session.host->database().hasSymbol(host::SymbolTable::kBlock, L"HYDRANT"));
}

}  // namespace
