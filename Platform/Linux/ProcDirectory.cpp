#include "Platform/Linux/ProcDirectory.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace korvell {

namespace {

constexpr std::size_t bufferSize = 32 * 1024;
constexpr std::size_t maximumFile = 256 * 1024;

ProcDirectory::Access accessOf(int error) {
  return error == EACCES || error == EPERM ? ProcDirectory::Access::denied : ProcDirectory::Access::gone;
}

/// "PID/NAME" without the cost of formatting.
class Path {
public:
  Path(ProcessID pid, const char* name) {
    auto* end = std::to_chars(text_, text_ + 16, pid).ptr;
    *end++ = '/';
    std::strncpy(end, name, sizeof text_ - 18);
  }
  operator const char*() const { return text_; }

private:
  char text_[64] = {};
};

/// Calls `use(name, inode)` for each entry of an open folder.
template <class Use>
bool forEachEntry(int folder, std::vector<char>& buffer, Use use) {
  for (;;) {
    const auto bytes = syscall(SYS_getdents64, folder, buffer.data(), buffer.size());
    if (bytes <= 0) return bytes == 0;
    for (long at = 0; at < bytes;) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + at);
      use(entry->d_name, static_cast<std::uint64_t>(entry->d_ino));
      at += entry->d_reclen;
    }
  }
}

std::optional<int> positiveNumber(const char* name) {
  if (name[0] < '0' || name[0] > '9') return std::nullopt;
  const auto* end = name + std::strlen(name);
  int number = 0;
  const auto parsed = std::from_chars(name, end, number);
  return parsed.ec == std::errc{} && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

} // namespace

ProcDirectory::ProcDirectory(std::string root)
    : root_(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), buffer_(bufferSize) {}

const std::vector<ProcDirectory::Entry>& ProcDirectory::list() {
  entries_.clear();
  if (!root_ || lseek(root_.get(), 0, SEEK_SET) != 0) return entries_;
  forEachEntry(root_.get(), buffer_, [this](const char* name, std::uint64_t inode) {
    if (const auto pid = positiveNumber(name); pid && *pid > 0) entries_.push_back({*pid, inode});
  });
  const auto byID = [](const Entry& a, const Entry& b) { return a.pid < b.pid; };
  if (!std::is_sorted(entries_.begin(), entries_.end(), byID))
    std::sort(entries_.begin(), entries_.end(), byID);
  return entries_;
}

ProcDirectory::File ProcDirectory::read(ProcessID pid, const char* name) { return readPath(Path(pid, name)); }

ProcDirectory::File ProcDirectory::read(const char* name) { return readPath(name); }

ProcDirectory::File ProcDirectory::readPath(const char* path) {
  const Descriptor file(openat(root_.get(), path, O_RDONLY | O_CLOEXEC));
  if (!file) return {accessOf(errno), {}};
  std::size_t size = 0;
  for (;;) {
    const auto bytes = ::read(file.get(), buffer_.data() + size, buffer_.size() - size);
    if (bytes < 0) return {accessOf(errno), {}};
    size += static_cast<std::size_t>(bytes);
    // The files that are read every cycle come whole in one call: no second one only to hear of the end.
    if (bytes == 0 || size < 4096) break;
    if (size == buffer_.size()) {
      if (size >= maximumFile) break;
      buffer_.resize(size * 2);
    }
  }
  return {Access::ok, {buffer_.data(), size}};
}

ProcDirectory::File ProcDirectory::readLink(ProcessID pid, const char* name) {
  const auto bytes = readlinkat(root_.get(), Path(pid, name), buffer_.data(), buffer_.size());
  if (bytes < 0) return {accessOf(errno), {}};
  return {Access::ok, {buffer_.data(), static_cast<std::size_t>(bytes)}};
}

std::optional<std::uint32_t> ProcDirectory::owner(ProcessID pid) {
  struct stat status {};
  if (fstatat(root_.get(), Path(pid, ""), &status, 0) != 0) return std::nullopt;
  return status.st_uid;
}

ProcDirectory::Access ProcDirectory::numbers(ProcessID pid, const char* name, std::vector<int>& into) {
  into.clear();
  const Descriptor folder(openat(root_.get(), Path(pid, name), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return accessOf(errno);
  const bool whole = forEachEntry(folder.get(), buffer_, [&](const char* entry, std::uint64_t) {
    if (const auto number = positiveNumber(entry)) into.push_back(*number);
  });
  return whole ? Access::ok : Access::gone;
}

} // namespace korvell
