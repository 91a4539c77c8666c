#include "Platform/Host.h"
#include "Tool/Command.h"

#include <clocale>
#include <csignal>

int main(int argc, char** argv) {
  using namespace korvell;
  std::setlocale(LC_CTYPE, ""); // what the terminal can show; numbers stay in the C locale
  std::signal(SIGPIPE, SIG_IGN);
  const auto environment = processEnvironment();
  Host host = makeHost(environment);
  setLocalization(host.words);
  SystemClock clock;
  Terminal out(stdout, environment), err(stderr, environment);
  Context context{host, clock, environment, out, err, stdin};
  const int status = runCommandLine(context, allCommands(), {argv + 1, argv + argc});
  out.flush();
  // Output that could not be written (a full disk behind a redirection) is a failure; a reader that had
  // enough is not.
  return status == exitOK && std::ferror(stdout) ? exitFailed : status;
}
