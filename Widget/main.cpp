// korvell-widget: the desktop widget. Reads the document that Korvell writes and measures nothing.

#include "Base/Localization.h"
#include "Platform/Posix/PlacedWidget.h"
#include "Platform/WidgetLoginItem.h"
#include "Shared/HelpPages.h"
#include "Shared/StartArguments.h"
#include "UI/Desktop/DesktopClock.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Spoken.h"
#include "UI/Kit/Text.h"
#include "UI/Kit/Type.h"
#include "Widget/WidgetWindow.h"
#include "Words/Languages.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QFontInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QToolTip>
#include <QUrl>

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace korvell;

/// The one beside this program, else the one that a terminal would start; empty without any.
QString applicationProgram() {
  const auto beside = QApplication::applicationDirPath() + "/korvell-app";
  return QFileInfo(beside).isExecutable() ? beside : QStandardPaths::findExecutable("korvell-app");
}

/// A second start of the application hands the link to the first.
void open(const std::string& link) {
  const auto program = applicationProgram();
  const auto arguments = link.empty() ? QStringList() : QStringList{text(link)};
  if (program.isEmpty() || !QProcess::startDetached(program, arguments))
    QToolTip::showText(QCursor::pos(), text(localized("Korvell's application can't be started.")));
}

std::string_view languageOf(const Environment& environment) {
  std::string locale;
  for (const auto* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (locale.empty()) locale = environment(variable).value_or("");
  return languageFor(locale, environment("LANGUAGE").value_or(""));
}

Look lookOf(const DesktopWishes& wishes) {
  const QFontInfo desktop(QApplication::font());
  return {.appearance = wishes.appearance,
          .highContrast = wishes.highContrast,
          .reducedMotion = wishes.reducedMotion,
          .textScale = textScaleOf(desktop.pixelSize()),
          .family = systemFamily()};
}

} // namespace

int main(int argc, char** argv) {
  const auto environment = withHome(processEnvironment(), passwordHome);
  setLanguages(languages(languageOf(environment)));
  if (const auto answer =
          startAnswer(StartArguments::of(std::span(argv + 1, argv + argc)), "korvell-widget", KORVELL_VERSION,
                      localized("The desktop widget, which shows what a running Korvell measures."), "")) {
    std::fputs(answer->text.c_str(), answer->exitStatus ? stderr : stdout);
    return answer->exitStatus;
  }
  const auto folders = linuxUserFolders(environment);
  const auto say = [](const std::string& sentence) {
    std::fprintf(stderr, "korvell-widget: %s\n", sentence.c_str());
  };
  if (!ensurePrivateFolder(folders.data)) {
    say(localized("{path} can't be written.", {{"path", folders.data}}));
    return EXIT_FAILURE;
  }
  // Two widgets would fight over one place. A start beside one that is there is no fault.
  const auto lockPath = folders.data + "/widget.lock";
  bool isPlaced = false;
  const auto only = FileLock::acquire(lockPath, Seconds(0), &isPlaced);
  if (!only && isPlaced) {
    say(localized("The widget is placed already."));
    return EXIT_SUCCESS;
  }
  if (!only) {
    say(localized("{path} can't be locked.", {{"path", lockPath}}));
    return EXIT_FAILURE;
  }
  QGuiApplication::setDesktopFileName("korvell-widget");
  QApplication application(argc, argv);
  // Qt takes over the locale of the environment. Numbers that libraries and drivers read stay those of "C".
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("Korvell");
  installSpoken();
  setHourCycle(desktopHourCycle());
  const auto placed = PlacedWidget::place(placedWidgetsFolder(folders));
  if (!placed) // what there is can still be shown
    say(localized("{path} can't be written: Korvell does not learn of this widget.",
                  {{"path", placedWidgetsFolder(folders)}}));

  Theme theme(lookOf(DesktopLook::fromPalette()));
  setTooltipLook(theme);
  const DesktopLook look([&theme](const DesktopWishes& wishes) {
    theme.set(lookOf(wishes));
    setTooltipLook(theme);
  });
  const SystemClock clock;
  const SystemTimeZone zone;
  WidgetFeed feed(folders, clock, zone);
  const auto loginItem = makeWidgetLoginItem(folders, utf8(QApplication::applicationFilePath()));
  std::function<void()> openHelp;
  if (const auto page = HelpPages(utf8(QApplication::applicationFilePath())).page(HelpPages::widget))
    openHelp = [page] { QDesktopServices::openUrl(QUrl::fromLocalFile(text(*page))); };
  WidgetWindow window({folders, theme, feed, *loginItem, openHelp}, open);
  window.show();
  return QApplication::exec();
}
