#include "Core/AIUsage/LineBlocks.h"

#include "Core/AIUsage/JSONTokens.h"
#include "Core/AIUsage/LineSearch.h"

#include <algorithm>
#include <cstring>

namespace korvell {

namespace {
constexpr std::size_t alignment = 64; ///< a line of the processor's cache
}

bool BlockBuffer::resize(std::size_t capacity) {
  auto* grown = static_cast<char*>(std::realloc(bytes_.get(), capacity + JSONTokens::padding));
  if (!grown) return false;
  (void)bytes_.release();
  bytes_.reset(grown);
  std::memset(grown + capacity, 0, JSONTokens::padding);
  capacity_ = capacity;
  return true;
}

LineBlocks::LineBlocks(OpenLog& log, BlockBuffer& buffer, std::int64_t offset, std::size_t maximumLine)
    : log_(log), buffer_(buffer), maximumLine_(maximumLine), offset_(offset), readAt_(offset) {
  if (buffer_.capacity() != blockSize) buffer_ = {};
  if (!buffer_.data()) (void)buffer_.resize(blockSize);
}

/// Room behind the bytes read: moves a begun line to the front, and grows where it fills the buffer.
bool LineBlocks::makeRoom() {
  if (!buffer_.data()) return false;
  if (end_ - begin_ > maximumLine_) {
    passingOver_ = true;
    begin_ = end_;
  }
  const std::size_t kept = end_ - begin_;
  const std::size_t most = std::max(maximumLine_ + 1, blockSize) + alignment;
  if (kept + alignment > buffer_.capacity() && !buffer_.resize(std::min(buffer_.capacity() * 2, most)))
    return false;
  // The kernel copies fastest to where addresses are aligned as the file's offsets are.
  const auto address = reinterpret_cast<std::uintptr_t>(buffer_.data());
  const std::size_t front = (std::size_t(readAt_) - kept - address) % alignment;
  std::memmove(buffer_.data() + front, buffer_.data() + begin_, kept);
  begin_ = front;
  end_ = front + kept;
  return true;
}

bool LineBlocks::fill() {
  // No more than the longest line with its line feed, so that a longer one is never handed out.
  const std::size_t room = std::min(buffer_.capacity(), begin_ + maximumLine_ + 1) - end_;
  const auto count = log_.read(buffer_.data() + end_, room, readAt_);
  if (count <= 0) return false;
  readAt_ += count;
  end_ += std::size_t(count);
  return true;
}

bool LineBlocks::next(std::string_view& lines) {
  while (makeRoom()) {
    const std::size_t known = end_;
    if (!fill()) return false;
    if (passingOver_) {
      const auto* feed = static_cast<const char*>(std::memchr(buffer_.data() + begin_, '\n', end_ - begin_));
      begin_ = feed ? std::size_t(feed - buffer_.data()) + 1 : end_;
      if (!feed) continue;
      passingOver_ = false;
      offset_ = readAt_ - std::int64_t(end_ - begin_);
    }
    const auto first = std::max(known, begin_);
    const auto last = lastLineFeed({buffer_.data() + first, end_ - first});
    if (!last) continue;
    lines = {buffer_.data() + begin_, first + *last + 1 - begin_};
    begin_ = first + *last + 1;
    offset_ = readAt_ - std::int64_t(end_ - begin_);
    return true;
  }
  return false;
}

} // namespace korvell
