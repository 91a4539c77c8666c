#include "Platform/Linux/FileReader.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

namespace korvell {

namespace {

int openForReading(const std::string& path) {
  return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

ssize_t readAt(int descriptor, char* into, std::size_t bytes, std::size_t offset) {
  ssize_t n;
  do n = ::pread(descriptor, into, bytes, off_t(offset));
  while (n < 0 && errno == EINTR);
  return n;
}

} // namespace

std::optional<std::string_view> FileReader::read(int descriptor) {
  std::size_t length = 0;
  for (;;) {
    if (length == buffer_.size()) buffer_.resize(buffer_.size() * 2);
    const auto n = readAt(descriptor, buffer_.data() + length, buffer_.size() - length, length);
    if (n < 0) return std::nullopt;
    length += std::size_t(n);
    if (n == 0) return std::string_view(buffer_.data(), length);
  }
}

std::optional<std::string_view> FileReader::readBeginning(int descriptor, std::size_t bytes) {
  if (buffer_.size() < bytes) buffer_.resize(bytes);
  const auto n = readAt(descriptor, buffer_.data(), bytes, 0);
  if (n < 0) return std::nullopt;
  return std::string_view(buffer_.data(), std::size_t(n));
}

std::optional<std::string_view> FileReader::read(const std::string& path) {
  const int descriptor = openForReading(path);
  if (descriptor < 0) return std::nullopt;
  auto text = read(descriptor);
  ::close(descriptor);
  return text;
}

bool KeptFile::open() {
  if (descriptor_ < 0) descriptor_ = openForReading(path_);
  return descriptor_ >= 0;
}

void KeptFile::close() {
  if (descriptor_ >= 0) ::close(descriptor_);
  descriptor_ = -1;
}

std::optional<std::string_view> KeptFile::read(FileReader& reader) {
  if (!open()) return std::nullopt;
  auto text = reader.read(descriptor_);
  if (!text) close(); // what stood behind it may be another file by now
  return text;
}

std::optional<std::string_view> KeptFile::readBeginning(FileReader& reader, std::size_t bytes) {
  if (!open()) return std::nullopt;
  auto text = reader.readBeginning(descriptor_, bytes);
  if (!text) close();
  return text;
}

std::vector<std::string> folderNames(const std::string& path) {
  std::vector<std::string> names;
  DIR* folder = ::opendir(path.c_str());
  if (!folder) return names;
  while (const dirent* entry = ::readdir(folder))
    if (entry->d_name[0] != '.') names.emplace_back(entry->d_name);
  ::closedir(folder);
  std::ranges::sort(names,
                    [](const auto& a, const auto& b) { return ::strverscmp(a.c_str(), b.c_str()) < 0; });
  return names;
}

bool exists(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

} // namespace korvell
