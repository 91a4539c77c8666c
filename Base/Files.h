#pragma once
// Small files as a whole. Blocking; from any thread.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// The bytes of a regular file. Without them `error` tells why: ENOENT and the like from opening and reading,
/// EFBIG for more than `most` bytes, EINVAL for what is no regular file (a pipe is not waited for).
std::optional<std::string> readFile(const std::string& path, std::size_t most, int* error = nullptr);

/// Where a path leads when it is a symbolic link, which may dangle; the path itself otherwise. Empty for a
/// circle.
std::string followedLinks(const std::string& path);

enum class Readers {
  owner,    ///< mode 0600
  everybody ///< mode 0644
};
enum class Flush { toDisk, none };

/// Replaces or creates a file so that a reader sees the old bytes or the new ones, also after a power cut:
/// written aside in the same folder, flushed to the disk, renamed. A symbolic link stays one and its target
/// is replaced. False when that can't be done, and errno says why; the old file is untouched then. With
/// Flush::none a power cut may leave an empty file: for what is soon written again.
[[nodiscard]] bool replaceFile(const std::string& path, std::string_view bytes,
                               Readers readers = Readers::owner, Flush flush = Flush::toDisk);

/// True when a path is a folder or lies below it, as the two texts say.
bool isInside(std::string_view path, std::string_view folder);
/// The path with the home folder written as "~".
std::string tildePath(const std::string& path, const std::string& home);

} // namespace korvell
