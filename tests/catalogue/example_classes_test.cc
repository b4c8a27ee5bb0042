// The example class file loads into the example drawing with nothing to report, and brings
// in the resources that its classes need.
#include <gtest/gtest.h>

#include "base/utf.h"
#include "catalogue/catalogue.h"
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

}  // namespace
