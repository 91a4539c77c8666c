#include "Tool/Findings.h"

#include "Base/Text.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

using Severity = Insight::Severity;
using Kind = Insight::Action::Kind;

constexpr int labelWidth = 9;

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

std::string indented(const std::string& text) { return std::string(labelWidth + 2, ' ') + text; }

/// Mark, title and cost of a finding.
std::string heading(const Terminal& terminal, const Insight& insight, int width) {
  const auto& look = looks[std::size_t(insight.severity)];
  const auto cost = fmt::format(" −{}", insight.penalty);
  const int room = width - labelWidth - 2 - displayWidth(cost);
  const auto title = truncatedToWidth(escapedControls(insight.title), std::max(8, room));
  return std::string(labelWidth, ' ') + terminal.ink(look.ink, look.mark) + " " +
         terminal.ink(Ink::bold, title) + terminal.ink(Ink::dim, cost);
}

void addFinding(std::vector<std::string>& lines, const Terminal& terminal, const Insight& insight,
                int width) {
  const int room = width - labelWidth - 2;
  lines.push_back(heading(terminal, insight, width));
  for (const auto& line : wrapped(escapedControls(insight.detail), room)) lines.push_back(indented(line));
  if (insight.action)
    for (const auto& line : wrapped("→ " + escapedControls(fixText(*insight.action)), room))
      lines.push_back(indented(terminal.ink(Ink::accent, line)));
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

std::string scoreLine(const Terminal& terminal, const HealthReport& report) {
  auto label = localized("Health");
  label.append(std::size_t(std::max(1, labelWidth - displayWidth(label))), ' ');
  return terminal.ink(Ink::bold, label) +
         terminal.ink(inkForScore(report.score), fmt::format("{} {}", report.score, report.label()));
}

} // namespace

std::vector<std::string> findingLines(const Terminal& terminal, const HealthReport& report, int width) {
  std::vector<std::string> lines = {scoreLine(terminal, report)};
  for (const auto& insight : report.insights) addFinding(lines, terminal, insight, width);
  return lines;
}

std::vector<std::string> findingLines(const Terminal& terminal, const HealthReport& report, int width,
                                      int height) {
  auto lines = findingLines(terminal, report, width);
  const auto most = std::size_t(std::max(2, height));
  if (lines.size() <= most) return lines;
  lines.resize(1);
  const bool all = report.insights.size() < most;
  const auto shown = all ? report.insights.size() : most - 2; // the last line tells of the rest
  for (std::size_t i = 0; i < shown; ++i) lines.push_back(headline(terminal, report.insights[i], width));
  if (!all)
    lines.push_back(indented(
        terminal.ink(Ink::dim, localized("and {count} more: korvell status",
                                         {{"count", std::to_string(report.insights.size() - shown)}}))));
  return lines;
}

} // namespace korvell
