#pragma once
// The page of the applications that make sound. While it is shown the sound server is listened to, levels
// included; both end when it is hidden.

#include "Base/Published.h"
#include "UI/Sound/SoundRows.h"

namespace korvell {

/// What views do about sound. Handlers outlive the view.
struct SoundControls {
  Published<SoundState>* state = nullptr;    ///< null where no application's volume can be set
  std::function<Subscription()> watchLevels; ///< the state is kept up, levels included, while it lives
  std::function<void(const std::string& app, double volume)> setVolume;
  std::function<void(const std::string& app, bool muted)> setMuted;
  std::function<void(const std::string& app)> reset;
  std::function<void()> resetAll;
  std::function<void(double volume)> setOutputVolume;
  std::function<void(bool muted)> setOutputMuted;
};

class SoundView final : public ListPage {
public:
  struct Services {
    SoundControls sound;
    const Theme& theme;
    Pictures* pictures = nullptr;         ///< of applications; null for none
    std::function<void()> openPermission; ///< absent where there is no such setting
  };

  SoundView(Services services, QWidget* parent);

protected:
  std::vector<ListRow*> rows() const override;
  void arrange(bool isNarrow) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

private:
  void build();
  void update();
  void showEmptiness();
  void fill(RowGroup& group, const std::vector<SoundPage::Row>& rows);
  SoundRow* rowOf(RowGroup& group, const std::string& app);
  void chainControls();

  const Services services_;
  const SoundRow::Handlers appHandlers_, outputHandlers_;
  std::optional<SoundPage> shown_;
  std::optional<SoundPage::Empty> emptiness_;
  Notice* notice_;
  SoundRow* output_;
  QWidget* rule_;
  TextLabel* measuring_;
  TextLabel* quiet_;
  RowGroup *apps_, *remembered_;
  Button* resetAll_;
  TextLabel* note_;
  EmptyState* empty_ = nullptr; ///< made anew when it says something else
  bool isNarrow_ = false;
  Subscription watching_, changes_, arrivals_;
};

} // namespace korvell
