#include "UI/Kit/Theme.h"

#include "UI/Kit/Tone.h"
#include "UI/Kit/Type.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace korvell {

namespace {

struct TokenColors {
  Token token;
  QRgb light;
  QRgb dark;
};

constexpr TokenColors colors[] = {
    {Token::bg, 0xF4F3EF, 0x131517},          {Token::surface, 0xFCFBF9, 0x1A1D20},
    {Token::raised, 0xFFFFFF, 0x222629},      {Token::sunken, 0xE9E7E1, 0x0E1011},
    {Token::hover, 0xF4F3F1, 0x232629},       {Token::hairline, 0xE1DED7, 0x2B2F33},
    {Token::edge, 0xBABBB7, 0x4F5458},        {Token::border, 0x82837C, 0x74797E},
    {Token::text1, 0x1A1C1E, 0xEDEEEE},       {Token::text2, 0x4C5156, 0xB4B9BD},
    {Token::text3, 0x60656A, 0x979EA3},       {Token::accent, 0x0B6772, 0x5BC0C4},
    {Token::accentInk, 0xFFFFFF, 0x06282B},   {Token::accentWash, 0xE4ECEB, 0x24373A},
    {Token::accentWash2, 0xD6E1DF, 0x21373A}, {Token::good, 0x21744A, 0x62BE8C},
    {Token::info, 0x545E69, 0xA3ADB7},        {Token::warning, 0x8F5200, 0xF0B252},
    {Token::warningMark, 0xBD7600, 0xF0B252}, {Token::critical, 0xB3261E, 0xFF8577},
    {Token::goodWash, 0xEAF0EB, 0x23322E},    {Token::infoWash, 0xEFEEED, 0x2C3034},
    {Token::warningWash, 0xF3EDE5, 0x363027}, {Token::criticalWash, 0xF6EAE7, 0x382B2B},
    {Token::cpu, 0x0652A2, 0x6CABF1},         {Token::memory, 0x9870C4, 0x8869B3},
    {Token::disk, 0xA53C07, 0xD27332},        {Token::network, 0x338D6B, 0x419A79},
    {Token::gpu, 0x7D3E59, 0xFA91AB},         {Token::energy, 0xAA8306, 0xE5CA5F},
    {Token::cyan, 0x0E4E60, 0x68A0AA},        {Token::indigo, 0x504EAF, 0xA2A8FC},
    {Token::gray, 0x686D72, 0xC9CDD0},        {Token::cpuFill, 0xE3EAF0, 0x26323F},
    {Token::cpuBand, 0xC8D8E7, 0x33485F},     {Token::memoryFill, 0xF2EDF4, 0x2B2836},
    {Token::memoryBand, 0xE7DEEE, 0x3B344C},  {Token::diskFill, 0xF3E8E1, 0x362A23},
    {Token::diskBand, 0xEAD3C6, 0x513725},    {Token::networkFill, 0xE8F0EB, 0x20302D},
    {Token::networkBand, 0xD2E4DB, 0x26423B}, {Token::gpuFill, 0xEFE8E9, 0x3C2E35},
    {Token::gpuBand, 0xE1D3D7, 0x5D404A},     {Token::energyFill, 0xF4EFE1, 0x383729},
    {Token::energyBand, 0xEBE2C6, 0x575133},  {Token::grid, 0xEAE9E7, 0x2F3235},
    {Token::axis, 0xC6C5C4, 0x55585A},        {Token::hatch, 0xE9E8E6, 0x2D3033},
};
static_assert(std::size(colors) == tokenCount);

Token inHighContrast(Token token) {
  switch (token) {
  case Token::text2:
  case Token::text3:
    return Token::text1;
  case Token::hairline:
  case Token::edge:
    return Token::border;
  case Token::accentWash:
  case Token::accentWash2:
  case Token::goodWash:
  case Token::infoWash:
  case Token::warningWash:
  case Token::criticalWash:
    return Token::surface;
  default:
    return token;
  }
}

double luminance(const QColor& color) {
  auto linear = [](double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// A measure's fill and band follow each other in the table, the measures in the palette's order.
Token besideLine(Token line, int offset) {
  auto found = std::find(std::begin(palette), std::end(palette), line);
  if (found == std::end(palette)) return Token::hover;
  return static_cast<Token>(static_cast<int>(Token::cpuFill) + 2 * (found - std::begin(palette)) + offset);
}

Look completed(Look look) {
  look.textScale = std::clamp(look.textScale, 0.75, 2.5);
  if (look.family.isEmpty()) look.family = systemFamily();
  return look;
}

} // namespace

Token fillOf(Token line) { return besideLine(line, 0); }

Token bandOf(Token line) { return besideLine(line, 1); }

const ToneLook& lookOf(Tone tone) {
  static constexpr ToneLook looks[] = {
      {Icon::checkCircle, Token::good, Token::good, Token::goodWash},
      {Icon::info, Token::info, Token::info, Token::infoWash},
      {Icon::warning, Token::warningMark, Token::warning, Token::warningWash},
      {Icon::critical, Token::critical, Token::critical, Token::criticalWash},
  };
  return looks[static_cast<std::size_t>(tone)];
}

Theme::Theme(Look look) : look_(completed(std::move(look))) {}

void Theme::set(Look look) {
  look = completed(std::move(look));
  if (look == look_) return;
  look_ = std::move(look);
  observers_.tell();
}

QColor Theme::color(Token token) const {
  return colorOf(look_.highContrast ? inHighContrast(token) : token, look_.appearance);
}

QColor Theme::mixed(Token over, double share, Token ground) const {
  auto above = color(over);
  auto below = color(ground);
  auto channel = [&](int one, int other) {
    return static_cast<int>(std::lround(one * share + other * (1 - share)));
  };
  return QColor(channel(above.red(), below.red()), channel(above.green(), below.green()),
                channel(above.blue(), below.blue()));
}

int Theme::scaled(double length) const { return static_cast<int>(std::lround(length * look_.textScale)); }

Subscription Theme::observe(std::function<void()> observer) const {
  return observers_.add(std::move(observer));
}

QColor colorOf(Token token, Appearance appearance) {
  const auto& row = colors[static_cast<std::size_t>(token)];
  return QColor::fromRgb(appearance == Appearance::dark ? row.dark : row.light);
}

double contrast(const QColor& one, const QColor& other) {
  auto [low, high] = std::minmax({luminance(one), luminance(other)}); // copies: of temporaries it would refer
  return (high + 0.05) / (low + 0.05);
}

} // namespace korvell
