#pragma once
// The share card as a file. Blocking.

#include "Base/Result.h"

#include <QImage>

#include <string>

namespace korvell {

/// Writes "NAME.png" into the folder, or "NAME 2.png" and so on where that is taken: nothing is ever
/// replaced. The path, or why nothing could be written.
Result<std::string> saveNewPicture(const QImage& picture, const std::string& folder, const std::string& name);

} // namespace korvell
