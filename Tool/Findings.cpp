#include "Tool/Findings.h"

#include "Base/Text.h"
#include "Tool/Labels.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

using Severity = Insight::Severity;
using Kind = Insight::Action::Kind;

struct SeverityLook {
  Severity severity;
  Ink ink;
  std::string_view mark;
};
constexpr SeverityLook looks[] = {{Severity::info, Ink::dim, "·"},
                                  {Severity::warning, Ink::warning, "▲"},
                                  {Severity::critical, Ink::critical, "●"}};

/// What the tool itself can do about a finding; the rest is done in the desktop.
struct FixCommand {
  Kind kind;
  std::string_view command;
};
constexpr FixCommand fixCommands[] = {{Kind::stopIdleServers, "korvell servers stop-idle"},
                                      {Kind::freeUpSpace, "korvell storage"},
                                      {Kind::showStartupItems, "korvell startup"}};

/// As one word of a shell's command, whatever an application calls itself.
std::string shellWord(const std::string& text) {
  const auto isPlain = [](unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '-';
  };
  if (!text.empty() && text.front() != '-' && std::ranges::all_of(text, isPlain)) return text;
  std::string word = "'";
  for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return word + "'";
}

std::string fixText(const Insight::Action& action) {
  auto text = title(action);
  if (action.kind == Kind::quitApp && action.name) text += ": korvell quit " + shellWord(*action.name);
  for (const auto& [kind, command] : fixCommands)
    if (kind == action.kind) text += ": " + std::string(command);
  return text;
}

Ink inkForScore(int score) { return score >= 75 ? Ink::good : score >= 50 ? Ink::warning : Ink::critical; }

/// Findings stand below the score, where there is room for that.
int marginOf(int width) {
  constexpr int narrow = 60;
  return width < narrow ? 0 : labelWidth();
}

std::string indented(const std::string& text, int width) {
  return std::string(std::size_t(marginOf(width) + 2), ' ') + text;
}

/// A word that is wider than a line goes on on the next one.
std::vector<std::string> broken(std::string_view text, int columns) {
  std::vector<std::string> lines;
  for (std::string_view word : wrapped(text, columns)) {
    while (columns > 1 && displayWidth(word) > columns) {
      lines.push_back(truncatedToWidth(word, columns, ""));
      word.remove_prefix(lines.back().size());
    }
    lines.emplace_back(word);
  }
  return lines;
}

/// Mark, title and cost of a finding.
std::string heading(const Terminal& terminal, const Insight& insight, int width) {
  const auto& look = looks[std::size_t(insight.severity)];
  const auto cost = fmt::format(" −{}", insight.penalty);
  const int room = width - marginOf(width) - 2 - displayWidth(cost);
  const auto title = truncatedToWidth(escapedControls(insight.title), std::max(8, room));
  return fitted(std::string(std::size_t(marginOf(width)), ' ') + terminal.ink(look.ink, look.mark) + " " +
                    terminal.ink(Ink::bold, title) + terminal.ink(Ink::dim, cost),
                width);
}

void addFinding(std::vector<std::string>& lines, const Terminal& terminal, const Insight& insight,
                int width) {
  const int room = width - marginOf(width) - 2;
  lines.push_back(heading(terminal, insight, width));
  const auto add = [&](Ink ink, const std::string& text) {
    for (const auto& line : broken(escapedControls(text), room))
      lines.push_back(fitted(indented(terminal.ink(ink, line), width), width));
  };
  add(Ink::plain, insight.detail);
  if (insight.action) add(Ink::accent, "→ " + fixText(*insight.action));
}

/// A finding on one line: what fits of the detail stands behind the title.
std::string headline(const Terminal& terminal, const Insight& insight, int width) {
  constexpr int fewestColumns = 12;
  auto line = heading(terminal, insight, width);
  const int room = width - inkedWidth(line) - 2;
  if (room >= fewestColumns)
    line += "  " + terminal.ink(Ink::dim, truncatedToWidth(escapedControls(insight.detail), room));
  return line;
}

std::string scoreLine(const Terminal& terminal, const HealthReport& report, const KnownParts& known,
                      int width) {
  auto label = localized("Health");
  label.append(std::size_t(std::max(1, labelWidth() - displayWidth(label))), ' ');
  auto score = fmt::format("{} {}", report.score, report.label());
  if (!known.has(KnownPart::tenMinuteAverage)) score = localized("{score} so far", {{"score", score}});
  return fitted(terminal.ink(Ink::bold, label) + terminal.ink(inkForScore(report.score), score), width);
}

} // namespace

std::vector<std::string> findingLines(const Terminal& terminal, const HealthReport& report,
                                      const KnownParts& known, int width) {
  std::vector<std::string> lines = {scoreLine(terminal, report, known, width)};
  for (const auto& insight : report.insights) addFinding(lines, terminal, insight, width);
  return lines;
}

std::vector<std::string> findingLines(const Terminal& terminal, const HealthReport& report,
                                      const KnownParts& known, int width, int height) {
  auto lines = findingLines(terminal, report, known, width);
  const auto most = std::size_t(std::max(2, height));
  if (lines.size() <= most) return lines;
  lines.resize(1);
  const bool all = report.insights.size() < most;
  const auto shown = all ? report.insights.size() : most - 2; // the last line tells of the rest
  for (std::size_t i = 0; i < shown; ++i) lines.push_back(headline(terminal, report.insights[i], width));
  if (!all)
    lines.push_back(
        fitted(indented(terminal.ink(Ink::dim,
                                     localized("and {count} more: korvell status",
                                               {{"count", std::to_string(report.insights.size() - shown)}})),
                        width),
               width));
  return lines;
}

} // namespace korvell
