#pragma once
// What a terminal sends when keys are pressed, taken apart into keys.

#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// A key is the byte that it sends, or one of these.
struct Key {
  enum : int { up = 256, down, left, right, pageUp, pageDown, home, end };
  static constexpr int enter = '\r', escape = 27, backspace = 127;
};

/// Puts together what arrives in pieces: an escape sequence may come in several reads, and its first byte is
/// also a key of its own. Sequences that mean nothing here are skipped.
class KeyParser {
public:
  std::vector<int> take(std::string_view bytes);
  /// True while what came last may go on; when nothing follows soon, finish() tells what it was.
  bool isWaiting() const { return !rest_.empty(); }
  std::vector<int> finish();

private:
  std::string rest_;
};

} // namespace korvell
