#include "App/ConsentDesk.h"

#include "App/Keeper.h"
#include "Base/Localization.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

Value consentValue(Consent consent) { return Value::object({{"ok", true}, {"consent", rawValue(consent)}}); }

Result<ActionRequest> requestOf(const Value& asked) {
  const auto* of = asked.find("of");
  return of ? readActionRequest(*of) : Failure{"\"of\" is missing"};
}

} // namespace

struct ConsentDesk::Open {
  Queue& main;
  Lifeline<ConsentDesk>::Watch desk;
  std::function<void(const Value&)> answer;
  std::optional<ActionDescription> description = {}; ///< absent until it is made
  std::unique_ptr<Timer> timer = {};
  std::shared_ptr<void> shown = {};

  Open(Queue& queue, Lifeline<ConsentDesk>::Watch of, std::function<void(const Value&)> told)
      : main(queue), desk(std::move(of)), answer(std::move(told)) {}
  Open(const Open&) = delete;
  Open& operator=(const Open&) = delete;
  ~Open() {
    main.async([watch = desk] {
      if (auto* still = watch.get()) still->showNext();
    });
  }
  void settle(const Value& value) {
    if (const auto tell = std::exchange(answer, {})) tell(value);
  }
};

ConsentDesk::ConsentDesk(Queue& main, Actions& actions, Screen screen)
    : main_(main), actions_(actions), screen_(std::move(screen)) {}

std::shared_ptr<void> ConsentDesk::ask(const Value& request, std::function<void(const Value&)> answer) {
  const auto asked = requestOf(request);
  if (!asked) return answer(refusal(asked.reason())), nullptr;
  std::erase_if(open_, [](const auto& open) { return open.expired(); });
  if (open_.size() >= mostOpen) return answer(refusal("too many questions are open")), nullptr;
  const auto open = std::make_shared<Open>(main_, life_.watch(), std::move(answer));
  open_.push_back(open);
  open->timer = main_.timer([&main = main_, watch = std::weak_ptr(open)] {
    main.async([watch] { // later: the timer ends with the question
      if (const auto still = watch.lock()) still->settle(consentValue(Consent::unanswered));
    });
  });
  open->timer->schedule(patience, Seconds{0}, Seconds{1});
  actions_.describe(
      *asked, [watch = std::weak_ptr(open), desk = life_.watch()](const Result<DescribedAction>& described) {
        const auto still = watch.lock();
        if (!still || !desk.get()) return;
        if (!described) return still->settle(refusal(described.reason()));
        still->description = described->description;
        desk.get()->showNext();
      });
  return open;
}

void ConsentDesk::showNext() {
  std::erase_if(open_, [](const auto& open) { return open.expired(); });
  std::shared_ptr<Open> next;
  for (const auto& each : open_) {
    const auto open = each.lock();
    if (!open) continue;
    if (open->shown) return;
    if (!next && open->description && open->answer) next = open;
  }
  if (next) show(next);
}

void ConsentDesk::show(const std::shared_ptr<Open>& open) {
  const auto answered = [watch = std::weak_ptr(open)](bool yes) {
    if (const auto still = watch.lock())
      still->settle(consentValue(yes ? Consent::given : Consent::declined));
  };
  open->shown = screen_(*open->description, answered);
  if (!open->shown) open->settle(consentValue(Consent::impossible));
}

} // namespace korvell
