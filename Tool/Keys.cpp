#include "Tool/Keys.h"

#include <algorithm>
#include <optional>

namespace korvell {

namespace {

struct Sequence {
  std::string_view bytes;
  int key;
};

constexpr Sequence sequences[] = {
    {"\x1b[A", Key::up},      {"\x1b[B", Key::down},      {"\x1b[C", Key::right}, {"\x1b[D", Key::left},
    {"\x1bOA", Key::up},      {"\x1bOB", Key::down},      {"\x1bOC", Key::right}, {"\x1bOD", Key::left},
    {"\x1b[5~", Key::pageUp}, {"\x1b[6~", Key::pageDown}, {"\x1b[H", Key::home},  {"\x1b[F", Key::end},
    {"\x1bOH", Key::home},    {"\x1bOF", Key::end},       {"\x1b[1~", Key::home}, {"\x1b[4~", Key::end}};

constexpr std::size_t longestSequence = 32;

/// Bytes of the escape sequence at the beginning; nothing while its end is still to come.
std::optional<std::size_t> lengthOfSequence(std::string_view bytes) {
  if (bytes.size() < 2) return std::nullopt;
  if (bytes[1] == 'O') return bytes.size() < 3 ? std::nullopt : std::optional<std::size_t>(3);
  if (bytes[1] != '[') return 2; // a key pressed together with Alt
  for (std::size_t i = 2; i < bytes.size(); ++i)
    if (bytes[i] < ' ' || bytes[i] >= '@' || i + 1 == longestSequence) return i + 1;
  return std::nullopt;
}

} // namespace

std::vector<int> KeyParser::take(std::string_view bytes) {
  const auto all = rest_ + std::string(bytes);
  std::string_view left = all;
  std::vector<int> keys;
  while (!left.empty()) {
    std::size_t length = 1;
    if (left.front() == Key::escape) {
      const auto sequence = lengthOfSequence(left);
      if (!sequence) break;
      length = *sequence;
      const auto* known = std::ranges::find(sequences, left.substr(0, length), &Sequence::bytes);
      if (known != std::end(sequences)) keys.push_back(known->key);
    } else {
      keys.push_back(static_cast<unsigned char>(left.front()));
    }
    left.remove_prefix(length);
  }
  rest_ = std::string(left);
  return keys;
}

std::vector<int> KeyParser::finish() {
  // Escape alone is the key; what began a sequence that never ended is nothing.
  const bool isKey = rest_.size() == 1;
  rest_.clear();
  return isKey ? std::vector<int>{Key::escape} : std::vector<int>();
}

} // namespace korvell
