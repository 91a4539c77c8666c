#pragma once
// Proves that a text which comes back from outside is one that this process gave out. The key is random and
// dies with the process. From any thread.

#include "Agents/Secrets.h"

#include <string>
#include <string_view>

namespace korvell {

class Seal {
public:
  /// Ends the program where the system has no randomness to give.
  Seal();
  ~Seal();
  Seal(const Seal&) = delete;
  Seal& operator=(const Seal&) = delete;

  /// 128 bits over all parts, where one ends and the next begins included, in hexadecimal digits.
  std::string of(std::initializer_list<std::string_view> parts) const;
  /// Compared in constant time.
  bool isGenuine(std::string_view seal, std::initializer_list<std::string_view> parts) const;

private:
  secrets::Key key_{};
};

/// 72 random bits in the same digits.
std::string randomLabel();

} // namespace korvell
