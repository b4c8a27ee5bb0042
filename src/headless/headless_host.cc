#include "headless/headless_host.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

#include "base/utf.h"
#include "base/atomic_file.h"

namespace headless {

HeadlessHost::HeadlessHost(dxf::Document& drawing, std::wstring file_name, InputStream& input,
                           std::ostream& out, std::ostream& err, bool echo, bool quiet)
    : console_(input, out, err, echo, quiet),
      database_(drawing),
      editor_(console_, database_),
      dialogs_(console_),
      document_(database_, file_name),
      command_line_(console_, database_, editor_, document_) {}

std::optional<std::wstring> HeadlessHost::getEnv(std::wstring_view name) {
  if (auto it = environment_.find(name); it != environment_.end()) return it->second;
  const char* value = std::getenv(base::toUtf8(name).c_str());
  if (value == nullptr) return std::nullopt;
  return environment_.emplace(std::wstring(name), base::fromUtf8(value)).first->second;
}

bool HeadlessHost::setEnv(std::wstring_view name, std::wstring_view value) {
  environment_.insert_or_assign(std::wstring(name), std::wstring(value));
  return true;
}

base::Status HeadlessHost::writeTextFile(const std::wstring& path, std::string_view contents) {
  return base::writeFileAtomically(base::toUtf8(path), contents);
}

std::wstring HeadlessHost::computerName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0) return {};
  return base::fromUtf8(name);
}

std::wstring HeadlessHost::userName() {
  // The account the process runs as; the login name can be absent (no terminal, containers).
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(4096);
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found)
    return base::fromUtf8(found->pw_name);
  if (const char* user = std::getenv("USER")) return base::fromUtf8(user);
  return {};
}

}  // namespace headless
