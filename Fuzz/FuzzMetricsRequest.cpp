// Any bytes as what a scraper sends: one whole answer, whose length is the one that it tells, and the figures
// only for a loopback name, once.

#include "Agents/MetricsRequest.h"
#include "Base/Text.h"
#include "Fuzz/Expect.h"

#include <string>

using namespace korvell;

namespace {

constexpr std::string_view figures = "korvell_health_score 87\n";

std::string_view bodyOf(std::string_view answer) {
  const auto length = lengthOfHead(answer);
  expect(length.has_value());
  return answer.substr(*length);
}

std::size_t toldLength(std::string_view answer) {
  constexpr std::string_view name = "Content-Length: ";
  const auto from = answer.find(name);
  expect(from != std::string_view::npos);
  const auto value = answer.substr(from + name.size(), answer.find('\r', from) - from - name.size());
  const auto length = parseInteger<std::size_t>(value);
  expect(length.has_value());
  return *length;
}

/// Whether a line of the head names a host that is this machine's own.
bool namesLoopback(std::string_view head) {
  for (auto line : splitLines(head)) {
    const auto colon = line.find(':');
    if (colon == std::string_view::npos || lowercased(line.substr(0, colon)) != "host") continue;
    if (isLoopbackHost(trimmed(line.substr(colon + 1)))) return true;
  }
  return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string_view received(reinterpret_cast<const char*>(data), size);
  const auto length = lengthOfHead(received);
  if (length) expect(*length <= size && received.substr(0, *length).ends_with("\r\n\r\n"));
  const auto head = received.substr(0, length.value_or(size));
  int asked = 0;
  const auto answer = answerToScrape(head, [&](MetricsFormat) {
    ++asked;
    return std::string(figures);
  });
  expect(answer.starts_with("HTTP/1.1 "));
  const bool isTold = answer.starts_with("HTTP/1.1 200 ");
  expect(asked == (isTold ? 1 : 0));
  if (isTold) expect(namesLoopback(head));
  const auto body = bodyOf(answer);
  const bool isHead = isTold && body.empty();
  expect(isHead || body.size() == toldLength(answer));
  expect(!isHead || trimmed(head).starts_with("HEAD"));
  expect((answer.find(figures) != std::string::npos) == (isTold && !isHead));
  return 0;
}
