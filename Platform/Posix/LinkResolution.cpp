#include "Platform/Posix/LinkResolution.h"

#include <climits>
#include <unistd.h>

namespace korvell {
namespace {

constexpr int mostLinks = 40; // the kernel's own limit

/// Where a link leads, as it is written in it; empty for whatever is no link.
std::string target(const std::string& path) {
  char text[PATH_MAX];
  const auto length = readlink(path.c_str(), text, sizeof text);
  return length > 0 && std::size_t(length) < sizeof text ? std::string(text, std::size_t(length))
                                                         : std::string();
}

} // namespace

std::string linksResolved(const std::string& path, const BlockingPlaces& blocking) {
  if (!path.starts_with('/')) return path;
  std::string done; // without links; empty for the root
  std::string rest = path;
  for (int links = 0; !rest.empty();) {
    const auto slash = rest.find('/');
    const auto part = rest.substr(0, slash);
    rest = slash == rest.npos ? "" : rest.substr(slash + 1);
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      done.resize(done.empty() ? 0 : done.rfind('/'));
      continue;
    }
    done += '/' + part;
    if (blocking.hold(done)) return rest.empty() ? done : done + '/' + rest;
    const auto leads = target(done);
    if (leads.empty()) continue;
    if (++links > mostLinks) return path;
    done.resize(leads.starts_with('/') ? 0 : done.rfind('/'));
    rest = rest.empty() ? leads : leads + '/' + rest;
  }
  return done.empty() ? "/" : done;
}

} // namespace korvell
