#include "session/session.h"

#include "base/utf.h"
#include "shell/string_table.h"

namespace session {

base::Result<std::unique_ptr<Session>> Session::open(dxf::Document drawing, std::wstring file_name,
                                                     std::ostream& out, std::ostream& err,
                                                     Options options) {
  std::unique_ptr<Session> session(new Session(std::move(drawing)));
  session->host_ = std::make_unique<headless::HeadlessHost>(session->drawing_, std::move(file_name),
                                                            session->input_, out, err, options.echo,
                                                            options.quiet);
  // What the reader read past is told once, as a CAD program tells what its audit found.
  for (const std::string& fault : session->drawing_.faults()) {
    session->host_->editor().print(base::fromUtf8(fault) + L"\n");
  }
  if (options.wrap) session->wrapper_ = options.wrap(*session->host_);
  session->application_ = std::make_unique<shell::Application>(
      session->wrapper_ ? *session->wrapper_ : *session->host_, shell::StringTable::builtIn());
  if (base::Status status = session->application_->initialize(); !status) return status;
  return session;
}

}  // namespace session
