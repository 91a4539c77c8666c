#pragma once
// The main window: the sidebar with the sections and the page of the one that is shown. There is at most one;
// it is made when it is shown and gone once it was closed, because Korvell spends the day without it. Where
// it stood and how large it was is kept. Main thread only.

#include "App/Model.h"
#include "Platform/UserDefaults.h"
#include "UI/Kit/Theme.h"
#include "UI/Window/Page.h"
#include "UI/Window/Sidebar.h"
#include "UI/Window/Visits.h"

#include <QPointer>

#include <functional>
#include <memory>
#include <optional>

namespace korvell {

class Banner;

class MainWindow {
public:
  static constexpr int width = 1100, height = 760, leastWidth = 720, leastHeight = 560;
  /// Where the frame is kept: {"x":…,"y":…,"width":…,"height":…} in logical pixels.
  static constexpr const char* frameKey = "windowFrame";

  /// A sentence and what is said about it below.
  using Notice = std::pair<std::string, std::string>;

  struct Services {
    Model& model;
    const UserDefaults& defaults;
    const Theme& theme;
    std::function<SidebarFacts()> facts;
    /// Makes the page of a section; null for one that has none, and then the overview is shown.
    std::function<std::unique_ptr<Page>(SidebarItem, QWidget& window, Banner& banner)> makePage;
    /// Whether a window that opens now begins with the page of the first launch; null for never.
    std::function<bool()> welcomes{};
    /// Makes that page; `done` leads on from it.
    std::function<std::unique_ptr<Page>(QWidget& window, Task done)> makeWelcome{};
    std::function<void(SidebarItem)> openHelp{}; ///< null where no help is installed
    std::function<void(Value frame)> keepFrame;  ///< to be stored under the key above
    Task openSettings;
    std::function<void(Banner& banner)> share; ///< makes the share card
    Task quit;
    Task closed; ///< after the window is gone
  };

  explicit MainWindow(Services services);
  ~MainWindow();
  MainWindow(const MainWindow&) = delete;
  MainWindow& operator=(const MainWindow&) = delete;

  /// Makes the window if need be and brings it to the front; with the page of the first launch, where that is
  /// now and no section is asked for.
  void show(std::optional<SidebarItem> item);
  /// At once, without telling; its frame is kept.
  void close();
  /// A sentence above every page from now on, in this window and later ones, until the user closes it.
  void tell(std::function<Notice()> notice);
  void untell();
  /// The language was changed: the same page at the same place.
  void speakAnew();
  /// What the sidebar tells beside the model has changed.
  void refresh();
  bool isVisible() const;
  QWidget* widget() const;

private:
  class Frame;
  void windowWillClose();

  const Services services_;
  Visits visits_;
  std::function<Notice()> told_; ///< null for nothing
  QPointer<Frame> frame_;
};

} // namespace korvell
