#pragma once
// The file tree as every system has it, for rules that are tested on real folders.

#include "Platform/Posix/FolderReader.h"
#include "Platform/Posix/PosixFileTree.h"

namespace korvell {

class PortableFileTree : public PosixFileTree {
public:
  using PosixFileTree::PosixFileTree;

  std::vector<MountedPlace> mounted; ///< what the system would list

  std::vector<MountedPlace> mounts() override { return mounted; }

protected:
  Descriptor openWithoutLinks(const std::string& folder) override {
    return located(folder) == folder ? Descriptor(open(folder.c_str(), folderFlags)) : Descriptor();
  }
};

} // namespace korvell
