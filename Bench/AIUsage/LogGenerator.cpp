#include "Bench/AIUsage/LogGenerator.h"

#include "Base/Date.h"

#include <cmath>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <string_view>

namespace korvell {

namespace {

constexpr const char* words[] = {"const ",   "return",    " the ",        "if (",
                                 "value",    ") {\\n  ",  "\\\"name\\\"", "token",
                                 ": ",       "function ", "_count",       "usage",
                                 "\\n",      "import ",   "self.",        " = ",
                                 "error",    "std::",     "0x7f",         ", ",
                                 "list[",    "],",        "src/",         "assistant",
                                 "types",    "public ",   "\\t",          "of ",
                                 "in_court", " and ",     "cargo test",   "user_id",
                                 "→",        "\\\\path ", "}\\n",         "{\\\"a\\\":{\\\"b\\\":1}}"};

class Writer {
public:
  Writer(std::uint64_t seed, std::int64_t now) : random_(seed), now_(now) {
    while (pool_.size() < 1'000'000) pool_ += words[random_() % std::size(words)];
  }

  std::string claudeFile(std::int64_t size, int file) {
    std::string text =
        file % 10 == 9 ? previous_.substr(0, previous_.rfind('\n', previous_.size() / 3) + 1) : "";
    const auto cwd = fmt::format("/home/ann/code/project{}", random_() % 12);
    while (std::int64_t(text.size()) < size) {
      userLine(text, cwd);
      assistantLines(text, cwd);
    }
    previous_ = text;
    return text;
  }

  std::string codexFile(std::int64_t size) {
    std::string text;
    std::int64_t total = 0;
    while (std::int64_t(text.size()) < size) {
      fmt::format_to(std::back_inserter(text),
                     R"({{"timestamp":"{}","type":"turn_context","payload":{{"cwd":"/home/ann/code/tool{}",)"
                     R"("approval_policy":"on-request","model":"gpt-5.{}"}}}})"
                     "\n",
                     time(), random_() % 8, 4 + random_() % 2);
      for (int i = 0; i < 12; ++i) codexStep(text, total);
    }
    return text;
  }

