#include "Agents/Schema.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell::schema {

namespace {

Value described(Value schema, std::string_view description) {
  if (!description.empty()) schema.set("description", description);
  return schema;
}

Value typed(const char* type) { return Value::object({{"type", type}}); }

} // namespace

std::string_view rawTitle(Unit unit) {
  for (const auto& row : allCases<Unit>())
    if (row.value == unit) return row.title;
  return {};
}

Value object(std::initializer_list<Member> members) {
  Value properties = Value::object(), required = Value::array();
  for (const auto& member : members) {
    properties.set(member.name, member.schema);
    if (member.isRequired) required.append(member.name);
  }
  auto schema = typed("object").set("properties", std::move(properties));
  if (!required.asArray()->empty()) schema.set("required", std::move(required));
  return schema.set("additionalProperties", false);
}

Value list(Value elements, std::size_t most) {
  auto schema = typed("array").set("items", std::move(elements));
  return most ? schema.set("maxItems", std::uint64_t{most}) : schema;
}

Value text(std::string_view description, std::size_t longest) {
  auto schema = described(typed("string"), description);
  return longest ? schema.set("maxLength", std::uint64_t{longest}) : schema;
}

Value integer(std::string_view description, std::int64_t least, std::int64_t most) {
  return described(typed("integer"), description).set("minimum", least).set("maximum", most);
}

Value boolean(std::string_view description) { return described(typed("boolean"), description); }

Value choice(std::string_view description, const std::vector<std::string_view>& values) {
  Value cases = Value::array();
  for (const auto value : values) cases.append(value);
  return described(typed("string"), description).set("enum", std::move(cases));
}

namespace {

struct Type {
  std::string_view name;
  bool (*holds)(const Value&);
};
constexpr Type types[] = {
    {"object", [](const Value& v) { return v.asObject() != nullptr; }},
    {"array", [](const Value& v) { return v.asArray() != nullptr; }},
    {"string", [](const Value& v) { return v.asString() || (v.asDate() && !v.asString()); }},
    {"boolean", [](const Value& v) { return v.asBool().has_value(); }},
    {"integer", [](const Value& v) { return v.asInt() || v.asUnsigned(); }},
    {"number", [](const Value& v) { return v.asDouble().has_value(); }},
};

std::string named(const std::string& place) { return place.empty() ? "The value" : place; }

bool hasMember(const Value* list, const Value& value) {
  const auto* members = list ? list->asArray() : nullptr;
  return members && std::ranges::find(*members, value) != members->end();
}

std::optional<std::string> typeMismatch(const Value& schema, const Value& value, const std::string& place) {
  const auto* type = schema.find("type");
  const auto* name = type ? type->asString() : nullptr;
  if (!name) return std::nullopt;
  const auto row = std::ranges::find(types, *name, &Type::name);
  if (row == std::end(types) || row->holds(value)) return std::nullopt;
  return fmt::format("{} is no {}.", named(place), *name);
}

std::optional<std::string> boundMismatch(const Value& schema, const Value& value, const std::string& place) {
  const auto bound = [&](const char* name) {
    const auto* limit = schema.find(name);
    return limit ? limit->asDouble() : std::nullopt;
  };
  const auto number = value.asDouble();
  const auto least = bound("minimum"), most = bound("maximum");
  if (number && least && *number < *least) return fmt::format("{} is below {}.", named(place), *least);
  if (number && most && *number > *most) return fmt::format("{} is above {}.", named(place), *most);
  const auto longest = bound("maxLength"), largest = bound("maxItems");
  if (const auto* text = value.asString(); text && longest && double(text->size()) > *longest)
    return fmt::format("{} is too long.", named(place));
  if (const auto* elements = value.asArray(); elements && largest && double(elements->size()) > *largest)
    return fmt::format("{} has too many elements.", named(place));
  return std::nullopt;
}

std::optional<std::string> memberMismatch(const Value& schema, const Value& value, const std::string& place) {
  const auto *required = schema.find("required"), *properties = schema.find("properties");
  if (required && required->asArray())
    for (const auto& name : *required->asArray())
      if (!value.find(*name.asString())) return fmt::format("{}/{} is missing.", place, *name.asString());
  const auto* others = schema.find("additionalProperties");
  for (const auto& [name, member] : *value.asObject()) {
    const auto at = place + "/" + name.substr(0, 64);
    const auto* known = properties ? properties->find(name) : nullptr;
    if (!known && others && others->asBool() == false) return at + " is not known.";
    if (known)
      if (auto why = mismatch(*known, member, at)) return why;
  }
  return std::nullopt;
}

} // namespace

std::optional<std::string> mismatch(const Value& schema, const Value& value, const std::string& place) {
  if (auto why = typeMismatch(schema, value, place)) return why;
  if (const auto* cases = schema.find("enum"); cases && !hasMember(cases, value))
    return fmt::format("{} is none of {}.", named(place), dumpJSON(*cases));
  if (auto why = boundMismatch(schema, value, place)) return why;
  if (value.asObject()) return memberMismatch(schema, value, place);
  const auto* elements = value.asArray();
  const auto* items = schema.find("items");
  if (!elements || !items) return std::nullopt;
  for (std::size_t i = 0; i < elements->size(); ++i)
    if (auto why = mismatch(*items, (*elements)[i], fmt::format("{}/{}", place, i))) return why;
  return std::nullopt;
}

} // namespace korvell::schema
