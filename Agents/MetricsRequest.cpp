#include "Agents/MetricsRequest.h"

#include "Base/Text.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr std::string_view headEnd = "\r\n\r\n";

std::string answer(std::string_view status, std::string_view type, std::string_view body,
                   bool hasBody = true) {
  return fmt::format("HTTP/1.1 {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n"
                     "X-Content-Type-Options: nosniff\r\n\r\n{}",
                     status, type, body.size(), hasBody ? body : std::string_view());
}

std::string refusal(std::string_view status) {
  return answer(status, "text/plain; charset=utf-8", std::string(status) + "\n");
}

/// The value of a header; nothing when there is none, an empty text when there are several.
std::optional<std::string> header(std::string_view head, std::string_view wanted) {
  std::optional<std::string> found;
  for (auto line : splitLines(head)) {
    const auto colon = line.find(':');
    if (colon == std::string_view::npos || lowercased(line.substr(0, colon)) != wanted) continue;
    found = found ? "" : std::string(trimmed(line.substr(colon + 1)));
  }
  return found;
}

bool isPort(std::string_view text) {
  return text.empty() || (text.front() == ':' && parseInteger<std::uint16_t>(text.substr(1)));
}

/// Four numbers, the first of which is 127.
bool isLoopbackAddress(std::string_view address) {
  const auto parts = split(address, '.');
  return parts.size() == 4 && parts.front() == "127" && std::ranges::all_of(parts, [](std::string_view part) {
           return parseInteger<std::uint8_t>(part).has_value();
         });
}

} // namespace

std::optional<std::size_t> lengthOfHead(std::string_view received) {
  const auto end = received.find(headEnd);
  return end == std::string_view::npos ? std::nullopt : std::optional(end + headEnd.size());
}

bool isLoopbackHost(std::string_view host) {
  constexpr std::string_view sixth = "[::1]";
  if (host.starts_with(sixth)) return isPort(host.substr(sixth.size()));
  const auto colon = std::min(host.find(':'), host.size());
  const auto name = host.substr(0, colon);
  return isPort(host.substr(colon)) &&
         (lowercased(std::string(name)) == "localhost" || isLoopbackAddress(name));
}

std::string answerToScrape(std::string_view head, const MetricsBody& body) {
  const auto lines = splitLines(head);
  auto words = split(lines.empty() ? std::string_view() : trimmed(lines.front()), ' ');
  if (words.size() != 3 || !words[2].starts_with("HTTP/1.")) return refusal("400 Bad Request");
  const auto host = header(head, "host");
  if (!host || host->empty()) return refusal("400 Bad Request");
  if (!isLoopbackHost(*host)) return refusal("403 Forbidden");
  if (words[0] != "GET" && words[0] != "HEAD") return refusal("405 Method Not Allowed");
  if (words[1].substr(0, words[1].find('?')) != "/metrics") return refusal("404 Not Found");
  const auto accept = header(head, "accept").value_or("");
  const auto format = accept.find("application/openmetrics-text") == std::string::npos
                          ? MetricsFormat::prometheus
                          : MetricsFormat::openMetrics;
  const auto text = body(format);
  if (text.empty()) return refusal("503 Service Unavailable");
  return answer("200 OK", rawValue(format), text, words[0] == "GET");
}

std::string answerToTooMuch() { return refusal("431 Request Header Fields Too Large"); }

} // namespace korvell
