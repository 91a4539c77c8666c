#pragma once
// The sidebar as a list of 216, or as a rail of icons where the window is narrow. One tab stop: the arrows
// move from section to section.

#include "UI/Kit/Control.h"
#include "UI/Window/Sidebar.h"

#include <functional>
#include <vector>

namespace korvell {

class SidebarView : public Painted {
public:
  static constexpr int fullWidth = 216, railWidth = 56;

  SidebarView(const Theme& theme, QWidget* parent);

  void show(const Sidebar& content);
  /// What is not part of the content, when the language was changed.
  void speakAnew();
  void setRail(bool isRail);
  void onOpen(std::function<void(SidebarItem)> handler) { open_ = std::move(handler); }
  void onSettings(std::function<void()> handler) { settings_ = std::move(handler); }
  /// Gives the keyboard's focus to the section that is shown.
  void takeFocus(Qt::FocusReason reason);
  /// What Tab goes through: the sections, what stands at the foot.
  std::vector<QWidget*> stops() const;

  QAccessible::Role role() const override { return QAccessible::List; }

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent* event) override;

private:
  class Row;
  void build();
  void arrange();
  double squeezed(int room) const;
  void moveFrom(const Row& row, int by);

  Sidebar content_;
  std::vector<Row*> rows_;      ///< the sections', top to bottom
  std::vector<QRect> captions_; ///< one a group
  Row* foot_;
  bool isRail_ = false;
  std::function<void(SidebarItem)> open_;
  std::function<void()> settings_;
};

} // namespace korvell
