#pragma once
// The desktop's file manager and browser. Both return at once; nothing happens where there is none.

#include <string>

namespace korvell {

/// Opens the folder of a path with the item selected, where the file manager can do that.
void showInFileManager(const std::string& path);
/// With the program that the desktop opens its kind with: a folder with the file manager.
void openPath(const std::string& path);
/// In the browser.
void openAddress(const std::string& address);

} // namespace korvell
