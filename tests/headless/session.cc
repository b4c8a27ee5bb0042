#include "headless/session.h"

#include <stdexcept>

namespace testing_session {

Session::Session(const std::string& dxf_text, const HostWrapper& wrap) {
  auto parsed = dxf::Document::parse(dxf_text, "test.dxf");
  if (!parsed) throw std::runtime_error(parsed.status().message());
  drawing = std::move(parsed.value());
  host = std::make_unique<headless::HeadlessHost>(drawing, L"test.dxf", input, out_, err_, true);
  if (wrap) wrapper = wrap(*host);
  app = std::make_unique<shell::Application>(wrapper ? *wrapper : *host,
                                             shell::StringTable::builtIn());
  if (!app->initialize()) throw std::runtime_error("commands not registered");
}

void Session::run(const std::string& script) {
  input.addText(script);
  host->run();
}

}  // namespace testing_session
