#pragma once
// What the keeper does for other processes, on a line each: the requests of ActionRequest.h,
//
//   {"describe":"NAME", …}   -> {"ok":true,"request":{"do":"NAME", …},"description":{…}}
//   {"do":"NAME", …}         -> {"ok":true,"sentence":"…","notes":["…"], …}
//
// with what else there is to say and the members that the command prints as JSON behind the sentence. "ok" is
// false when it did not work; what is refused answers {"ok":false,"error":"…"}. "do" takes exact requests, as
// describing hands them back.

#include "App/Actions.h"

#include <functional>
#include <optional>

namespace korvell {

/// The member of a request with the code of the language that who asks reads.
inline constexpr std::string_view languageName = "language";

/// True for a request that carryOut() answers, be it only by refusing it.
bool isActionRequest(const Value& request);
/// Answers once, on the main queue.
void carryOut(Actions& actions, const Value& request, std::function<void(const Value&)> answer);

/// The answer as the other process reads it; nothing when it is none.
Result<DescribedAction> readDescribed(const Value& answer);
ActionAnswer readAnswer(const Value& answer);

} // namespace korvell
