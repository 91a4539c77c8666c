#include "Tool/WatchScreen.h"

#include "Base/Text.h"
#include "Core/Machine/CPUScale.h"
#include "Tool/Commands.h"
#include "Tool/Findings.h"
#include "Tool/Keys.h"
#include "Tool/LiveGraphs.h"
#include "Tool/Summary.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <ctime>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr int roomyHeight = 20;      ///< empty lines between the parts from here on
constexpr int fewestListLines = 4;   ///< the titles and three applications
constexpr int usualListLines = 12;   ///< graphs take no more than what is left beside these
constexpr int mostBandLines = 15;    ///< of graphs above the list
constexpr int wideScreen = 128;      ///< from here on the graphs stand beside the figures
constexpr int narrowestFigures = 82; ///< beside graphs
constexpr int widestGraphs = 152;    ///< two seconds a column
constexpr int fewestLinesBeside = 14;

using Lines = std::vector<std::string>;

std::string clockText(Date date) {
  const auto seconds = std::time_t(date.sinceEpoch);
  std::tm local{};
  localtime_r(&seconds, &local);
  return fmt::format("{:02}:{:02}:{:02}", local.tm_hour, local.tm_min, local.tm_sec);
}

/// The two ends of a line; the right one only where there is room for it.
std::string spread(const std::string& left, const std::string& right, int width) {
  const int gap = width - inkedWidth(left) - inkedWidth(right);
  return gap < 2 ? left : left + std::string(std::size_t(gap), ' ') + right;
}

void append(Lines& lines, Lines more, int most) {
  more.resize(std::min(more.size(), std::size_t(std::max(0, most))));
  std::ranges::move(more, std::back_inserter(lines));
}

Lines helpLines(int columns) {
  const std::string all[] = {
      localized("c, m, d, n, e: sort by CPU, memory, disk, network, energy."),
      localized("↑ ↓ PgUp PgDn Home End: move."),
      localized("Enter: unfold an application into its processes."),
      localized("/: search for an application, a process or its id; Esc shows all again."),
      localized("?: this help."),
      localized("q: quit."),
      localized("CPU at the top: percent {machine}. {column} in the list: percent {core}.",
                {{"machine", title(CPUScale::machine)},
                 {"column", cpuColumnTitle(CPUScale::core)},
                 {"core", title(CPUScale::core)}})};
  Lines lines;
  for (const auto& sentence : all) {
    const bool fits = !lines.empty() && displayWidth(lines.back()) + 2 + displayWidth(sentence) <= columns;
    if (fits)
      lines.back() += "  " + sentence;
    else
      append(lines, wrapped(sentence, columns), int(sentence.size()));
  }
  return lines;
}

/// The first of the texts that fits, else the last one, cut.
std::string fitting(std::initializer_list<std::string> texts, int columns) {
  for (const auto& text : texts)
    if (displayWidth(text) <= columns) return text;
  return truncatedToWidth(*(texts.end() - 1), columns);
}

/// Why these are not the running keeper's figures; empty when there is nothing to say.
std::string keeperNote(const KeeperAnswer& keeper, int columns) {
  if (keeper.isStarting)
    return fitting(
        {localized("Korvell has just started. Until it has measured, these are watch's own figures."),
         localized("Korvell has just started; own figures.")},
        columns);
  if (!keeper.isSilent) return {};
  const auto who = keeper.pid == 0
                       ? "Korvell"
                       : localized("Korvell (process {pid})", {{"pid", std::to_string(keeper.pid)}});
  const auto with = [&who](std::string_view text) { return localized(text, {{"who", who}}); };
  return fitting({with("{who} does not answer. These are watch's own figures."),
                  with("{who} does not answer"), with("{who} is silent")},
                 columns);
}

} // namespace

WatchScreen::Reply WatchScreen::handleKey(int key) {
  if (isTyping_)
    if (const auto reply = handleSearchKey(key)) return *reply;
  switch (key) {
  case 'q':
  case 'Q':
    return Reply::quit;
  case '?':
    showsHelp_ = !showsHelp_;
    return Reply::redraw;
  case '/':
    isTyping_ = true;
    return Reply::redraw;
  case Key::escape:
    showsHelp_ = false;
    searched_.clear();
    list_.search({});
    return Reply::redraw;
  default:
    return list_.handleKey(key) ? Reply::redraw : Reply::nothing;
  }
}

