// A host for parser tests: the fake drawing, with resource imports and environment values
// that tests script and inspect.
#pragma once

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

}  // namespace parse_testing
