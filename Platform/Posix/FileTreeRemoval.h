#pragma once
// Removing an entry of an open folder with everything below it, for good.
//
// Everything is named relative to an open folder and links are never followed, so that no exchange of an
// entry for a link leads out of the tree. Folders on other devices are left alone. Folders that their owner
// made read-only are made writable. Without recursion, for trees of any depth.

namespace korvell {

/// True when nothing of the entry remained.
bool removeEntry(int folder, const char* name);

} // namespace korvell
