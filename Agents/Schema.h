#pragma once
// JSON Schema (2020-12) of what tools take and give. A record's schema is made of its fields, so that it says
// what toValue() prints; what comes in is checked against the same document that clients were shown.
//
// Only what is needed here is understood: type, properties, required, additionalProperties, enum, items,
// minimum, maximum, maxLength, maxItems.

#include "Base/Record.h"

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell::schema {

struct Member {
  std::string_view name;
  Value schema;
  bool isRequired = false;
};

Value object(std::initializer_list<Member> members);
Value list(Value elements, std::size_t most = 0);
Value text(std::string_view description, std::size_t longest = 0);
Value integer(std::string_view description, std::int64_t least, std::int64_t most);
Value boolean(std::string_view description);
Value choice(std::string_view description, const std::vector<std::string_view>& values);
template <TabledEnum E>
Value choice(std::string_view description) {
  std::vector<std::string_view> values;
  for (const auto& row : allCases<E>()) values.push_back(row.rawValue);
  return choice(description, values);
}

/// Why a value is not as the schema says, in a short sentence with the place; nothing when it is.
std::optional<std::string> mismatch(const Value& schema, const Value& value, const std::string& place = "");

template <class T>
Value of();

namespace detail {

template <class T>
Value ofScalar() {
  if constexpr (std::is_same_v<T, bool>)
    return Value::object({{"type", "boolean"}});
  else if constexpr (std::is_same_v<T, Date>)
    return Value::object({{"type", "string"}, {"format", "date-time"}});
  else if constexpr (std::is_floating_point_v<T>)
    return Value::object({{"type", "number"}});
  else if constexpr (std::is_unsigned_v<T>)
    return Value::object({{"type", "integer"}, {"minimum", 0}});
  else if constexpr (std::is_integral_v<T>)
    return Value::object({{"type", "integer"}});
  else
    return Value::object({{"type", "string"}});
}

} // namespace detail

/// In English, as the names are: programs read it.
std::string_view rawTitle(Unit unit);

template <class T>
Value of() {
  if constexpr (Record<T>) {
    Value properties = Value::object(), required = Value::array();
    const auto add = [&]<class R, class M>(const Field<R, M>& field) {
      Value schema = of<M>();
      if (field.unit != Unit::none) schema.set("description", rawTitle(field.unit));
      properties.set(field.name, std::move(schema));
      if constexpr (!korvell::detail::Optional<M>) required.append(field.name);
    };
    std::apply([&](const auto&... field) { (add(field), ...); }, T::fields());
    return Value::object({{"type", "object"},
                          {"properties", std::move(properties)},
                          {"required", std::move(required)},
                          {"additionalProperties", false}});
  } else if constexpr (korvell::detail::Optional<T>) {
    return of<typename korvell::detail::ElementOf<T>::OptionalType>();
  } else if constexpr (korvell::detail::Vector<T>) {
    return list(of<typename korvell::detail::ElementOf<T>::Type>());
  } else if constexpr (TabledEnum<T>) {
    return choice<T>("");
  } else {
    return detail::ofScalar<T>();
  }
}

} // namespace korvell::schema
