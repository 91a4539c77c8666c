#include "Base/Files.h"

#include "Base/Descriptor.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvell {

namespace {

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// Appends all bytes up to the end; 0 or an errno.
int readAll(int descriptor, std::size_t most, std::string& bytes) {
  std::array<char, 16384> buffer;
  for (;;) {
    const auto count = read(descriptor, buffer.data(), buffer.size());
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    bytes.append(buffer.data(), std::size_t(count));
    if (bytes.size() > most) return EFBIG;
  }
}

bool writeAll(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    bytes.remove_prefix(std::size_t(count));
  }
  return true;
}

/// Makes a rename in the folder last; not every file system can.
void flushFolder(const std::string& folder) {
  const Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor) fsync(descriptor.get());
}

} // namespace

std::optional<std::string> readFile(const std::string& path, std::size_t most, int* error) {
  int ignored;
  int& code = error ? *error : ignored;
  code = 0;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat info {};
  if (!file || fstat(file.get(), &info) != 0) {
    code = errno;
    return std::nullopt;
  }
  std::string bytes;
  code = S_ISREG(info.st_mode) ? readAll(file.get(), most, bytes) : EINVAL;
  if (code != 0) return std::nullopt;
  return bytes;
}

std::string followedLinks(const std::string& path) {
  std::string current = path;
  for (int links = 0; links < 40; ++links) {
    char target[PATH_MAX];
    const auto length = readlink(current.c_str(), target, sizeof target);
    if (length < 0) return current;
    const std::string next(target, std::size_t(length));
    current = next.starts_with('/') ? next : folderOf(current) + "/" + next;
  }
  return {};
}

bool replaceFile(const std::string& path, std::string_view bytes, Readers readers, Flush flush) {
  const std::string target = followedLinks(path);
  if (target.empty()) {
    errno = ELOOP;
    return false;
  }
  std::string aside = target + ".XXXXXX";
  Descriptor file(mkostemp(aside.data(), O_CLOEXEC)); // mode 0600
  if (!file) return false;
  constexpr mode_t forEverybody = 0644;
  const bool isOpen = readers == Readers::owner || fchmod(file.get(), forEverybody) == 0;
  const bool written =
      isOpen && writeAll(file.get(), bytes) && (flush == Flush::none || fsync(file.get()) == 0);
  const int trouble = errno;
  file.reset();
  errno = trouble;
  if (!written || rename(aside.c_str(), target.c_str()) != 0) {
    const int reason = errno;
    unlink(aside.c_str());
    errno = reason;
    return false;
  }
  if (flush == Flush::toDisk) flushFolder(folderOf(target));
  return true;
}

bool isInside(std::string_view path, std::string_view folder) {
  if (folder == "/") return path.starts_with('/');
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

std::string tildePath(const std::string& path, const std::string& home) {
  if (home.size() < 2 || !path.starts_with(home)) return path;
  if (path.size() > home.size() && path[home.size()] != '/') return path;
  return std::string("~").append(path, home.size());
}

} // namespace korvell
