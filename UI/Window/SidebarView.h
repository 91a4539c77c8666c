#pragma once
#include "App/Model.h"
#include "UI/Kit/Painted.h"
#include "UI/Kit/Type.h"
#include <QPainter>
#include <functional>
namespace korvell {
struct Sidebar {};
inline Sidebar sidebar(const Model&, SidebarItem) { return {}; }
class SidebarView : public Painted {
public:
  SidebarView(const Theme& theme, QWidget* parent) : Painted(theme, parent) { setFixedWidth(216); }
  void onOpen(std::function<void(SidebarItem)>) {}
  void onSettings(std::function<void()>) {}
  void setRail(bool rail) { setFixedWidth(rail ? 56 : 216); }
  void show(const Sidebar&) {}
  void draw(QPainter& p) override { p.fillRect(rect(), theme().color(Token::bg)); }
  QAccessible::Role role() const override { return QAccessible::List; }
};
}
