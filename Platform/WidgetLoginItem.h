#pragma once
// What opens the widget at login, beside the application's own. Only where the widget is a program of its
// own; each such system defines it.

#include "Base/UserFolders.h"
#include "Platform/LoginItem.h"

#include <memory>
#include <string>

namespace korvell {

/// `program` is the widget's, by its absolute path.
std::unique_ptr<LoginItem> makeWidgetLoginItem(const UserFolders& folders, std::string program);

} // namespace korvell
