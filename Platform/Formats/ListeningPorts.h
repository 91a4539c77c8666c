#pragma once
// The listening TCP sockets of each process, as `lsof -nP -iTCP -sTCP:LISTEN -F pn` prints them: a line "p"
// with the process id, then a line "n" with an address for each socket ("n127.0.0.1:5432", "n[::1]:5432",
// "n*:3000"). Some versions print more fields; lines with another first letter mean nothing here.

#include "Base/Shell.h"
#include "Platform/ProcessTable.h"

#include <string_view>

namespace korvell {

/// Each port once, ascending (it is listed once for IPv4 and once for IPv6). Lines that do not parse are
/// skipped; addresses below a process line that does not parse belong to nobody.
PortsByPID parseListeningPorts(std::string_view listing);

/// Asks lsof, for at most 4 seconds. Empty when it fails or takes longer.
PortsByPID readListeningPorts(const CommandRunner& run);

/// Of what `netstat -an -p tcp` prints, which names the sockets of all users and nobody who holds them:
/// "tcp46  0  0  *.8080  *.*  LISTEN".
bool isListenedOn(std::string_view listing, int port);

/// Asks netstat, for at most 4 seconds. Nothing when it fails or takes longer.
std::optional<bool> askWhetherListenedOn(const CommandRunner& run, int port);

} // namespace korvell
