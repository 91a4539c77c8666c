#include "Agents/RPCMessages.h"

#include "Base/Text.h"

namespace korvell {

namespace {

constexpr std::size_t longestID = 256;

Value envelope() { return Value::object({{"jsonrpc", "2.0"}}); }

bool isID(const Value& id) {
  const auto* text = id.asString();
  return text ? text->size() <= longestID : id.asInt() || id.asUnsigned();
}

RPCFault invalid(const Value& id, const char* why) { return {id, {rpcInvalidRequest, why}}; }

RPCMessage readCall(const Value& message, const std::string& method) {
  const auto *id = message.find("id"), *params = message.find("params");
  if (id && !isID(*id)) return invalid({}, "The id is neither a text nor an integer.");
  const auto given = params ? *params : Value();
  if (!given.isNull() && !given.asObject())
    return RPCFault{id ? *id : Value(), {rpcInvalidParams, "The parameters are no object."}};
  if (!id) return RPCNotification{method, given};
  return RPCRequest{*id, method, given};
}

RPCMessage readAnswer(const Value& message) {
  const auto *id = message.find("id"), *result = message.find("result"), *error = message.find("error");
  const bool isAnswer = id && isID(*id) && (result != nullptr) != (error != nullptr);
  if (!isAnswer)
    return invalid(id && isID(*id) ? *id : Value(), "It is no request, notification or response.");
  return RPCResponse{*id, result ? std::optional(*result) : std::nullopt};
}

} // namespace

RPCMessage readMessage(const Value& message) {
  if (!message.asObject()) return invalid({}, "It is no object.");
  const auto *id = message.find("id"), *version = message.find("jsonrpc"), *method = message.find("method");
  if (!version || *version != Value("2.0"))
    return invalid(id && isID(*id) ? *id : Value(), "\"jsonrpc\" is not \"2.0\".");
  if (!method) return readAnswer(message);
  const auto* name = method->asString();
  return name ? readCall(message, *name) : invalid(id && isID(*id) ? *id : Value(), "The method is no text.");
}

Value rpcResult(const Value& id, Value result) {
  return envelope().set("id", id).set("result", std::move(result));
}

Value rpcFailure(const Value& id, const RPCError& error) {
  auto object = Value::object({{"code", error.code}, {"message", error.message}});
  if (!error.data.isNull()) object.set("data", error.data);
  return envelope().set("id", id).set("error", std::move(object));
}

Value rpcRequest(const Value& id, std::string_view method, Value params) {
  return envelope().set("id", id).set("method", method).set("params", std::move(params));
}

Value rpcNotification(std::string_view method, Value params) {
  return envelope().set("method", method).set("params", std::move(params));
}

void LineBuffer::add(std::string_view bytes, const Take& take) {
  while (!bytes.empty()) {
    const auto length = bytes.find('\n');
    const auto part = bytes.substr(0, length);
    if (!isTooLong_ && line_.size() + part.size() > longest_) isTooLong_ = true;
    if (isTooLong_)
      line_.clear();
    else
      line_.append(part);
    if (length == std::string_view::npos) return;
    bytes.remove_prefix(length + 1);
    end(take);
  }
}

void LineBuffer::end(const Take& take) {
  if (isTooLong_)
    take(std::nullopt);
  else if (const auto line = trimmed(line_); !line.empty())
    take(line);
  line_.clear();
  if (line_.capacity() > longest_ / 4) line_.shrink_to_fit();
  isTooLong_ = false;
}

} // namespace korvell
