#include "Base/Value.h"

#include <gtest/gtest.h>
#include <limits>

using namespace korvell;

namespace {

std::string brackets(std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); }

} // namespace

TEST(Value, readsOnlyWhatItIs) {
  const Value whole = 5, big = std::uint64_t{UINT64_MAX}, negative = -1, real = 5.0, text = "5", flag = true;
  EXPECT_EQ(whole.asInt(), 5);
  EXPECT_EQ(whole.asUnsigned(), 5u);
  EXPECT_EQ(whole.asDouble(), 5.0);
  EXPECT_EQ(big.asUnsigned(), UINT64_MAX);
  for (const Value* no : {&big, &real, &text, &flag}) EXPECT_FALSE(no->asInt()) << dumpJSON(*no);
  EXPECT_FALSE(negative.asUnsigned() || text.asDouble());
  EXPECT_FALSE(whole.asBool() || whole.asString() || whole.asDate());
  EXPECT_EQ(Value("2026-03-01T12:00:00Z").asDate(), Value(Date{1'772'366'400}).asDate());
  EXPECT_EQ(Value(std::uint64_t{5}), Value(5)) << "equal numbers are equal values";
}

TEST(Value, whatIsNoJSONNamesThePlace) {
  const std::pair<std::string, JSONFault> rows[] = {{"{\"a\":1,\n}", {2, 1}},
                                                    {"[1,\n 2,\n \"€\" x]", {3, 6}},
                                                    {std::string("[1\n\0]", 5), {2, 1}},
                                                    {"", {1, 1}},
                                                    {"{\"x\":\n 1e400}", {2, 2, true}},
                                                    {"[0, -1e999", {1, 5, true}},
                                                    {brackets(600), {1, 1}}};
  for (const auto& [text, place] : rows) {
    JSONFault fault{9, 9};
    EXPECT_FALSE(parseJSON(text, &fault)) << text;
    EXPECT_EQ(fault, place) << text << " " << fault.line << ":" << fault.column;
  }
}

TEST(Value, objectsKeepTheirOrder) {
  auto object = Value::object({{"b", 1}, {"a", 2}});
  object.set("c", std::optional<int>{}).set("b", 3).set("d", std::optional<int>{4});
  EXPECT_EQ(dumpJSON(object), R"({"b":3,"a":2,"d":4})");
  object.erase("a");
  EXPECT_FALSE(object.find("a"));
  EXPECT_FALSE(Value(1).find("a"));
  Value list;
  list.append(1).append("two");
  EXPECT_EQ(dumpJSON(list), R"([1,"two"])");
}

TEST(JSON, comesBackAsItWas) {
  for (const std::string text : {R"({"z":1,"a":[true,false,null,""],"m":{"deep":[[]]}})",
                                 R"("a\u0000b\n\"\\ä🙂")", "-9223372036854775808", "9223372036854775807",
                                 "18446744073709551615", "0.1", "1e+300", "[]", "{}", R"({"":0})"}) {
    const auto value = parseJSON(text);
    ASSERT_TRUE(value) << text;
    EXPECT_EQ(dumpJSON(*value), text);
    EXPECT_EQ(parseJSON(dumpJSON(*value, JSONStyle::indented)), value) << text;
  }
}

TEST(JSON, numbersBeyond64BitsAreRealsAndTheLastMemberOfANameCounts) {
  for (const char* text : {"18446744073709551616", "-9223372036854775809", "1.0"}) {
    const auto value = parseJSON(text);
    EXPECT_TRUE(value && value->asDouble() && !value->asInt() && !value->asUnsigned()) << text;
  }
  EXPECT_EQ(*parseJSON(R"({"a":1,"a":"two"})")->find("a"), Value("two")) << "of two members the last counts";
}

TEST(JSON, refusesWhatIsMalformed) {
  for (const char* text : {"", " ", "{", "[1,]", "{\"a\":1,}", "{'a':1}", "01", "NaN", "tru", "[1]x", "{}{}",
                           "\"a", "\"\\ud800\"", "\"\xFF\"", "\"\xC0\xAF\"", "// a comment\n1", "1e999"})
    EXPECT_FALSE(parseJSON(text)) << text;
  EXPECT_FALSE(parseJSON(std::string_view("{}\0x", 4))) << "a NUL ends nothing";
}

TEST(JSON, depthIsLimitedBeforeAnythingIsBuilt) {
  EXPECT_TRUE(parseJSON(brackets(512)));
  EXPECT_FALSE(parseJSON(brackets(513)));
  EXPECT_FALSE(parseJSON(brackets(1'000'000)));
  EXPECT_FALSE(parseJSON(std::string(1'000'000, '[')));
  std::string objects;
  for (int i = 0; i < 100'000; ++i) objects += "{\"a\":";
  EXPECT_FALSE(parseJSON(objects));
}

TEST(JSON, whatItCannotHoldIsPrintedInItsWay) {
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(dumpJSON(Value(Value::Array{nan, inf, -inf})), "[null,null,null]");
  EXPECT_EQ(dumpJSON(Value::object({{"a\xFF", "b\xFF"}})), "{\"a\uFFFD\":\"b\uFFFD\"}");
  EXPECT_EQ(dumpJSON(Value(Date{1'772'366'400.5})), R"("2026-03-01T12:00:00.500Z")");
}
