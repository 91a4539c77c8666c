#pragma once
// The change of the language while the process runs.

#include <string_view>

namespace korvell {

/// Has the process speak another of the installed languages from now on, on every thread; any thread may call
/// it. False when it spoke that one before or when it is not installed. What was said already keeps its
/// words.
bool speakLanguage(std::string_view code);

/// The code of the one that the process speaks, whatever this thread does.
std::string_view ownLanguage();

} // namespace korvell
