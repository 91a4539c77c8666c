#include "Base/Record.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

enum class Colour { red, green };

} // namespace

template <>
struct EnumTable<Colour> {
  static constexpr EnumCase<Colour> cases[] = {{Colour::red, "red", "Red"},
                                               {Colour::green, "green", "Green"}};
};

namespace {

struct Inner {
  std::uint64_t bytes = 0;
  std::optional<std::string> note;
  bool operator==(const Inner&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"bytes", &Inner::bytes}, Field{"note", &Inner::note}};
  }
};

struct Outer {
  Date date;
  Colour colour = Colour::red;
  std::vector<Inner> inner;
  std::int32_t small = 0;
  bool flag = false;
  bool operator==(const Outer&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &Outer::date}, Field{"colour", &Outer::colour},
                      Field{"inner", &Outer::inner}, Field{"small", &Outer::small},
                      Field{"flag", &Outer::flag}};
  }
};

TEST(RecordTests, recordsTravelThroughJSONUnchanged) {
  const Outer outer{Date{1.5}, Colour::green, {{UINT64_MAX, "a"}, {7, std::nullopt}}, -5, true};
  const auto text = dumpJSON(toValue(outer));
  EXPECT_EQ(text,
            R"({"date":"1970-01-01T00:00:01.500Z","colour":"green",)"
            R"("inner":[{"bytes":18446744073709551615,"note":"a"},{"bytes":7}],"small":-5,"flag":true})");
  Outer read;
  ASSERT_TRUE(fromValue(*parseJSON(text), read));
  EXPECT_EQ(read, outer);
  EXPECT_EQ(hashOf(read), hashOf(outer));
}

TEST(RecordTests, whatDoesNotFitIsRefusedAndWhatIsMissingStays) {
  for (const char* text : {R"({"small":3000000000})", R"({"colour":"Green"})", R"({"inner":[{"bytes":-1}]})",
                           R"({"inner":{}})", R"({"flag":1})", R"({"date":"yesterday"})", R"([])"}) {
    Outer read;
    EXPECT_FALSE(fromValue(*parseJSON(text), read)) << text;
  }
  Outer read{.small = 9};
  EXPECT_TRUE(fromValue(*parseJSON(R"({"flag":true,"unknown":[1]})"), read));
  EXPECT_EQ(read, (Outer{.small = 9, .flag = true}));
}

} // namespace
} // namespace korvell
