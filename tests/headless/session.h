// Runs the program's command line on a small drawing with scripted input, for tests.
#pragma once

#include <memory>
#include <sstream>
#include <string>

#include "dxf/document.h"
#include "headless/headless_host.h"
#include "shell/application.h"
#include "shell/string_table.h"

namespace testing_session {

struct Session {
  explicit Session(const std::string& dxf_text);

  // Feeds `script` and runs commands until it ends.
  void run(const std::string& script);
  std::string out() const { return out_.str(); }
  std::string err() const { return err_.str(); }

  dxf::Document drawing;
  headless::InputStream input;
  std::ostringstream out_;
  std::ostringstream err_;
  std::unique_ptr<headless::HeadlessHost> host;
  std::unique_ptr<shell::Application> app;
};

}  // namespace testing_session
