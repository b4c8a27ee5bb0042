// One run of TAXOR on one drawing: the drawing, the command line's input, the headless host
// and the application with its commands, wired the same way for the program, the tests, the
// benchmarks and a server.
//
// A layer of its own because it joins two layers that must not know each other: the
// headless host (below the host boundary) and the shell (above it).
#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include "base/status.h"
#include "dxf/document.h"
#include "headless/headless_host.h"
#include "headless/input_stream.h"
#include "host/host.h"
#include "shell/application.h"

namespace session {

// Given the headless host, makes the host the application is to run on: one that forwards to
// it, so that a test can watch or change single calls.
using HostWrapper = std::function<std::unique_ptr<host::Host>(headless::HeadlessHost&)>;

struct Options {
  // With `echo`, answers are echoed after their prompts; with `quiet`, prompts and echoes are
  // left out (see headless::Console).
  bool echo = true;
  bool quiet = false;
  // Empty: the application runs on the headless host itself.
  HostWrapper wrap;
};

class Session {
 public:
  // Takes `drawing` (read from `file_name`) and registers the commands. `out` and `err`
  // must outlive the session. Fails iff the commands could not be registered.
  static base::Result<std::unique_ptr<Session>> open(dxf::Document drawing, std::wstring file_name,
                                                     std::ostream& out, std::ostream& err,
                                                     Options options = {});
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // Reads and runs commands until the input ends; a prompt waiting then is cancelled. A
  // source that blocks makes this wait for it. May be called again after more input is added.
  void run() { host_->run(); }
  // The unload sequence of the application: the commands are gone afterwards.
  void unload() { application_->unload(); }

  // Where commands are read from; sources added are read after those added before.
  headless::InputStream& input() { return input_; }
  dxf::Document& drawing() { return drawing_; }
  headless::HeadlessHost& host() { return *host_; }
  headless::DxfDatabase& database() { return host_->dxfDatabase(); }
  shell::Application& application() { return *application_; }

 private:
  explicit Session(dxf::Document drawing) : drawing_(std::move(drawing)) {}

  // Declared in the order they are made: each uses those before it.
  dxf::Document drawing_;
  headless::InputStream input_;
  std::unique_ptr<headless::HeadlessHost> host_;
  std::unique_ptr<host::Host> wrapper_;  // null unless a wrapper was asked for
  std::unique_ptr<shell::Application> application_;
};

}  // namespace session
