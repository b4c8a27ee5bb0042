// The open drawing as a document of the host: its file, its lock and its command queue.
#pragma once

#include <string>
#include <string_view>

#include "host/database.h"

namespace host {

class Document {
 public:
  Document() = default;
  Document(const Document&) = delete;
  Document& operator=(const Document&) = delete;
  virtual ~Document() = default;

  virtual Database& database() = 0;
  // The drawing's file path; empty for a drawing never saved.
  virtual std::wstring fileName() = 0;
  // Queues `text` on the command line; it runs as soon as the current command ends.
  virtual void sendStringToExecute(std::wstring_view text) = 0;
  // Write lock around changes made outside a command's own context. Every lock is
  // matched by an unlock.
  virtual void lock() = 0;
  virtual void unlock() = 0;
};

// Holds a document lock for a scope.
class DocumentLock {
 public:
  explicit DocumentLock(Document& doc) : doc_(doc) { doc_.lock(); }
  ~DocumentLock() { doc_.unlock(); }
  DocumentLock(const DocumentLock&) = delete;
  DocumentLock& operator=(const DocumentLock&) = delete;

 private:
  Document& doc_;
};

}  // namespace host
