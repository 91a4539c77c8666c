#pragma once
// What the gallery shows: a table of views, each made from made-up data. A new view is one row in Views.cpp.
//
// Every view is rendered light and dark, in both directions of reading, at 100 and 200 %, in each of its
// sizes, and what it shows is checked (UI/Gallery/Check.h).

#include "UI/Kit/Theme.h"

#include <QWidget>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace korvell {

struct GalleryView {
  std::string name;         ///< of the picture's file: "health-no-findings"
  std::vector<QSize> sizes; ///< an empty size: the view's own
  std::function<std::unique_ptr<QWidget>(const Theme&)> make;
};

/// All of them, in the order of the table.
std::vector<GalleryView> galleryViews();
/// The six measures.
std::vector<GalleryView> measureViews();
/// The kit's controls in all their states.
std::vector<GalleryView> kitLooks();
std::vector<GalleryView> kitViews();
/// The window's pages and the panel.
std::vector<GalleryView> pageViews();
/// Servers, sensors, startup items, alerts.
std::vector<GalleryView> listViews();
/// What AI coding tools used.
std::vector<GalleryView> aiUsageViews();
/// Free Up Space.
std::vector<GalleryView> storageViews();
/// Who makes a sound.
std::vector<GalleryView> soundViews();
std::vector<GalleryView> trayViews();
/// The settings, from made-up answers.
std::vector<GalleryView> settingsViews();
/// The first launch.
std::vector<GalleryView> welcomeViews();
/// The desktop widget; none where it is an extension.
std::vector<GalleryView> widgetViews();

} // namespace korvell
