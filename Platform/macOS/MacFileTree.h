#pragma once
// The file tree on macOS: the kernel refuses paths with links by itself and knows when a file came into its
// folder.

#include "Platform/Posix/PosixFileTree.h"

namespace korvell {

class MacFileTree final : public PosixFileTree {
public:
  using PosixFileTree::PosixFileTree;

  std::vector<MountedPlace> mounts() override;

protected:
  Descriptor openWithoutLinks(const std::string& folder) override;
  Date added(const std::string& path, const struct stat& status) override;
};

} // namespace korvell
