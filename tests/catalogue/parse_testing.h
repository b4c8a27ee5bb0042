// A host for parser tests: the fake drawing, with resource imports and environment values
// that tests script and inspect.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "base/utf.h"
#include "catalogue/binding.h"
#include "catalogue/parser.h"
#include "fakes/fake_host.h"
#include "fakes/forwarding_host.h"
#include "shell/load_commands.h"
#include "shell/string_table.h"

namespace parse_testing {

struct ImportCall {
  std::wstring path;
  uint32_t mask = 0;
  host::ResourceNames needed;
};

class ScriptedHost : public fakes::ForwardingHost {
 public:
  explicit ScriptedHost(fakes::FakeHost& fake) : ForwardingHost(fake) {}

  // What importResources answers for a file: the names it provides, or a failure when the
  // file is not listed.
  std::map<std::wstring, host::ResourceNames> provides;
  std::vector<ImportCall> imports;
  std::map<std::wstring, std::wstring> env;
  bool env_writable = true;

  base::Result<host::ResourceNames> importResources(const std::wstring& path, uint32_t mask,
                                                    const host::ResourceNames& needed) override {
    imports.push_back({path, mask, needed});
    auto it = provides.find(path);
    if (it == provides.end()) return base::Status::io("cannot read");
    return it->second;
  }
  std::optional<std::wstring> getEnv(std::wstring_view name) override {
    auto it = env.find(std::wstring(name));
    if (it == env.end()) return std::nullopt;
    return it->second;
  }
  bool setEnv(std::wstring_view name, std::wstring_view value) override {
    if (!env_writable) return false;
    env[std::wstring(name)] = value;
    return true;
  }
};

struct Fixture {
  fakes::FakeHost fake;
  ScriptedHost host{fake};

  catalogue::ParseResult parse(const std::string& text,
                               const std::wstring& path = L"/classes/test.txt") {
    return catalogue::parseClassText(text, path, host);
  }
};

// The messages as the command line shows them, joined.
inline std::string messageTexts(const std::vector<catalogue::Diagnostic>& messages) {
  std::wstring out;
  for (const catalogue::Diagnostic& d : messages) {
    out += shell::diagnosticText(shell::StringTable::builtIn(), d);
  }
  return base::toUtf8(out);
}
inline std::string messageTexts(const catalogue::ParseResult& result) {
  return messageTexts(result.messages);
}

// One class file and what parsing it must give.
struct Case {
  const char* name;
  std::string text;
  // The messages as printed, concatenated; the parse succeeds exactly when none says "error".
  std::string messages;
  std::function<void(const catalogue::Catalogue&)> check = nullptr;
  // The one "error" that does not stop the parser: a bad macro name.
  bool error_is_reported_only = false;
  // What the drawing holds beyond layers WATER and SEWER, and how the host answers.
  std::function<void(Fixture&)> setup = nullptr;
  // The kinds asked for by each resource import, in order.
  std::vector<uint32_t> imports = {};
};

// Parses each case's text as the file `path` into a drawing of its own.
inline void runCases(const std::vector<Case>& cases,
                     const std::wstring& path = L"/classes/test.txt") {
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Fixture fixture;
    fixture.fake.addLayer(L"WATER");
    fixture.fake.addLayer(L"SEWER");
    if (c.setup) c.setup(fixture);
    catalogue::ParseResult result = fixture.parse(c.text, path);
    EXPECT_EQ(messageTexts(result), c.messages);
    bool fatal = !c.error_is_reported_only && c.messages.find("error") != std::string::npos;
    EXPECT_EQ(result.ok, !fatal);
    if (fatal) {
      EXPECT_TRUE(result.catalogue.empty());
    }
    if (c.check) c.check(result.catalogue);
    std::vector<uint32_t> imports;
    for (const ImportCall& call : fixture.host.imports) imports.push_back(call.mask);
    EXPECT_EQ(imports, c.imports);
  }
}

}  // namespace parse_testing
