#pragma once
// The Finder's Trash: things are moved there by the workspace's recycle operation, so that the Finder can put
// them back.

#include "Platform/Trash.h"

namespace korvell {

class MacTrash final : public Trash {
public:
  explicit MacTrash(std::string home) : home_(std::move(home)) {}

  /// What is at a path is compared with what was picked right before; the workspace then goes by the path.
  std::vector<Outcome> move(const std::vector<TrashRequest>& requests) override;
  /// "~/.Trash" alone: other volumes are emptied with the Finder.
  std::vector<TrashFolder> folders() override;

private:
  std::string home_;
};

} // namespace korvell
