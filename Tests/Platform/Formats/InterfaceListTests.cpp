#include "Platform/Formats/InterfaceList.h"

#include <cstring>
#include <gtest/gtest.h>

namespace korvell {
namespace {

/// A buffer made up record by record, as the kernel lays them out.
class Buffer {
public:
  template <class Integer>
  void put(std::size_t offset, Integer value) {
    std::memcpy(bytes_.data() + start_ + offset, &value, sizeof value);
  }
  Buffer& record(std::uint8_t type, std::uint16_t length, std::size_t room) {
    start_ = bytes_.size();
    bytes_.resize(start_ + room);
    put<std::uint16_t>(0, length);
    put<std::uint8_t>(3, type);
    return *this;
  }
  Buffer& interface(std::uint16_t index, std::uint64_t received, std::uint64_t sent) {
    record(18, 160, 160);
    put(12, index);
    put(96, received);
    put(104, sent);
    return *this;
  }
  Buffer& address(std::uint16_t length) { return record(12, length, length); }
  Buffer& cut(std::size_t bytes) {
    bytes_.resize(bytes_.size() - bytes);
    return *this;
  }
  std::vector<InterfaceCounters> parse() const {
    const std::vector<std::byte> exact = bytes_; // its end is where a sanitizer sees an overrun
    return parseInterfaceList(exact, [](unsigned index) -> std::optional<std::string> {
      constexpr const char* names[] = {"lo0", "en0", "en1", "en0"};
      if (index < 1 || index > 4) return std::nullopt;
      return names[index - 1];
    });
  }

private:
  std::vector<std::byte> bytes_;
  std::size_t start_ = 0;
};

InterfaceCounters counters(const char* name, std::uint64_t in, std::uint64_t out) {
  return {.name = name, .displayName = {}, .bytes = {.in = in, .out = out}};
}

TEST(InterfaceListTests, recordsAreReadUntilTheListIsDamaged) {
  const std::uint64_t large = std::uint64_t{5} << 32;
  const auto en0 = counters("en0", 1, 2), en1 = counters("en1", 3, 4);
  const struct {
    const char* what;
    Buffer buffer;
    std::vector<InterfaceCounters> found;
  } rows[] = {
      {"nothing", Buffer(), {}},
      {"links between other records",
       Buffer().interface(2, large, 7).address(132).address(20).interface(3, 3, 4),
       {counters("en0", large, 7), en1}},
      {"the last record of a name counts",
       Buffer().interface(2, 1, 1).interface(3, 3, 4).interface(4, 9, 8),
       {counters("en0", 9, 8), en1}},
      {"one without a name", Buffer().interface(99, 1, 1).interface(2, 1, 2), {en0}},
      {"no length", Buffer().interface(2, 1, 2).record(18, 0, 160).interface(3, 3, 4), {en0}},
      {"111 bytes left", Buffer().interface(2, 1, 2).interface(3, 3, 4).cut(49), {en0}},
      {"112 bytes are enough", Buffer().interface(2, 1, 2).interface(3, 3, 4).cut(48), {en0, en1}},
      {"longer than the buffer", Buffer().interface(2, 1, 2).record(12, 60000, 120), {en0}},
  };
  for (const auto& row : rows) EXPECT_EQ(row.buffer.parse(), row.found) << row.what;
}

TEST(InterfaceListTests, onlyLinksCount) {
  for (const char* name : {"en0", "en12", "pdp_ip0"}) EXPECT_TRUE(isMacLink(name)) << name;
  for (const char* name : {"lo0", "utun3", "bridge0", "awdl0", "llw0", "e", ""})
    EXPECT_FALSE(isMacLink(name)) << name;
}

} // namespace
} // namespace korvell
