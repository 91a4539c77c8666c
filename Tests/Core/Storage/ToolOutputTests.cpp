#include "Core/Storage/ToolOutput.h"

#include <clocale>
#include <gtest/gtest.h>

namespace korvell {
namespace {

TEST(ToolOutputTests, sizesAsDockerPrintsThem) {
  const std::pair<const char*, std::int64_t> rows[] = {
      {"1.546GB (85%)", 1'546'000'000}, {"12.3kB", 12'300},   {"7 MB", 7'000'000}, {"2TB", 2'000'000'000'000},
      {"1.5GiB", 1'610'612'736},        {"999B (100%)", 999}, {" 1KB", 1000},
  };
  for (const auto& [text, bytes] : rows) EXPECT_EQ(dockerBytes(text), bytes) << text;
  for (const char* none : {"", "0B", "GB", "-2.5e+08 B (-8%)", "5", "1XB", "inf GB", "nanB", "0x10B",
                           "9e30GB", "1.2.3MB", "1153PB"})
    EXPECT_EQ(dockerBytes(none), 0) << none;
  EXPECT_EQ(dockerBytes("1152PB") * 4 / 4, 1'152'000'000'000'000'000) << "four of them add up";
}

TEST(ToolOutputTests, sizesUnderALocaleWithACommaForThePoint) {
  for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "it_IT.UTF-8", "es_ES.UTF-8"}) {
    if (!std::setlocale(LC_NUMERIC, name)) continue;
    EXPECT_EQ(dockerBytes("1.234GB"), 1'234'000'000) << name;
    std::setlocale(LC_NUMERIC, "C");
    return;
  }
  GTEST_SKIP() << "none is installed";
}

TEST(ToolOutputTests, whatIsFarTooLongIsLeftUnread) {
  const std::string junk =
      R"({"Type":"Images","Reclaimable":"1GB","x":[0)" + std::string(100'000, ' ') + "]}";
  ASSERT_TRUE(parseDockerUsage(junk.substr(0, 43) + "]}")) << "it would be of use";
  EXPECT_FALSE(parseDockerUsage(junk));
  EXPECT_EQ(parseDockerUsage(junk + "\n" + R"({"Type":"Containers","Reclaimable":"5MB"})"),
            (DockerUsage{.containers = 5'000'000}));
  const std::string device =
      R"({"devices":{"iOS":[{"isAvailable":false,"udid":"00000000-0000-0000-0000-000000000001"}]})";
  EXPECT_EQ(unavailableSimulators(device + "}").size(), 1u);
  EXPECT_EQ(unavailableSimulators(device + std::string(3'000'000, ' ') + "}").size(), 0u);
}

} // namespace
} // namespace korvell
