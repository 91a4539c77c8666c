#pragma once
// The outcome of something a person may have to be told about: a value, or why there is none, in a plain
// sentence. Where nobody needs the reason, std::optional says "no reading".

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace korvell {

struct Failure {
  std::string reason; ///< a sentence for the user, localised
  bool operator==(const Failure&) const = default;
};

template <class T>
class [[nodiscard]] Result {
public:
  Result(T value) : state_(std::move(value)) {}
  Result(Failure failure) : state_(std::move(failure)) {}

  explicit operator bool() const { return std::holds_alternative<T>(state_); }
  T& operator*() { return std::get<T>(state_); }
  const T& operator*() const { return std::get<T>(state_); }
  T* operator->() { return &std::get<T>(state_); }
  const T* operator->() const { return &std::get<T>(state_); }
  /// Why there is no value; only to be called when there is none.
  const std::string& reason() const { return std::get<Failure>(state_).reason; }

private:
  std::variant<T, Failure> state_;
};

/// The outcome of an action without a result of its own.
using Outcome = Result<std::monostate>;
inline Outcome success() { return Outcome{std::monostate{}}; }

} // namespace korvell
