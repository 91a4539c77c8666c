#pragma once
// The applications that use the most, as the panel and the Health page list them.

#include "UI/Kit/Control.h"
#include "UI/Kit/Pictures.h"
#include "UI/Parts/PartViews.h"
#include "UI/Parts/TopApps.h"

#include <functional>
#include <vector>

class QBoxLayout;

namespace korvell {

/// An application: with four figures on a page, with a bar and two on a narrow one, with a bar and one in the
/// panel.
class AppRowView : public Control {
public:
  AppRowView(const Theme& theme, PartForm form, QWidget* parent);

  void show(const AppRow& row, UsageKey sortedBy);
  void setForm(PartForm form);
  void onOpen(std::function<void()> handler) { open_ = std::move(handler); }
  /// Told by how many rows the focus is to move.
  void onMove(std::function<void(int by)> handler) { move_ = std::move(handler); }
  void setPictures(Pictures* pictures);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return {80, sizeHint().height()}; }
  QAccessible::Role role() const override { return QAccessible::ListItem; }

protected:
  void draw(QPainter& painter) override;
  void pressed() override {
    if (open_) open_();
  }
  void keyPressEvent(QKeyEvent* event) override;
  QRectF shape() const override;

private:
  void drawName(QPainter& painter, double end);
  void drawPictureIn(QPainter& painter, const QRectF& box) const;
  void drawPanelFigures(QPainter& painter);
  void drawColumns(QPainter& painter);

  PartForm form_;
  AppRow row_;
  UsageKey sortedBy_ = UsageKey::cpu;
  Pictures* pictures_ = nullptr;
  std::function<void()> open_;
  std::function<void(int by)> move_;
};

/// The heads of the page's columns, over rows of the same width.
class AppHeads : public Painted {
public:
  AppHeads(const Theme& theme, QWidget* parent) : Painted(theme, parent) {}
  void setSortedBy(UsageKey key);
  void setForm(PartForm form);
  QSize sizeHint() const override { return {80, theme().scaled(22)}; }
  QAccessible::Role role() const override { return QAccessible::RowHeader; }

protected:
  void draw(QPainter& painter) override;

private:
  UsageKey sortedBy_ = UsageKey::cpu;
  PartForm form_ = PartForm::page;
};

/// The rows of applications, one below the other. One tab stop: the arrow keys, Home and End move among them.
/// While the pointer is over them each row stays where it is.
class AppRows : public Painted {
public:
  AppRows(const Theme& theme, PartForm form, QWidget* parent);

  void show(std::vector<AppRow> rows, UsageKey sortedBy);
  void setForm(PartForm form);
  void onOpen(std::function<void()> handler) { open_ = std::move(handler); }
  /// Where the rows' pictures come from; null for nowhere. They outlive the rows.
  void setPictures(Pictures* pictures);
  QAccessible::Role role() const override { return QAccessible::List; }

protected:
  void draw(QPainter&) override {}

private:
  AppRowView* makeRow();
  void move(const AppRowView& from, int by);

  PartForm form_;
  QBoxLayout* column_;
  std::vector<AppRowView*> rows_;
  std::vector<AppRow> shown_;
  UsageKey sortedBy_ = UsageKey::cpu;
  Pictures* pictures_ = nullptr;
  Subscription arrivals_;
  std::function<void()> open_;
};

} // namespace korvell
