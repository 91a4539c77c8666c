#pragma once
// What says anew, in the language in effect, what was said before the language was changed. Main thread only.

#include "App/Model.h"

namespace korvell {

/// The toolkit's own words, as in the menu of a text field; English where its translations are not installed.
/// After the toolkit's application object.
void speakToolkit();
/// The findings and alerts.
void speakAnew(Model& model);

} // namespace korvell
