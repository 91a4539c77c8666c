#include "UI/Servers/ServerRows.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <algorithm>
#include <utility>

namespace korvell {

namespace {

constexpr int rowHeight = 36, headRow = 39, headsHeight = 35;
constexpr double nameLeft = 58, monogramLeft = 28, monogram = 20, nameGap = 8, portGap = 6;
constexpr double projectIcon = 18, projectName = 28;
constexpr int portHeight = 24;
constexpr double portPadding = 9, portIcon = 14, portIconGap = 4;
constexpr double roomForAll = 760; ///< of the text, at the usual size of text

/// Where the columns are, as distances from the end of the text; 0 for one that has no room.
struct Columns {
  double running, activity, cpu, memory, port;
  std::size_t ports; ///< so many have room
};

Columns columnsOf(const Theme& theme, const QWidget& row) {
  const auto scaled = [&](double length) { return double(theme.scaled(length)); };
  if (row.width() - 2 * rowInset >= scaled(roomForAll))
    return {scaled(84), scaled(310), scaled(338), scaled(410), scaled(488), 2};
  return {0, scaled(216), 0, scaled(236), scaled(310), 1};
}

/// From the start of the row.
double fromEnd(const QWidget& row, double distance) { return row.width() - rowInset - distance; }

Qt::Alignment physical(const QWidget& widget, Qt::Alignment end) {
  const bool toRight = (end == Qt::AlignRight) != widget.isRightToLeft();
  return toRight ? Qt::AlignRight : Qt::AlignLeft;
}

/// A column of figures that end at that distance from the end.
void drawColumn(QPainter& painter, const QWidget& row, double end, const Theme& theme, TextStyle style,
                Token token, const std::string& words) {
  constexpr double widest = 110;
  painter.setPen(theme.color(token));
  const auto box =
      fromStart(row, fromEnd(row, end) - theme.scaled(widest), 0, theme.scaled(widest), row.height());
  drawFigures(painter, box, physical(row, Qt::AlignRight), fontOf(theme, style), text(words));
}

StateLook lookOf(ServersPage::Activity activity) {
  switch (activity) {
  case ServersPage::Activity::active:
    return {.mark = Token::good, .words = Token::text2};
  case ServersPage::Activity::quiet:
    return {.icon = Icon::clock, .mark = Token::text3, .words = Token::text2};
  case ServersPage::Activity::idle:
    break;
  }
  return {.icon = Icon::clock, .mark = Token::warningMark, .words = Token::warning};
}

} // namespace

// Ports

PortButton::PortButton(const Theme& theme, QWidget* parent) : Control(theme, parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void PortButton::show(std::string_view words, std::string_view name, bool opens) {
  words_ = text(words);
  opens_ = opens;
  setName(name);
  setToolTip(text(name));
  updateGeometry();
  update();
}

double PortButton::wordsWidth() const { return figureWidth(fontOf(theme(), TextStyle::strong), words_); }

QSize PortButton::sizeHint() const {
  const double icon = opens_ ? portIconGap + portIcon : 0;
  return {qCeil(wordsWidth() + icon + 2 * portPadding), theme().scaled(portHeight)};
}

std::optional<std::string> PortButton::cutText() const {
  return sizeHint().width() > width() ? std::optional(utf8(words_)) : std::nullopt;
}

void PortButton::pressed() {
  if (auto handler = handler_) handler();
}

void PortButton::draw(QPainter& painter) {
  const auto fill = isDown() ? Token::sunken : isHovered() ? Token::hover : Token::raised;
  drawRounded(painter, shape(), corner(), theme().color(fill), theme().color(Token::edge));
  painter.setPen(theme().color(Token::accent));
  const auto place = fromStart(*this, portPadding, 0, wordsWidth(), height());
  korvell::drawFigures(painter, place, Qt::AlignLeft, fontOf(theme(), TextStyle::strong), words_);
  if (!opens_) return;
  const double left = portPadding + wordsWidth() + portIconGap;
  drawIcon(painter, Icon::open, fromStart(*this, left, (height() - portIcon) / 2, portIcon, portIcon),
           theme().color(Token::accent), layoutDirection());
}

// Servers

ServerRow::ServerRow(const Theme& theme, const Handlers& handlers, QWidget* parent)
    : ListRow(theme, parent), handlers_(handlers),
      stop_(new Button(theme, Button::Kind::quiet, localized("Stop…"), this)),
      rest_(new PortButton(theme, this)) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  stop_->setHeight(Button::Height::compact);
  stop_->onPress([this] { handlers_.stop(server_.stop); });
}

QSize ServerRow::sizeHint() const { return {480, theme().scaled(rowHeight)}; }

void ServerRow::themeChanged() {
  ListRow::themeChanged();
  arrange();
}

void ServerRow::show(const ServersPage::Server& server) {
  if (server == server_) return;
  const bool samePorts = server.ports == server_.ports;
  server_ = server;
  setName(server.spoken);
  setToolTip(text(server.directory));
  stop_->setToken(server.activity == ServersPage::Activity::idle ? Token::accent : Token::text2);
  stop_->setName(localized("Stop {name}…", {{"name", server.name}}));
  if (!samePorts) {
    showPorts();
    arrange();
  }
  update();
}

/// A button stays its port's, as the row stays its server's.
void ServerRow::showPorts() {
  auto before = std::exchange(ports_, {});
  for (const auto& port : server_.ports) {
    const auto number = std::to_string(port.number);
    const auto known = std::ranges::find(before, text(number), &PortButton::words);
    auto* button = known == before.end() ? new PortButton(theme(), this) : *known;
    if (known != before.end()) before.erase(known);
    button->show(number, port.spoken, true);
    button->onPress([this, address = port.address] { handlers_.open(address); });
    button->raise(); // Tab goes by the order of the children
    ports_.push_back(button);
  }
  for (auto* gone : before) {
    gone->hide();
    gone->deleteLater();
  }
  rest_->raise();
  stop_->raise();
}

void ServerRow::fillMenu(Menu& menu) {
  menu.add(Icon::stop, localized("Stop…"), [this, stop = server_.stop] { handlers_.stop(stop); });
  menu.addRule();
  for (const auto& port : server_.ports)
    menu.add(Icon::open, port.spoken, [this, address = port.address] { handlers_.open(address); });
  if (handlers_.showFolder && !server_.directory.empty())
    menu.add(Icon::folder, localized("Show Folder in Finder"),
             [this, folder = server_.directory] { handlers_.showFolder(folder); });
}

void ServerRow::arrange() {
  const auto columns = columnsOf(theme(), *this);
  const auto size = stop_->sizeHint();
  // Its words end where the text of the page does, less what the wash of a quiet button needs.
  const double end = width() - rowInset;
  stop_->setGeometry(
      fromStart(*this, end - size.width(), (height() - size.height()) / 2.0, size.width(), size.height())
          .toRect());
  const auto shown = ports_.size() <= columns.ports ? ports_.size() : columns.ports;
  double at = fromEnd(*this, columns.port);
  const auto put = [&](PortButton* button) {
    const auto port = button->sizeHint();
    at -= port.width();
    button->setGeometry(
        fromStart(*this, at, (height() - port.height()) / 2.0, port.width(), port.height()).toRect());
    button->QWidget::show();
    at -= portGap;
  };
  rest_->setVisible(shown < ports_.size());
  if (shown < ports_.size()) {
    rest_->show("+" + std::to_string(ports_.size() - shown),
                localized("{n} more ports", {{"n", std::to_string(ports_.size() - shown)}}), false);
    rest_->onPress([this, shown] { showRest(shown); });
    put(rest_);
  }
  for (std::size_t i = ports_.size(); i-- > 0;)
    if (i < shown)
      put(ports_[i]);
    else
      ports_[i]->hide();
  nameEnd_ = at;
  update();
}

void ServerRow::showRest(std::size_t from) {
  auto* menu = new Menu(theme(), this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  for (auto i = from; i < server_.ports.size(); ++i)
    menu->add(Icon::open, std::to_string(server_.ports[i].number),
              [this, address = server_.ports[i].address] { handlers_.open(address); });
  menu->popup(rest_->mapToGlobal(QPoint(0, rest_->height())));
}

void ServerRow::draw(QPainter& painter) {
  ListRow::draw(painter);
  painter.setLayoutDirection(layoutDirection());
  drawName(painter);
  drawFigures(painter);
}

void ServerRow::drawName(QPainter& painter) {
  const double middle = height() / 2.0;
  drawMonogram(painter, fromStart(*this, rowInset + monogramLeft, middle - monogram / 2, monogram, monogram),
               theme(), monogramHue(server_.runtime), server_.runtime);
  const double left = rowInset + nameLeft;
  const double room = std::max(0.0, nameEnd_ - left);
  const auto name = text(server_.name), detail = text(server_.detail);
  // The detail gives way first.
  const double wide = std::min(room, std::ceil(textWidth(theme(), TextStyle::strong, name)));
  drawText(painter, fromStart(*this, left, 0, wide, height()), theme(), TextStyle::strong, Token::text1,
           name);
  constexpr double leastDetail = 24;
  if (room - wide - nameGap >= leastDetail)
    drawText(painter, fromStart(*this, left + wide + nameGap, 0, room - wide - nameGap, height()), theme(),
             TextStyle::small, Token::text3, detail);
}

void ServerRow::drawFigures(QPainter& painter) {
  const auto columns = columnsOf(theme(), *this);
  drawColumn(painter, *this, columns.memory, theme(), TextStyle::body, Token::text1, server_.memory);
  if (columns.cpu > 0)
    drawColumn(painter, *this, columns.cpu, theme(), TextStyle::body, Token::text2, server_.cpu);
  if (columns.running > 0)
    drawColumn(painter, *this, columns.running, theme(), TextStyle::body, Token::text2, server_.running);
  const double end =
      columns.running > 0 ? columns.running + theme().scaled(76) : stop_->sizeHint().width() + nameGap;
  const auto box = fromStart(*this, fromEnd(*this, columns.activity), 0, columns.activity - end, height());
  drawState(painter, box, theme(), lookOf(server_.activity), text(server_.activityWords));
}

// Heads

ServerHeads::ServerHeads(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  setName(localized("Server, port, memory, CPU, activity, running for"));
}

QSize ServerHeads::sizeHint() const { return {480, theme().scaled(headsHeight)}; }

void ServerHeads::draw(QPainter& painter) {
  painter.setLayoutDirection(layoutDirection());
  const auto columns = columnsOf(theme(), *this);
  constexpr double lift = 6;
  const auto put = [&](double from, double width, std::string_view words, Qt::Alignment alignment) {
    drawText(painter, fromStart(*this, from, lift, width, height() - lift), theme(), TextStyle::caption,
             Token::text3, text(words), alignment);
  };
  const double wide = theme().scaled(78);
  const auto atEnd = [&](double end, std::string_view words) {
    if (end > 0) put(fromEnd(*this, end) - wide, wide, words, Qt::AlignRight);
  };
  put(rowInset, wide * 2, localized("Server"), Qt::AlignLeft);
  atEnd(columns.port, localized("Port"));
  atEnd(columns.memory, localized("Memory"));
  atEnd(columns.cpu, localized("CPU"));
  put(fromEnd(*this, columns.activity), wide * 1.5, localized("Activity"), Qt::AlignLeft);
  atEnd(columns.running, localized("Running for"));
  drawHairline(painter, QPointF(rowInset, height() - 1.0), width() - 2 * rowInset,
               theme().color(Token::hairline));
}

// Projects

ProjectHead::ProjectHead(const Theme& theme, const std::function<void(const std::string&)>& showFolder,
                         QWidget* parent)
    : ListRow(theme, parent), showFolder_(showFolder),
      menu_(new IconButton(theme, Icon::dots, localized("More"), this)) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  menu_->onPress([this] { openMenu(menu_->mapToGlobal(QPoint(0, menu_->height()))); });
}

QSize ProjectHead::sizeHint() const { return {480, theme().scaled(headRow)}; }

void ProjectHead::show(const ServersPage::Project& project, bool isFirst) {
  setRuled(!isFirst);
  if (project_ == project) return;
  project_ = project;
  setName(project.name + ", " + project.memory);
  setToolTip(text(project.folders.size() == 1 ? project.folders.front() : std::string()));
  menu_->setName(localized("More for {name}", {{"name", project.name}}));
  menu_->setVisible(showFolder_ && !project.folders.empty());
  update();
}

void ProjectHead::fillMenu(Menu& menu) {
  if (!showFolder_) return;
  for (const auto& folder : project_.folders)
    menu.add(Icon::folder,
             project_.folders.size() == 1 ? localized("Show Folder in Finder")
                                          : localized("Show {folder} in Finder", {{"folder", folder}}),
             [this, folder] { showFolder_(folder); });
}

void ProjectHead::resizeEvent(QResizeEvent*) {
  const auto size = menu_->sizeHint();
  constexpr int beyond = 4;
  menu_->setGeometry(fromStart(*this, width() - rowInset + beyond - size.width(),
                               (height() - size.height() + 4) / 2.0, size.width(), size.height())
                         .toRect());
}

void ProjectHead::draw(QPainter& painter) {
  ListRow::draw(painter);
  painter.setLayoutDirection(layoutDirection());
  constexpr double lower = 4; // the rule above takes part of the room
  const double middle = (height() + lower) / 2;
  drawIcon(painter, Icon::project,
           fromStart(*this, rowInset, middle - projectIcon / 2, projectIcon, projectIcon),
           theme().color(Token::network), layoutDirection());
  const auto columns = columnsOf(theme(), *this);
  const double left = rowInset + projectName;
  const double sum = figureWidth(fontOf(theme(), TextStyle::head), text(project_.memory)) + 16;
  const double room = fromEnd(*this, columns.memory) - sum - left;
  const auto name = text(project_.name);
  const double wide = std::min(room, std::ceil(textWidth(theme(), TextStyle::head, name)));
  drawText(painter, fromStart(*this, left, lower, wide, height() - lower), theme(), TextStyle::head,
           Token::text1, name);
  const double rest = room - wide - 10;
  if (rest > 40)
    drawText(painter, fromStart(*this, left + wide + 10, lower, rest, height() - lower), theme(),
             TextStyle::small, Token::text3, text(project_.folderWords), Qt::AlignLeft, Qt::ElideMiddle);
  painter.translate(0, lower / 2);
  drawColumn(painter, *this, columns.memory, theme(), TextStyle::head, Token::text1, project_.memory);
}

} // namespace korvell
