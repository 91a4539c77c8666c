#pragma once
// The pictures of applications as their system keeps them.

#include "Base/UserFolders.h"
#include "UI/Kit/Pictures.h"

namespace korvell {

/// By the path of a desktop entry or a bundle.
Pictures::MakeLoad applicationPictures(const UserFolders& folders, const Environment& environment);

} // namespace korvell
