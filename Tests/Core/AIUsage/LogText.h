#pragma once
// Log lines as the two tools write them, in the members that matter.

#include "Core/AIUsage/LogLines.h"

#include <fmt/format.h>
#include <string>

namespace korvell {

/// A line with the readable bytes behind it that decoding asks for.
class PaddedLine {
public:
  explicit PaddedLine(std::string_view line) : size_(line.size()), bytes_(line) {
    bytes_.append(JSONTokens::padding, 'x');
  }
  operator std::string_view() const { return std::string_view(bytes_).substr(0, size_); }

private:
  std::size_t size_;
  std::string bytes_;
};

struct ClaudeText {
  std::string id = "msg_1", request = "req_1";
  std::string model = "claude-sonnet-4-5-20250929";
  std::string timestamp = "2026-03-01T12:00:00.000Z";
  std::string cwd = "/home/ann/code/shop"; ///< empty: the member is left out
  std::string usage = R"("input_tokens":1,"output_tokens":2)";
  std::string extra;

  std::string text() const {
    return fmt::format(R"({{"parentUuid":null,{}"sessionId":"s","message":{{"model":"{}","id":"{}",)"
                       R"("type":"message","role":"assistant","content":[{{"type":"text","text":"hi"}}],)"
                       R"("usage":{{{}}}}},"requestId":"{}","type":"assistant","timestamp":"{}"{}}})",
                       cwd.empty() ? "" : fmt::format(R"("cwd":"{}",)", cwd), model, id, usage, request,
                       timestamp, extra);
  }
};

struct CodexText {
  std::string timestamp = "2026-03-01T12:00:00.000Z";
  std::int64_t total = 100;
  std::string last = R"("input_tokens":50,"cached_input_tokens":20,"output_tokens":7,"total_tokens":57)";
  std::string limits = "null";

  std::string text() const {
    return fmt::format(R"({{"timestamp":"{}","type":"event_msg","payload":{{"type":"token_count","info":)"
                       R"({{"total_token_usage":{{"total_tokens":{}}},"last_token_usage":{{{}}}}},)"
                       R"("rate_limits":{}}}}})",
                       timestamp, total, last, limits);
  }

  static std::string context(std::string_view model, std::string_view cwd) {
    return fmt::format(R"({{"timestamp":"2026-03-01T11:59:00Z","type":"turn_context","payload":)"
                       R"({{"cwd":"{}","model":"{}"}}}})",
                       cwd, model);
  }
};

} // namespace korvell
