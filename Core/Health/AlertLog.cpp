#include "Core/Health/AlertLog.h"

#include "Base/DatabaseFile.h"
#include "Base/Files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

namespace korvell {

namespace {

constexpr std::size_t largest = 4 << 20;

void tellTo(const AlertLog::Tell& tell, const Trouble& trouble) {
  if (tell) tell(trouble);
}

} // namespace

/// On the queue, but for its making and its end.
struct AlertLog::Writer {
  std::string path;
  Tell tell;
  std::string unwritten; ///< empty when all is written

  void write(std::string bytes) {
    const bool failedBefore = !unwritten.empty();
    const bool written = replaceFile(path, bytes);
    unwritten = written ? std::string() : std::move(bytes);
    if (written == !failedBefore) return;
    if (written) return tellTo(tell, troubleOf("The alerts are kept again.", {}));
    const auto fault = faultOf(path, 0);
    tellTo(tell, troubleOf("The alerts are not kept: {reason}", {{"reason", sentence(fault, path)}},
                           rawValue(fault)));
  }
};

AlertLog::AlertLog(const QueueFactory& makeQueue, const Clock& clock, const std::string& folder, Tell tell)
    : clock_(clock), path_(folder + "/alerts.json"), tell_(std::move(tell)),
      writer_(std::make_unique<Writer>(Writer{path_, tell_, {}})), queue_(makeQueue("Korvell.alerts")) {}

AlertLog::~AlertLog() {
  queue_->sync([this] {
    if (!writer_->unwritten.empty()) writer_->write(writer_->unwritten);
  });
}

std::vector<HealthAlert> AlertLog::load() {
  int error = 0;
  const auto text = readFile(path_, largest, &error);
  auto document = text ? parseJSON(*text) : std::nullopt;
  const auto* list = document ? document->find("alerts") : nullptr;
  if (error == EFBIG) {
    putAside(troubleOf("{path} is too large for a list of alerts.", {{"path", path_}}));
  } else if (!text && error != ENOENT) {
    isLeftAlone_ = true;
    tellTo(tell_,
           troubleOf("{path} can't be read ({reason}). It is left as it is, and new alerts are not kept.",
                     {{"path", path_}, {"reason", std::strerror(error)}}, std::strerror(error)));
  } else if (text && !(list && list->asArray())) {
    putAside(troubleOf(DatabaseFault::damaged, path_));
  }
  if (!list || !list->asArray()) return {};

  // What bears no date stands where it stood: beside the next older one.
  Date older{-std::numeric_limits<double>::infinity()};
  const auto& values = *list->asArray();
  for (auto next = values.rbegin(); next != values.rend(); ++next) { // clang 14 knows no reversed views
    const Value& value = *next;
    HealthAlert alert;
    const bool isUnderstood = fromValue(value, alert);
    const auto* date = value.find("date");
    if (const auto own = date ? date->asDate() : std::nullopt) older = *own;
    entries_.push_back({value, older, isUnderstood ? std::optional(std::move(alert)) : std::nullopt});
  }
  std::ranges::reverse(entries_);
  document_ = std::move(*document);
  std::vector<HealthAlert> alerts;
  for (const auto& entry : entries_)
    if (entry.alert) alerts.push_back(*entry.alert);
  return alerts;
}

void AlertLog::putAside(const Trouble& trouble) {
  const auto place = moveAside(path_, clock_.now());
  isLeftAlone_ = !place;
  tellTo(tell_,
         joined(trouble, place ? troubleOf("It was put aside as {place}; the list of alerts begins anew.",
                                           {{"place", *place}})
                               : troubleOf("It can't be put aside, so it stays and new alerts are not "
                                           "kept.",
                                           {})));
}

void AlertLog::keep(const std::vector<HealthAlert>& alerts) {
  if (isLeftAlone_) return;
  Value list = Value::array();
  std::size_t count = 0;
  const auto add = [&](const Value& value) {
    if (count++ < mostEntries) list.append(value);
  };
  // What is not understood takes its place among the alerts by its date.
  auto entry = entries_.begin();
  const auto addForeign = [&](Date newerThan) {
    for (; entry != entries_.end() && (entry->alert || entry->date >= newerThan); ++entry)
      if (!entry->alert) add(entry->raw);
  };
  for (const auto& alert : alerts) {
    addForeign(alert.date);
    const auto known = std::ranges::find(entries_, std::optional(alert), &Entry::alert);
    add(known != entries_.end() ? known->raw : toldValue(alert));
  }
  addForeign(Date{-std::numeric_limits<double>::infinity()});
  Value document = document_;
  document.set("alerts", std::move(list));
  queue_->async([writer = writer_.get(), text = dumpJSON(document) + "\n"] { writer->write(text); });
}

} // namespace korvell
