#include "UI/Shell/Speech.h"

#include "Base/Localization.h"
#include "UI/Kit/Text.h"

#include <QApplication>
#include <QLibraryInfo>
#include <QTranslator>

#include <algorithm>

namespace korvell {

void speakToolkit() {
  delete qApp->findChild<QTranslator*>(); // of the language before
  auto* translator = new QTranslator(qApp);
  const auto name = "qtbase_" + text(currentLanguage().code);
  if (translator->load(name, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
    QApplication::installTranslator(translator);
}

void speakAnew(Model& model) {
  auto report = *model.report;
  auto alerts = *model.alerts;
  std::ranges::for_each(report.insights, speakHere<Insight>);
  std::ranges::for_each(alerts, speakHere<HealthAlert>);
  Publication publication;
  publication.set(model.report, std::move(report));
  publication.set(model.alerts, std::move(alerts));
}

} // namespace korvell
