#include "Base/Enum.h"

#include <gtest/gtest.h>

using namespace korvell;

namespace {

constexpr LocalizedText words[] = {{"Your Mac", "Your computer"},
                                   {"{n} of {m}", "{m} have {n}"},
                                   {"Twice", "first"},
                                   {"Twice", "second"},
                                   {"Fast", "Quick"}};

struct Localization : testing::Test {
  void SetUp() override { setLocalization(words); }
  void TearDown() override { setLocalization({}); }
};

enum class Pace { slow, fast };
// Tables that must not compile when they are used.
enum class Repeated { a, b };
enum class Disordered { a, b };
enum class Nameless { a };

} // namespace

template <>
struct korvell::EnumTable<Pace> {
  static constexpr EnumCase<Pace> cases[] = {{Pace::slow, "slow", "Slow"}, {Pace::fast, "fast", "Fast"}};
};
template <>
struct korvell::EnumTable<Repeated> {
  static constexpr EnumCase<Repeated> cases[] = {{Repeated::a, "a", "A"}, {Repeated::b, "a", "B"}};
};
template <>
struct korvell::EnumTable<Disordered> {
  static constexpr EnumCase<Disordered> cases[] = {{Disordered::b, "b", "B"}, {Disordered::a, "a", "A"}};
};
template <>
struct korvell::EnumTable<Nameless> {
  static constexpr EnumCase<Nameless> cases[] = {{Nameless::a, "", "A"}};
};

static_assert(isSoundTable<Pace>());
static_assert(!isSoundTable<Repeated>() && !isSoundTable<Disordered>() && !isSoundTable<Nameless>());

TEST_F(Localization, keysAreTheirOwnTranslationAndPlaceholdersAreFilledIn) {
  EXPECT_EQ(localized("Your Mac"), "Your computer");
  EXPECT_EQ(localized("your mac"), "your mac");
  EXPECT_EQ(localized("Twice"), "first");
  EXPECT_EQ(localized("{n} of {m}", {{"n", "1"}, {"m", "2"}}), "2 have 1");
  const struct {
    const char* key;
    const char* expected;
  } rows[] = {
      {"{unknown} {n}{n}", "{unknown} 55"},
      {"{n", "{n"},
      {"{{n}}", "{5}"},
      {"{}", "{}"},
      {"", ""},
      {"{v}", "{n} Your Mac"}, // a value is neither filled in nor translated
  };
  for (const auto& row : rows)
    EXPECT_EQ(localized(row.key, {{"n", "5"}, {"v", "{n} Your Mac"}}), row.expected) << row.key;
  // A figure keeps together with its unit where letters run from the right.
  EXPECT_EQ(localized("פנוי {n}", {{"n", "5 GB"}}), "פנוי \u2068"
                                                    "5 GB\u2069");
}

TEST_F(Localization, enumerationsReadTheirTable) {
  EXPECT_EQ(rawValue(Pace::fast), "fast");
  EXPECT_EQ(fromRawValue<Pace>("slow"), Pace::slow);
  EXPECT_FALSE(fromRawValue<Pace>("Slow"));
  EXPECT_FALSE(fromRawValue<Pace>(""));
  EXPECT_EQ(title(Pace::fast), "Quick");
  EXPECT_EQ(allCases<Pace>().size(), 2u);
  EXPECT_EQ(rawValue(Pace(7)), "") << "a value from a damaged store";
}
