#include "UI/Kit/Type.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

#include <cmath>

namespace korvell {

namespace {

constexpr double usualSize = 13;
constexpr double largestUsualDesktop = 44.0 / 3; // 11 points at 96 to the inch

} // namespace

const TypeSize& sizeOf(TextStyle style) {
  static constexpr TypeSize sizes[] = {
      {44, QFont::DemiBold, 48, -0.02},  // display
      {28, QFont::DemiBold, 32, -0.02},  // figureLarge
      {20, QFont::DemiBold, 24, -0.015}, // figureMedium
      {20, QFont::DemiBold, 26, -0.014}, // title
      {15, QFont::DemiBold, 20, -0.006}, // sub
      {13, QFont::DemiBold, 18, 0},      // head
      {13, QFont::Medium, 18, 0},        // strong
      {13, QFont::Normal, 18, 0},        // body
      {12, QFont::Normal, 16, 0},        // small
      {12, QFont::Medium, 16, 0},        // smallMedium
      {12, QFont::DemiBold, 16, 0},      // smallStrong
      {11, QFont::Normal, 14, 0},        // caption
  };
  static_assert(std::size(sizes) == static_cast<std::size_t>(TextStyle::caption) + 1);
  return sizes[static_cast<std::size_t>(style)];
}

QFont fontOf(const Theme& theme, TextStyle style) {
  const auto& size = sizeOf(style);
  return fontOf(theme, size.size, size.weight, size.tracking);
}

QFont fontOf(const Theme& theme, double size, QFont::Weight weight, double tracking) {
  QFont result(theme.family());
  result.setPixelSize(theme.scaled(size));
  result.setWeight(weight);
  // Hinting would move letters by whole pixels and unevenly at fractional scales.
  result.setHintingPreference(QFont::PreferNoHinting);
  if (tracking != 0) result.setLetterSpacing(QFont::AbsoluteSpacing, tracking * theme.scaled(size));
  return result;
}

int lineHeight(const Theme& theme, TextStyle style) { return theme.scaled(sizeOf(style).line); }

TextStyle unitStyle(TextStyle number) {
  switch (number) {
  case TextStyle::display:
    return TextStyle::figureMedium;
  case TextStyle::figureLarge:
    return TextStyle::sub;
  case TextStyle::figureMedium:
    return TextStyle::strong;
  case TextStyle::title:
    return TextStyle::sub;
  case TextStyle::sub:
  case TextStyle::head:
    return TextStyle::smallMedium;
  case TextStyle::strong:
    return TextStyle::smallMedium;
  case TextStyle::body:
    return TextStyle::small;
  default:
    return TextStyle::caption;
  }
}

QString chosenFamily(const QString& desktop, const std::function<bool(const QString&)>& isInstalled) {
  if (!desktop.startsWith("DejaVu") && !desktop.startsWith("Bitstream Vera")) return desktop;
  for (const char* better : {"Inter", "Noto Sans"})
    if (isInstalled(better)) return better;
  return desktop;
}

QString systemFamily() {
  auto desktop = QFontInfo(QGuiApplication::font()).family();
  return chosenFamily(desktop, [](const QString& family) { return QFontDatabase::hasFamily(family); });
}

double textScaleOf(double desktopPixels) {
  if (desktopPixels < usualSize) return desktopPixels / usualSize;
  return std::max(1.0, desktopPixels / largestUsualDesktop);
}

} // namespace korvell
