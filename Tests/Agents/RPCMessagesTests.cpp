#include "Agents/RPCMessages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::ElementsAre;

TEST(RPCMessagesTests, everyDocumentIsOneOfFourThings) {
  const struct {
    const char* text;
    std::size_t kind; ///< place in the variant
    const char* id;
    int code;
  } rows[] = {
      {R"({"jsonrpc":"2.0","id":1,"method":"ping"})", 0, "1", 0},
      {R"({"jsonrpc":"2.0","id":"a","method":"ping","params":{}})", 0, "\"a\"", 0},
      {R"({"jsonrpc":"2.0","method":"notifications/initialized"})", 1, "", 0},
      {R"({"jsonrpc":"2.0","id":7,"result":{}})", 2, "7", 0},
      {R"({"jsonrpc":"2.0","id":7,"error":{"code":1,"message":"no"}})", 2, "7", 0},
      {R"({"jsonrpc":"2.0","id":7,"result":{},"error":{}})", 3, "7", rpcInvalidRequest},
      {R"({"jsonrpc":"2.0","id":7})", 3, "7", rpcInvalidRequest},
      {R"({"jsonrpc":"1.0","id":7,"method":"ping"})", 3, "7", rpcInvalidRequest},
      {R"({"jsonrpc":"2.0","id":1.5,"method":"ping"})", 3, "null", rpcInvalidRequest},
      {R"({"jsonrpc":"2.0","id":null,"method":"ping"})", 3, "null", rpcInvalidRequest},
      {R"({"jsonrpc":"2.0","id":1,"method":5})", 3, "1", rpcInvalidRequest},
      {R"({"jsonrpc":"2.0","id":1,"method":"ping","params":[1]})", 3, "1", rpcInvalidParams},
      {R"("text")", 3, "null", rpcInvalidRequest},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const auto message = readMessage(*parseJSON(row.text));
    ASSERT_EQ(message.index(), row.kind);
    const Value id = std::visit(
        [](const auto& read) {
          if constexpr (requires { read.id; })
            return read.id;
          else
            return Value();
        },
        message);
    EXPECT_EQ(id.isNull() && !*row.id ? "" : dumpJSON(id), row.id);
    const auto* fault = std::get_if<RPCFault>(&message);
    EXPECT_EQ(fault ? fault->error.code : 0, row.code);
  }
}

TEST(RPCMessagesTests, linesAreBoundedHoweverTheyArrive) {
  std::vector<std::string> lines;
  const auto take = [&](std::optional<std::string_view> line) {
    lines.emplace_back(line.value_or("TOO LONG"));
  };
  LineBuffer buffer(8);
  for (const char* part : {"ab", "c\n\r\n12345678\n", "123456", "789", "0\nde", "f\r\n", "last"})
    buffer.add(part, take);
  buffer.end(take);
  buffer.end(take);
  EXPECT_THAT(lines, ElementsAre("abc", "12345678", "TOO LONG", "def", "last"));
}

} // namespace
} // namespace korvell
