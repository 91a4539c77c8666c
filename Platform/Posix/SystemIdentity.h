#pragma once
// Which system this is, for a report that leaves the machine, and whose, so that the report does not say it.

#include <string>
#include <vector>

namespace korvell {

struct SystemIdentity {
  std::string release; ///< "Debian GNU/Linux 12 (bookworm)"; empty where no file tells it
  std::string kernel;  ///< "Linux 6.1.0-18-amd64 x86_64"

  /// The machine's name, the user's login name and each word of the full name. Empty ones are left out.
  std::vector<std::string> names;
};

SystemIdentity systemIdentity();

} // namespace korvell
