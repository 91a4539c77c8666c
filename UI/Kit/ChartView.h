#pragma once
// A chart over time: a lane for the readout, the plot, a rail of events, the times. One tab stop. Time runs
// to the right in every language. The picture is kept in a pixmap; a live tick moves it and paints its newest
// strip. Size and gutter never change with the data.

#include "UI/Kit/ChartRules.h"
#include "UI/Kit/PointedPlot.h"
#include "UI/Kit/Type.h"

#include <QPixmap>
#include <QTimer>
#include <QVariantAnimation>

#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace korvell {

class ChartView : public PointedPlot {
public:
  static constexpr int tall = 206, low = 164; ///< heights of the plot
  static constexpr int gutter = 56;           ///< right of the plot, for the values' labels
  static constexpr int overhang = 6;          ///< left of the plot, for the dot of a crosshair at its edge

  /// The zone outlives it.
  ChartView(const Theme& theme, const TimeZone& zone, QWidget* parent);

  /// Axis and data change in one paint; the crosshair stays on its moment, or goes with it.
  void setData(ChartData data);
  const ChartData& data() const { return data_; }
  void setPlotHeight(int height);

  /// Told the begin of the bucket that the user pinned; nothing when it was let go.
  void onPin(std::function<void(std::optional<Date>)> handler) { pinHandler_ = std::move(handler); }
  /// Told the begin of the bucket that the crosshair rests on by pointer or keys, and nothing when it is
  /// gone: a moment later, for one that passes by asks nothing.
  void onPoint(std::function<void(std::optional<Date>)> handler) { pointHandler_ = std::move(handler); }
  /// Told 0 to 4 for the keys 1 to 5.
  void onRange(std::function<void(std::size_t)> handler) { rangeHandler_ = std::move(handler); }
  /// The bucket that a moment lies in; without telling. Nothing lets go.
  void setPinned(std::optional<Date> moment);
  std::optional<Date> pinned() const { return pinned_; }
  /// As the pointer does: the crosshair to the nearest bucket; nothing takes it away.
  void point(std::optional<Date> moment);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  std::string spokenValue() const override;
  /// How often the whole picture was painted, and how often a strip of it: the cost of a page that lives.
  struct Paints {
    int whole = 0;
    int strips = 0;
  };
  const Paints& paints() const { return paints_; }

protected:
  void draw(QPainter& painter) override;
  void themeChanged() override;
  void resizeEvent(QResizeEvent*) override;
  bool event(QEvent*) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void leaveEvent(QEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  QRectF plot() const override;
  bool isPointed() const override { return shown().has_value(); }
  void unpoint() override { point(std::nullopt); }

private:
  double xOf(Date date) const;
  double yOf(double value) const;
  Date dateAt(double x) const;
  /// Where a bucket's figures stand: its middle.
  double xOfBucket(Date begin) const { return xOf(begin + data_.bucket / 2); }
  QRectF rail() const;

  void forgetPicture();
  bool movePicture(const ChartData& before);
  void fadePicture();
  void paintPicture();
  void paintGrid(QPainter& painter) const;
  void paintTotal(QPainter& painter) const;
  void paintTimes(QPainter& painter) const;
  void paintPlot(QPainter& painter, const QRectF& clip) const;
  void paintGaps(QPainter& painter) const;
  bool hasRoomForWords(const ChartGap& gap) const;
  void paintGap(QPainter& painter, const ChartGap& gap) const;
  void paintLine(QPainter& painter, std::size_t index, const QRectF& clip) const;
  void paintEvents(QPainter& painter) const;
  void paintLegend(QPainter& painter) const;
  void paintSentence(QPainter& painter) const;
  void paintCrosshair(QPainter& painter, Date bucket) const;
  void paintPointedGap(QPainter& painter) const;
  void paintReadout(QPainter& painter, double x, const Readout& readout) const;
  std::vector<std::vector<ChartBucket>> stretches(std::size_t line) const;
  std::span<const ChartBucket> between(std::span<const ChartBucket> stretch, double left, double right) const;

  std::optional<Date> shown() const { return pinned_ ? pinned_ : pointed_; }
  std::optional<Date> kept(std::optional<Date> moment) const;
  void moveTo(Date stop);
  void step(int by);
  void stepEvent(int direction);
  void pin(std::optional<Date> bucket);
  void pointAt(std::optional<Date> stop);
  void tellPoint();
  const ChartEvent* eventAt(const QPointF& position) const;

  const TimeZone& zone_;
  ChartData data_;
  ValueAxis axis_;
  ShrinkingTop liveTop_;
  std::vector<Date> stops_;
  std::vector<ChartGap> gaps_;
  int plotHeight_ = tall;
  std::optional<Date> pointed_, pinned_, told_; ///< told: what was pointed at when the handler was told
  QTimer rest_{this};
  std::optional<double> gapPointer_; ///< its place, while it is where nothing was recorded
  QPixmap picture_;
  Date right_; ///< of the picture: a live one moves by whole device pixels
  Paints paints_;
  QPixmap before_; ///< of the range that was shown, while it fades
  QVariantAnimation fading_;
  std::function<void(std::optional<Date>)> pinHandler_, pointHandler_;
  std::function<void(std::size_t)> rangeHandler_;
};

/// The mark of a kind of event, its middle there.
void drawEventMark(QPainter& painter, const QPointF& middle, const Theme& theme, ChartEvent::Kind kind);

} // namespace korvell
