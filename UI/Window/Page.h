#pragma once
// A section as the main window shows it: a title and at most one control in the header, a widget below it
// that scrolls by itself. Made when the section is opened and gone when another one is.

#include "UI/Kit/Scroll.h"
#include "UI/Window/Visits.h"

#include <QWidget>

#include <string>

namespace korvell {

class Page : public QWidget {
public:
  using QWidget::QWidget;

  virtual std::string title() const = 0;
  /// What stands at the right of the title; null for nothing. The page's child until the window takes it.
  virtual QWidget* control() { return nullptr; }
  /// What stays below while the rest scrolls; null for nothing.
  virtual QWidget* footer() { return nullptr; }
  /// The keys for "find in this list" and "measure again".
  virtual void find() {}
  virtual void refresh() {}
  /// For coming back to it.
  virtual PagePlace place() const;
  virtual void restore(const PagePlace& place);

protected:
  /// What its content scrolls in; null where nothing does.
  virtual ScrollArea* scrolled() const { return nullptr; }
};

} // namespace korvell
