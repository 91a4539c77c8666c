#include "Platform/Host.h"
#include "Tool/Command.h"
#include "Words/Languages.h"

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

namespace {

/// Where the caller closed a standard stream, no file that is opened later may take its place. What is put
/// there refuses to be read or written, so that lost output is still noticed.
void occupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (fcntl(stream, F_GETFD) == -1) open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

/// What the terminal can show; numbers stay in the C locale. A locale that is not installed here, as often
/// over ssh, still names the character set.
void adoptCharacterSet() {
  if (std::setlocale(LC_CTYPE, "")) return;
  for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const char* locale = std::getenv(variable);
    if (!locale || !*locale) continue;
    const std::string_view name(locale);
    const bool isUTF8 = name.find("UTF-8") != name.npos || name.find("utf8") != name.npos;
    if (isUTF8) std::setlocale(LC_CTYPE, "C.UTF-8");
    return;
  }
}

} // namespace

int main(int argc, char** argv) {
  using namespace korvell;
  occupyStandardStreams();
  adoptCharacterSet();
  std::signal(SIGPIPE, SIG_IGN);
  const auto environment = withHome(processEnvironment(), passwordHome);
  if (const auto home = environment("HOME")) setenv("HOME", home->c_str(), 1); // for the programs it starts
  Host host = makeHost(environment);
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto persons = languageFor(host.locale, environment("LANGUAGE").value_or(""));
  setLanguages(languages(speaksToPrograms(arguments) ? "en" : persons, host.words));
  SystemClock clock;
  Terminal out(stdout, environment), err(stderr, environment);
  Context context{host, clock, environment, out, err, stdin};
  context.language = asksForJSON(arguments) ? "en" : persons;
  const int status = runCommandLine(context, allCommands(), arguments);
  out.flush();
  if (const auto loss = out.loss())
    return fail(context, localized("the output could not be written: {reason}", {{"reason", *loss}}));
  return status;
}
