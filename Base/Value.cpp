#include "Base/Value.h"

#include "Base/Text.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace korvell {

std::optional<bool> Value::asBool() const {
  if (const auto* v = std::get_if<bool>(&data_)) return *v;
  return std::nullopt;
}

std::optional<std::int64_t> Value::asInt() const {
  if (const auto* v = std::get_if<std::int64_t>(&data_)) return *v;
  return std::nullopt; // what is stored as unsigned does not fit
}

std::optional<std::uint64_t> Value::asUnsigned() const {
  if (const auto* v = std::get_if<std::uint64_t>(&data_)) return *v;
  if (const auto* v = std::get_if<std::int64_t>(&data_); v && *v >= 0) return std::uint64_t(*v);
  return std::nullopt;
}

std::optional<double> Value::asDouble() const {
  if (const auto* v = std::get_if<double>(&data_)) return *v;
  if (const auto* v = std::get_if<std::int64_t>(&data_)) return double(*v);
  if (const auto* v = std::get_if<std::uint64_t>(&data_)) return double(*v);
  return std::nullopt;
}

std::optional<Date> Value::asDate() const {
  if (const auto* v = std::get_if<Date>(&data_)) return *v;
  if (const auto* v = asString()) return parseRFC3339(*v);
  return std::nullopt;
}

const Value* Value::find(std::string_view name) const {
  const auto* members = asObject();
  if (!members) return nullptr;
  for (auto it = members->rbegin(); it != members->rend(); ++it)
    if (it->first == name) return &it->second;
  return nullptr;
}

Value& Value::set(std::string_view name, Value value) {
  auto* members = std::get_if<Object>(&data_);
  if (!members) members = &data_.emplace<Object>();
  for (auto& [key, existing] : *members)
    if (key == name) {
      existing = std::move(value);
      return *this;
    }
  members->emplace_back(std::string(name), std::move(value));
  return *this;
}

void Value::erase(std::string_view name) {
  if (auto* members = std::get_if<Object>(&data_))
    std::erase_if(*members, [name](const Member& member) { return member.first == name; });
}

Value& Value::append(Value value) {
  auto* elements = std::get_if<Array>(&data_);
  if (!elements) elements = &data_.emplace<Array>();
  elements->push_back(std::move(value));
  return *this;
}

struct ValueAccess {
  static const auto& data(const Value& value) { return value.data_; }
};

namespace {

using JSON = nlohmann::ordered_json;
constexpr int deepest = 512;

Value fromJSON(const JSON& json) {
  switch (json.type()) {
  case JSON::value_t::boolean:
    return json.get<bool>();
  case JSON::value_t::number_integer:
    return json.get<std::int64_t>();
  case JSON::value_t::number_unsigned:
    return json.get<std::uint64_t>();
  case JSON::value_t::number_float:
    return json.get<double>();
  case JSON::value_t::string:
    return json.get<std::string>();
  case JSON::value_t::array: {
    Value::Array elements;
    elements.reserve(json.size());
    for (const auto& element : json) elements.push_back(fromJSON(element));
    return elements;
  }
  case JSON::value_t::object: {
    Value::Object members;
    members.reserve(json.size());
    for (const auto& [name, member] : json.items()) members.emplace_back(name, fromJSON(member));
    return members;
  }
  default:
    return {};
  }
}

JSON toJSON(const Value& value) {
  return std::visit(
      [](const auto& v) -> JSON {
        using T = std::decay_t<decltype(v)>;
        if constexpr (std::is_same_v<T, std::monostate>) {
          return nullptr;
        } else if constexpr (std::is_same_v<T, Date>) {
          return rfc3339(v);
        } else if constexpr (std::is_same_v<T, Value::Array>) {
          JSON elements = JSON::array();
          for (const auto& element : v) elements.push_back(toJSON(element));
          return elements;
        } else if constexpr (std::is_same_v<T, Value::Object>) {
          JSON members = JSON::object();
          for (const auto& [name, member] : v) members[repairedUTF8(name)] = toJSON(member);
          return members;
        } else {
          return v;
        }
      },
      ValueAccess::data(value));
}

} // namespace

namespace {

JSONFault faultAt(std::string_view text, std::size_t offset) {
  const auto before = text.substr(0, std::min(offset, text.size()));
  const auto lineStart = before.rfind('\n') + 1; // 0 on the first line
  const auto isContinuation = [](char c) { return (c & 0xC0) == 0x80; };
  const auto bytes = before.substr(lineStart);
  return {1 + std::size_t(std::ranges::count(before, '\n')),
          1 + bytes.size() - std::size_t(std::ranges::count_if(bytes, isContinuation))};
}

/// Learns where the library gives up, without an exception.
struct FaultFinder final : nlohmann::json_sax<JSON> {
  std::string_view text;
  JSONFault fault;
  explicit FaultFinder(std::string_view document) : text(document) {}

  bool null() override { return true; }
  bool boolean(bool) override { return true; }
  bool number_integer(number_integer_t) override { return true; }
  bool number_unsigned(number_unsigned_t) override { return true; }
  bool number_float(number_float_t, const string_t&) override { return true; }
  bool string(string_t&) override { return true; }
  bool binary(binary_t&) override { return true; }
  bool start_object(std::size_t) override { return true; }
  bool key(string_t&) override { return true; }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return true; }
  bool end_array() override { return true; }
  /// `read` counts what it has read, the token included.
  bool parse_error(std::size_t read, const std::string& token,
                   const nlohmann::detail::exception& error) override {
    const bool tooLarge = dynamic_cast<const JSON::out_of_range*>(&error) != nullptr;
    fault = faultAt(text, read - std::min(read, tooLarge ? token.size() : 1));
    fault.tooLarge = tooLarge;
    return false;
  }
};

JSONFault faultOf(std::string_view text) {
  FaultFinder finder(text);
  JSON::sax_parse(text.begin(), text.end(), &finder);
  return finder.fault;
}

} // namespace

std::optional<Value> parseJSON(std::string_view text, JSONFault* fault) {
  // The library takes the first NUL for the end of the text, whatever follows.
  if (const auto end = text.find('\0'); end != std::string_view::npos) {
    if (fault) *fault = faultAt(text, end);
    return std::nullopt;
  }
  // The callback sees every value before it is built: a document that nests too deep is given up there.
  bool tooDeep = false;
  const auto limit = [&tooDeep](int depth, JSON::parse_event_t event, JSON&) {
    const bool opens =
        event == JSON::parse_event_t::array_start || event == JSON::parse_event_t::object_start;
    tooDeep = tooDeep || (opens && depth >= deepest);
    return !tooDeep;
  };
  const JSON json = JSON::parse(text.begin(), text.end(), limit, false);
  if (json.is_discarded() || tooDeep) {
    if (fault) *fault = tooDeep ? JSONFault() : faultOf(text);
    return std::nullopt;
  }
  return fromJSON(json);
}

std::string dumpJSON(const Value& value, JSONStyle style) {
  return toJSON(value).dump(style == JSONStyle::indented ? 2 : -1, ' ', false,
                            JSON::error_handler_t::replace);
}

} // namespace korvell
