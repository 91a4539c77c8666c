#include "Sensors/SMC.h"
#include "Tests/Fakes/FakeController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::Optional;

struct SMCTests : testing::Test {
  std::shared_ptr<FakeController::Script> script = std::make_shared<FakeController::Script>();
  SMC smc{std::make_unique<FakeController>(script)};
};

TEST(SMCValues, everyTypeOfNumber) {
  struct Row {
    const char* type;
    std::vector<std::uint8_t> bytes;
    std::optional<double> value;
  };
  const Row rows[] = {
      {"flt ", {0x00, 0x00, 0x20, 0x42}, 40},
      {"flt ", {0x00, 0x00}, {}},
      {"fpe2", {0x1f, 0x40}, 2000},
      {"sp78", {0x28, 0x80}, 40.5},
      {"sp78", {0xff, 0x80}, -0.5},
      {"ui8 ", {0xff}, 255},
      {"ui16", {0x01, 0x02}, 258},
      {"ui32", {0xff, 0x00, 0x00, 0x01}, 4278190081.0},
      {"ui32", {0x00, 0x00, 0x01}, {}},
      {"ui8 ", {}, {}},
      {"ui8", {0x01}, {}},
      {"{fds", {0x01, 0x02, 0x03, 0x04, 0x05}, {}},
      {"sp78", {0x28, 0x80, 0x11, 0x11}, 40.5},
  };
  for (const auto& row : rows) EXPECT_EQ(decodeSMC(row.bytes, row.type), row.value) << row.type;
}

TEST_F(SMCTests, aKeyIsAskedForItsTypeAndThenForItsBytes) {
  script->keys["TC0P"] = {"sp78", {0x28, 0x80}};
  EXPECT_THAT(smc.value("TC0P"), Optional(40.5));
  EXPECT_EQ(script->calls, 2);
  // In host order: "TC0P" packed with its first character in the top byte, size, type, command, nothing else.
  ControllerTransport::Record expected{};
  const std::uint32_t key = 0x54433050, size = 2, type = 0x73703738;
  std::memcpy(&expected[0], &key, 4);
  std::memcpy(&expected[28], &size, 4);
  std::memcpy(&expected[32], &type, 4);
  expected[42] = 5;
  EXPECT_EQ(script->last, expected);
  EXPECT_EQ(unpackedKey(*packedKey("F\xc3\xa9t")), "F\xc3\xa9t");
}

TEST_F(SMCTests, whatCannotBeReadHasNoValue) {
  script->keys["Good"] = {"ui8 ", {7}};
  for (const auto* key : {"TC0", "TC0P1", "", "\xc3\xa9\xc3\xa9\xc3\xa9"})
    EXPECT_EQ(smc.value(key), std::nullopt) << key;
  EXPECT_EQ(script->calls, 0) << "nobody was asked for names that are none";

  script->keys["Zero"] = {"ui8 ", {}};
  script->keys["Long"] = {"ui8 ", {7}, 33};
  script->keys["Full"] = {"ui8 ", std::vector<std::uint8_t>(32, 9)};
  EXPECT_EQ(smc.value("Zero"), std::nullopt);
  EXPECT_EQ(smc.value("Long"), std::nullopt);
  EXPECT_EQ(smc.value("None"), std::nullopt);
  EXPECT_EQ(script->calls, 3) << "their bytes were not asked for";
  EXPECT_THAT(smc.value("Full"), Optional(9));

  script->answerSize = 41;
  EXPECT_THAT(smc.value("Good"), Optional(7));
  script->answerSize = 40;
  EXPECT_EQ(smc.value("Good"), std::nullopt);
  script->answerSize = 80;
  script->refuses = true;
  EXPECT_EQ(smc.value("Good"), std::nullopt);
}

} // namespace
} // namespace korvell
