#include "Tool/LinePipe.h"

#include "Base/Descriptor.h"

#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(LinePipeTests, whatCameLastIsTakenWithoutItsLineFeedAndBeforeTheEnd) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const Descriptor in(ends[0]);
  Descriptor theirs(ends[1]);
  std::vector<std::string> heard;
  LinePipe lines(
      in.get(), -1, 100,
      [&](std::optional<std::string_view> line) { heard.emplace_back(line.value_or("?")); },
      [&] { heard.emplace_back("<end>"); });
  const std::string_view sent = "one\ntwo";
  ASSERT_EQ(write(theirs.get(), sent.data(), sent.size()), ssize_t(sent.size()));
  theirs = {};
  for (auto polled = lines.polled(); !polled.empty(); polled = lines.polled()) {
    ASSERT_EQ(poll(polled.data(), polled.size(), 0), 1);
    lines.ready(polled);
  }
  EXPECT_THAT(heard, ElementsAre("one", "two", "<end>"));
}

} // namespace
} // namespace korvell