/// Nothing for keys that mean the same while text is typed.
std::optional<WatchScreen::Reply> WatchScreen::handleSearchKey(int key) {
  constexpr std::size_t longest = 64;
  constexpr int otherBackspace = 8;
  if (key == Key::enter || key == '\n') {
    isTyping_ = false;
  } else if (key == Key::escape) {
    isTyping_ = false;
    searched_.clear();
  } else if (key == Key::backspace || key == otherBackspace) {
    // The whole of a character that takes several bytes.
    while (!searched_.empty() && (static_cast<unsigned char>(searched_.back()) & 0xC0) == 0x80)
      searched_.pop_back();
    if (!searched_.empty()) searched_.pop_back();
  } else if (key >= ' ' && key < Key::up) {
    if (searched_.size() < longest) searched_ += char(key);
  } else {
    return std::nullopt;
  }
  list_.search(searched_);
  return Reply::redraw;
}

Lines WatchScreen::footer(const Terminal& terminal, int columns, int rows) const {
  if (rows <= fewestListLines + 1) return {};
  Lines lines;
  if (showsHelp_) {
    lines = helpLines(columns);
    lines.resize(std::min(lines.size(), std::size_t(rows - fewestListLines - 1)));
  } else if (isTyping_ || !searched_.empty()) {
    const auto text = "/" + escapedControls(searched_) + (isTyping_ ? "▏" : "");
    const auto count = localized("{found} of {all} applications", {{"found", std::to_string(list_.found())},
                                                                   {"all", std::to_string(list_.count())}});
    const auto way = isTyping_ ? localized("Enter keeps it") : localized("Esc shows all");
    const auto right = fitting({count + " · " + way, count}, std::max(0, columns - displayWidth(text) - 2));
    return {spread(truncatedToWidth(text, columns), terminal.ink(Ink::dim, right), columns)};
  } else {
    lines = {fitting({localized("c m d n e sort · ↑ ↓ move · Enter unfolds · / search · ? help · q quits"),
                      localized("? help · / search · q quits"), "? / q"},
                     columns)};
  }
  for (auto& line : lines) line = terminal.ink(Ink::dim, line);
  return lines;
}

Lines WatchScreen::body(const Terminal& terminal, const WatchFigures& figures, int columns, int rows,
                        bool withGraphs) {
  constexpr int findingsShare = 4; // a quarter of the screen, the rest is for figures
  const int gap = rows >= roomyHeight ? 1 : 0;
  const int above = std::max(0, rows - std::max(fewestListLines, rows / 4));
  auto lines = figures.hasSample
                   ? findingLines(terminal, figures.report, figures.known, columns, rows / findingsShare)
                   : Lines{localized("Measuring…")};
  lines.resize(std::min(lines.size(), std::size_t(std::max(1, std::min(above, rows / findingsShare)))));
  const auto sign = terminal.ink(Ink::accent, "Korvell") + "  " + clockText(figures.snapshot.date);
  lines.front() = spread(lines.front(), sign, columns);
  if (const auto note = keeperNote(figures.keeper, columns); !note.empty())
    lines.push_back(terminal.ink(Ink::warning, note));
  if (above == 0 && figures.hasSample) lines.clear();
  if (!figures.hasSample) return lines;

  const auto add = [&](Lines part, int most) {
    if (part.empty() || most <= gap) return;
    lines.insert(lines.end(), std::size_t(gap), "");
    append(lines, std::move(part), most - gap);
  };
  add(summaryLines(terminal, figures.snapshot, figures.known, columns, figures.sensors),
      above - int(lines.size()));
  if (withGraphs) {
    const int left = rows - int(lines.size()) - 2 * gap - usualListLines;
    add(liveGraphs(terminal, figures.live, figures.snapshot, figures.known, columns,
                   std::min(left, mostBandLines)),
        rows);
  }
  lines.insert(lines.end(), std::size_t(gap), "");
  const UsageTable table(terminal, columns, list_.sortedBy(), figures.known, figures.energyIsEstimate);
  append(lines, list_.lines(table, rows - int(lines.size())), rows);
  return lines;
}

Lines WatchScreen::frame(const Terminal& terminal, const WatchFigures& figures, int columns, int rows) {
  const auto below = footer(terminal, columns, rows);
  const int height = rows - int(below.size());
  const bool beside = columns >= wideScreen && height >= fewestLinesBeside && figures.hasSample;
  const int width = beside ? std::clamp(columns * 3 / 5, narrowestFigures, widestSummary) : columns;
  auto lines = body(terminal, figures, std::min(width, widestSummary), height, !beside);
  lines.resize(std::size_t(std::max(0, height)));
  if (beside) {
    const std::string border = " " + terminal.ink(Ink::dim, "│") + " ";
    const int right = std::min(columns - width - inkedWidth(border), widestGraphs);
    const auto graphs = liveGraphs(terminal, figures.live, figures.snapshot, figures.known, right, height);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      lines[i].append(std::size_t(std::max(0, width - inkedWidth(lines[i]))), ' ');
      lines[i] += border + (i < graphs.size() ? graphs[i] : "");
    }
  }
  std::ranges::copy(below, std::back_inserter(lines));
  for (auto& line : lines) line = fitted(line, columns);
  return lines;
}

} // namespace korvell
