#pragma once
// One line of JSON, token by token, and no byte of it unchecked.
//
// The library's first pass finds where tokens begin and sees to UTF-8, closed texts and control characters;
// its own later passes either build a tree of values, and copy and unescape every text for that, or leave
// what nobody asks for unchecked. Here the grammar is checked along the way and texts stay where they are.
//
// Programs that cut a text between the two halves of a surrogate pair write an escape that stands for no
// character. Such a line is taken as it was meant; a text that is read has U+FFFD there.

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// JSON with "\ufffd" for each escape of half a surrogate pair, which other readers refuse.
std::string withoutLoneSurrogates(std::string_view json);

class JSONTokens {
public:
  /// Bytes behind a line that must be readable; what they hold does not matter.
  static const std::size_t padding;

  JSONTokens();
  ~JSONTokens();
  JSONTokens(const JSONTokens&) = delete;
  JSONTokens& operator=(const JSONTokens&) = delete;

  /// Begins a line; false when it is malformed in a way that tokens don't show. Texts of the line before
  /// die with it.
  bool begin(std::string_view line);
  bool atEnd() const { return next_ == end_; }

  // Each reads the value that is next and goes behind it; false when it is another one or malformed, and the
  // rest of the line is then of no use.
  bool null() { return peek() == 'n' && isNull(); } ///< when false, any other value may still be read
  bool text(std::string_view& result);              ///< lives until the next line begins
  /// Whole, also when it is written as "300.0" or "3e2"; those up to 2^53.
  bool integer(std::int64_t& result) { return plainInteger(result) || wholeReal(result); }
  bool number(double& result); ///< finite
  /// Calls `member` with every name, which lives until the value is read; it reads the value and tells
  /// whether that was good.
  template <class Member>
  bool object(Member&& member);
  bool skip(); ///< any value, numbers beyond all types included

private:
  static constexpr int deepest = 1'024;

  struct Library;
  static bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
  /// The next token's first byte.
  char peek() const { return next_ < end_ ? line_[*next_] : '\0'; }
  /// The next one, whole, with its quotes. Where the line ends, nothing.
  std::string_view token() const {
    if (atEnd()) return {};
    const char* const begin = line_.data() + *next_;
    const char* end = line_.data() + next_[1];
    while (isSpace(end[-1])) --end; // stops at the token's first byte, which is none
    return {begin, std::size_t(end - begin)};
  }
  bool take(char c) {
    if (peek() != c) return false;
    ++next_;
    return true;
  }
  /// As it is written where no escape in it can stand for a letter.
  bool name(std::string_view& result) {
    if (peek() != '"') return false;
    result = token();
    ++next_;
    if (rareEscapes_ && result.find('\\') != std::string_view::npos) return unescape(result, name_);
    result = result.substr(1, result.size() - 2);
    return true;
  }
  /// Takes the quotes away, too; the text is then that of `plain`.
  bool unescape(std::string_view& text, std::string& plain);
  bool isNull();
  bool plainInteger(std::int64_t& result); ///< when false, wholeReal() or real() may still read it
  bool wholeReal(std::int64_t& result);
  bool real(double& result);
  bool array();

  std::unique_ptr<Library> library_;
  std::string_view line_;
  const std::uint32_t *next_ = nullptr, *end_ = nullptr; ///< where tokens begin; at the end the line's size
  int depth_ = 0;
  bool rareEscapes_ = false;      ///< somewhere in the line
  std::deque<std::string> texts_; ///< without their escapes
  std::string name_;
};

template <class Member>
bool JSONTokens::object(Member&& member) {
  if (!take('{') || ++depth_ > deepest) return false;
  if (!take('}')) {
    do {
      std::string_view called;
      if (!name(called) || !take(':') || !member(called)) return false;
    } while (take(','));
    if (!take('}')) return false;
  }
  --depth_;
  return true;
}

} // namespace korvell
