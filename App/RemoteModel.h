#pragma once
// The model of a keeper in another process: the same published values, as the keeper's subscription tells
// them cycle by cycle. What the AI usage comes to is asked for by itself.
//
// Main queue only; a thread of its own waits for the lines and reads their JSON.

#include "App/Model.h"
#include "Base/Lifeline.h"
#include "Base/UserFolders.h"

#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace korvell {

class KeeperClient;

/// What a remote model is to be told; its other values stay as they were made.
struct RemoteInterest {
  std::vector<std::string> parts; ///< empty: all
  bool isWatching = true;         ///< the keeper goes at the fast pace
};

class RemoteModel final : public Model {
public:
  /// Waits for the keeper's first answer. Null when none came within the patience, the keeper has no sample
  /// yet, or it is of another version and does not know one of the parts. `lost` is called on the main queue
  /// when the keeper has gone or is silent for half a minute; the values stay as they were.
  static std::unique_ptr<RemoteModel> connect(Queue& main, const UserDefaults& defaults,
                                              const UserFolders& folders, Seconds patience, Task lost,
                                              const RemoteInterest& interest = {});
  ~RemoteModel() override;

private:
  RemoteModel(Queue& main, const UserDefaults& defaults, KeeperClient client, const Value& state, Task lost);
  void apply(const Value& state);

  Lifeline<RemoteModel> life_{*this};
  std::shared_ptr<KeeperClient> client_; ///< shared with the thread, which alone reads
  std::thread thread_;
};

} // namespace korvell
