#pragma once
// A row of the sound page: who, a button that mutes, a slider with the level below it, the value.

#include "UI/Kit/Pictures.h"
#include "UI/Kit/Slider.h"
#include "UI/Parts/ListParts.h"
#include "UI/Sound/SoundPage.h"

namespace korvell {

class SoundRow final : public ListRow {
public:
  struct Handlers {
    // By the application's key, which is a copy: what they change may come back into the row at once.
    std::function<void(std::string app, int percent)> move;
    std::function<void(std::string app, bool muted)> mute;
    std::function<void(std::string app)> reset; ///< absent where nothing is remembered: the output
  };

  /// `most` is the slider's end. The handlers outlive the row.
  SoundRow(const Theme& theme, const Handlers& handlers, int most, QWidget* parent);

  void show(const SoundPage::Row& row, bool isNarrow);
  /// Null: without pictures. They outlive the row.
  void setPictures(Pictures* pictures);
  const std::string& key() const { return row_.key; }
  Control* action() const override { return slider_; }
  /// In the order of the Tab key.
  std::vector<QWidget*> controls() const { return {mute_, slider_, reset_}; }
  void remove() override;
  void fillMenu(Menu& menu) override;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent*) override { arrange(); }
  void themeChanged() override;

private:
  void arrange();
  bool isOutput() const { return row_.key.empty(); }

  const Handlers& handlers_;
  SoundPage::Row row_;
  bool isNarrow_ = false;
  Pictures* pictures_ = nullptr;
  IconButton* mute_;
  Slider* slider_;
  Button* reset_;
};

/// The application's own picture where there is one, else its first letter.
void drawSoundPicture(QPainter& painter, const QRectF& box, const Theme& theme, Pictures* pictures,
                      const SoundPage::Row& row);
/// Gives the button the icon and name of what it would do.
void showMute(IconButton& button, const SoundPage::Row& row);

} // namespace korvell
