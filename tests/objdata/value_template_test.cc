// Variables in default and allowed values: which are replaced, by what, and how often.
#include "objdata/value_template.h"

#include <gtest/gtest.h>

#include "fakes/fake_host.h"

namespace {

// 5 March 2026, 09:07:02.
std::tm fixedTime() {
  std::tm t{};
  t.tm_year = 126;
  t.tm_mon = 2;
  t.tm_mday = 5;
  t.tm_hour = 9;
  t.tm_min = 7;
  t.tm_sec = 2;
  return t;
}

TEST(ValueTemplateTest, ExpandsEveryVariable) {
  // The file name holds a variable of its own, which is expanded too.
  const objdata::TemplateEnvironment environment{L"C:\\plans\\$(obj_name).dwg", L"WORKSTATION",
                                                 L"draughtsman", fixedTime};
  struct Case {
    const wchar_t* text;
    const wchar_t* expected;
    const wchar_t* class_name = L"Water main";
  };
  const Case cases[] = {
      {L"plain text", L"plain text"},
      {L"$(obj_name)", L"Water main"},
      {L"$(day).$(month).$(year)", L"05.03.2026"},
      {L"$(hour):$(minute):$(second)", L"09:07:02"},
      {L"$(file_name) by $(user_name) on $(computer_name)",
       L"C:\\plans\\Water main.dwg by draughtsman on WORKSTATION"},
      // Every occurrence, and names are case-sensitive.
      {L"$(obj_name)/$(obj_name)/$(OBJ_NAME)", L"Water main/Water main/$(OBJ_NAME)"},
      {L"$(unknown) $(", L"$(unknown) $("},
      // A class whose name is a variable of its own ends after a bounded number of passes.
      {L"$(obj_name)", L"$(obj_name)", L"$(obj_name)"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(objdata::expandTemplates(c.text, c.class_name, environment), c.expected) << c.text;
  }
}

TEST(ValueTemplateTest, EnvironmentComesFromTheHost) {
  fakes::FakeHost host;
  host.setFileName(L"/plans/site.dxf");
  host.setMachine(L"", L"ann");
  objdata::TemplateEnvironment environment = objdata::templateEnvironment(host);
  EXPECT_EQ(environment.file_name, L"/plans/site.dxf");
  EXPECT_EQ(environment.computer_name, L"unknown");
  EXPECT_EQ(environment.user_name, L"ann");
  std::wstring year = objdata::expandTemplates(L"$(year)", L"", environment);
  EXPECT_EQ(year.size(), 4u);
}

}  // namespace
