#pragma once
// The views of what the panel and the Health page share.

#include "UI/Kit/Button.h"
#include "UI/Kit/Labels.h"
#include "UI/Parts/HealthParts.h"
#include "UI/Parts/Tiles.h"

#include <functional>
#include <vector>

class QScrollArea;

namespace korvell {

/// On a page, on a narrow page, in the panel.
enum class PartForm { page, narrow, panel };

/// Rows are so much wider on both sides than what they show: room for the wash under a pointer and for the
/// ring of the focus, which would be cut off otherwise.
inline constexpr int rowOutset = 8;

/// One finding below a hairline, with the button that mends it. On the page one button may be the primary
/// one.
class FindingView : public Painted {
public:
  FindingView(const Theme& theme, PartForm form, QWidget* parent);

  void show(const FindingRow& row, bool isPrimary);
  void setForm(PartForm form);
  void onStep(std::function<void(const Step&)> handler) { step_ = std::move(handler); }
  void onHover(std::function<void(bool)> handler) { hover_ = std::move(handler); }
  /// Its arc of the ring is pointed at.
  void setPointedAt(bool isPointedAt);

  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  QAccessible::Role role() const override { return QAccessible::ListItem; }

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

private:
  void arrange();
  int detailWidth(int width) const;

  bool isPanel() const { return form_ == PartForm::panel; }
  PartForm form_;
  FindingRow row_;
  TextLabel *title_, *detail_;
  Button* button_;
  bool isPointedAt_ = false;
  std::function<void(const Step&)> step_;
  std::function<void(bool)> hover_;
};

/// A measure; a press opens its section.
class TileView : public Control, public Whole {
public:
  TileView(const Theme& theme, PartForm form, QWidget* parent);

  void show(const Tile& tile);
  void setForm(PartForm form);
  void onOpen(std::function<void(SidebarItem)> handler) { open_ = std::move(handler); }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::PushButton; }
  std::optional<std::string> cutText() const override;

protected:
  void draw(QPainter& painter) override;
  void pressed() override { open_(tile_.section); }
  double corner() const override { return 9; }

private:
  void drawHead(QPainter& painter, double scale);
  void drawFigure(QPainter& painter, double base);
  void drawPicture(QPainter& painter, double scale);
  double drawLead(QPainter& painter, double left, double base);
  double figureWidth() const;

  PartForm form_;
  Tile tile_;
  std::function<void(SidebarItem)> open_;
};

/// Margins with the lane of the bar, where there is one, taken from its side: what they surround stays in
/// place. To be asked again when the viewport is resized, which is when a bar comes or goes.
QMargins besideBar(QMargins margins, const QScrollArea& area);

/// Brings a list of row widgets to that length; new ones come from `make`.
template <class View, class Make>
void fitRows(std::vector<View*>& views, std::size_t count, Make make) {
  while (views.size() > count) {
    views.back()->hide();
    views.back()->deleteLater();
    views.pop_back();
  }
  while (views.size() < count) views.push_back(make());
}

} // namespace korvell
