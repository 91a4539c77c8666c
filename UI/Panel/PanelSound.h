#pragma once
// Who makes a sound, in the panel: a press on the name opens the page, the button mutes.

#include "UI/Kit/Button.h"
#include "UI/Kit/Pictures.h"
#include "UI/Sound/SoundPage.h"

#include <QBoxLayout>

#include <functional>
#include <string>
#include <vector>

namespace korvell {

class PanelSound final : public Control {
public:
  struct Handlers {
    std::function<void()> open;
    std::function<void(std::string app, bool muted)> mute;
  };
  /// The handlers outlive it.
  PanelSound(const Theme& theme, const Handlers& handlers, QWidget* parent);

  void show(const SoundPage::Row& row);
  const std::string& key() const { return row_.key; }
  /// They outlive the row; null for none.
  void setPictures(Pictures* pictures);

  QSize sizeHint() const override { return {240, theme().scaled(28)}; }
  QSize minimumSizeHint() const override { return {80, sizeHint().height()}; }
  QAccessible::Role role() const override { return QAccessible::PushButton; }

protected:
  void draw(QPainter& painter) override;
  void pressed() override { handlers_.open(); }
  void resizeEvent(QResizeEvent*) override;

private:
  const Handlers& handlers_;
  SoundPage::Row row_;
  Pictures* pictures_ = nullptr;
  IconButton* mute_;
};

/// All of them below a heading; hidden while there is none. While a pointer or the focus is on them none
/// moves.
class PanelSounds final : public QWidget {
public:
  PanelSounds(const Theme& theme, PanelSound::Handlers handlers, QWidget* parent);
  void show(std::vector<SoundPage::Row> rows);
  /// They outlive the rows.
  void setPictures(Pictures& pictures);

private:
  bool isInUse() const;
  PanelSound* rowOf(const std::string& app);

  const Theme& theme_;
  const PanelSound::Handlers handlers_;
  Pictures* pictures_ = nullptr;
  QVBoxLayout* column_;
  std::vector<PanelSound*> rows_;
  Subscription arrivals_;
};

} // namespace korvell
