#pragma once
// A growing file, cut into blocks of whole lines.
//
// A last line without a line feed is left for a later reading. A line longer than 64 MiB is passed over
// without being held; no tool writes one, and decoding it would take several times as much.

#include "Platform/LogFiles.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace korvell {

inline constexpr std::size_t longestLine = std::size_t{64} << 20;

/// Memory that is reused from file to file. It grows only while a line needs it.
class BlockBuffer {
public:
  char* data() { return bytes_.get(); }
  std::size_t capacity() const { return capacity_; } ///< without the readable bytes behind
  /// Keeps the contents. False when there is no memory.
  bool resize(std::size_t capacity);

private:
  struct Free {
    void operator()(char* bytes) const { std::free(bytes); }
  };
  std::unique_ptr<char, Free> bytes_;
  std::size_t capacity_ = 0;
};

class LineBlocks {
public:
  /// What is read at once: small enough to be still in the second-level cache when it is searched.
  static constexpr std::size_t blockSize = std::size_t{1} << 18;

  LineBlocks(OpenLog& log, BlockBuffer& buffer, std::int64_t offset, std::size_t maximumLine = longestLine);

  /// The next lines, each with its line feed; they live until the next call. False at the end of the file.
  bool next(std::string_view& lines);
  /// Just behind the last line that was handed out or passed over.
  std::int64_t offset() const { return offset_; }

private:
  bool makeRoom();
  bool fill();

  OpenLog& log_;
  BlockBuffer& buffer_;
  std::size_t maximumLine_;
  std::int64_t offset_;
  std::int64_t readAt_;      ///< where the next read begins
  std::size_t begin_ = 0;    ///< of the bytes not handed out
  std::size_t end_ = 0;      ///< of the bytes read
  bool passingOver_ = false; ///< inside a line that is too long
};

} // namespace korvell
