#include "App/StorageActions.h"

#include "App/ActionTexts.h"
#include "Base/Format.h"
#include "Base/LaterSpeech.h"

#include <algorithm>

namespace korvell {

namespace {

std::vector<StorageKind> kindsOf(const ScanStorageRequest& request) {
  auto kinds = allStorageKinds();
  if (request.kinds)
    std::erase_if(kinds, [&](StorageKind kind) {
      return std::ranges::find(*request.kinds, kind) == request.kinds->end();
    });
  return kinds;
}

std::string found(const StorageScanResult& result) {
  return result.categories.empty() ? localized("Nothing to clean")
                                   : localized("{size} can be freed.",
                                               {{"size", Format::bytes(double(result.reclaimableBytes()))}});
}

/// Why the items can't be cleaned; empty when they can.
std::string refusal(const StorageScanner& scanner, const CleanStorageRequest& request) {
  const auto& result = *scanner.result;
  const auto gone = localized("What was found is out of date. Scan again.");
  if (!result || request.items.empty()) return gone;
  // Compared as they are told: a text has no more than milliseconds.
  if (request.scanned && rfc3339(*request.scanned) != rfc3339(result->date)) return gone;
  std::size_t known = 0;
  for (const auto& category : result->categories)
    for (const auto& item : category.items) {
      if (std::ranges::find(request.items, item.id) == request.items.end()) continue;
      ++known;
      if (scanner.working->contains(item.kind))
        return localized("{kind} is being cleaned.", {{"kind", title(item.kind)}});
    }
  return known < request.items.size() ? gone : "";
}

} // namespace

void StorageActions::describe(const ScanStorageRequest& request, const Actions::Described& done) {
  done(DescribedAction{
      request,
      {.title = localized("Measure what can be freed?"),
       .message = localized("Measures caches, old dependencies and downloads. Nothing is removed "
                            "before you choose."),
       .button = localized("Scan"),
       .isHarmless = true}});
}

void StorageActions::perform(const ScanStorageRequest& request, Actions::Performed done) {
  auto& scanner = scanner_();
  auto told = inThisLanguage([&scanner, done = std::move(done)](bool isResult) {
    if (!isResult) return done(ActionAnswer::refused(localized("The scan was interrupted.")));
    const auto& result = **scanner.result;
    done({.worked = true, .message = found(result), .json = toValue(result)});
  });
  const InLanguage own(ownLanguage());
  scanner.scan(kindsOf(request), std::move(told));
}

void StorageActions::ask(const CleanStorageRequest& request,
                         std::function<void(const Result<Question>&)> done) {
  auto& scanner = scanner_();
  if (auto why = refusal(scanner, request); !why.empty()) return done(Failure{std::move(why)});
  if (!questions_) questions_ = makeQueue_("Korvell.questions");
  auto told = inThisLanguage(std::move(done));
  questions_->async(
      inThisLanguage([&main = main_, watch = life_.watch(), work = scanner.work(), result = **scanner.result,
                      items = request.items, told = std::move(told)] {
        Question question{PendingCleanup::of(result, items, work->home()), result.date, {}};
        std::vector<std::string> steps;
        for (const auto& step : CleanupPlan::of(result, question.pending.items).steps)
          std::ranges::move(work->preview(step.action, step.items), std::back_inserter(steps));
        question.description = describeCleanup(question.pending, std::move(steps));
        main.async([watch, told, question = std::move(question)] {
          if (watch.get()) told(question);
        });
      }));
}

void StorageActions::describe(const CleanStorageRequest& request, Actions::Described done) {
  ask(request, [request, done = std::move(done)](const Result<Question>& question) {
    if (!question) return done(Failure{question.reason()});
    auto exact = request;
    exact.scanned = question->scanned;
    done(DescribedAction{std::move(exact), question->description});
  });
}

void StorageActions::perform(const CleanStorageRequest& request, Actions::Performed done) {
  if (!request.scanned)
    return done(ActionAnswer::refused(localized("What was found is out of date. Scan again.")));
  ask(request, [this, request, interruptions = scanner_().interruptions(),
                done = std::move(done)](const Result<Question>& question) {
    if (!question) return done(ActionAnswer::refused(question.reason()));
    if (scanner_().interruptions() != interruptions)
      return done(ActionAnswer::refused(localized("Interrupted before anything was freed.")));
    // Meanwhile a scan may have begun, or another clean-up.
    if (auto why = refusal(scanner_(), request); !why.empty())
      return done(ActionAnswer::refused(std::move(why)));
    clean(question->pending, question->description, done);
  });
}

void StorageActions::clean(const PendingCleanup& pending, const ActionDescription& asked,
                           Actions::Performed done) {
  auto told = inThisLanguage([asked, done = std::move(done)](const CleanupReport& report) {
    ActionAnswer answer{.worked = report.worked(), .message = report.feedback, .problems = report.problems};
    answer.json = cleanupValue(asked);
    answer.json.set("dryRun", false)
        .set("freed", Value::object({{"moved", report.freed.moved},
                                     {"emptied", report.freed.emptied},
                                     {"commands", report.freed.commands}}))
        .set("feedback", report.feedback)
        .set("problems", toValue(report.problems))
        .set("interrupted", report.interrupted);
    done(answer);
  });
  const InLanguage own(ownLanguage());
  scanner_().clean(pending.items, std::move(told));
}

} // namespace korvell
