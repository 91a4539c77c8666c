#pragma once
// A tool that programs may call: described as data, run on the main queue. What it answers is an object that
// fits its output schema; the server cleans every text in it.

#include "App/ActionRequest.h"
#include "App/Consent.h"
#include "Base/Cancellation.h"
#include "Base/Value.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct ToolAnswer {
  Value content = {};        ///< an object; null when there is only a sentence
  std::string sentence = {}; ///< why there is no content, for whoever called
  bool isError = false;

  static ToolAnswer failed(std::string why) { return {.sentence = std::move(why), .isError = true}; }
};

/// What a person is asked before something is done.
struct AgentQuestion {
  std::string title;
  std::string message;
  std::vector<std::string> details; ///< what it touches, one each
  std::string button;
  std::optional<ActionRequest> request = {}; ///< exact: what it is about, for who asks in words of its own
};

/// How far something is; `message` is a sentence of ours about what is under way.
struct Progress {
  double done = 0, total = 1;
  std::string message;
};

/// One call, from its request to its answer. Main queue only.
class ToolCall {
public:
  virtual ~ToolCall() = default;
  virtual const Value& arguments() const = 0;
  /// Cancelled when nobody waits for the answer any more.
  virtual const Cancellation& cancellation() const = 0;
  /// Tells the client, if it wants to know; it hears no more than once a second.
  virtual void tell(const Progress& progress) = 0;
  /// Asks the person who uses the calling program, or else whoever sits at the desktop. `about` is what the
  /// answer shall hold for: an answer to anything else is none. `answered` may never be called: a client of
  /// the stateless revisions makes the call again, with the answer, and the tool begins anew.
  virtual void ask(const AgentQuestion& question, const std::string& about,
                   std::function<void(Consent)> answered) = 0;
};

struct Tool {
  std::string name, title, description; ///< English, without anything that was measured
  Value input, output;                  ///< schemas of objects
  bool isReadOnly = true;
  bool isIdempotent = true;
  using Done = std::function<void(ToolAnswer)>;
  /// `done` is called once at most, on the main queue.
  std::function<void(const std::shared_ptr<ToolCall>& call, Done done)> run;
};

} // namespace korvell
