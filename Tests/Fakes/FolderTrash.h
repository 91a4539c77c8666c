#pragma once
// A Trash that is a folder of the test's, without records of where its entries came from.

#include "Platform/Trash.h"

#include <filesystem>
#include <string>
#include <sys/stat.h>

namespace korvell {

class FolderTrash final : public Trash {
public:
  explicit FolderTrash(std::string folder) : folder_(std::move(folder)) {}

  std::vector<Outcome> move(const std::vector<TrashRequest>& asked) override {
    std::vector<Outcome> outcomes;
    for (const auto& request : asked) outcomes.push_back(move(request));
    return outcomes;
  }
  std::vector<TrashFolder> folders() override {
    if (!std::filesystem::is_directory(std::filesystem::symlink_status(folder_))) return {};
    return {{folder_, "", ""}};
  }

private:
  Outcome move(const TrashRequest& request) {
    const std::filesystem::path path = request.path;
    struct stat status {};
    if (!path.is_absolute() || !path.has_filename() || path.filename() == ".." ||
        lstat(path.c_str(), &status) != 0)
      return Failure{"It could not be moved."};
    const FileIdentity found{std::uint64_t(status.st_dev), std::uint64_t(status.st_ino)};
    const bool plain = std::filesystem::canonical(path.parent_path()) == path.parent_path();
    if (request.picked && (!plain || found != *request.picked)) return Failure{"It is no longer there."};
    std::filesystem::create_directories(folder_);
    const auto name = path.filename().string() + "-" + std::to_string(++moved_);
    std::filesystem::rename(path, folder_ + "/" + name);
    return success();
  }

  std::string folder_;
  int moved_ = 0;
};

} // namespace korvell
