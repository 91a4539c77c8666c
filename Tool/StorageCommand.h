#pragma once
// What the subcommands of `korvell storage` share.

#include "Core/Storage/StorageModels.h"
#include "Tool/CommandActions.h"

#include <optional>
#include <vector>

namespace korvell {

/// --kind with the raw values of all kinds.
Option storageKindOption(std::string help, bool required);
/// The kinds that were asked for, in their order and each once; all without any.
std::vector<StorageKind> storageKinds(const Arguments& arguments);

/// Measures the kinds with a progress bar on standard error. Nothing when a signal interrupted it, which is
/// said.
std::optional<StorageScanResult> measureStorage(Context& context, CommandActions& actions,
                                                const std::vector<StorageKind>& kinds);

/// An item's id as the list of items shows it.
std::string shownItem(const std::string& id, const std::string& home);

int runStorageClean(Context& context, const Arguments& arguments);

} // namespace korvell
