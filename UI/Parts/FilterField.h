#pragma once
// The field that filters a list: with a magnifier, the keys that lead to it as long as it is empty, and Esc
// emptying it.

#include "UI/Kit/Native.h"

namespace korvell {

class TextLabel;

class FilterField final : public TextField {
public:
  FilterField(const Theme& theme, QWidget* parent);

  /// Takes the focus when it is there to take it.
  void take();
  void onFilter(std::function<void(std::string)> handler);

protected:
  void changeEvent(QEvent*) override;

private:
  void mirror();
  TextLabel* keys_;
};

} // namespace korvell
