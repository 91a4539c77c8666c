#pragma once
// JSON-RPC 2.0 as programs exchange it over pipes: one JSON document a line, UTF-8. Whatever arrives is
// answered in kind; nothing that a line holds ends the reader.

#include "Base/Value.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace korvell {

/// The codes of JSON-RPC itself.
enum RPCCode {
  rpcParseError = -32700,
  rpcInvalidRequest = -32600,
  rpcMethodNotFound = -32601,
  rpcInvalidParams = -32602,
  rpcInternalError = -32603,
};

struct RPCError {
  int code = rpcInternalError;
  std::string message; ///< a short English sentence: programs read it, and developers
  Value data = {};     ///< null: none
};

/// Wants an answer.
struct RPCRequest {
  Value id; ///< a text or an integer; it goes back as it came
  std::string method;
  Value params; ///< an object; null without
};

/// Wants none.
struct RPCNotification {
  std::string method;
  Value params;
};

/// The answer to a request of ours.
struct RPCResponse {
  Value id;
  std::optional<Value> result; ///< absent: it failed
};

/// Something that is none of these.
struct RPCFault {
  Value id; ///< null where none can be told
  RPCError error;
};

using RPCMessage = std::variant<RPCRequest, RPCNotification, RPCResponse, RPCFault>;

RPCMessage readMessage(const Value& message);

Value rpcResult(const Value& id, Value result);
Value rpcFailure(const Value& id, const RPCError& error);
Value rpcRequest(const Value& id, std::string_view method, Value params);
Value rpcNotification(std::string_view method, Value params);

/// Cuts what comes out of a pipe into lines. A line that is too long is dropped as it comes in, so that no
/// sender decides how much memory it takes.
class LineBuffer {
public:
  explicit LineBuffer(std::size_t longest) : longest_(longest) {}

  /// Hands over each complete line without its end; nothing in place of one that was too long. Blank lines
  /// are passed over.
  using Take = std::function<void(std::optional<std::string_view> line)>;
  void add(std::string_view bytes, const Take& take);
  /// Nothing more comes: what is left is a line, unless it is blank.
  void end(const Take& take);

private:
  const std::size_t longest_;
  std::string line_;
  bool isTooLong_ = false;
};

} // namespace korvell
