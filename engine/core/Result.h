// Status and Result: how engine functions report failure. A Status is empty on success or carries a
// message for a person, saying what is wrong and what to do. A Result is a value or such a message.
// Any thread.
#pragma once

#include <optional>
#include <string>
#include <utility>

namespace engine {

class [[nodiscard]] Status {
 public:
  // Success.
  Status() = default;
  static Status Failure(std::string message) {
    Status status;
    status.message_ = std::move(message);
    return status;
  }
  bool Ok() const { return !message_.has_value(); }
  explicit operator bool() const { return Ok(); }
  // Empty on success.
  const std::string& Message() const {
    static const std::string none;
    return message_ ? *message_ : none;
  }

 private:
  std::optional<std::string> message_;
};

template <class T>
class [[nodiscard]] Result {
 public:
  Result(T value) : value_(std::move(value)) {}
  Result(Status failure) : status_(std::move(failure)) {}
  static Result Failure(std::string message) { return Result(Status::Failure(std::move(message))); }

  bool Ok() const { return value_.has_value(); }
  explicit operator bool() const { return Ok(); }
  const std::string& Message() const { return status_.Message(); }
  const Status& GetStatus() const { return status_; }
  // Only where Ok().
  T& Value() { return *value_; }
  const T& Value() const { return *value_; }
  T Take() { return std::move(*value_); }

 private:
  std::optional<T> value_;
  Status status_;
};

}  // namespace engine
