// Any bytes as log lines of both tools: blocks of lines give what the single lines give, and lines are
// well-formed for the scanner where they are for the other reader of JSON.

#include "Base/Value.h"
#include "Core/AIUsage/JSONTokens.h"
#include "Core/AIUsage/LineRules.h"
#include "Fuzz/Expect.h"

#include <algorithm>

using namespace korvell;

namespace {

struct Greenwich final : TimeZone {
  int secondsFromGMT(std::int64_t) const override { return 0; }
} const zone;

/// The other reader refuses what nests deeper than 512, and numbers beyond all types, and passes over a byte
/// order mark.
bool mayDiffer(std::string_view line) {
  std::size_t digits = 0, mostDigits = 0, exponents = 0, open = 0;
  for (const char c : line) {
    digits = '0' <= c && c <= '9' ? digits + 1 : 0;
    mostDigits = std::max(mostDigits, digits);
    exponents += c == 'e' || c == 'E';
    open += c == '[' || c == '{';
  }
  return line.starts_with("\xef\xbb\xbf") || open > 512 || mostDigits > 300 ||
         (exponents > 0 && mostDigits > 2);
}

void compareReaders(JSONTokens& tokens, std::string_view line) {
  if (mayDiffer(line)) return;
  const bool wellFormed = tokens.begin(line) && tokens.skip() && tokens.atEnd();
  expect(wellFormed == parseJSON(withoutLoneSurrogates(line)).has_value());
}

bool isBounded(std::int64_t count) { return -largestCount <= count && count <= largestCount; }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  std::string padded(reinterpret_cast<const char*>(data), size);
  padded += '\n';
  const std::size_t length = padded.size();
  padded.append(JSONTokens::padding, 'x');
  const std::string_view block = std::string_view(padded).substr(0, length);

  const Date now{1'772'366'400};
  LineTools tools(zone, "/home/ann", now), lineTools(zone, "/home/ann", now);
  EventBatch single, whole;
  FileState singleFile, wholeFile;
  JSONTokens tokens;
  ClaudeLines singleClaude(lineTools, single), wholeClaude(tools, whole);
  CodexLines singleCodex(lineTools, single, singleFile), wholeCodex(tools, whole, wholeFile);
  for (std::size_t begin = 0; begin < length;) {
    const auto end = block.find('\n', begin);
    const auto line = block.substr(begin, end - begin);
    compareReaders(tokens, line);
    begin = end + 1;
  }
  for (std::size_t begin = 0; begin < length;) {
    const auto end = block.find('\n', begin);
    singleClaude.claudeLine(block.substr(begin, end - begin));
    begin = end + 1;
  }
  for (std::size_t begin = 0; begin < length;) {
    const auto end = block.find('\n', begin);
    singleCodex.codexLine(block.substr(begin, end - begin));
    begin = end + 1;
  }
  wholeClaude.lines(block);
  wholeCodex.lines(block);
  expect(single.events.size() == whole.events.size());
  for (std::size_t i = 0; i < single.events.size(); ++i) {
    const auto& counts = single.events[i].counts;
    expect(counts == whole.events[i].counts && single.events[i].key == whole.events[i].key);
    expect(isBounded(counts.output) && isBounded(counts.cacheWrite1h) && isBounded(counts.cacheRead));
  }
  expect(singleFile == wholeFile);
  expect(single.limits == whole.limits);
  return 0;
}
