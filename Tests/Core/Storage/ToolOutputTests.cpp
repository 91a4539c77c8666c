#include "Core/Storage/ToolOutput.h"

#include "Base/Shell.h"
#include "StorageWorld.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

TEST(ToolOutputTests, sizesAsDockerPrintsThem) {
  const struct {
    const char* text;
    std::int64_t bytes;
  } rows[] = {
      {"1.546GB (85%)", 1'546'000'000},
      {"0B", 0},
      {"12.3kB", 12'300},
      {"7 MB", 7'000'000},
      {"2TB", 2'000'000'000'000},
      {"1.5GiB", 1'610'612'736},
      {"999B (100%)", 999},
      {" 1KB", 1000},
      {"", 0},
      {"GB", 0},
      {"-2.5e+08 B (-8%)", 0},
      {"5", 0},
      {"1XB", 0},
      {"inf GB", 0},
      {"nanB", 0},
      {"0x10B", 0},
      {"9e30GB", 0},
      {"1.2.3MB", 0},
  };
  for (const auto& row : rows) EXPECT_EQ(dockerBytes(row.text), row.bytes) << row.text;
}

/// Runs real programs, with little patience.
TEST(ToolOutputTests, programsThatFailHangOrTalkNonsense) {
  StorageWorld world;
  const auto scan = [&](const std::string& docker) {
    world.program("docker", "#!/bin/sh\n" + docker);
    const CommandRunner impatient = [](const std::string& path, const std::vector<std::string>& arguments,
                                       Seconds) { return Shell::run(path, arguments, Seconds{0.5}); };
    return StorageScan(world.locations(), world.files, world.trash, impatient, world.clock)
        .scan(StorageKind::docker);
  };
  const std::string row = R"x({"Type":"Containers","Reclaimable":"1.5GB (10%)"})x";
  EXPECT_EQ(scan("[ \"$*\" = 'system df --format {{json .}}' ] && echo '" + row + "'")->bytes, 1'500'000'000);
  for (const auto& script :
       {"echo '" + row + "'; exit 1", "echo '" + row + "'; exec sleep 60", std::string("exit 0"),
        std::string("head -c 100000 /dev/zero"), std::string("kill -9 $$")}) {
    const auto found = scan(script);
    ASSERT_TRUE(found) << script;
    EXPECT_TRUE(found->note && found->items.empty()) << script;
  }
}

} // namespace
} // namespace korvell
