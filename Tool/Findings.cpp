#include "Tool/Findings.h"

#include "Base/Text.h"
#include "Tool/Wrap.h"

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

std::string fixText(const Insight::Action& action) {
  auto text = title(action);
  for (const auto& [kind, command] : fixCommands)
    if (kind == action.kind) text += ": " + std::string(command);
  return text;
}

Ink inkForScore(int score) { return score >= 75 ? Ink::good : score >= 50 ? Ink::warning : Ink::critical; }

std::string indented(const std::string& text) { return std::string(labelWidth + 2, ' ') + text; }

void addFinding(std::vector<std::string>& lines, const Terminal& terminal, const Insight& insight,
                int width) {
  const auto& look = looks[std::size_t(insight.severity)];
  const auto cost = fmt::format(" −{}", insight.penalty);
  const int room = width - labelWidth - 2;
  const auto heading =
      truncatedToWidth(escapedControls(insight.title), std::max(8, room - displayWidth(cost)));
  lines.push_back(std::string(labelWidth, ' ') + terminal.ink(look.ink, look.mark) + " " +
                  terminal.ink(Ink::bold, heading) + terminal.ink(Ink::dim, cost));
  for (const auto& line : wrapped(escapedControls(insight.detail), room)) lines.push_back(indented(line));
  if (insight.action)
    for (const auto& line : wrapped("→ " + escapedControls(fixText(*insight.action)), room))
      lines.push_back(indented(terminal.ink(Ink::accent, line)));
}

} // namespace

std::vector<std::string> findingLines(const Terminal& terminal, const HealthReport& report, int width) {
  auto label = localized("Health");
  label.append(std::size_t(std::max(1, labelWidth - displayWidth(label))), ' ');
  std::vector<std::string> lines = {
      terminal.ink(Ink::bold, label) +
      terminal.ink(inkForScore(report.score), fmt::format("{} {}", report.score, report.label()))};
  for (const auto& insight : report.insights) addFinding(lines, terminal, insight, width);
  return lines;
}

} // namespace korvell
