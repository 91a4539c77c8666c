// korvell-gallery FOLDER [NAME] [--language CODE]: renders every view, or those whose names begin so, into
// pictures without a display and checks what it rendered. CODE is a language's, or "mirrored": made up,
// written in Hebrew letters from the right, with every figure where it belongs. Exits with 1 and a list when
// something is wrong.

#include "Platform/Formats/LinuxWords.h"
#include "UI/Gallery/Check.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Spoken.h"
#include "UI/Kit/Text.h"
#include "Words/German/Tables.h"
#include "Words/Languages.h"

#include <fmt/format.h>

#include <QApplication>
#include <QDir>
#include <QPixmap>
#include <QProcess>

#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <set>

namespace korvell {
namespace {

constexpr std::string_view mirroredCode = "mirrored";
constexpr const char* scaleVariable = "QT_SCALE_FACTOR";

struct Variant {
  Look look;
  Qt::LayoutDirection direction;
  std::string name;
};

std::vector<Variant> variants() {
  auto percent = qEnvironmentVariableIsSet(scaleVariable) ? "200" : "100";
  std::vector<Variant> all;
  for (auto appearance : {Appearance::light, Appearance::dark})
    for (auto direction : {Qt::LeftToRight, Qt::RightToLeft})
      all.push_back({{.appearance = appearance, .reducedMotion = true},
                     direction,
                     fmt::format("{}{}-{}", appearance == Appearance::dark ? "dark" : "light",
                                 direction == Qt::RightToLeft ? "-rtl" : "", percent)});
  // What only some people see: once each, to be checked more than to be looked at.
  all.push_back(
      {{.highContrast = true, .reducedMotion = true}, Qt::LeftToRight, fmt::format("contrast-{}", percent)});
  all.push_back(
      {{.reducedMotion = true, .textScale = 1.4}, Qt::LeftToRight, fmt::format("large-{}", percent)});
  return all;
}

bool isBlank(const QImage& picture) {
  auto first = picture.pixel(0, 0);
  for (int y = 0; y < picture.height(); ++y)
    for (int x = 0; x < picture.width(); ++x)
      if (picture.pixel(x, y) != first) return false;
  return true;
}

/// Keys that were shown in English for want of a text.
std::set<std::string, std::less<>> untranslated;

/// The same words in letters that run from right to left.
std::string mirroredText(std::string_view text) {
  static constexpr std::array letters = {"א", "ב", "ג", "ד", "ה", "ו", "ז", "ח", "ט", "י", "כ", "ל", "מ",
                                         "נ", "ס", "ע", "פ", "צ", "ק", "ר", "ש", "ת", "ך", "ם", "ן", "ף"};
  std::string result;
  bool isName = false; // of a value
  for (const char c : text) {
    if (c == '{' || c == '}') isName = c == '{';
    const int letter = c >= 'a' && c <= 'z' ? c - 'a' : c >= 'A' && c <= 'Z' ? c - 'A' : -1;
    if (letter >= 0 && !isName)
      result += letters[std::size_t(letter)];
    else
      result += c;
  }
  return result;
}

/// Made up of every key that another language has.
Language mirroredLanguage(const Language& other) {
  static std::deque<std::string> texts;
  static std::vector<LocalizedText> table;
  for (const auto& part : other.tables)
    for (const auto& [key, text] : part) table.push_back({key, texts.emplace_back(mirroredText(key))});
  std::ranges::stable_sort(table, {}, &LocalizedText::key);
  return {.code = mirroredCode, .tables = {table}};
}

/// False for a code that is none.
bool install(const std::string& code) {
  auto all = languages(code == mirroredCode ? "de" : code, {linuxWords(), german::onLinux()});
  if (code == mirroredCode) all = {mirroredLanguage(all.front())};
  const bool isKnown = all.front().code == code;
  setLanguages(std::move(all));
  setMissingTextHandler([](std::string_view key) { untranslated.emplace(key); });
  return isKnown;
}

class Gallery {
public:
  Gallery(const QDir& folder, std::string name) : folder_(folder), name_(std::move(name)) {}

