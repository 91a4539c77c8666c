#pragma once
// How long the engines of graphics cards worked, added up over the programs that use them: the only figure of
// drivers that tell none for the whole card (Intel's i915).
//
// Only programs whose open files this user may look at are seen, and a program's share before it was first
// seen does not count. Finding them walks the open files of every process (some 17 microseconds each);
// reading again what was found costs a file each. Times never go back: what a program used stays in the sum
// when it ends.

#include "Platform/Formats/DRMClient.h"
#include "Platform/Linux/FileReader.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace korvell {

class DRMClients {
public:
  struct Sum {
    std::map<std::string, std::uint64_t> engineTime; ///< nanoseconds by kind of engine, since the first look
    std::uint64_t memory = 0;                        ///< bytes that the programs of now hold
  };

  explicit DRMClients(std::string proc) : proc_(std::move(proc)) {}

  /// Looks for programs anew. Milliseconds.
  void find();
  /// By the cards' PCI addresses.
  const std::map<std::string, Sum>& read(FileReader& reader);

private:
  using Identity = std::pair<std::string, std::uint64_t>; ///< card, client

  std::string proc_;
  std::vector<std::string> files_;
  std::map<Identity, DRMClient> clients_; ///< at the last reading
  std::map<std::string, Sum> sums_;
};

} // namespace korvell
