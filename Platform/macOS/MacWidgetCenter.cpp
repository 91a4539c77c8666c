#include "Platform/macOS/MacWidgetCenter.h"

#include <cstdint>
#include <memory>

extern "C" {
/// Calls back once, on any thread, with the number of placed widgets; a negative one when that failed.
void korvell_widget_configurations(void* context, void (*answer)(void* context, std::int64_t count));
void korvell_widget_reload();
}

namespace korvell {

namespace {

using Answer = std::function<void(std::optional<std::size_t>)>;

} // namespace

void MacWidgetCenter::currentConfigurations(Answer answer) {
  auto kept = std::make_unique<Answer>(std::move(answer));
  korvell_widget_configurations(kept.release(), [](void* context, std::int64_t count) {
    const std::unique_ptr<Answer> told(static_cast<Answer*>(context));
    (*told)(count < 0 ? std::nullopt : std::optional(std::size_t(count)));
  });
}

void MacWidgetCenter::reloadAllTimelines() { korvell_widget_reload(); }

} // namespace korvell
