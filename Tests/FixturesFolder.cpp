#include "Tests/FixturesFolder.h"

namespace korvell {

// The only file that is compiled with the checkout's path in it: the others can come from a compiler cache.
std::string fixturePath(const std::string& relative) { return KORVELL_FIXTURES "/" + relative; }

} // namespace korvell
