// A small error type shared by every layer: a code and a message, cheap when OK.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace base {

enum class Code {
  kOk = 0,
  kNotFound,     // the thing asked for does not exist
  kInvalid,      // bad input: a malformed file, a wrong argument
  kIo,           // the operating system refused a read or write
  kUnsupported,  // the operation cannot be done on this drawing or host
};

class [[nodiscard]] Status {
 public:
  Status() = default;
  static Status ok() { return Status(); }
  static Status notFound(std::string message) {
    return Status(Code::kNotFound, std::move(message));
  }
  static Status invalid(std::string message) { return Status(Code::kInvalid, std::move(message)); }
  static Status io(std::string message) { return Status(Code::kIo, std::move(message)); }
  static Status unsupported(std::string message) {
    return Status(Code::kUnsupported, std::move(message));
  }

  bool isOk() const { return code_ == Code::kOk; }
  explicit operator bool() const { return isOk(); }
  Code code() const { return code_; }
  const std::string& message() const { return message_; }

  // Returns this error with `context` put in front ("reading layer table: ...").
  Status withContext(const std::string& context) const {
    if (isOk()) return *this;
    return Status(code_, context + ": " + message_);
  }

 private:
  Status(Code code, std::string message) : code_(code), message_(std::move(message)) {}
  Code code_ = Code::kOk;
  std::string message_;
};

// A value or the error that prevented it.
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}          // NOLINT: implicit by design
  Result(Status status) : status_(std::move(status)) {}  // NOLINT: implicit by design

  bool isOk() const { return value_.has_value(); }
  explicit operator bool() const { return isOk(); }
  const Status& status() const { return status_; }
  T& value() & { return *value_; }
  const T& value() const& { return *value_; }
  T&& value() && { return std::move(*value_); }
  T* operator->() { return &*value_; }
  const T* operator->() const { return &*value_; }
  T& operator*() { return *value_; }

 private:
  std::optional<T> value_;
  Status status_;
};

}  // namespace base
