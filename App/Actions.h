#pragma once
// Everything that is done on the user's word, behind one door: the same for the interface, for commands and
// for programs, whether this process does it (ModelActions) or a running keeper (KeeperActions).
//
// What is told is told in the language that is in effect on the thread that asks.
//
// Main queue only; `done` is called once, on the main queue, and not any more once the object has ended.
// Whoever asks a person describes first, shows that description, and performs the request that came with it.

#include "App/ActionRequest.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvell {

/// What a dialog or a terminal asks the person, localised.
struct ActionDescription {
  std::string title;                  ///< "Quit Editor?"
  std::string message;                ///< sentences; paragraphs have an empty line in between
  std::vector<std::string> details;   ///< what it touches, one each: processes with their ids, servers, paths
  std::string button;                 ///< "Force Quit"
  bool isPermanent = false;           ///< what is lost can't be put back
  bool isHarmless = false;            ///< nothing that anybody need be asked about
  std::optional<std::uint64_t> bytes; ///< memory or room on the disk that it gives back, where that is known
  /// The records that it is about, as the commands print them: {"items":[…]}, {"server":{…}}; an object.
  Value about = Value::object();

  bool operator==(const ActionDescription&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"title", &ActionDescription::title},
                      Field{"message", &ActionDescription::message},
                      Field{"details", &ActionDescription::details},
                      Field{"button", &ActionDescription::button},
                      Field{"isPermanent", &ActionDescription::isPermanent},
                      Field{"isHarmless", &ActionDescription::isHarmless},
                      Field{"bytes", &ActionDescription::bytes, Unit::bytes},
                      Field{"about", &ActionDescription::about}};
  }
};

struct DescribedAction {
  ActionRequest request; ///< exact: what perform() is to be given
  ActionDescription description;
};

/// What became of it.
struct ActionAnswer {
  bool worked = false;
  std::string message = {};               ///< in a sentence or two, localised; why not, when it did not work
  std::vector<std::string> problems = {}; ///< what else there is to say, a sentence each
  Value json = Value::object();           ///< what the command prints as JSON; empty when it was refused
  bool isKnown = true; ///< false: it may have been begun, and nobody tells what became of it

  static ActionAnswer refused(std::string why) { return {false, std::move(why)}; }
  bool operator==(const ActionAnswer&) const = default;
};

class Actions {
public:
  virtual ~Actions() = default;
  /// What would be done, without doing it; a failure says why it can't be done.
  using Described = std::function<void(const Result<DescribedAction>&)>;
  virtual void describe(const ActionRequest& request, Described done) = 0;
  /// An exact request: a vague one is refused. Answers when the published lists show what has changed, but
  /// for applications, which take their time to quit.
  using Performed = std::function<void(const ActionAnswer&)>;
  virtual void perform(const ActionRequest& request, Performed done) = 0;
};

} // namespace korvell
