#include "App/ErrorLog.h"

#include "Base/DatabaseFile.h"
#include "Base/Files.h"
#include "Base/UserFolders.h"

#include <cerrno>
#include <utility>

namespace korvell {

namespace {

constexpr std::size_t largest = 1 << 20;

std::string pathIn(const std::string& folder) { return folder + "/errors.json"; }

struct ReadErrors {
  std::optional<std::vector<LoggedError>> errors;
  bool isStrange = false; ///< there is a file, and it holds something else
};

ReadErrors readErrors(const std::string& folder) {
  int error = 0;
  const auto text = readFile(pathIn(folder), largest, &error);
  if (!text && error == ENOENT) return {std::vector<LoggedError>{}};
  if (!text) return {std::nullopt, error == EFBIG};
  const auto document = parseJSON(*text);
  const auto* list = document ? document->find("errors") : nullptr;
  if (std::vector<LoggedError> errors; list && fromValue(*list, errors)) return {std::move(errors)};
  return {std::nullopt, true};
}

void append(const std::string& folder, LoggedError error) {
  auto [known, isStrange] = readErrors(folder);
  if (isStrange && !moveAside(pathIn(folder), error.date)) return;
  if (!known && !isStrange) return;
  auto errors = std::move(known).value_or(std::vector<LoggedError>{});
  if (!errors.empty() && errors.back().text == error.text && errors.back().version == error.version) {
    error.count = errors.back().count + 1;
    errors.pop_back();
  }
  errors.push_back(std::move(error));
  if (errors.size() > ErrorLog::mostEntries)
    errors.erase(errors.begin(), errors.end() - std::ptrdiff_t(ErrorLog::mostEntries));
  const auto document = Value::object({{"errors", toValue(errors)}});
  // What keeps it from being written is told where it matters: by the databases.
  if (ensurePrivateFolder(folder))
    std::ignore = replaceFile(pathIn(folder), dumpJSON(document) + "\n", Readers::owner, Flush::none);
}

} // namespace

ErrorLog::ErrorLog(QueueFactory makeQueue, const Clock& clock, const std::string& folder, std::string version)
    : makeQueue_(std::move(makeQueue)), clock_(clock), folder_(folder), version_(std::move(version)) {}

ErrorLog::~ErrorLog() {
  if (queue_) queue_->sync([] {});
}

void ErrorLog::add(const Trouble& trouble) {
  if (!queue_) queue_ = makeQueue_("Korvell.errors");
  queue_->async([folder = folder_, error = LoggedError{clock_.now(), version_, trouble.nameless}] {
    append(folder, error);
  });
}

std::optional<std::vector<LoggedError>> ErrorLog::read(const std::string& folder) {
  return readErrors(folder).errors;
}

} // namespace korvell
