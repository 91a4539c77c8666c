#pragma once
// The members of log lines that matter, and their strict decoding.
//
// The fields bear the names that the tools give them. A line decodes when all of it is well-formed JSON in
// UTF-8 and no member named here has a wrong type; null counts as absent, unknown members are ignored, of a
// member written twice the last counts. Nesting deeper than 1,024 and a byte order mark are refused.

#include "Base/Record.h"
#include "Core/AIUsage/JSONTokens.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace korvell {

/// No integer of a line may be further from zero: a million times what any model takes at once. What is
/// larger is no count, and sums of what is not stay within 64 bits for millions of lines.
inline constexpr std::int64_t largestCount = 1'000'000'000'000;

struct ClaudeCacheCreation {
  std::optional<std::int64_t> ephemeral_1h_input_tokens;
  static constexpr auto fields() {
    return std::tuple{Field{"ephemeral_1h_input_tokens", &ClaudeCacheCreation::ephemeral_1h_input_tokens}};
  }
};

struct ClaudeUsage {
  std::optional<std::int64_t> input_tokens, output_tokens, cache_creation_input_tokens,
      cache_read_input_tokens;
  std::optional<ClaudeCacheCreation> cache_creation;
  static constexpr auto fields() {
    return std::tuple{Field{"input_tokens", &ClaudeUsage::input_tokens},
                      Field{"output_tokens", &ClaudeUsage::output_tokens},
                      Field{"cache_creation_input_tokens", &ClaudeUsage::cache_creation_input_tokens},
                      Field{"cache_read_input_tokens", &ClaudeUsage::cache_read_input_tokens},
                      Field{"cache_creation", &ClaudeUsage::cache_creation}};
  }
};

struct ClaudeMessage {
  std::optional<std::string_view> id, model;
  std::optional<ClaudeUsage> usage;
  static constexpr auto fields() {
    return std::tuple{Field{"id", &ClaudeMessage::id}, Field{"model", &ClaudeMessage::model},
                      Field{"usage", &ClaudeMessage::usage}};
  }
};

struct ClaudeLine {
  std::optional<std::string_view> type, timestamp, requestId, cwd;
  std::optional<ClaudeMessage> message;
  static constexpr auto fields() {
    return std::tuple{Field{"type", &ClaudeLine::type}, Field{"timestamp", &ClaudeLine::timestamp},
                      Field{"requestId", &ClaudeLine::requestId}, Field{"cwd", &ClaudeLine::cwd},
                      Field{"message", &ClaudeLine::message}};
  }
};

struct CodexUsage {
  std::optional<std::int64_t> input_tokens, cached_input_tokens, cache_write_input_tokens, output_tokens,
      total_tokens;
  static constexpr auto fields() {
    return std::tuple{Field{"input_tokens", &CodexUsage::input_tokens},
                      Field{"cached_input_tokens", &CodexUsage::cached_input_tokens},
                      Field{"cache_write_input_tokens", &CodexUsage::cache_write_input_tokens},
                      Field{"output_tokens", &CodexUsage::output_tokens},
                      Field{"total_tokens", &CodexUsage::total_tokens}};
  }
};

struct CodexInfo {
  std::optional<CodexUsage> total_token_usage, last_token_usage;
  static constexpr auto fields() {
    return std::tuple{Field{"total_token_usage", &CodexInfo::total_token_usage},
                      Field{"last_token_usage", &CodexInfo::last_token_usage}};
  }
};

struct CodexWindow {
  std::optional<double> used_percent;
  std::optional<std::int64_t> window_minutes;
  std::optional<double> resets_at; ///< seconds since 1970
  static constexpr auto fields() {
    return std::tuple{Field{"used_percent", &CodexWindow::used_percent},
                      Field{"window_minutes", &CodexWindow::window_minutes},
                      Field{"resets_at", &CodexWindow::resets_at}};
  }
};

struct CodexRateLimits {
  std::optional<CodexWindow> primary, secondary;
  std::optional<std::string_view> plan_type;
  static constexpr auto fields() {
    return std::tuple{Field{"primary", &CodexRateLimits::primary},
                      Field{"secondary", &CodexRateLimits::secondary},
                      Field{"plan_type", &CodexRateLimits::plan_type}};
  }
};

struct CodexPayload {
  std::optional<std::string_view> type, model, cwd;
  std::optional<CodexInfo> info;
  std::optional<CodexRateLimits> rate_limits;
  static constexpr auto fields() {
    return std::tuple{Field{"type", &CodexPayload::type}, Field{"model", &CodexPayload::model},
                      Field{"cwd", &CodexPayload::cwd}, Field{"info", &CodexPayload::info},
                      Field{"rate_limits", &CodexPayload::rate_limits}};
  }
};

struct CodexLine {
  std::optional<std::string_view> timestamp, type;
  std::optional<CodexPayload> payload;
  static constexpr auto fields() {
    return std::tuple{Field{"timestamp", &CodexLine::timestamp}, Field{"type", &CodexLine::type},
                      Field{"payload", &CodexLine::payload}};
  }
};

/// Decodes one line at a time; the texts of a result live until the next call. Not for several threads.
class LineDecoder {
public:
  std::optional<ClaudeLine> claude(std::string_view line);
  std::optional<CodexLine> codex(std::string_view line);

private:
  template <class Line>
  std::optional<Line> decode(std::string_view line);

  JSONTokens json_;
};

} // namespace korvell
