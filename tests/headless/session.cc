#include "headless/session.h"

#include <stdexcept>

namespace testing_session {

namespace {

std::unique_ptr<session::Session> open(const std::string& dxf_text, const HostWrapper& wrap,
                                       std::ostream& out, std::ostream& err) {
  auto parsed = dxf::Document::parse(dxf_text, "test.dxf");
  if (!parsed) throw std::runtime_error(parsed.status().message());
  auto opened = session::Session::open(std::move(parsed.value()), L"test.dxf", out, err,
                                       {.echo = true, .quiet = false, .wrap = wrap});
  if (!opened) throw std::runtime_error(opened.status().message());
  return std::move(opened.value());
}

}  // namespace

Session::Session(const std::string& dxf_text, const HostWrapper& wrap)
    : session(open(dxf_text, wrap, out_, err_)),
      drawing(session->drawing()),
      input(session->input()),
      host(&session->host()),
      app(&session->application()) {}

void Session::run(const std::string& script) {
  input.addText(script);
  session->run();
}

}  // namespace testing_session
