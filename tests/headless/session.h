// The program's session on a small drawing given as text, with its output kept, for tests.
#pragma once

#include <memory>
#include <sstream>
#include <string>

#include "session/session.h"

namespace testing_session {

using HostWrapper = session::HostWrapper;

struct Session {
  // Throws std::runtime_error when the drawing does not parse or the commands do not register.
  explicit Session(const std::string& dxf_text, const HostWrapper& wrap = {});

  // Feeds `script` and runs commands until it ends.
  void run(const std::string& script);
  std::string out() const { return out_.str(); }
  std::string err() const { return err_.str(); }

  std::ostringstream out_;
  std::ostringstream err_;
  std::unique_ptr<session::Session> session;
  // Parts of `session`, named as tests use them.
  dxf::Document& drawing;
  headless::InputStream& input;
  headless::HeadlessHost* host;
  shell::Application* app;
};

}  // namespace testing_session
