// The one open document of the headless host: its drawing, its name and the command text
// queued to run after the current command.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "headless/dxf_database.h"
#include "host/document.h"

namespace headless {

class HeadlessDocument : public host::Document {
 public:
  // `database` must outlive the document. `file_name` is reported as its full path.
  HeadlessDocument(DxfDatabase& database, const std::wstring& file_name);

  host::Database& database() override { return database_; }
  std::wstring fileName() override { return file_name_; }
  void sendStringToExecute(std::wstring_view text) override { queued_ += text; }
  void lock() override { ++lock_depth_; }
  void unlock() override { --lock_depth_; }

  // Returns the text queued since the last call, and forgets it.
  std::wstring takeQueued() { return std::exchange(queued_, {}); }
  // How many document locks are held now (0 between commands).
  int lockDepth() const { return lock_depth_; }

 private:
  DxfDatabase& database_;
  std::wstring file_name_;
  std::wstring queued_;
  int lock_depth_ = 0;
};

}  // namespace headless