  std::int64_t lines = 0;

private:
  /// Most are short, a few are very long.
  std::string_view content(double median) {
    const double size = std::exp(std::normal_distribution<double>(std::log(median), 1.3)(random_));
    std::size_t begin = random_() % (pool_.size() / 2);
    std::size_t end = begin + std::size_t(std::min(std::max(size, 20.0), 190'000.0));
    // Neither an escape nor a character may be cut.
    const auto clean = [&](std::size_t at) {
      return pool_[at] >= 'a' && pool_[at] <= 'z' && pool_[at - 1] >= 'a' && pool_[at - 1] <= 'z' &&
             pool_[at - 2] != '\\';
    };
    while (begin < 2 || !clean(begin)) ++begin;
    while (!clean(end)) ++end;
    return std::string_view(pool_).substr(begin, end - begin);
  }
  std::string id(const char* prefix) {
    return fmt::format("{}{:016x}{:08x}", prefix, random_(), random_() % 1'000);
  }
  std::string time() { return rfc3339({double(now_ - std::int64_t(random_() % (25 * 86'400)))}); }

  void userLine(std::string& text, const std::string& cwd) {
    for (int i = random_() % 3 == 0 ? 2 : 1; i > 0; --i, ++lines)
      fmt::format_to(
          std::back_inserter(text),
          R"({{"parentUuid":"{}","isSidechain":false,"userType":"external","cwd":"{}","sessionId":"{}",)"
          R"("version":"2.0.14","type":"user","message":{{"role":"user","content":[{{"tool_use_id":"{}",)"
          R"("type":"tool_result","content":"{}"}}]}},"uuid":"{}","timestamp":"{}"}})"
          "\n",
          id(""), cwd, id(""), id("toolu_"), content(4'500), id(""), time());
  }

  void assistantLines(std::string& text, const std::string& cwd) {
    const auto message = id("msg_"), request = id("req_"), when = time();
    const char* model = random_() % 3 ? "claude-sonnet-4-5-20250929" : "claude-opus-4-6";
    for (auto i = 1 + random_() % 2; i > 0; --i, ++lines)
      fmt::format_to(
          std::back_inserter(text),
          R"({{"parentUuid":"{}","isSidechain":false,"userType":"external","cwd":"{}","sessionId":"{}",)"
          R"("version":"2.0.14","gitBranch":"main","message":{{"model":"{}","id":"{}","type":"message",)"
          R"("role":"assistant","content":[{{"type":"text","text":"{}"}}],"stop_reason":null,"usage":{{)"
          R"("input_tokens":{},"cache_creation_input_tokens":{},"cache_read_input_tokens":{},"cache_creation":)"
          R"({{"ephemeral_5m_input_tokens":0,"ephemeral_1h_input_tokens":{}}},"output_tokens":{},)"
          R"("service_tier":"standard"}}}},"requestId":"{}","type":"assistant","uuid":"{}","timestamp":"{}"}})"
          "\n",
          id(""), cwd, id(""), model, message, content(500), random_() % 3'000, random_() % 9'000,
          random_() % 150'000, random_() % 5'000, random_() % 4'000, request, id(""), when);
  }

  void codexStep(std::string& text, std::int64_t& total) {
    const auto when = time();
    fmt::format_to(
        std::back_inserter(text),
        R"({{"timestamp":"{}","type":"response_item","payload":{{"type":"function_call","name":"shell",)"
        R"("arguments":"{}","call_id":"{}"}}}})"
        "\n"
        R"({{"timestamp":"{}","type":"response_item","payload":{{"type":"function_call_output",)"
        R"("call_id":"{}","output":"{}"}}}})"
        "\n",
        when, content(300), id("call_"), when, id("call_"), content(4'000));
    const std::int64_t input = std::int64_t(random_() % 90'000), cached = input / 2,
                       output = std::int64_t(random_() % 3'000);
    if (random_() % 8) total += input + output;
    fmt::format_to(std::back_inserter(text),
                   R"({{"timestamp":"{}","type":"event_msg","payload":{{"type":"token_count","info":{{)"
                   R"("total_token_usage":{{"input_tokens":1,"total_tokens":{}}},"last_token_usage":{{)"
                   R"("input_tokens":{},"cached_input_tokens":{},"output_tokens":{},"total_tokens":{}}},)"
                   R"("model_context_window":272000}},"rate_limits":{{"primary":{{"used_percent":{},)"
                   R"("window_minutes":300,"resets_at":{}}},"secondary":null,"plan_type":"pro"}}}}}})"
                   "\n",
                   when, total, input, cached, output, input + output, random_() % 100, now_ + 3'600);
    lines += 3;
  }

  std::mt19937_64 random_;
  std::int64_t now_;
  std::string pool_;
  std::string previous_;
};

} // namespace

GeneratedLogs generateLogs(const std::string& home, std::int64_t bytes, int files, std::uint64_t seed,
                           std::int64_t now) {
  Writer writer(seed, now);
  std::mt19937_64 sizes(seed + 1);
  GeneratedLogs made;
  for (int file = 0; made.bytes < bytes || file < files; ++file) {
    const bool claude = file % 10 < 7;
    const auto folder = home + (claude ? fmt::format("/.claude/projects/-home-ann-code-project{}", file % 12)
                                       : fmt::format("/.codex/sessions/2026/11/{:02}", 1 + file % 20));
    std::filesystem::create_directories(folder);
    const double share = double(bytes) / files;
    const auto size = std::int64_t(share * (0.4 + 1.2 * double(sizes() % 1'000) / 1'000));
    const auto text = claude ? writer.claudeFile(size, file) : writer.codexFile(size);
    std::ofstream(fmt::format("{}/session-{:05}.jsonl", folder, file), std::ios::binary) << text;
    made.bytes += std::int64_t(text.size());
    ++made.files;
  }
  made.lines = writer.lines;
  return made;
}

} // namespace korvell
