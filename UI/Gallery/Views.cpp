#include "UI/Gallery/Gallery.h"

#include <iterator>

namespace korvell {

std::vector<GalleryView> galleryViews() {
  std::vector<GalleryView> all;
  for (auto part : {kitLooks, kitViews, pageViews, measureViews, storageViews, aiUsageViews, listViews,
                    soundViews, settingsViews, trayViews, welcomeViews, widgetViews}) {
    auto views = part();
    all.insert(all.end(), std::make_move_iterator(views.begin()), std::make_move_iterator(views.end()));
  }
  return all;
}

} // namespace korvell
