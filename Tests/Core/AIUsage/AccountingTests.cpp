#include "Core/AIUsage/Accounting.h"

#include "Base/Files.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <random>
#include <unordered_set>

namespace korvell {
namespace {

// Enough keys that the table grows, is emptied when it is full, and finds older ones in the database only.
TEST(SeenKeysTests, eachKeyIsNewOnceAndRepeatsLeaveNoTrace) {
  const TemporaryFolder folder;
  const Date now{1'772'366'400};
  std::unordered_set<std::uint64_t> known;
  std::mt19937_64 random(3);
  std::vector<std::uint64_t> pool(150'000);
  for (auto& key : pool) key = random();
  pool[0] = 0;
  for (const std::size_t sightings : {400'000, 50'000}) {
    // Threads pass over repeats that they remember, one thread over others than two.
    UsageDatabase all(folder / "all.sqlite", now), some(folder / "some.sqlite", now);
    ASSERT_TRUE(all.begin(now, {}) && some.begin(now, {}));
    SeenKeys allKeys(all, "2026-03-01"), someKeys(some, "2026-03-01");
    for (std::size_t i = 0; i < sightings; ++i) {
      const auto key = pool[i % 7 == 0 ? 0 : random() % pool.size()];
      const bool isNew = known.insert(key).second;
      allKeys.prepare(key);
      ASSERT_EQ(allKeys.isFirstSighting(key), isNew) << i;
      if (isNew || i % 3 == 0) {
        ASSERT_EQ(someKeys.isFirstSighting(key), isNew) << i;
      }
    }
    allKeys.flush();
    someKeys.flush();
    ASSERT_TRUE(all.commit() && some.commit());
  }
  EXPECT_GT(known.size(), 131'072u);
  const auto bytes = readFile(folder / "all.sqlite", 64 << 20);
  ASSERT_TRUE(bytes);
  EXPECT_TRUE(bytes == readFile(folder / "some.sqlite", 64 << 20)) << "the files differ";
}

} // namespace
} // namespace korvell
