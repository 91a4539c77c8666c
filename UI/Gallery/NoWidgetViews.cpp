#include "UI/Gallery/Gallery.h"

namespace korvell {

std::vector<GalleryView> widgetViews() { return {}; }

} // namespace korvell
