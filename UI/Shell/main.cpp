// korvell-app: the application with its tray item, panel and window.
//
// usage: korvell-app [--help|--version] [URL...]

#include "App/LanguageChoice.h"
#include "App/RunningApplication.h"
#include "Base/Localization.h"
#include "Shared/StartArguments.h"
#include "UI/Desktop/DesktopClock.h"
#include "UI/Kit/Spoken.h"
#include "UI/Kit/Text.h"
#include "UI/Shell/Application.h"
#include "UI/Shell/Instants.h"
#include "UI/Shell/KorvellApp.h"
#include "UI/Shell/Speech.h"

#include <QMessageBox>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace korvell;

/// For another start of the same moment to answer.
constexpr Seconds patience{10};

/// By which the desktop knows who asked for a window.
std::string activationToken(const Environment& environment) {
  for (const auto* variable : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"})
    if (const auto token = environment(variable)) return *token;
  return {};
}

} // namespace

int main(int argc, char** argv) {
  std::signal(SIGPIPE, SIG_IGN);
  const auto environment = withHome(processEnvironment(), passwordHome);
  if (const auto home = environment("HOME")) setenv("HOME", home->c_str(), 1); // for the programs it starts
  Host host = makeHost(environment);
  setLanguages(
      languages(languageCode(*host.defaults, host.locale, environment("LANGUAGE").value_or("")), host.words));
  const auto arguments = StartArguments::of(std::span(argv + 1, argv + argc));
  if (const auto answer =
          startAnswer(arguments, "korvell-app", KORVELL_VERSION,
                      localized("Korvell with its tray item, panel and window."), "[URL]...")) {
    std::fputs(answer->text.c_str(), answer->exitStatus ? stderr : stdout);
    return answer->exitStatus;
  }
  const OpenRequest request{.urls = arguments.addresses, .activation = activationToken(environment)};
  auto launched = launch(host.folders, request, patience);
  if (!launched.lock && launched.trouble.empty()) return EXIT_SUCCESS; // the one that runs has shown itself

  QGuiApplication::setDesktopFileName("korvell");
  QApplication::setQuitOnLastWindowClosed(false);
  Application application(argc, argv);
  // Qt takes over the locale of the environment. Numbers that libraries and drivers read stay those of "C".
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("Korvell");
  speakToolkit();
  setHourCycle(desktopHourCycle());
  installSpoken();
  const auto instants = Instants::areWanted() ? std::make_unique<Instants>() : nullptr;
  if (!launched.lock) {
    QMessageBox::warning(nullptr, "Korvell", text(launched.trouble));
    return EXIT_FAILURE;
  }
  const SystemClock clock;
  KorvellApp korvell(host, clock, std::move(launched), application.taskRunner());
  return application.exitStatus(korvell.run(request));
}
