#pragma once
// The Finder's Trash: things are moved there by the workspace's recycle operation, so that the Finder can put
// them back.

#include "Platform/Trash.h"

#include <sys/types.h>

namespace korvell {

class MacTrash final : public Trash {
public:
  MacTrash(std::string home, uid_t user) : home_(std::move(home)), user_(user) {}

  /// What is at a path is compared with what was picked right before; the workspace then goes by the path.
  std::vector<Outcome> move(const std::vector<TrashRequest>& requests) override;
  /// "~/.Trash", and ".Trashes/<uid>" at the top of the other volumes.
  std::vector<TrashFolder> folders() override;

private:
  std::string home_;
  uid_t user_;
};

} // namespace korvell
