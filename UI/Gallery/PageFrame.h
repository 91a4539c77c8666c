#pragma once
// A page in the gallery as the window shows it.

#include "UI/Kit/Labels.h"
#include "UI/Parts/ListParts.h"
#include "UI/Window/Page.h"

#include <memory>

namespace korvell {

/// A page below its header, as the window shows it, with the machine that it is about.
class PageFrame final : public Ground {
public:
  PageFrame(const Theme& theme, std::shared_ptr<void> machine, Page* page)
      : Ground(theme, Token::surface, nullptr), machine_(std::move(machine)), page_(page) {
    auto* rows = bare<QVBoxLayout>(this);
    head_->addStrut(56);
    head_->addWidget(new TextLabel(theme, TextStyle::title, Token::text1, page->title(), this), 1);
    if (auto* control = page->control()) head_->addWidget(control);
    rows->addLayout(head_);
    rows->addWidget(page, 1);
  }
  ~PageFrame() override { delete page_; } // before the machine

protected:
  void resizeEvent(QResizeEvent*) override {
    const int side = width() < 860 ? 20 : 28;
    head_->setContentsMargins(side, 0, side, 0);
  }

private:
  std::shared_ptr<void> machine_;
  Page* page_;
  QHBoxLayout* head_ = new QHBoxLayout;
};

} // namespace korvell
