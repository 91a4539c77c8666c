#pragma once
// The counters of wired, wireless and cellular links.
//
// An interface counts when hardware stands behind it: that leaves out loopback, bridges, tunnels and the ends
// of container pairs, whose bytes pass a counted link or none. Where no interface has hardware (inside a
// container) the one of the default route counts. What an interface is, is looked up once and again when the
// list of interfaces changes.

#include "Platform/Formats/LinuxDevices.h"
#include "Platform/Linux/FileReader.h"

#include <string>
#include <vector>

namespace korvell {

class NetworkLinks {
public:
  NetworkLinks(const std::string& proc, std::string sys);
  std::vector<InterfaceCounters> counters(FileReader& reader);

private:
  struct Known {
    std::string name;
    std::string displayName;
    bool hardware = false;
  };
  bool isKnown() const;
  void learn();
  std::string defaultInterface(FileReader& reader); ///< of IPv4, else of IPv6; empty without a default route

  KeptFile counters_;
  KeptFile routes_;
  KeptFile routes6_;
  std::string folder_;
  std::vector<NetworkLine> lines_;
  std::vector<Known> known_; ///< in the order of the lines
  bool anyHardware_ = false;
};

} // namespace korvell
