#include "Base/WakePipe.h"

#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

namespace korvell {
namespace {

bool isAwake(const WakePipe& pipe) {
  pollfd polled{pipe.descriptor(), POLLIN, 0};
  return poll(&polled, 1, 0) == 1 && polled.revents == POLLIN;
}

TEST(WakePipeTests, anyNumberOfWakingsIsOneUntilItIsDrained) {
  const WakePipe pipe;
  ASSERT_TRUE(pipe);
  EXPECT_TRUE(fcntl(pipe.descriptor(), F_GETFD) & FD_CLOEXEC);
  EXPECT_FALSE(isAwake(pipe));
  pipe.drain();                          // does not wait for anything
  for (const int count : {1, 200'000}) { // the second is more than a pipe holds
    errno = ENOENT;
    for (int i = 0; i < count; ++i) pipe.wake();
    EXPECT_EQ(errno, ENOENT);
    EXPECT_TRUE(isAwake(pipe));
    pipe.drain();
    EXPECT_FALSE(isAwake(pipe)) << count;
  }
}

} // namespace
} // namespace korvell
