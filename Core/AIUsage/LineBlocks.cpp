#include "Core/AIUsage/LineBlocks.h"

#include "Core/AIUsage/JSONTokens.h"
#include "Core/AIUsage/LineSearch.h"

#include <algorithm>
#include <cstring>

namespace korvell {

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
  if (begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ <= maximumLine_ && end_ < buffer_.capacity()) return true;
  if (end_ > maximumLine_) {
    passingOver_ = true;
    end_ = 0;
    return true;
  }
  // One byte more than the longest line, for its line feed.
  return buffer_.resize(std::min(buffer_.capacity() * 2, std::max(maximumLine_ + 1, blockSize)));
}

bool LineBlocks::fill() {
  const auto count = log_.read(buffer_.data() + end_, buffer_.capacity() - end_, readAt_);
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
      const auto* feed = static_cast<const char*>(std::memchr(buffer_.data(), '\n', end_));
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
