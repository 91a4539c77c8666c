#include "UI/Shell/Errands.h"

#include "Base/Localization.h"
#include "UI/Storage/CleanupQuestion.h"

namespace korvell {

namespace {

constexpr std::size_t mostDetails = 6;

bool isCleanup(const ActionRequest& request) { return std::holds_alternative<CleanStorageRequest>(request); }

} // namespace

Question questionOf(const ActionDescription& description) {
  Question question{.title = description.title,
                    .passages = {{.text = description.message}},
                    .action = description.button,
                    .permanent = description.isPermanent};
  auto& passage = question.passages.front();
  const auto& details = description.details;
  const auto shown = details.size() > mostDetails ? mostDetails - 1 : details.size();
  passage.well.assign(details.begin(), details.begin() + std::ptrdiff_t(shown));
  if (shown < details.size())
    passage.more = localized("and {count} more", {{"count", std::to_string(details.size() - shown)}});
  return question;
}

void Errands::run(const ActionRequest& request, QWidget& window, Banner& banner) {
  banner.dismiss();
  const QPointer<QWidget> asked(&window);
  const QPointer<Banner> told(&banner);
  actions_.describe(request, [this, asked, told](const Result<DescribedAction>& action) {
    if (!asked) return;
    if (action) return ask(*action, *asked, told);
    if (told) told->say(Tone::warning, action.reason());
  });
}

void Errands::ask(const DescribedAction& action, QWidget& window, QPointer<Banner> banner) {
  if (action.description.isHarmless) return perform(action.request, std::move(banner));
  const auto question =
      isCleanup(action.request) ? cleanupQuestion(action.description) : questionOf(action.description);
  Dialog::ask(theme_, question, window,
              [this, request = action.request, banner = std::move(banner)](bool yes) {
                if (yes) perform(request, banner);
              });
}

void Errands::perform(const ActionRequest& request, QPointer<Banner> banner) {
  // What a clean-up freed stands below the list of its page.
  const bool isToldElsewhere = isCleanup(request);
  actions_.perform(request, [banner = std::move(banner), isToldElsewhere](const ActionAnswer& answer) {
    if (!banner) return;
    std::string rest;
    for (const auto& problem : answer.problems) rest += (rest.empty() ? "" : "\n") + problem;
    if (!answer.worked || !rest.empty()) return banner->say(Tone::warning, answer.message, rest);
    if (!answer.message.empty() && !isToldElsewhere) banner->say(Tone::good, answer.message);
  });
}

} // namespace korvell
