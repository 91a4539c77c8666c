#pragma once
// The panel's content: header, findings, tiles and applications, which scroll between header and footer where
// the screen is too low for them.

#include "UI/Kit/Banner.h"
#include "UI/Kit/Choices.h"
#include "UI/Kit/ScoreRing.h"
#include "UI/Kit/Scroll.h"
#include "UI/Panel/PanelPage.h"
#include "UI/Panel/PanelSound.h"
#include "UI/Parts/AppRows.h"
#include "UI/Parts/PartViews.h"

class QBoxLayout;
class QGridLayout;

namespace korvell {

class PanelView final : public QWidget {
public:
  static constexpr int panelWidth = 360;

  struct Handlers {
    std::function<void(const Step&)> step;
    std::function<void(SidebarItem)> open;
    std::function<void(UsageKey)> sortBy;
    std::function<void()> openKorvell, openSettings, quit;
    std::function<void()> share{}; ///< absent: there is no button
    std::function<void(const std::string& app, bool muted)> mute{};
  };

  PanelView(const Theme& theme, Handlers handlers, QWidget* parent);

  void show(const PanelPage& page);
  /// Of applications. They outlive the view.
  void setPictures(Pictures& pictures);
  Banner& banner() { return *banner_; }

  /// Of the whole without scrolling.
  QSize sizeHint() const override;
  /// Its width never changes.
  bool hasHeightForWidth() const override { return false; }

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  QWidget* makeHeader();
  QWidget* makeMiddle();
  QWidget* makeNothing(QWidget* parent);
  QWidget* makeMore(QWidget* parent);
  void showHead(const HealthHead& head);
  QWidget* makeFooter();
  FindingView* makeFinding();
  void orderStops();

  const Theme& theme_;
  const Handlers handlers_;
  std::optional<PanelPage> shown_;
  ScoreRing* ring_ = nullptr;
  IconButton* share_ = nullptr;
  TextLabel *label_ = nullptr, *loss_ = nullptr, *average_ = nullptr;
  Banner* banner_;
  ScrollArea* scroll_;
  QWidget *header_ = nullptr, *middle_ = nullptr, *footer_ = nullptr;
  QBoxLayout* findingRows_ = nullptr;
  TextLabel* nothing_ = nullptr;
  QWidget *nothingHolder_ = nullptr, *moreHolder_ = nullptr;
  Button* more_ = nullptr;
  std::vector<FindingView*> findings_;
  QGridLayout* tileGrid_ = nullptr;
  std::vector<TileView*> tiles_;
  PanelSounds* sounds_ = nullptr;
  Segments* sorting_ = nullptr;
  AppRows* apps_ = nullptr;
};

} // namespace korvell
