#pragma once
// The toolkit's own menus, fields, tooltips and window frames in our colours and type.

#include "UI/Kit/Icon.h"
#include "UI/Kit/Theme.h"

#include <QLineEdit>
#include <QMenu>

#include <functional>
#include <string_view>

namespace korvell {

class Menu : public QMenu {
public:
  Menu(const Theme& theme, QWidget* parent);

  QAction& add(std::string_view words, std::function<void()> handler);
  QAction& add(Icon icon, std::string_view words, std::function<void()> handler);
  void addRule() { addSeparator(); }

protected:
  void showEvent(QShowEvent*) override;

private:
  const Theme& theme_;
  std::vector<std::pair<QAction*, Icon>> icons_;
};

/// A line of text to fill in. The name is spoken; the hint shows while it is empty.
class TextField : public QLineEdit {
public:
  TextField(const Theme& theme, std::string_view name, std::string_view hint, QWidget* parent);

  /// With a magnifier before the text and Esc emptying it.
  void setSearch();
  /// Text to select and copy, without a frame and not to be written to.
  void setSelectableOnly();
  void onChange(std::function<void(std::string)> handler);

protected:
  void keyPressEvent(QKeyEvent*) override;
  void focusInEvent(QFocusEvent*) override;
  void focusOutEvent(QFocusEvent*) override;

private:
  void wear();
  const Theme& theme_;
  Subscription themeSubscription_;
  QAction* search_ = nullptr;
};

/// For all tooltips of the program; called again when the theme changes.
void setTooltipLook(const Theme& theme);
/// For the frames that the toolkit draws where the compositor draws none, of windows that open from then on,
/// and for what else has no colours of ours; called again when the theme changes.
void setFrameLook(const Theme& theme);

} // namespace korvell
