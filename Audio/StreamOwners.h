#pragma once
// To which application a stream belongs: by the same rules as its process, so that everything that a browser
// plays is one application. A process id that a stream claims is believed where its program is that
// process's; a name that it merely claims is believed last. The first that answers decides:
//
//   the process of that id, same program     that process's owner, for sandboxes by their control group
//   the one process that is known by that id in a process-id namespace of its own, same program
//                                            that process's owner
//   the sandbox's word                       the application with that id; any program can say the same
//   application id, application name         the installed application of that id or name
//   program, name                            "proc:" and the program
//
// Lives on the mixer's queue.

#include "Audio/SoundSystem.h"
#include "Core/Machine/Owners.h"

#include <memory>
#include <optional>
#include <vector>

namespace korvell {

/// Questions about single processes, asked when a stream begins. A process that is gone is answered with
/// nothing. On the mixer's queue.
class StreamProcesses {
public:
  virtual ~StreamProcesses() = default;
  virtual std::optional<ProcessFacts> facts(ProcessID pid) = 0;
  virtual ProcessID parent(ProcessID pid) = 0; ///< 0 when unknown
  /// Those that are known by that id inside a process-id namespace of their own; reads every process.
  virtual std::vector<ProcessID> insiders(ProcessID inner) = 0;
};

struct StreamOwner {
  Owner owner;
  ProcessID pid = 0; ///< that it was found by; 0 when none was believed
};

class StreamOwners {
public:
  StreamOwners(std::unique_ptr<OwnerRules> rules, std::unique_ptr<StreamProcesses> processes);
  StreamOwner owner(const SoundStream& stream);

private:
  std::optional<StreamOwner> byProcess(const SoundStream& stream);

  std::unique_ptr<OwnerRules> rules_;
  std::unique_ptr<StreamProcesses> processes_;
};

} // namespace korvell
