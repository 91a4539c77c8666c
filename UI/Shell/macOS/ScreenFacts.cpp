#include "UI/Shell/ScreenFacts.h"

namespace korvell {

bool showsTranslucentWindows() { return true; }

} // namespace korvell
