// The desktop widget, from made-up documents.

#include "Base/Format.h"
#include "Base/Localization.h"
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
  return {
      .date = written,
      .score = 87,
      .label = localized("Good"),
      .fixes = {{localized("Disk space is getting low"),
                 localized("{free} free on {volume}.",
                           {{"free", Format::bytes(41.2e9)}, {"volume", localized("System disk")}}),
                 false, "storage"},
                {localized("{n} idle dev servers", {{"n", "2"}}),
                 localized("Stopping them frees {memory} and ports {ports}.",
                           {{"memory", Format::bytes(958e6)}, {"ports", "3000, 8000"}}),
                 false, "devServers"},
                {localized("{n} leftover startup items", {{"n", "1"}}),
                 localized("They point to programs that no longer exist, usually from apps you uninstalled."),
                 false, "startup"}},
      .tiles =
          {{"cpu", Format::percent(24), localized("load {load}", {{"load", Format::decimal(2.1, 1)}}),
            wave(22, 8, 14), 100},
           {"memory", Format::bytes(9.84e9), localized("of {total}", {{"total", Format::bytes(15.6e9)}}),
            wave(9.8 * gigabyte, 0.05 * gigabyte, 0), 15.6 * gigabyte},
           {"disk", Format::bytes(41.2e9), localized("free"), wave(1e6, 0.8e6, 9e6), {}},
           {"network", "↓ " + Format::rate(1.8e6), "↑ " + Format::rate(86e3), wave(1e6, 0.6e6, 2e6), {}}},
      .apps = {{"Firefox", {}, Format::bytes(3.12e9), 1},
               {"Blender", {}, Format::bytes(2.31e9), 0.74},
               {"Terminal", {}, Format::bytes(1.46e9), 0.468}}};
}

WidgetSnapshot critical() {
  auto document = usual();
  document.score = 38;
  document.label = localized("Needs attention");
  document.fixes = {{localized("The disk is almost full"),
                     localized("{free} free on {volume}.",
                               {{"free", Format::bytes(1.2e9)}, {"volume", localized("System disk")}}),
                     true, "storage"},
                    {localized("Memory is running out"),
                     localized("{swap} of swap in use", {{"swap", Format::bytes(2.4e9)}}), true, "overview"}};
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
  document.label = localized("Excellent");
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
