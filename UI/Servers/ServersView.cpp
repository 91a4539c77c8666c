#include "UI/Servers/ServersView.h"

#include "Base/Localization.h"
#include "UI/Kit/Focus.h"
#include "UI/Servers/ServerRows.h"

namespace korvell {

ServersView::ServersView(Services services, QWidget* parent)
    : ListPage(services.theme, SidebarItem::devServers, parent), services_(std::move(services)),
      handlers_{.stop = [this](const StopServerRequest& request) { services_.ask(request); },
                .open = [this](const std::string& address) { services_.openAddress(address); },
                .showFolder = services_.showFolder},
      notice_(new Notice(theme_, Icon::clock, localized("Stop All Idle…"), content_)),
      measuring_(new TextLabel(theme_, TextStyle::body, Token::text2, localized("Measuring…"), content_)),
      empty_(new EmptyState(theme_, Icon::servers, localized("No dev servers running"),
                            localized("Anything you start from a project folder that listens on a port shows "
                                      "up here, grouped by project."),
                            content_)),
      list_(new QWidget(content_)), heads_(new ServerHeads(theme_, list_)), servers_(new KeptColumn(list_)),
      cycles_(services_.model.cycle.observe([this](std::int64_t) { update(); })) {
  build();
  update();
}

void ServersView::build() {
  addInset(notice_, *column_);
  addInset(measuring_, *column_);
  column_->addWidget(empty_, 1);
  column_->addWidget(list_);
  column_->addStretch(0);
  notice_->button().onPress([this] { services_.ask(StopIdleServersRequest{}); });
  auto* list = bare<QVBoxLayout>(list_);
  list->addWidget(heads_);
  list->addWidget(servers_);
  list->addSpacing(ProjectHead::gap);
  addInset(new Hairline(theme_, list_), *list);
  list->addSpacing(11);
  for (const auto& words :
       {localized("Idle means more than 30 minutes below 1% of a core, with everything the server started "
                  "counted in."),
        localized(
            "Stopping asks the server to end; after 3 seconds it is ended. Its files stay as they are.")}) {
    auto* note = new TextLabel(theme_, TextStyle::small, Token::text3, words, list_);
    note->setWrapped();
    addInset(note, *list);
  }
}

std::vector<ListRow*> ServersView::rows() const {
  auto all = servers_->rows();
  std::erase_if(all, [](const ListRow* row) { return row->action() == nullptr; }); // the heads
  return all;
}

void ServersView::update() {
  auto page = serversPage(services_.model, services_.home);
  if (shown_ && isInUse()) page = settled(std::move(page), *shown_);
  if (shown_ == page) return;
  shown_ = std::move(page);
  say(shown_->summary);
  const bool hasServers = !shown_->projects.empty();
  measuring_->setVisible(!shown_->isMeasured);
  empty_->setVisible(shown_->isMeasured && !hasServers);
  list_->setVisible(hasServers);
  notice_->setVisible(shown_->idle.has_value());
  if (shown_->idle) notice_->show(shown_->idle->sentence, shown_->idle->detail);
  servers_->refill([this] { fill(); });
  orderTabs({notice_, servers_}); // also when a server has another port
}

void ServersView::fill() {
  for (const auto& project : shown_->projects) {
    const bool isFirst = &project == &shown_->projects.front();
    servers_
        ->put("project " + project.name, isFirst ? 0 : ProjectHead::gap,
              [this](QWidget* parent) { return new ProjectHead(theme_, handlers_.showFolder, parent); })
        .show(project, isFirst);
    for (const auto& server : project.servers)
      servers_
          ->put("server " + server.key, 0,
                [this](QWidget* parent) { return new ServerRow(theme_, handlers_, parent); })
          .show(server);
  }
}

} // namespace korvell
