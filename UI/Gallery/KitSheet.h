#pragma once
// Sheets on which the gallery lays out the kit's pieces.

#include "UI/Gallery/Gallery.h"
#include "UI/Kit/Labels.h"

#include <QBoxLayout>

#include <initializer_list>
#include <memory>
#include <string_view>

namespace korvell {

using Made = std::unique_ptr<QWidget>;

/// A ground with rows of controls, each row under a caption.
class Sheet {
public:
  explicit Sheet(const Theme& theme, Token ground = Token::surface)
      : theme_(theme), ground_(std::make_unique<Ground>(theme, ground, nullptr)),
        column_(new QVBoxLayout(ground_.get())) {
    column_->setContentsMargins(24, 24, 24, 24);
    column_->setSpacing(8);
  }

  QWidget* parent() const { return ground_.get(); }
  void caption(std::string_view words) {
    column_->addSpacing(6);
    column_->addWidget(new TextLabel(theme_, TextStyle::caption, Token::text3, words, parent()));
  }
  void row(std::string_view words, std::initializer_list<QWidget*> widgets) {
    caption(words);
    auto* line = new QHBoxLayout;
    line->setSpacing(16);
    for (auto* widget : widgets) line->addWidget(widget, 0, Qt::AlignVCenter);
    line->addStretch();
    column_->addLayout(line);
  }
  void add(QWidget* widget) { column_->addWidget(widget); }
  void add(QLayout* layout) { column_->addLayout(layout); }
  Made take() {
    column_->addStretch();
    return std::move(ground_);
  }

private:
  const Theme& theme_;
  std::unique_ptr<Ground> ground_;
  QVBoxLayout* column_;
};

} // namespace korvell
