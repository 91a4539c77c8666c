#pragma once
// Puts the sampling loop together from the operating system's answers: the same way for the keeper, the
// interface and commands that measure by themselves. Outlives the samplers that it makes.

#include "Base/Queue.h"
#include "Core/AIUsage/AIUsageStore.h"
#include "Core/Loop/Sampler.h"
#include "Core/Machine/Owners.h"
#include "Core/Machine/PrivilegedHelper.h"
#include "Platform/Host.h"

#include <memory>

namespace korvell {

class Assembly {
public:
  Assembly(Host& host, const Clock& clock);

  /// A sampler on a queue of its own. Without a history nothing is recorded. One at a time.
  std::unique_ptr<Sampler> makeSampler(HistoryStore* history);
  /// For commands that need more of the processes than a snapshot has. Null where they can't be read.
  std::unique_ptr<ProcessSampler> makeProcessSampler();
  /// The accounting of what AI coding tools used, which publishes on `main`. Null where logs can't be read.
  std::unique_ptr<AIUsageStore> makeAIUsageStore(Queue& main);
  const TimeZone& zone() const { return *host_.zone; }

private:
  std::unique_ptr<DevServerScanner> makeDevServerScanner() const;

  Host& host_;
  const Clock& clock_;
  std::unique_ptr<OwnerRules> owners_;       ///< this system's
  std::unique_ptr<PrivilegedHelper> helper_; ///< null where there is none
};

} // namespace korvell
