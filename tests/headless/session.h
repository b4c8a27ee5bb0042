// Runs the program's command line on a small drawing with scripted input, for tests.
#pragma once

#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "dxf/document.h"
#include "headless/headless_host.h"
#include "shell/application.h"
#include "shell/string_table.h"

namespace testing_session {

// Given the headless host, makes the host the program is to run on: one that forwards to it,
// so that a test can watch or change single calls.
using HostWrapper = std::function<std::unique_ptr<host::Host>(headless::HeadlessHost&)>;

struct Session {
  explicit Session(const std::string& dxf_text, const HostWrapper& wrap = {});

  // Feeds `script` and runs commands until it ends.
  void run(const std::string& script);
  std::string out() const { return out_.str(); }
  std::string err() const { return err_.str(); }

  dxf::Document drawing;
  headless::InputStream input;
  std::ostringstream out_;
  std::ostringstream err_;
  std::unique_ptr<headless::HeadlessHost> host;
  std::unique_ptr<host::Host> wrapper;  // null unless a wrapper was asked for
  std::unique_ptr<shell::Application> app;
};

}  // namespace testing_session
