#pragma once
// "Free Up Space": scans when it is asked to, lists what was found, and has the ticked items cleaned once the
// user has confirmed it. It shows what the scanner publishes; a scan goes on while the page is closed.

#include "App/Model.h"
#include "Platform/UserDefaults.h"
#include "UI/Storage/StorageList.h"
#include "UI/Window/Page.h"

#include <QPointer>

#include <functional>
#include <set>
#include <string>

class QBoxLayout;

namespace korvell {

class Bar;
class Button;
class CircledIcon;
class DiskBar;
class FigureLabel;
class FreedLog;
class Ground;
class IconLabel;
class OutcomeLabel;
class TextLabel;

class StorageView : public Page {
public:
  /// All of it outlives the view.
  struct Services {
    StorageScanner& scanner;
    Model& model; ///< has the volumes
    const TimeZone& zone;
    const UserDefaults& defaults; ///< has the log of clean-ups
    std::string home;             ///< the folder whose volume is shown
    const Theme& theme;
    /// Describes what would be done, asks and does it.
    std::function<void(const ActionRequest&)> ask;
    /// Shows an item in the file manager; absent where there is none.
    std::function<void(const std::string& path)> reveal;
  };

  explicit StorageView(Services services);

  std::string title() const override;
  QWidget* control() override;
  QWidget* footer() override { return footer_; }
  void refresh() override;

  const StoragePage& page() const { return page_; }
  StorageList& list() { return *list_; }
  Button& action() { return *act_; }
  Button& scanButton() { return *scan_; }
  Button& cancelButton() { return *cancel_; }

protected:
  ScrollArea* scrolled() const override { return scroll_; }
  void resizeEvent(QResizeEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  bool eventFilter(QObject*, QEvent*) override;

private:
  void build();
  void buildBlank();
  void buildHead();
  void buildFooter();
  void connectParts();
  void readLog();
  std::optional<VolumeInfo> volume() const;
  void arrange();
  void update();
  void showBlank();
  void showFound();
  void showFooter();
  void unfold(StorageKind kind);

  Services services_;
  StoragePage page_;
  bool isBuilt_ = false; ///< the page was shown once
  std::set<StorageKind> unfolded_;
  std::vector<FreedEntry> freedLog_;
  std::optional<VolumeInfo> volume_; ///< as it is shown
  QPointer<Button> again_;
  QWidget* blank_;
  CircledIcon* picture_;
  TextLabel *lead_, *words_, *notice_, *freed_;
  Bar* progress_;
  Button *scan_, *cancel_;
  QWidget* head_;
  FigureLabel* total_;
  DiskBar* disk_;
  ScrollArea* scroll_;
  Ground* content_;
  StorageList* list_;
  FreedLog* log_;
  QBoxLayout *column_ = nullptr, *headRow_ = nullptr, *footerRow_ = nullptr;
  QWidget* footer_;
  IconLabel* outcomeMark_;
  OutcomeLabel* headline_;
  TextLabel* detail_;
  Button *untick_, *act_;
  std::vector<Subscription> subscriptions_;
};

} // namespace korvell