  void render(const Variant& variant) {
    Theme theme(variant.look);
    QApplication::setLayoutDirection(variant.direction);
    setTooltipLook(theme);
    note(variant.name, contrastProblems(theme));
    for (const auto& view : galleryViews()) {
      if (!view.name.starts_with(name_)) continue;
      for (auto size : view.sizes) render(view, size, theme, variant.name);
    }
  }
  const std::set<std::string>& problems() const { return problems_; }
  int pictures() const { return pictures_; }

private:
  void note(const std::string& where, const std::vector<std::string>& problems) {
    for (const auto& problem : problems) problems_.insert(where + ": " + problem);
  }

  void render(const GalleryView& view, QSize size, const Theme& theme, const std::string& variant) {
    auto widget = view.make(theme);
    widget->ensurePolished();
    auto shown = size.isEmpty() ? widget->sizeHint() : size;
    if (size.isEmpty() && widget->hasHeightForWidth())
      shown.setHeight(std::max(shown.height(), widget->heightForWidth(shown.width())));
    widget->resize(shown);
    widget->show();
    widget->activateWindow(); // so that the focus shows
    QApplication::processEvents();
    auto name = fmt::format("{}-{}-{}", view.name, widget->width(), variant);
    auto picture = widget->grab();
    if (!picture.save(folder_.filePath(text(name + ".png")))) note(name, {"the picture cannot be written"});
    if (isBlank(picture.toImage())) note(name, {"nothing is painted"});
    note(name, problemsOf(*widget));
    ++pictures_;
  }

  QDir folder_;
  const std::string name_; ///< what the views' names begin with
  std::set<std::string> problems_;
  int pictures_ = 0;
};

/// The toolkit fixes the scale of a program when it starts: 200 % is another run of it, beside this one.
class DoubledRun {
public:
  explicit DoubledRun(const QStringList& arguments) {
    if (qEnvironmentVariableIsSet(scaleVariable)) return; // this is it
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(scaleVariable, "2");
    process_.setProcessEnvironment(environment);
    process_.setProcessChannelMode(QProcess::ForwardedChannels);
    process_.start(QApplication::applicationFilePath(), arguments);
  }
  int status() {
    if (process_.program().isEmpty()) return 0;
    process_.waitForFinished(-1);
    return process_.error() == QProcess::UnknownError && process_.exitStatus() == QProcess::NormalExit
               ? process_.exitCode()
               : 1;
  }

private:
  QProcess process_;
};

/// A screen that is none lacks what windows usually ask of one; all else is worth reading.
void report(QtMsgType, const QMessageLogContext&, const QString& message) {
  if (!message.startsWith("This plugin does not support")) fmt::print(stderr, "{}\n", utf8(message));
}

int run(int argc, char** argv) {
  qInstallMessageHandler(report);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setStyle("Fusion");
  const auto given = QApplication::arguments().mid(1);
  auto arguments = given;
  std::string language = "en";
  if (const auto option = arguments.indexOf("--language"); option >= 0 && option + 1 < arguments.size()) {
    language = utf8(arguments.takeAt(option + 1));
    arguments.removeAt(option);
  }
  if (arguments.isEmpty() || arguments.size() > 2 || arguments[0].startsWith('-') || !install(language)) {
    fmt::print(stderr, "Usage: korvell-gallery FOLDER [NAME] [--language en|de|mirrored]\n");
    return 64;
  }
  QDir folder(arguments[0]);
  if (!folder.mkpath(".")) {
    fmt::print(stderr, "{} cannot be made.\n", utf8(folder.path()));
    return 1;
  }
  installSpoken();
  DoubledRun doubled(given);
  Gallery gallery(folder, utf8(arguments.value(1)));
  for (const auto& variant : variants()) gallery.render(variant);
  for (const auto& problem : gallery.problems()) fmt::print("{}\n", problem);
  for (const auto& key : untranslated) fmt::print("no text in this language: {}\n", key);
  fmt::print("{} pictures, {} problems\n", gallery.pictures(),
             gallery.problems().size() + untranslated.size());
  std::fflush(stdout);
  const bool isWell = gallery.problems().empty() && untranslated.empty();
  return doubled.status() | (isWell ? 0 : 1);
}

} // namespace
} // namespace korvell

int main(int argc, char** argv) { return korvell::run(argc, argv); }
