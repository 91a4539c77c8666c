// The desktop widget, from made-up documents.

#include "Tests/Fakes/FakeTimeZone.h"
#include "UI/Gallery/Gallery.h"
#include "Widget/WidgetFace.h"

#include <cmath>

namespace korvell {

namespace {

constexpr Date written{1'772'463'480}; // 14:58

std::vector<double> wave(double middle, double swing, double peak) {
  std::vector<double> points;
  for (int minute = 0; minute < 30; ++minute)
    points.push_back(middle + swing * std::sin(minute * 0.9) * std::cos(minute * 0.31) +
                     (minute % 9 == 4 ? peak : 0));
  return points;
}

WidgetSnapshot usual() {
  const double gigabyte = 1 << 30;
  return {.date = written,
          .score = 87,
          .label = "Good",
          .fixes = {{"Disk space is getting low", "41.2 GB free on System disk.", false, "storage"},
                    {"2 idle dev servers", "Stopping them frees 958 MB of memory.", false, "devServers"},
                    {"1 leftover startup items", "They point to programs that no longer exist.", false,
                     "startup"}},
          .tiles = {{"cpu", "24%", "load 2.1", wave(22, 8, 14), 100},
                    {"memory", "9.84 GB", "of 15.6 GB", wave(9.8 * gigabyte, 0.05 * gigabyte, 0),
                     15.6 * gigabyte},
                    {"disk", "41.2 GB", "free", wave(1e6, 0.8e6, 9e6), {}},
                    {"network", "↓ 1.8 MB/s", "↑ 86 KB/s", wave(1e6, 0.6e6, 2e6), {}}},
          .apps = {{"Firefox", {}, "3.12 GB", 1},
                   {"Blender", {}, "2.31 GB", 0.74},
                   {"Terminal", {}, "1.46 GB", 0.468}}};
}

WidgetSnapshot critical() {
  auto document = usual();
  document.score = 38;
  document.label = "Needs attention";
  document.fixes = {{"The disk is almost full", "1.2 GB free on System disk.", true, "storage"},
                    {"Memory is running out", "2.4 GB are swapped out.", true, "overview"}};
  document.apps.clear();
  return document;
}

WidgetSnapshot longNames() {
  auto document = usual();
  document.score = 100;
  document.label = "Benötigt dringend Aufmerksamkeit";
  document.fixes[0].title = "Visual Studio Code – Insiders uses 3.4 cores for more than an hour";
  document.tiles[1] = {"memory", "1,023 MB", "von insgesamt 1,024 GB", wave(5, 2, 0), 10};
  document.tiles[3] = {"network", "↓ 999 MB/s", "↑ 999 MB/s", wave(5, 2, 0), {}};
  document.apps[0].name = "Visual Studio Code – Insiders";
  document.apps[0].memory = "1,023 MB";
  return document;
}

WidgetSnapshot quiet() {
  auto document = usual();
  document.score = 100;
  document.label = "Excellent";
  document.fixes.clear();
  return document;
}

GalleryView view(const std::string& name, WidgetSize size, const std::optional<WidgetSnapshot>& document,
                 double age = 30, bool isMeasured = true) {
  return {name, {QSize()}, [=](const Theme& theme) {
            const FakeTimeZone zone;
            auto face = std::make_unique<WidgetFace>(theme, WidgetPart::Open(), nullptr);
            face->setSize(size);
            face->show(widgetPage(document, {written + Seconds(age), zone, isMeasured}));
            return face;
          }};
}

} // namespace

std::vector<GalleryView> widgetViews() {
  using enum WidgetSize;
  constexpr double hour = 3600;
  std::vector<GalleryView> views;
  for (const auto& each : allCases<WidgetSize>()) {
    const auto named = [&](const char* name) { return "widget-" + std::string(each.rawValue) + name; };
    views.push_back(view(named(""), each.value, usual()));
    views.push_back(view(named("-old"), each.value, usual(), hour));
    views.push_back(view(named("-stopped"), each.value, usual(), hour, false));
    views.push_back(view(named("-never"), each.value, std::nullopt, 0, false));
    views.push_back(view(named("-waiting"), each.value, std::nullopt));
    views.push_back(view(named("-critical"), each.value, critical()));
    views.push_back(view(named("-long"), each.value, longNames()));
    views.push_back(view(named("-quiet"), each.value, quiet()));
  }
  return views;
}

} // namespace korvell
