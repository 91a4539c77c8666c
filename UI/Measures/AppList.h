#pragma once
// The applications by a measure, as plain values: those of the moment, which unfold to their processes and
// can be quit, or those of a stretch of the past.

#include "App/ActionRequest.h"
#include "App/Model.h"
#include "Core/History/HistoryTypes.h"
#include "Platform/Diagnostics.h"
#include "UI/Kit/BarTableData.h"

#include <set>
#include <string>
#include <vector>

namespace korvell {

/// What the user chose of the list.
struct AppListChoices {
  BarTableData::Column sorted = BarTableData::Column::figure;
  bool isAscending = false;
  std::string filter;             ///< in any case, anywhere in a name
  std::set<std::string> unfolded; ///< keys of applications
  /// Rows in this order first: the pointer is over them, and they must not move away under it.
  std::vector<std::string> settled;
};

/// What the platform says of the figures.
struct AppListFacts {
  std::string trafficNote;             ///< what no figure counts; empty where nothing is left out
  std::vector<SourceReport> sources{}; ///< of the figures; empty until they were examined
};
/// Of a kernel that counts bytes for TCP sockets alone.
std::string tcpOnlyNote();

struct AppList {
  BarTableData table;
  std::string note;             ///< what the figures leave out, or why there are none
  std::string empty;            ///< instead of rows
  bool isThere = true;          ///< false: there is no such list, and the note says why
  bool isUnread = false;        ///< its figures are "–", and the note says why
  bool helperWouldTell = false; ///< what the note says is left out

  bool operator==(const AppList&) const = default;
};

/// At most so many processes of an application; the rest is one row.
inline constexpr std::size_t mostProcesses = 12;

AppList appList(const Model& model, Metric metric, const AppListChoices& choices, const AppListFacts& facts);
inline constexpr std::size_t mostPastApps = 20;
struct PastApps {
  std::vector<AppTotal> totals; ///< the largest first
  bool isOver = true;           ///< false: the stretch may have none yet
};
/// The processes of the past are not kept.
AppList pastAppList(const Model& model, Metric metric, const PastApps& past, const AppListChoices& choices,
                    const AppListFacts& facts);

/// What a row's keys stand for. Nothing for rows that can't be quit, or are gone.
std::optional<QuitRequest> quitRequest(const Model& model, const std::string& key, bool force);
/// The process that a row stands for: its own, or the one that stands for its application. Nothing for rows
/// of the past, and where there is none.
std::optional<ProcessID> processOf(const Model& model, const std::string& key);
/// The row in one line, to be copied.
std::string copiedText(const BarTableData& table, const std::string& key);

} // namespace korvell
