// "Free Up Space" in its states, over made-up findings.

#include "App/ActionTexts.h"
#include "Base/Format.h"
#include "Base/Localization.h"
#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Kit/Labels.h"
#include "UI/Storage/CleanupQuestion.h"
#include "UI/Storage/StorageView.h"

#include <QApplication>
#include <QBoxLayout>
#include <QMouseEvent>

namespace korvell {

namespace {

using Made = std::unique_ptr<QWidget>;
using enum StorageKind;

constexpr double giga = 1e9;

struct StillModel final : Model {
  StillModel(const Queue& main, const UserDefaults& defaults) : Model(main, defaults) {}
};

/// All that the page stands on, with time that stands still.
struct StorageWorld {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  std::unique_ptr<Queue> slow = time.makeQueue("Korvell.storage");
  FakeUserDefaults defaults;
  FakeTimeZone zone;
  StillModel model{*main, defaults};
  StorageScanner scanner{{}, defaults, *main, *slow};
  StorageScanResult found;

  StorageWorld() {
    found.date = *parseRFC3339("2026-11-20T15:42:00Z");
    SystemSnapshot snapshot;
    snapshot.date = found.date;
    snapshot.disk.volumes = {
        {"Home", "/", std::int64_t(248.7 * giga), std::int64_t(41.2 * giga)},
    };
    model.snapshot.set(snapshot);
  }

  StorageItem& item(StorageKind kind, const std::string& title, const std::string& place, double gigabytes,
                    const char* date = nullptr) {
    auto* category = const_cast<StorageCategory*>(found.category(kind));
    if (!category) category = &found.categories.emplace_back(StorageCategory{kind});
    StorageItem item{.id = place, .kind = kind, .title = title, .detail = place};
    item.bytes = std::int64_t(gigabytes * giga);
    item.urls = {"/home/u" + place.substr(1)};
    if (date) item.date = parseRFC3339(std::string(date) + "T12:00:00Z");
    category->bytes += item.bytes;
    return category->items.emplace_back(std::move(item));
  }

  void project(const std::string& title, const std::string& folder, double gigabytes, const char* date) {
    item(nodeModules, title, folder + "/node_modules", gigabytes, date).detail = folder;
  }
  void findProjects() {
    project("herbarium-2024", "~/code/herbarium-2024", 2.14, "2026-07-04");
    project("tide-tables", "~/code/tide-tables", 1.52, "2026-05-04");
    project("sketchbook", "~/code/sketchbook", 1.18, "2026-09-04");
    project("lumen-api", "~/code/archive/lumen-api", 0.912, "2026-03-04");
    project("glossary", "~/code/glossary", 0.604, "2026-10-04");
    project("map-tiles", "~/code/map-tiles", 0.486, "2026-10-04");
  }
  void findAll() {
    findProjects();
    item(npm, "_cacache", "~/.npm/_cacache", 2.31);
    item(pnpm, "store", "~/.local/share/pnpm/store", 4.12);
    item(pip, "pip", "~/.cache/pip", 1.08);
    item(cargo, "cache", "~/.cargo/registry/cache", 1.94);
    item(go, "go-build", "~/.cache/go-build", 3.27);
    item(docker, "Docker", "docker-prune", 5.40).detail = localized("Up to this much, plus dangling images");
    item(appCaches, "mozilla", "~/.cache/mozilla", 3.18);
    item(trash, localized("Trash"), "~/.local/share/Trash", 1.62).detail =
        localized("{count} items in the Trash", {{"count", "214"}});
    item(downloads, "survey-of-the-coast.iso", "~/Downloads/survey-of-the-coast.iso", 4.72, "2026-08-02");
    for (auto& category : found.categories) {
      if (category.kind == docker)
        category.action = StorageAction::command("/usr/bin/docker", {"system", "prune", "-f"}, Seconds{300});
      if (category.kind == trash) category.action = StorageAction::emptyTrash();
      if (category.kind == docker)
        category.note =
            localized("Kept: {volumes} in volumes. Remove those from Docker itself if you are sure.",
                      {{"volumes", Format::bytes(2.1e9)}});
    }
  }
  void tickProjects() {
    findAll();
    scanner.freedTotal.set(std::int64_t(128 * giga));
    scanner.result.set(found);
    for (const auto& item : found.category(nodeModules)->items)
      if (item.title != "map-tiles") toggle(scanner, item.id);
  }
};

/// The page under a header as the window has it.
class Framed final : public Ground {
public:
  Framed(const Theme& theme, const std::function<void(StorageWorld&)>& prepare)
      : Ground(theme, Token::surface, nullptr) {
    prepare(world_);
    page_ = new StorageView({.scanner = world_.scanner,
                             .model = world_.model,
                             .zone = world_.zone,
                             .defaults = world_.defaults,
                             .home = "/home/u",
                             .theme = theme,
                             .ask = [](const ActionRequest&) {},
                             .reveal = [](const std::string&) {}});
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(28, 0, 28, 0);
    header->addWidget(new TextLabel(theme, TextStyle::title, Token::text1, page_->title(), this), 1);
    header->addWidget(page_->control());
    header->addStrut(56);
    column->addLayout(header);
    column->addWidget(page_, 1);
  }
  ~Framed() override { delete page_; }

