#include "Core/Storage/ToolOutput.h"

#include "Base/Shell.h"
#include "StorageWorld.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

TEST(ToolOutputTests, sizesAsDockerPrintsThem) {
  const std::pair<const char*, std::int64_t> rows[] = {
      {"1.546GB (85%)", 1'546'000'000}, {"12.3kB", 12'300},   {"7 MB", 7'000'000}, {"2TB", 2'000'000'000'000},
      {"1.5GiB", 1'610'612'736},        {"999B (100%)", 999}, {" 1KB", 1000},
  };
  for (const auto& [text, bytes] : rows) EXPECT_EQ(dockerBytes(text), bytes) << text;
  for (const char* none :
       {"", "0B", "GB", "-2.5e+08 B (-8%)", "5", "1XB", "inf GB", "nanB", "0x10B", "9e30GB", "1.2.3MB"})
    EXPECT_EQ(dockerBytes(none), 0) << none;
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
