#include "Base/PropertyList.h"

#include "Base/Files.h"
#include "Tests/FixturesFolder.h"

#include <gmock/gmock.h>

using namespace korvell;
using namespace std::string_literals;

namespace {

std::string fixture(const std::string& name) {
  return readFile(fixturePath("PropertyLists/" + name), 1 << 20).value();
}

std::string repeated(const std::string& text, int times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

std::string inPlist(const std::string& content) { return "<plist version=\"1.0\">" + content + "</plist>"; }

/// A binary document of these objects, the first at the top, with references of two bytes.
std::string binary(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00", offsets;
  const auto number = [](std::uint64_t value, int size) {
    std::string text;
    while (size-- > 0) text += char(value >> (8 * size) & 0xFF);
    return text;
  };
  for (const auto& object : objects) {
    offsets += number(bytes.size(), 4);
    bytes += object;
  }
  const auto table = bytes.size();
  return bytes + offsets + std::string(6, '\0') + "\x04\x02" + number(objects.size(), 8) + number(0, 8) +
         number(table, 8);
}

std::string array(std::initializer_list<int> references) {
  std::string object(1, char(0xA0 | references.size()));
  for (const int reference : references) object += {char(reference >> 8), char(reference & 0xFF)};
  return object;
}

const std::string one = "\x10\x01";

/// An object with one member: the name is object 1, its value object 2.
std::string named(std::string name) { return binary({"\xD1\0\1\0\2"s, std::move(name), one}); }

/// Arrays in each other, each holding the next `copies` times, the innermost a number.
std::string nested(int levels, int copies) {
  std::vector<std::string> objects;
  for (int i = 1; i <= levels; ++i) objects.push_back(copies == 1 ? array({i}) : array({i, i}));
  objects.push_back(one);
  return binary(objects);
}

} // namespace

TEST(PropertyList, bothFormsTellTheSame) {
  const auto xml = parsePropertyList(fixture("agent.plist"));
  ASSERT_TRUE(xml);
  const auto expected =
      Value::object({{"Label", "com.example.agent"},
                     {"ProgramArguments", Value::Array{"/usr/local/bin/agent", "--größe", "🙂"}},
                     {"RunAtLoad", true},
                     {"KeepAlive", Value::object({{"SuccessfulExit", false}})},
                     {"StartInterval", 300},
                     {"Nice", -5},
                     {"Big", std::int64_t{INT64_MAX}},
                     {"Ratio", 0.25},
                     {"Since", Date{1'772'366'400}},
                     {"Blob", Value()}});
  for (const auto& [name, value] : *expected.asObject()) EXPECT_EQ(*xml->find(name), value) << name;
  EXPECT_EQ(parsePropertyList(fixture("agent-binary.plist")), xml);
}

TEST(PropertyList, acceptsAndRefuses) {
  const struct {
    const char* what;
    std::string bytes;
    std::optional<Value> value;
  } rows[] = {
      {"a byte order mark", "\xEF\xBB\xBF" + inPlist("<true/>"), Value(true)},
      {"blanks before", "\n " + inPlist("<string>a&amp;b &lt;</string>"), Value("a&b <")},
      {"nothing", "", std::nullopt},
      {"text", "Label = agent", std::nullopt},
      {"the old form", "{ Label = agent; }", std::nullopt},
      {"UTF-16", "\xFF\xFE<\0p\0"s, std::nullopt},
      {"cut short", inPlist("<dict><key>a</key><string>b").substr(0, 40), std::nullopt},
      {"an entity of its own", "<!DOCTYPE plist [<!ENTITY a \"b\">]>" + inPlist("<string>&a;</string>"),
       std::nullopt},
      {"a binary form of one number", binary({one}), Value(1)},
      {"magic only", "bplist00", std::nullopt},
      {"no objects", binary({}), std::nullopt},
      {"a reference to nowhere", binary({array({7})}), std::nullopt},
      {"a circle", binary({array({1}), array({0})}), std::nullopt},
      {"a name that is a number", binary({"\xD1\0\1\0\1"s, one}), std::nullopt},
      {"a name", named("\x51z"), Value::object({{"z", 1}})},
      {"a name with NUL", named("\x52z"s + '\0'), std::nullopt},
      {"a wide name with NUL", named("\x61\0\0"s), std::nullopt},
      {"a reference to NUL", inPlist("<dict><key>a&#x00;b</key><true/></dict>"), std::nullopt},
      {"itself", binary({array({0})}), std::nullopt},
      {"an array longer than the file", binary({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), std::nullopt},
      {"two members of one name", inPlist("<dict><key>a</key><true/><key>a</key><false/></dict>"),
       Value::object({{"a", false}})},
      {"one object twice", binary({array({1, 1}), one}), Value(Value::Array{1, 1})},
  };
  for (const auto& row : rows) EXPECT_EQ(parsePropertyList(row.bytes), row.value) << row.what;
}

TEST(PropertyList, everyTruncationIsRefusedOrRead) {
  for (const char* name : {"agent.plist", "agent-binary.plist"}) {
    const auto whole = fixture(name);
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const auto value = parsePropertyList(std::string_view(whole).substr(0, size));
      EXPECT_TRUE(!value || size + 10 >= whole.size()) << name << " " << size; // all but the last end tag
    }
  }
}

TEST(PropertyList, documentsThatWouldExhaustTheMachineAreRefused) {
  EXPECT_TRUE(parsePropertyList(nested(500, 1)));
  EXPECT_FALSE(parsePropertyList(nested(600, 1)));
  // Each row of arrays ends in the head of the one before it, which was looked at before.
  std::vector<std::string> rows{array({1, 301, 601})};
  for (int i = 1; i <= 900; ++i) rows.push_back(i == 300 ? one : array({i % 300 == 0 ? i - 599 : i + 1}));
  EXPECT_FALSE(parsePropertyList(binary(rows)));
  EXPECT_TRUE(parsePropertyList(nested(10, 2))) << "unfolds to a thousand";
  EXPECT_FALSE(parsePropertyList(nested(40, 2))) << "would unfold to a million million";
  const auto deep = [](int levels) {
    return inPlist(repeated("<array>", levels) + repeated("</array>", levels));
  };
  EXPECT_TRUE(parsePropertyList(deep(4000)));
  EXPECT_FALSE(parsePropertyList(deep(4001)));
  EXPECT_FALSE(parsePropertyList(inPlist(repeated("<array><!--</array>-->", 4001)))) << "hidden by comments";
  EXPECT_FALSE(parsePropertyList(inPlist("<string>" + std::string(1 << 20, 'a') + "</string>")))
      << "too long";
}

TEST(PropertyList, aLargeFlatDocumentIsReadInReasonableTime) {
  std::string members;
  for (int i = 0; i < 30'000; ++i) members += "<key>" + std::to_string(i) + "</key><true/>";
  const auto value = parsePropertyList(inPlist("<dict>" + members + "</dict>"));
  ASSERT_TRUE(value);
  EXPECT_EQ(value->asObject()->size(), 30'000u);
}
