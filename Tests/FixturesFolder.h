#pragma once

#include <string>

namespace korvell {

/// The path of a file or folder below Tests/Fixtures.
std::string fixturePath(const std::string& relative);

} // namespace korvell
