#include "Platform/Posix/PosixLogFiles.h"

#include "Platform/Posix/FileStatus.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvell {

namespace {

class Descriptor final : public OpenLog {
public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() override { close(fd_); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  std::int64_t read(char* buffer, std::size_t size, std::int64_t offset) override {
    ssize_t count = 0;
    do count = pread(fd_, buffer, size, off_t(offset));
    while (count < 0 && errno == EINTR);
    return count;
  }

private:
  int fd_;
};

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

Folder openFolder(const std::string& path, int flags) {
  const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | flags);
  if (fd < 0) return nullptr;
  Folder folder(fdopendir(fd));
  if (!folder) close(fd);
  return folder;
}

// A name that is nothing but the extension is a hidden file without one.
bool hasExtension(std::string_view name, std::string_view extension) {
  return name.size() > extension.size() + 1 && name.ends_with(extension) &&
         name[name.size() - extension.size() - 1] == '.';
}

class Walk {
public:
  Walk(std::string_view extension, std::vector<LogFile>& found) : extension_(extension), found_(found) {}

  void run(const std::string& root) {
    enter(root, 0);
    while (!folders_.empty()) {
      const std::string next = std::move(folders_.back());
      folders_.pop_back();
      enter(next, O_NOFOLLOW);
    }
  }

private:
  struct Entry {
    std::string name;
    unsigned char type;
  };

  /// Takes the folder's files and puts its folders on the stack, the first on top.
  void enter(const std::string& path, int flags) {
    const Folder folder = openFolder(path, flags);
    if (!folder) return;
    entries_.clear();
    while (const dirent* entry = readdir(folder.get())) {
      const std::string_view name = entry->d_name;
      if (name == "." || name == "..") continue;
      if (entry->d_type == DT_DIR || entry->d_type == DT_UNKNOWN || hasExtension(name, extension_))
        entries_.push_back({std::string(name), entry->d_type});
    }
    std::sort(entries_.begin(), entries_.end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    const auto firstNew = std::ptrdiff_t(folders_.size());
    for (const auto& entry : entries_) take(dirfd(folder.get()), path, entry);
    std::reverse(folders_.begin() + firstNew, folders_.end());
  }

  void take(int folder, const std::string& path, const Entry& entry) {
    struct stat info {};
    if (entry.type == DT_DIR) {
      folders_.push_back(path + "/" + entry.name);
    } else if (fstatat(folder, entry.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      return;
    } else if (S_ISDIR(info.st_mode)) {
      folders_.push_back(path + "/" + entry.name);
    } else if (S_ISREG(info.st_mode) && hasExtension(entry.name, extension_)) {
      found_.push_back({path + "/" + entry.name, info.st_size, modifiedDate(info)});
    }
  }

  std::string_view extension_;
  std::vector<LogFile>& found_;
  std::vector<std::string> folders_; ///< still to be entered
  std::vector<Entry> entries_;
};

} // namespace

std::vector<LogFile> PosixLogFiles::list(const std::string& root, std::string_view extension) {
  std::vector<LogFile> found;
  Walk(extension, found).run(root);
  return found;
}

std::unique_ptr<OpenLog> PosixLogFiles::open(const std::string& path) {
  // A pipe put in the file's place must not hold the reader up.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (fd < 0) return nullptr;
  auto log = std::make_unique<Descriptor>(fd);
  struct stat info {};
  if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) return nullptr;
  return log;
}

} // namespace korvell
