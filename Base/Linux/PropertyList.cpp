#include "Base/PropertyList.h"

#include "Base/Text.h"

#include <cstdlib>
#include <memory>
#include <plist/plist.h>
#include <string>

namespace korvell {

namespace {

/// Dates count from 2001-01-01.
constexpr double referenceDate = 978'307'200;

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

constexpr int deepest = 512;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF"; // the library does not know it

Value convert(plist_t node, int depth);

Value text(plist_t node) {
  std::uint64_t length = 0;
  const char* bytes = plist_get_string_ptr(node, &length);
  return Value(repairedUTF8(std::string_view(bytes ? bytes : "", length)));
}

Value date(plist_t node) {
  std::int32_t seconds = 0, microseconds = 0;
  plist_get_date_val(node, &seconds, &microseconds);
  return Value(Date{referenceDate + seconds + microseconds / 1e6});
}

Value elements(plist_t node, int depth) {
  Value::Array result;
  plist_array_iter raw = nullptr;
  plist_array_new_iter(node, &raw);
  const std::unique_ptr<void, Free> iterator(raw);
  for (plist_t element = nullptr; plist_array_next_item(node, raw, &element), element;)
    result.push_back(convert(element, depth + 1));
  return Value(std::move(result));
}

Value members(plist_t node, int depth) {
  Value::Object result;
  plist_dict_iter raw = nullptr;
  plist_dict_new_iter(node, &raw);
  const std::unique_ptr<void, Free> iterator(raw);
  for (;;) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(node, raw, &key, &value);
    const std::unique_ptr<char, Free> name(key);
    if (!value) return Value(std::move(result));
    result.emplace_back(repairedUTF8(key ? key : ""), convert(value, depth + 1));
  }
}

Value convert(plist_t node, int depth) {
  if (depth > deepest) return {};
  switch (plist_get_node_type(node)) {
  case PLIST_BOOLEAN: {
    std::uint8_t flag = 0;
    plist_get_bool_val(node, &flag);
    return Value(flag != 0);
  }
  case PLIST_UINT: { // negative numbers are handed out as their two's complement
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    return Value(std::int64_t(number));
  }
  case PLIST_REAL: {
    double number = 0;
    plist_get_real_val(node, &number);
    return Value(number);
  }
  case PLIST_STRING:
    return text(node);
  case PLIST_DATE:
    return date(node);
  case PLIST_ARRAY:
    return elements(node, depth);
  case PLIST_DICT:
    return members(node, depth);
  default:
    return {};
  }
}

} // namespace

std::optional<Value> parsePropertyList(std::string_view bytes) {
  const auto form = tamePropertyListForm(bytes);
  if (!form) return std::nullopt;
  if (bytes.starts_with(byteOrderMark)) bytes.remove_prefix(byteOrderMark.size());
  plist_t raw = nullptr;
  if (*form == PropertyListForm::binary)
    plist_from_bin(bytes.data(), std::uint32_t(bytes.size()), &raw);
  else
    plist_from_xml(bytes.data(), std::uint32_t(bytes.size()), &raw);
  const std::unique_ptr<void, decltype(&plist_free)> root(raw, &plist_free);
  if (!root) return std::nullopt;
  return convert(raw, 0);
}

} // namespace korvell
