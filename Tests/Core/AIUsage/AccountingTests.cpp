#include "Core/AIUsage/Accounting.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <random>
#include <unordered_set>

namespace korvell {
namespace {

// Enough keys that the table grows, is emptied when it is full, and finds older ones in the database only.
TEST(SeenKeysTests, eachKeyIsNewOnceInAllScans) {
  const TemporaryFolder folder;
  const Date now{1'772'366'400};
  std::unordered_set<std::uint64_t> known;
  std::mt19937_64 random(3);
  std::vector<std::uint64_t> pool(150'000);
  for (auto& key : pool) key = random();
  pool[0] = 0;
  for (const std::size_t sightings : {400'000, 200'000}) {
    UsageDatabase database(folder / "ai-usage.sqlite", now);
    ASSERT_TRUE(database.begin(now, {}));
    SeenKeys keys(database, "2026-03-01");
    for (std::size_t i = 0; i < sightings; ++i) {
      const auto key = pool[i % 7 == 0 ? 0 : random() % pool.size()];
      keys.prepare(key);
      ASSERT_EQ(keys.isFirstSighting(key), known.insert(key).second) << i;
    }
    keys.flush();
    ASSERT_TRUE(database.commit());
  }
  EXPECT_GT(known.size(), 131'072u);
}

} // namespace
} // namespace korvell
