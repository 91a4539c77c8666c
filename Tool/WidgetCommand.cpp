// korvell widget: the document that the widget shows, and whether a widget is placed.

#include "App/Assembly.h"
#include "App/JSONDocuments.h"
#include "Base/LocalTime.h"
#include "Base/Text.h"
#include "Shared/WidgetSnapshot.h"
#include "Tool/Commands.h"
#include "Tool/Wrap.h"

#include <fmt/format.h>

#include <future>

namespace korvell {

namespace {

/// The system's answer may take a moment; nothing when it does not come.
std::optional<std::size_t> placedWidgets(WidgetCenter& center) {
  constexpr std::chrono::seconds patience{2};
  const auto promise = std::make_shared<std::promise<std::optional<std::size_t>>>();
  auto answer = promise->get_future();
  center.currentConfigurations([promise](std::optional<std::size_t> count) { promise->set_value(count); });
  if (answer.wait_for(patience) != std::future_status::ready) return std::nullopt;
  return answer.get();
}

std::string placedSentence(const std::optional<std::size_t>& placed) {
  if (!placed) return localized("Whether a widget is placed could not be found out.");
  if (*placed == 0) return localized("No widget is placed, so the document is not written.");
  if (*placed == 1) return localized("A widget is placed.");
  return localized("{count} widgets are placed.", {{"count", std::to_string(*placed)}});
}

void printDocument(Context& context, const WidgetSnapshot& document) {
  Terminal& out = context.out;
  const auto& zone = *context.host.zone;
  const auto shown = [](const std::string& text) { return escapedControls(text); };
  out.line(out.ink(Ink::bold, fmt::format("{}  {}", document.score, shown(document.label))));
  for (const auto& fix : document.fixes)
    for (const auto& line : wrapped(shown(fix.title + ": " + fix.detail), out.columns())) out.line(line);
  out.line();
  for (const auto& tile : document.tiles)
    out.line(fmt::format("{:<8}  {}  {}", shown(tile.page), shown(tile.value), shown(tile.detail)));
  if (!document.apps.empty()) out.line();
  for (const auto& app : document.apps)
    out.line(fmt::format("{:>8}  {}", shown(app.memory), shown(app.name)));
  out.line();
  out.line(out.ink(Ink::dim,
                   localized("Written on {day} at {time}.", {{"day", shownDay(localDay(zone, document.date))},
                                                             {"time", clockText(zone, document.date)}})));
}

int runWidget(Context& context, const Arguments& arguments) {
  const auto path = widgetDocument(context.host);
  const auto document = WidgetShared::read(path);
  const auto placed = placedWidgets(*context.host.widgetCenter);
  if (arguments.flag("--json")) {
    printJSON(context.out, widgetValue(path, document, placed));
    return exitOK;
  }
  if (document)
    printDocument(context, *document);
  else
    context.out.line(localized("There is no document for the widget."));
  context.out.line(placedSentence(placed));
  return exitOK;
}

} // namespace

Command widgetCommand() {
  return {"widget", "Print what the desktop widget shows", {jsonOption()}, runWidget};
}

} // namespace korvell
