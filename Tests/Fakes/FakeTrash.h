#pragma once
// A Trash that only notes what was moved; paths in `refused` stay where they are, for the reason given there.

#include "Platform/Trash.h"

#include <map>

namespace korvell {

class FakeTrash final : public Trash {
public:
  std::map<std::string, std::string> refused;
  std::vector<std::string> moved;
  std::vector<TrashRequest> requests; ///< all, in order
  std::vector<TrashFolder> present;

  std::vector<Outcome> move(const std::vector<TrashRequest>& asked) override {
    std::vector<Outcome> outcomes;
    for (const auto& request : asked) {
      requests.push_back(request);
      const auto refusal = refused.find(request.path);
      if (refusal == refused.end()) moved.push_back(request.path);
      outcomes.push_back(refusal == refused.end() ? success() : Outcome(Failure{refusal->second}));
    }
    return outcomes;
  }
  std::vector<TrashFolder> folders() override { return present; }
};

} // namespace korvell
