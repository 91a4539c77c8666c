#pragma once
// The model's values by the names under which processes tell them to each other.

#include "App/AppModel.h"
#include "Base/Value.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// The versions of the parts that somebody was told, in the order of the parts; empty at first.
using ToldVersions = std::vector<std::uint64_t>;

/// Parts of a state: all of them, or some.
class PartSelection {
public:
  /// Of a request: the names in "parts"; without it all but "machine", which is the snapshot without its
  /// applications.
  static PartSelection of(const Value& request);

  /// {"hasSample":…} and the selected parts, each as the model has it.
  Value state(const AppModel& model) const;
  /// The same of the parts that are new since `told`, which is brought up to date. The live series are left
  /// out: whoever has them extends them by the snapshot.
  Value changes(const AppModel& model, ToldVersions& told) const;

private:
  std::vector<bool> wanted_;
};

/// Takes from a state what it has and can be read.
void readState(const Value& state, Model& model, Publication& publication);

} // namespace korvell
