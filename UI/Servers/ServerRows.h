#pragma once
// The parts of the servers' page: a project's head, a server with its ports, the heads of the columns.

#include "UI/Parts/ListParts.h"
#include "UI/Servers/ServersPage.h"

namespace korvell {

/// A port as a button that opens its address; also the count of those that found no room.
class PortButton final : public Control, public Whole {
public:
  PortButton(const Theme& theme, QWidget* parent);

  void show(std::string_view words, std::string_view name, bool opens);
  const QString& words() const { return words_; }
  void onPress(std::function<void()> handler) { handler_ = std::move(handler); }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::Link; }
  std::optional<std::string> cutText() const override;

protected:
  void draw(QPainter& painter) override;
  void pressed() override;
  QRectF shape() const override { return QRectF(rect()).adjusted(0, 1, 0, -1); }
  double corner() const override { return 5; }

private:
  double wordsWidth() const;

  QString words_;
  bool opens_ = true;
  std::function<void()> handler_;
};

class ServerRow final : public ListRow {
public:
  struct Handlers {
    std::function<void(const StopServerRequest&)> stop;
    std::function<void(const std::string& address)> open;
    std::function<void(const std::string& path)> showFolder; ///< absent where nothing can show one
  };
  ServerRow(const Theme& theme, const Handlers& handlers, QWidget* parent);

  void show(const ServersPage::Server& server);
  Control* action() const override { return stop_; }
  void remove() override { handlers_.stop(server_.stop); }
  void fillMenu(Menu& menu) override;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent*) override { arrange(); }
  void themeChanged() override;

private:
  void arrange();
  void showPorts();
  void showRest(std::size_t from);
  void drawName(QPainter& painter);
  void drawFigures(QPainter& painter);

  const Handlers& handlers_;
  ServersPage::Server server_;
  Button* stop_;
  std::vector<PortButton*> ports_;
  PortButton* rest_; ///< ports that found no room
  double nameEnd_ = 0;
};

class ServerHeads final : public Painted {
public:
  ServerHeads(const Theme& theme, QWidget* parent);
  QSize sizeHint() const override;
  QAccessible::Role role() const override { return QAccessible::RowHeader; }

protected:
  void draw(QPainter& painter) override;
};

/// What a project's servers take, over their rows.
class ProjectHead final : public ListRow {
public:
  static constexpr int gap = 11; ///< from the rows above

  /// `showFolder` may be absent: nothing can show one.
  ProjectHead(const Theme& theme, const std::function<void(const std::string& path)>& showFolder,
              QWidget* parent);

  void show(const ServersPage::Project& project, bool isFirst);
  void fillMenu(Menu& menu) override;

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::Heading; }

protected:
  void draw(QPainter& painter) override;
  void resizeEvent(QResizeEvent*) override;
  void enterEvent(QEnterEvent*) override {} // nothing here is pressed but its button

private:
  const std::function<void(const std::string&)>& showFolder_;
  ServersPage::Project project_;
  IconButton* menu_;
};

} // namespace korvell
