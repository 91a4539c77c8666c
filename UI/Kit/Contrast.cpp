#include "UI/Kit/Contrast.h"

#include <iterator>

namespace korvell {

namespace {

constexpr double ofText = 4.5;
constexpr double ofMarks = 3;

void add(std::vector<ContrastDemand>& demands, double least, std::initializer_list<Token> inks,
         std::initializer_list<Token> grounds) {
  for (auto ink : inks)
    for (auto ground : grounds) demands.push_back({ink, ground, least});
}

std::vector<ContrastDemand> makeDemands() {
  using enum Token;
  std::vector<ContrastDemand> all;
  add(all, ofText, {text1, text2, text3}, {bg, surface, raised, sunken, hover});
  add(all, ofText, {accent, good, info, warning, critical}, {bg, surface, raised, hover});
  add(all, ofText, {text1, text2, warning}, {accentWash, accentWash2});
  add(all, ofText, {accent}, {accentWash, accentWash2}); // a selected icon, a quiet button's text
  add(all, ofText, {text1, text2}, {goodWash, infoWash, warningWash, criticalWash});
  add(all, ofText, {accentInk}, {accent});
  add(all, ofText, {surface}, {critical});
  for (auto [own, wash] :
       {std::pair{good, goodWash}, {info, infoWash}, {warning, warningWash}, {critical, criticalWash}})
    add(all, ofText, {own}, {wash});
  add(all, ofMarks, {border, warningMark}, {bg, surface, raised});
  add(all, ofMarks, {warningMark}, {warningWash});
  for (auto line : palette) {
    add(all, ofMarks, {line}, {bg, surface, raised, hover, fillOf(line)});
  }
  add(all, ofMarks, {cyan, indigo, gray}, {bg, surface, raised});
  return all;
}

} // namespace

const std::vector<ContrastDemand>& contrastDemands() {
  static const auto demands = makeDemands();
  return demands;
}

std::string_view nameOf(Token token) {
  static constexpr std::string_view names[] = {
      "bg",          "surface",     "raised",       "sunken",   "hover",       "hairline",    "edge",
      "border",      "text1",       "text2",        "text3",    "accent",      "accentInk",   "accentWash",
      "accentWash2", "good",        "info",         "warning",  "warningMark", "critical",    "goodWash",
      "infoWash",    "warningWash", "criticalWash", "cpu",      "memory",      "disk",        "network",
      "gpu",         "energy",      "cyan",         "indigo",   "gray",        "cpuFill",     "cpuBand",
      "memoryFill",  "memoryBand",  "diskFill",     "diskBand", "networkFill", "networkBand", "gpuFill",
      "gpuBand",     "energyFill",  "energyBand",   "grid",     "axis",        "hatch",
  };
  static_assert(std::size(names) == tokenCount);
  return names[static_cast<std::size_t>(token)];
}

} // namespace korvell
