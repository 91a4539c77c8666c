#pragma once
// The tools that read: what each takes and gives, and how it finds it out. They run on the tools' own queue
// and wait there; docs/agents.md describes them to people.

#include "Agents/MCPTool.h"
#include "Agents/Readings.h"
#include "Agents/Schema.h"
#include "Base/Cancellation.h"
#include "Base/Result.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace korvell {

struct ReadingTool {
  std::string name, title, description;
  Value input, output;
  /// The arguments fit the input schema. A failure is a sentence for whoever called.
  Result<Value> (*read)(Readings& readings, const Value& arguments,
                        const Cancellation& cancellation) = nullptr;
  bool isSlow = false; ///< may take minutes: it does not hold up the others
  using Tell = std::function<void(const Progress&)>;
  /// In place of `read`, of one that says how far it is.
  Result<Value> (*readTelling)(Readings& readings, const Value& arguments, const Cancellation& cancellation,
                               const Tell& tell) = nullptr;
};

std::vector<ReadingTool> readingTools();

// One or several a file.
ReadingTool healthTool();
ReadingTool machineTool();
ReadingTool whySlowTool();
ReadingTool processesTool();
ReadingTool historyTool();
ReadingTool alertsTool();
ReadingTool aiUsageTool();
ReadingTool storageTool();
ReadingTool devServersTool();
ReadingTool startupItemsTool();
ReadingTool sensorsTool();
ReadingTool soundTool();

// What several share.

/// Arguments that fit their schema.
std::int64_t integerOf(const Value& arguments, const char* name, std::int64_t otherwise);
std::string textOf(const Value& arguments, const char* name);
bool flagOf(const Value& arguments, const char* name);
template <class E>
E choiceOf(const Value& arguments, const char* name, E otherwise) {
  return fromRawValue<E>(textOf(arguments, name)).value_or(otherwise);
}

/// A page of a list that is read anew for each page.
class ResultPage {
public:
  static schema::Member limit(std::int64_t most, std::int64_t usual);
  static schema::Member cursor();

  /// Fails for a cursor that none of ours looks like.
  static Result<ResultPage> of(const Value& arguments, std::int64_t usual);
  template <class T>
  std::vector<T> cut(const std::vector<T>& all) const {
    const auto begin = std::min(begin_, all.size()), end = std::min(begin + count_, all.size());
    return {all.begin() + std::ptrdiff_t(begin), all.begin() + std::ptrdiff_t(end)};
  }
  /// Of the page behind; nothing behind the last one.
  std::optional<std::string> next(std::size_t all) const;

private:
  ResultPage(std::size_t begin, std::size_t count) : begin_(begin), count_(count) {}
  std::size_t begin_, count_;
};

} // namespace korvell
