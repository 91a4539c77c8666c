#pragma once
// Asks the person who sits at this process's screen, for other processes of the same user that want to act on
// their word: the keeper hands over
//
//   {"ask":"consent","of":{"do":"NAME", …}}   -> {"ok":true,"consent":"given"}
//
// Whoever asks says what it wants to do, never in which words: the question is the description that this
// process makes of the exact request, so a yes holds for that and nothing else. One question stands at a
// time; a few wait behind it, and more are refused at once. Nobody but the person at the screen can answer:
// there is no message for it. Main queue only.

#include "App/Actions.h"
#include "App/Consent.h"
#include "Base/Lifeline.h"
#include "Base/Queue.h"

#include <functional>
#include <memory>
#include <vector>

namespace korvell {

class ConsentDesk {
public:
  /// How long a person may think.
  static constexpr Seconds patience{300};
  static constexpr std::size_t mostOpen = 4;
  /// Shows a question for as long as what it hands back is kept; null when nothing can be shown. `answered`
  /// is called once at most, later.
  using Screen =
      std::function<std::shared_ptr<void>(const ActionDescription&, std::function<void(bool yes)> answered)>;

  /// Both outlive it.
  ConsentDesk(Queue& main, Actions& actions, Screen screen);
  ConsentDesk(const ConsentDesk&) = delete;
  ConsentDesk& operator=(const ConsentDesk&) = delete;

  /// Answers once, unless what is handed back was dropped before: then the question goes.
  std::shared_ptr<void> ask(const Value& request, std::function<void(const Value&)> answer);

private:
  struct Open;
  void showNext();
  void show(const std::shared_ptr<Open>& open);

  Queue& main_;
  Actions& actions_;
  const Screen screen_;
  std::vector<std::weak_ptr<Open>> open_; ///< in the order in which they were asked
  Lifeline<ConsentDesk> life_{*this};
};

} // namespace korvell
