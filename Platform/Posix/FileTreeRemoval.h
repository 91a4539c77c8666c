#pragma once
// Removing an entry of an open folder with everything below it, for good.
//
// Everything is named relative to an open folder and links are never followed, so that no exchange of an
// entry for a link leads out of the tree. What is mounted below, and folders on other devices, are left
// alone. Folders that their owner closed are opened first. Without recursion, for trees of any depth.

#include "Base/Cancellation.h"
#include "Base/Descriptor.h"
#include "Platform/FileTree.h"

namespace korvell {

/// Opens a folder in an open folder for reading; see FolderReader::open.
using FolderOpener = Descriptor (*)(int folder, const char* name);

/// Something of an entry that is not there any more is no obstacle, the entry itself is. Cancelled, what is
/// not yet removed stays.
Removal removeEntry(int folder, const char* name, FolderOpener open, const Cancellation& cancellation);

/// Nothing was removed, for the reason of this error number; 0 when there is none to tell.
Removal notRemoved(int error);

} // namespace korvell
