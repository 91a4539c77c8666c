// The tray item's square forms, in every style, size and ink, on bars such as panels have.

#include "UI/Gallery/KitSheet.h"
#include "UI/Kit/Paint.h"
#include "UI/Tray/TrayPainter.h"

namespace korvell {

namespace {

constexpr int sizes[] = {16, 22, 24, 32, 48, 64};
constexpr int barHeight = 72, gap = 12;

/// A panel with one form at every size that panels ask for.
class TrayBar final : public Painted {
public:
  TrayBar(const Theme& theme, const TrayForm& form, TrayInk ink, QColor ground, QWidget* parent)
      : Painted(theme, parent), form_(form), ink_(ink), ground_(std::move(ground)) {
    int width = gap;
    for (const int size : sizes) width += size + gap;
    setFixedSize(width, barHeight);
    setName("Tray item");
  }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override {
    fillBox(painter, rect(), ground_);
    const double ratio = devicePixelRatioF();
    int left = gap;
    for (const int size : sizes) {
      auto image = trayImage(form_, qRound(size * ratio), ink_);
      image.setDevicePixelRatio(ratio);
      painter.drawImage(QPointF(left, (height() - size) / 2.0), image);
      left += size + gap;
    }
  }

private:
  TrayForm form_;
  TrayInk ink_;
  QColor ground_;
};

Made formsView(const Theme& theme) {
  Sheet sheet(theme);
  const std::vector<double> busy = {4, 9, 30, 62, 100, 88, 45, 20, 12, 8, 33, 71, 95, 60};
  const std::pair<const char*, TrayForm> forms[] = {
      {"measuring", {}},
      {"icon", {.score = 87}},
      {"icon, attention", {.isFilled = true, .score = 41}},
      {"score", {.style = MenuBarStyle::score, .score = 87}},
      {"score of 100", {.style = MenuBarStyle::score, .score = 100}},
      {"CPU and memory", {.style = MenuBarStyle::cpuAndMemory, .score = 87, .cpu = 24, .memory = 63}},
      {"CPU and memory at 100", {.style = MenuBarStyle::cpuAndMemory, .score = 0, .cpu = 100, .memory = 100}},
      {"graphs", {.style = MenuBarStyle::graphs, .score = 87, .cpu = 60, .memory = 63, .bars = busy}},
  };
  for (const auto& [words, form] : forms)
    sheet.row(words, {new TrayBar(theme, form, TrayInk::dark, QColor(0xEF, 0xEF, 0xF0), sheet.parent()),
                      new TrayBar(theme, form, TrayInk::light, QColor(0x20, 0x22, 0x26), sheet.parent()),
                      new TrayBar(theme, form, TrayInk::edged, QColor(0x7D, 0x8C, 0x9A), sheet.parent())});
  return sheet.take();
}

} // namespace

std::vector<GalleryView> trayViews() { return {{"tray", {QSize()}, formsView}}; }

} // namespace korvell
