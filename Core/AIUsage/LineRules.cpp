#include "Core/AIUsage/LineRules.h"

#include "Core/AIUsage/Names.h"

#include <algorithm>
#include <cstring>

namespace korvell {

namespace {

/// Calls `handle` with every line of a block that contains `needle`, and where in the line it first stands.
template <class Handle>
void forEachLineWith(const Needle& needle, std::string_view block, Handle&& handle) {
  while (const auto hit = findWithSIMD(needle, block)) {
    const auto before = lastLineFeed(block.substr(0, *hit));
    const std::size_t begin = before ? *before + 1 : 0;
    const std::size_t end = std::min(block.find('\n', *hit), block.size());
    handle(block.substr(begin, end - begin), *hit - begin);
    block.remove_prefix(std::min(end + 1, block.size()));
  }
}

/// The bytes after the needle up to the next double quote.
std::optional<std::string_view> quotedAfter(const Needle& needle, std::string_view line) {
  const auto at = findWithSIMD(needle, line);
  if (!at) return std::nullopt;
  const auto begin = *at + needle.text.size();
  const auto end = line.find('"', begin);
  return end == std::string_view::npos ? std::nullopt : std::optional(line.substr(begin, end - begin));
}

} // namespace

void EventBatch::clear() {
  events.clear();
  limits = {};
  models.clear();
  projects.clear();
}

std::optional<std::uint64_t> MessageKeys::key(std::string_view line) {
  const auto message = quotedAfter(messageIDNeedle, line);
  if (!message) return std::nullopt;
  const auto request = quotedAfter(requestIDNeedle, line).value_or("");
  if (last_ && *message == message_ && request == request_) return last_;
  message_ = *message;
  request_ = request;
  return last_ = fnv1a(request, fnv1a(":", fnv1a(*message, fnv1a("msg_"))));
}

void ClaudeLines::lines(std::string_view lines) {
  forEachLineWith(usageNeedle, lines, [this](auto line, auto at) { candidate(line, at); });
}

bool ClaudeLines::claudeLine(std::string_view line) {
  const auto usage = findWithSIMD(usageNeedle, line);
  return usage && candidate(line, *usage);
}

bool ClaudeLines::candidate(std::string_view line, std::size_t usage) {
  // The line's own type is written behind its message, whose text is most of the line.
  if (!contains(line.substr(usage), assistantNeedle) && !contains(line, assistantNeedle)) return false;
  const auto key = messageKeys_.key(line);
  if (key && tools_.keys.contains(*key)) return false;
  if (key) tools_.keys.add(*key);
  if (decodedLine(line, key)) return true;
  // The first sighting is spent even where the line turns out to add nothing.
  if (key) batch_.events.push_back({.key = key, .counted = false});
  return false;
}

bool ClaudeLines::decodedLine(std::string_view raw, std::optional<std::uint64_t> key) {
  const auto line = tools_.decoder.claude(raw);
  if (!line || line->type != "assistant" || !line->message) return false;
  const auto& [id, model, usage] = *line->message;
  if (!usage || !model || !model->starts_with("claude")) return false;
  const auto instant = logInstant(line->timestamp);
  if (!instant) return false;

  UsageEvent event{.key = key, .day = tools_.days.day(*instant)};
  if (line->cwd) {
    if (project_.empty() || cwd_ != *line->cwd) {
      cwd_ = *line->cwd;
      project_ = projectName(cwd_, "", tools_.home);
    }
    event.namesProject = true;
    event.project = batch_.projects.intern(project_);
  }
  event.model = batch_.models.intern(normalizedModel(*model));
  const auto writes = usage->cache_creation_input_tokens.value_or(0);
  const auto hourWrites =
      usage->cache_creation ? usage->cache_creation->ephemeral_1h_input_tokens.value_or(0) : 0;
  event.counts = {.input = usage->input_tokens.value_or(0),
                  .output = usage->output_tokens.value_or(0),
                  .cacheWrite = writes,
                  .cacheWrite1h = std::min(hourWrites, writes),
                  .cacheRead = usage->cache_read_input_tokens.value_or(0)};
  batch_.events.push_back(event);
  return true;
}

void CodexLines::lines(std::string_view lines) {
  forEachLineWith(codexNeedle, lines, [this](auto line, auto at) { candidate(line, at); });
}

bool CodexLines::codexLine(std::string_view raw) {
  const auto needle = findWithSIMD(codexNeedle, raw);
  return needle && candidate(raw, *needle);
}

bool CodexLines::candidate(std::string_view raw, std::size_t needle) {
  const bool hasTokenCount = contains(raw.substr(needle), tokenCountNeedle);
  if (!hasTokenCount && !contains(raw.substr(needle), turnContextNeedle)) return false;
  const auto line = tools_.decoder.codex(raw);
  if (!line || !line->payload) return false;
  if (line->type == "turn_context") {
    context(*line->payload);
    return false;
  }
  return hasTokenCount && line->payload->type == "token_count" && tokenCount(*line);
}

void CodexLines::context(const CodexPayload& payload) {
  if (payload.model) file_.model = *payload.model;
  if (payload.cwd) file_.project = projectName(payload.cwd, "", tools_.home);
}

bool CodexLines::tokenCount(const CodexLine& line) {
  const auto& payload = *line.payload;
  if (payload.rate_limits)
    if (auto reading = limitsReading(line.timestamp, *payload.rate_limits))
      batch_.limits.take(std::move(*reading), tools_.now);
  if (!payload.info || !payload.info->total_token_usage || !payload.info->last_token_usage) return false;
  const auto total = payload.info->total_token_usage->total_tokens;
  if (!total || *total == file_.lastTotal) return false;
  const auto instant = logInstant(line.timestamp);
  if (!instant) return false;
  file_.lastTotal = *total;

  const auto& last = *payload.info->last_token_usage;
  const auto cached = last.cached_input_tokens.value_or(0);
  const auto input = subtractTokens(last.input_tokens.value_or(0), cached);
  batch_.events.push_back({.day = tools_.days.day(*instant),
                           .model = batch_.models.intern(file_.model),
                           .project = batch_.projects.intern(file_.project.empty() ? "Home" : file_.project),
                           .counts = {.input = std::max<std::int64_t>(input, 0),
                                      .output = last.output_tokens.value_or(0),
                                      .cacheWrite = last.cache_write_input_tokens.value_or(0),
                                      .cacheRead = cached}});
  return true;
}

} // namespace korvell
