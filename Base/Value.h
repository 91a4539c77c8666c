#pragma once
// A tree of plain values, as JSON, property lists and user defaults carry them.
//
// Objects keep the order in which their members were set, so that printed JSON reads as it was written.
// Dates are values of their own: JSON prints them as RFC 3339, property lists and the system's defaults
// store them as dates; date() reads either.

#include "Base/Date.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace korvell {

class Value {
public:
  using Array = std::vector<Value>;
  using Member = std::pair<std::string, Value>;
  using Object = std::vector<Member>;

  Value() = default; ///< null
  Value(bool v) : data_(v) {}
  Value(int v) : data_(std::int64_t{v}) {}
  Value(std::int64_t v) : data_(v) {}
  Value(std::uint64_t v) { // as signed where it fits, so that equal numbers are equal values
    v <= std::uint64_t(INT64_MAX) ? data_.emplace<std::int64_t>(v) : data_.emplace<std::uint64_t>(v);
  }
  Value(double v) : data_(v) {}
  Value(const char* v) : data_(std::string(v)) {}
  Value(std::string_view v) : data_(std::string(v)) {}
  Value(std::string v) : data_(std::move(v)) {}
  Value(Date v) : data_(v) {}
  Value(Array v) : data_(std::move(v)) {}
  Value(Object v) : data_(std::move(v)) {}

  static Value array() { return Value(Array{}); }
  static Value object(std::initializer_list<Member> members = {}) { return Value(Object(members)); }

  bool isNull() const { return std::holds_alternative<std::monostate>(data_); }

  // Typed reading. A value of another type is absent; whole numbers read as doubles too, and a signed and
  // an unsigned number read as each other where the number fits. A bool is no number, a number no bool.
  std::optional<bool> asBool() const;
  std::optional<std::int64_t> asInt() const;
  std::optional<std::uint64_t> asUnsigned() const;
  std::optional<double> asDouble() const;
  const std::string* asString() const { return std::get_if<std::string>(&data_); }
  std::optional<Date> asDate() const; ///< a date, or a text in RFC 3339
  const Array* asArray() const { return std::get_if<Array>(&data_); }
  const Object* asObject() const { return std::get_if<Object>(&data_); }

  /// The member of that name (of several, the last), or nothing when this is no object or has none.
  const Value* find(std::string_view name) const;
  /// Sets a member of an object; a null becomes an object first. Anything else is replaced.
  Value& set(std::string_view name, Value value);
  /// Sets the member only when there is a value: absent optionals are left out of objects.
  template <class T>
  Value& set(std::string_view name, const std::optional<T>& value) {
    return value ? set(name, Value(*value)) : *this;
  }
  void erase(std::string_view name);
  /// Appends to an array; a null becomes an array first.
  Value& append(Value value);

  bool operator==(const Value&) const = default;

private:
  friend struct ValueAccess;
  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Date, Array, Object>
      data_;
};

/// Where a text stops being JSON: both counted from 1, columns in characters.
struct JSONFault {
  std::size_t line = 1;
  std::size_t column = 1;
  bool tooLarge = false; ///< a number begins there that no double holds
  bool operator==(const JSONFault&) const = default;
};

/// Reads one JSON document. Nothing when it is malformed, nested more than 512 deep or holds a
/// number that no double holds.
std::optional<Value> parseJSON(std::string_view text, JSONFault* fault = nullptr);

enum class JSONStyle { line, indented };
/// Text with bytes that are no UTF-8 has them replaced by U+FFFD; NaN and infinities print as null.
std::string dumpJSON(const Value& value, JSONStyle style = JSONStyle::line);

} // namespace korvell
