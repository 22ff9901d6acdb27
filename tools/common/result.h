// What a tool's function returns when it can fail: a value, or one sentence for the user.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TOOLS_COMMON_RESULT_H
#define KORVEL_TOOLS_COMMON_RESULT_H

#include <cassert>
#include <string>
#include <utility>
#include <variant>

namespace korvel {

// One whole sentence in the user's language: what happened, then what to do.
struct Failure {
  std::string sentence;
};

// Holds a T or a Failure. Converts from both, so that a function returns either of them:
//   if (file == nullptr) return Failure{sentence};
//   return picture;
template <typename T>
class [[nodiscard]] Result {
 public:
  Result(T value) : content_(std::move(value)) {}
  Result(Failure failure) : content_(std::move(failure)) {}

  bool ok() const { return std::holds_alternative<T>(content_); }
  explicit operator bool() const { return ok(); }

  // Only of a Result that is ok().
  T& value() & { return *held(); }
  const T& value() const& { return const_cast<Result*>(this)->value(); }
  T&& value() && { return std::move(*held()); }
  T* operator->() { return held(); }
  T& operator*() & { return *held(); }
  T&& operator*() && { return std::move(*held()); }

  // Only of a Result that is not ok().
  Failure failure() const {
    assert(!ok());
    return *std::get_if<Failure>(&content_);
  }
  const std::string& sentence() const {
    assert(!ok());
    return std::get_if<Failure>(&content_)->sentence;
  }

 private:
  T* held() {
    assert(ok());
    return std::get_if<T>(&content_);
  }
  std::variant<T, Failure> content_;
};

// Success without a value, or a Failure.
template <>
class [[nodiscard]] Result<void> {
 public:
  Result() = default;
  Result(Failure failure) : failure_(std::move(failure)), ok_(false) {}

  bool ok() const { return ok_; }
  explicit operator bool() const { return ok_; }

  // Only of a Result that is not ok().
  const Failure& failure() const { return failure_; }
  const std::string& sentence() const { return failure_.sentence; }

 private:
  Failure failure_;
  bool ok_ = true;
};

}  // namespace korvel

#endif
