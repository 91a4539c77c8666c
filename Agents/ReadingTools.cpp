#include "Agents/ReadingTools.h"

#include "Base/Text.h"

namespace korvell {

std::vector<ReadingTool> readingTools() {
  return {whySlowTool(), healthTool(),  machineTool(),    processesTool(),    historyTool(), alertsTool(),
          aiUsageTool(), storageTool(), devServersTool(), startupItemsTool(), sensorsTool(), soundTool()};
}

std::int64_t integerOf(const Value& arguments, const char* name, std::int64_t otherwise) {
  const auto* value = arguments.find(name);
  return value ? value->asInt().value_or(otherwise) : otherwise;
}

std::string textOf(const Value& arguments, const char* name) {
  const auto* value = arguments.find(name);
  const auto* text = value ? value->asString() : nullptr;
  return text ? *text : std::string();
}

bool flagOf(const Value& arguments, const char* name) {
  const auto* value = arguments.find(name);
  return value && value->asBool().value_or(false);
}

namespace {

constexpr const char *limitName = "limit", *cursorName = "cursor";
constexpr std::size_t longestCursor = 20;

} // namespace

schema::Member ResultPage::limit(std::int64_t most, std::int64_t usual) {
  const auto text = "How many at most (" + std::to_string(usual) + ")";
  return {limitName, schema::integer(text, 1, most)};
}

schema::Member ResultPage::cursor() {
  return {cursorName, schema::text("The nextCursor of the page before", longestCursor)};
}

Result<ResultPage> ResultPage::of(const Value& arguments, std::int64_t usual) {
  const auto count = std::size_t(integerOf(arguments, limitName, usual));
  const auto text = textOf(arguments, cursorName);
  if (text.empty()) return ResultPage(0, count);
  const auto begin = parseInteger<std::uint32_t>(text);
  return begin ? Result<ResultPage>(ResultPage(*begin, count))
               : Failure{"The cursor is not one of this list."};
}

std::optional<std::string> ResultPage::next(std::size_t all) const {
  return begin_ + count_ < all ? std::optional(std::to_string(begin_ + count_)) : std::nullopt;
}

} // namespace korvell
