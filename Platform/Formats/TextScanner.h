#pragma once
// Walks over a text of the kernel's word by word, without copying it. Everything that is missing reads as
// empty or 0, and the end of a line ends its words.

#include <cstdint>
#include <limits>
#include <string_view>

namespace korvell {

class TextScanner {
public:
  explicit TextScanner(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  bool atEnd() const { return at_ == end_; }

  /// The next word of this line; empty at its end.
  std::string_view word() {
    skipBlanks();
    const char* begin = at_;
    while (at_ != end_ && !isBlank(*at_) && *at_ != '\n') ++at_;
    return {begin, std::size_t(at_ - begin)};
  }
  void skipWords(int count) {
    while (count-- > 0) word();
  }

  /// The digits that come next, after blanks; 0 when none do, the largest number for more than that. Stops at
  /// whatever follows them.
  std::uint64_t number() {
    skipBlanks();
    std::uint64_t value = 0;
    bool fits = true;
    for (; at_ != end_ && *at_ >= '0' && *at_ <= '9'; ++at_)
      fits = fits && !__builtin_mul_overflow(value, std::uint64_t{10}, &value) &&
             !__builtin_add_overflow(value, std::uint64_t(*at_ - '0'), &value);
    return fits ? value : std::numeric_limits<std::uint64_t>::max();
  }

  /// The rest of this line, without surrounding blanks.
  std::string_view restOfLine() {
    skipBlanks();
    const char* begin = at_;
    while (at_ != end_ && *at_ != '\n') ++at_;
    const char* last = at_;
    while (last != begin && isBlank(last[-1])) --last;
    return {begin, std::size_t(last - begin)};
  }

  /// To the beginning of the next line; false when there is none.
  bool nextLine() {
    while (at_ != end_ && *at_ != '\n') ++at_;
    if (at_ != end_) ++at_;
    return at_ != end_;
  }

  /// Steps over `prefix` when it comes next.
  bool accept(std::string_view prefix) {
    if (!std::string_view(at_, std::size_t(end_ - at_)).starts_with(prefix)) return false;
    at_ += prefix.size();
    return true;
  }

private:
  static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }
  void skipBlanks() {
    while (at_ != end_ && isBlank(*at_)) ++at_;
  }

  const char* at_;
  const char* end_;
};

} // namespace korvell
