// Any bytes as log lines of both tools: blocks of lines give what the single lines give, and what the strict
// decoder takes is JSON for the other reader too.

#include "Base/Value.h"
#include "Core/AIUsage/LineRules.h"
#include "Fuzz/Expect.h"

#include <algorithm>

using namespace korvell;

namespace {

struct Greenwich final : TimeZone {
  int secondsFromGMT(std::int64_t) const override { return 0; }
} const zone;

/// The other reader refuses what nests deeper than 512.
bool mayBeDeep(std::string_view line) {
  return std::count_if(line.begin(), line.end(), [](char c) { return c == '[' || c == '{'; }) > 512;
}

constexpr std::int64_t sane = std::int64_t{1} << 60;

/// Sums beyond 64 bits end the process on purpose.
bool endsTheProcess(const CodexLine& line) {
  if (!line.payload || !line.payload->info || !line.payload->info->last_token_usage) return false;
  const auto& last = *line.payload->info->last_token_usage;
  return last.input_tokens.value_or(0) < -sane || last.cached_input_tokens.value_or(0) < -sane ||
         last.input_tokens.value_or(0) > sane || last.cached_input_tokens.value_or(0) > sane;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  std::string padded(reinterpret_cast<const char*>(data), size);
  padded += '\n';
  const std::size_t length = padded.size();
  padded.append(LineDecoder::padding, 'x');
  const std::string_view block = std::string_view(padded).substr(0, length);

  LineTools tools(zone, "/home/ann"), lineTools(zone, "/home/ann");
  EventBatch single, whole;
  FileState singleFile, wholeFile;
  LineDecoder decoder;
  ClaudeLines singleClaude(lineTools, single), wholeClaude(tools, whole);
  CodexLines singleCodex(lineTools, single, singleFile), wholeCodex(tools, whole, wholeFile);
  for (std::size_t begin = 0; begin < length;) {
    const auto end = block.find('\n', begin);
    const auto line = block.substr(begin, end - begin);
    if (decoder.claude(line)) expect(parseJSON(line).has_value() || mayBeDeep(line));
    if (const auto decoded = decoder.codex(line); decoded && endsTheProcess(*decoded)) return 0;
    begin = end + 1;
  }
  for (std::size_t begin = 0; begin < length;) {
    const auto end = block.find('\n', begin);
    singleClaude.line(block.substr(begin, end - begin));
    begin = end + 1;
  }
  for (std::size_t begin = 0; begin < length;) {
    const auto end = block.find('\n', begin);
    singleCodex.line(block.substr(begin, end - begin));
    begin = end + 1;
  }
  wholeClaude.lines(block);
  wholeCodex.lines(block);
  expect(single.events.size() == whole.events.size());
  for (std::size_t i = 0; i < single.events.size(); ++i)
    expect(single.events[i].counts == whole.events[i].counts && single.events[i].key == whole.events[i].key);
  expect(singleFile == wholeFile);
  expect(single.limits.has_value() == whole.limits.has_value());
  return 0;
}