  StorageView& page() { return *page_; }
  /// What the footer's button asks, over all of it.
  void askToClean(const Theme& theme) {
    const auto request = cleanRequest(world_.scanner);
    const auto pending = PendingCleanup::of(**world_.scanner.result, request->items, "/home/u");
    Dialog::ask(theme, cleanupQuestion(describeCleanup(pending, {})), *this, [](bool) {});
  }
  QWidget& row(std::size_t index) { return *page_->list().rows().at(index); }
  /// As a click beside its box does.
  void unfold(std::size_t index) {
    const QPointF at(row(index).width() / 2.0, row(index).height() / 2.0);
    QMouseEvent press(QEvent::MouseButtonPress, at, at, Qt::LeftButton, Qt::LeftButton, {});
    QApplication::sendEvent(&row(index), &press);
  }

private:
  StorageWorld world_;
  StorageView* page_ = nullptr;
};

Made page(const Theme& theme, void (*prepare)(StorageWorld&)) {
  return std::make_unique<Framed>(theme, prepare);
}

Made unscannedView(const Theme& theme) {
  return page(theme, [](StorageWorld&) {});
}

Made scanningView(const Theme& theme) {
  return page(theme, [](StorageWorld& world) {
    world.scanner.isScanning.set(true);
    world.scanner.step.set(title(downloads));
    world.scanner.progress.set(0.65);
    world.scanner.notice.set(
        "macOS may ask Korvell for access to this folder. The scan continues once you answer.");
  });
}

Made foundView(const Theme& theme) {
  auto made = std::make_unique<Framed>(theme, [](StorageWorld& world) { world.tickProjects(); });
  made->unfold(0);
  return made;
}

/// The whole list at once, with the keyboard in it and the log below.
Made unfoldedView(const Theme& theme) {
  auto made = std::make_unique<Framed>(theme, [](StorageWorld& world) {
    world.tickProjects();
    toggle(world.scanner, docker);
    StorageLog::record(std::int64_t(6.36 * giga), world.found.date - Seconds{86'400}, world.defaults);
    StorageLog::record(std::int64_t(1.62 * giga), world.found.date - Seconds{3'600}, world.defaults);
  });
  const auto count = made->page().list().rows().size();
  for (std::size_t row = count; row-- > 0;) made->unfold(row);
  made->row(2).setFocus(Qt::TabFocusReason);
  return made;
}

Made cleaningView(const Theme& theme) {
  return page(theme, [](StorageWorld& world) {
    world.tickProjects();
    world.scanner.working.set({nodeModules, trash});
  });
}

Made outcomeView(const Theme& theme) {
  return page(theme, [](StorageWorld& world) {
    world.findAll();
    std::erase_if(world.found.categories, [](const auto& each) {
      return each.kind == docker || each.kind == nodeModules; // which have been cleaned
    });
    world.scanner.freedTotal.set(std::int64_t(134 * giga));
    world.scanner.result.set(world.found);
    world.scanner.feedback.set(localized("Freed {size}.", {{"size", Format::bytes(5.4e9)}}) + " " +
                               localized("Moved {size} to the Trash. Empty the Trash to get the space back.",
                                         {{"size", Format::bytes(6.36e9)}}));
  });
}

Made failedView(const Theme& theme) {
  return page(theme, [](StorageWorld& world) {
    world.tickProjects();
    world.scanner.feedback.set(localized("Nothing changed. The files may be in use or protected."));
  });
}

Made confirmView(const Theme& theme) {
  auto made = std::make_unique<Framed>(theme, [](StorageWorld& world) { world.tickProjects(); });
  made->unfold(0);
  made->askToClean(theme);
  return made;
}

Made confirmAllView(const Theme& theme) {
  auto made = std::make_unique<Framed>(theme, [](StorageWorld& world) {
    world.tickProjects();
    for (const auto kind : {docker, trash}) toggle(world.scanner, kind);
  });
  made->askToClean(theme);
  return made;
}

Made emptyView(const Theme& theme) {
  return page(theme, [](StorageWorld& world) {
    world.scanner.freedTotal.set(std::int64_t(128 * giga));
    world.scanner.result.set(world.found);
  });
}

/// Long names, a kind that could not be measured, one to keep, a disk that nobody knows.
Made longView(const Theme& theme) {
  auto made = std::make_unique<Framed>(theme, [](StorageWorld& world) {
    world.item(
        archives, "The quarterly survey of the northern coast, with soundings 14.11.2025, 09.30.xcarchive",
        "~/Library/Developer/Xcode/Archives/2025-11-14/The quarterly survey.xcarchive", 1.2, "2025-11-14");
    world.item(nodeModules, "a-project-whose-name-nobody-would-ever-type-twice-but-somebody-did-once",
               "~/code/clients/a-very-long-folder/another-one/a-project-whose-name-nobody-would-type", 12.4,
               "2024-02-01");
    world.item(nodeModules, "دفتر الملاحظات", "~/code/دفتر-الملاحظات", 0.02, "2026-01-01");
    StorageCategory unreadable{trash};
    unreadable.note = localized("Korvell needs Full Disk Access to see inside the Trash. Allow it in System "
                                "Settings › Privacy & Security.");
    world.found.categories.push_back(unreadable);
    world.model.snapshot.set({});
    world.scanner.result.set(world.found);
  });
  made->unfold(1);
  made->unfold(0);
  return made;
}

} // namespace

std::vector<GalleryView> storageViews() {
  const QSize window{884, 760}, narrow{664, 560};
  return {
      {"storage-unscanned", {window, narrow}, unscannedView},
      {"storage-scanning", {window, narrow}, scanningView},
      {"storage", {window, narrow}, foundView},
      {"storage-unfolded", {{884, 1560}}, unfoldedView},
      {"storage-confirm", {window, narrow}, confirmView},
      {"storage-confirm-all", {window}, confirmAllView},
      {"storage-cleaning", {window}, cleaningView},
      {"storage-outcome", {window, narrow}, outcomeView},
      {"storage-failed", {narrow}, failedView},
      {"storage-empty", {window}, emptyView},
      {"storage-long", {window, narrow}, longView},
  };
}

} // namespace korvell
