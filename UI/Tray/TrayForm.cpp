#include "UI/Tray/TrayForm.h"

#include "Base/Localization.h"

namespace korvell {

TrayForm trayForm(const Model& model, MenuBarStyle style) {
  const auto label = MenuBarLabel::make(model.menuBar, style);
  TrayForm form{.style = style};
  if (*model.hasSample) form.score = *model.menuBar.score;
  const bool showsHeart = style == MenuBarStyle::icon;
  form.isFilled = showsHeart && form.score && label.symbol == MenuBarLabel::Symbol::filledHeart;
  if (showsHeart || style == MenuBarStyle::score) return form;
  form.cpu = *model.menuBar.cpu;
  form.memory = *model.menuBar.memory;
  if (style == MenuBarStyle::graphs) form.bars = *model.menuBar.cpuHistory;
  return form;
}

MenuBarLabel menuBarLabel(const TrayForm& form) {
  if (form.score)
    return MenuBarLabel::make(
        {.score = *form.score, .cpu = form.cpu, .memory = form.memory, .cpuHistory = form.bars}, form.style);
  MenuBarLabel unknown{.symbol = MenuBarLabel::Symbol::heart};
  if (form.style != MenuBarStyle::icon) unknown.text = "–";
  return unknown;
}

std::string trayTooltip(const TrayForm& form, const HealthReport& report) {
  if (!form.score) return localized("Korvell: measuring…");
  const std::string score = std::to_string(*form.score);
  if (form.style == MenuBarStyle::icon || form.style == MenuBarStyle::score)
    return localized("Korvell: health {score}, {label}.", {{"score", score}, {"label", report.label()}});
  return localized("Korvell: health {score}, {label}. CPU {cpu}%, memory {memory}%.",
                   {{"score", score},
                    {"label", report.label()},
                    {"cpu", std::to_string(form.cpu)},
                    {"memory", std::to_string(form.memory)}});
}

} // namespace korvell
