#include "Helper/Shared/RusageService.h"

#include <gmock/gmock.h>
#include <numeric>

using namespace korvell;

TEST(RusageService, answersForWhatItCanRead) {
  int requests = 0;
  std::vector<ProcessID> read;
  const RusageService service(
      [&](ProcessID pid) -> std::optional<RusageSample> {
        read.push_back(pid);
        if (pid == 3) return std::nullopt;
        return RusageSample{.diskRead = std::uint64_t(pid) * 10};
      },
      [&] { ++requests; });
  const auto samples = service.rusage(std::vector<ProcessID>{5, 0, -1, INT32_MIN, 3, 5, INT32_MAX});
  EXPECT_EQ(samples.size(), 2u);
  EXPECT_EQ(samples.at(5).diskRead, 50u);
  EXPECT_TRUE(samples.contains(INT32_MAX));
  EXPECT_THAT(read, testing::ElementsAre(5, 3, INT32_MAX)) << "only ids that can be, each once";
  EXPECT_TRUE(service.rusage({}).empty());
  EXPECT_EQ(requests, 2);
}

TEST(RusageService, takesTheFirst8192Processes) {
  const RusageService service([](ProcessID) { return RusageSample{}; }, [] {});
  std::vector<ProcessID> pids(10'000);
  std::iota(pids.begin(), pids.end(), 1);
  const auto samples = service.rusage(pids);
  EXPECT_EQ(samples.size(), 8192u);
  EXPECT_TRUE(samples.contains(8192));
}
