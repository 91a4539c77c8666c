#include "Tool/Terminal.h"

#include "Base/Text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace korvell {

Terminal::Terminal(std::FILE* file, const Environment& environment) : file_(file) {
  isTerminal_ = isatty(fileno(file)) == 1;
  unicode_ = std::string_view(nl_langinfo(CODESET)) == "UTF-8";
  colors_ = isTerminal_ && !environment("NO_COLOR") && environment("TERM").value_or("dumb") != "dumb";
  if (const auto columns = environment("COLUMNS"))
    fixedColumns_ = std::clamp(parseInteger<int>(*columns).value_or(80), 1, 1000);
}

Terminal::Terminal(std::string& sink, int columns, bool unicode, bool colors)
    : sink_(&sink), fixedColumns_(columns), unicode_(unicode), colors_(colors) {}

void Terminal::write(std::string_view text) {
  if (unicode_)
    writeRaw(text);
  else
    writeRaw(plainText(text));
}

void Terminal::writeRaw(std::string_view bytes) {
  isUsed_ = isUsed_ || !bytes.empty();
  if (sink_)
    sink_->append(bytes);
  else if (std::fwrite(bytes.data(), 1, bytes.size(), file_) < bytes.size() && lossError_ == 0)
    lossError_ = errno;
}

void Terminal::flush() {
  if (file_ && std::fflush(file_) != 0 && lossError_ == 0) lossError_ = errno;
}

std::optional<std::string> Terminal::loss() const {
  if (lossError_ == 0 || lossError_ == EPIPE) return std::nullopt;
  return std::strerror(lossError_);
}

int Terminal::columns() const {
  winsize size{};
  if (isTerminal_ && ioctl(fileno(file_), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return fixedColumns_;
}

std::string Terminal::ink(Ink ink, std::string_view text) const {
  constexpr const char* codes[] = {"", "\x1b[2m", "\x1b[1m", "\x1b[32m", "\x1b[33m", "\x1b[31m", "\x1b[36m"};
  if (!colors_ || ink == Ink::plain || text.empty()) return std::string(text);
  return codes[int(ink)] + std::string(text) + "\x1b[0m";
}

namespace {

struct Plain {
  std::string_view character;
  std::string_view ascii; ///< one column
};

constexpr Plain plainCharacters[] = {
    {"–", "-"},  {"—", "-"}, {"−", "-"}, {"●", "*"},  {"µ", "u"},      {"·", "-"}, {"…", "."}, {"°", " "},
    {"•", "*"},  {"›", ">"}, {"→", ">"}, {"←", "<"},  {"↑", "^"},      {"↓", "v"}, {"▲", "^"}, {"▼", "v"},
    {"▸", ">"},  {"▾", "v"}, {"✓", "+"}, {"✗", "x"},  {"×", "x"},      {"█", "#"}, {"▉", "#"}, {"▊", "#"},
    {"▋", "#"},  {"▌", "="}, {"▍", "="}, {"▎", "-"},  {"▏", "-"},      {"░", "."}, {"▁", "_"}, {"▂", "_"},
    {"▃", "-"},  {"▄", "-"}, {"▅", "="}, {"▆", "="},  {"▇", "#"},      {"─", "-"}, {"│", "|"}, {"┤", "|"},
    {"└", "+"},  {"├", "+"}, {"┬", "+"}, {"┴", "+"},  {"┼", "+"},      {"♥", "*"}, {"♡", "o"}, {"“", "\""},
    {"”", "\""}, {"‘", "'"}, {"’", "'"}, {"„", "\""}, {"\u202f", " "}, {"ä", "a"}, {"ö", "o"}, {"ü", "u"},
    {"Ä", "A"},  {"Ö", "O"}, {"Ü", "U"}, {"ß", "s"}};

size_t characterLength(std::string_view text) {
  size_t length = 1;
  while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) ++length;
  return length;
}

} // namespace

std::string plainText(std::string_view utf8) {
  std::string result;
  while (!utf8.empty()) {
    const auto character = utf8.substr(0, characterLength(utf8));
    const auto* known = std::find_if(std::begin(plainCharacters), std::end(plainCharacters),
                                     [&](const Plain& plain) { return plain.character == character; });
    if (static_cast<unsigned char>(character[0]) < 0x80)
      result += character;
    else if (known != std::end(plainCharacters))
      result += known->ascii;
    else
      result.append(size_t(displayWidth(character)), '?');
    utf8.remove_prefix(character.size());
  }
  return result;
}

int inkedWidth(std::string_view line) {
  int width = 0;
  while (!line.empty()) {
    const auto escape = line.find("\x1b[");
    width += displayWidth(line.substr(0, escape));
    if (escape == std::string_view::npos) break;
    const auto end = line.find('m', escape);
    if (end == std::string_view::npos) break;
    line.remove_prefix(end + 1);
  }
  return width;
}

std::string fitted(std::string_view line, int columns) {
  if (inkedWidth(line) <= columns) return std::string(line);
  std::string result;
  bool isInked = false;
  for (int left = columns; !line.empty();) {
    const auto escape = line.find("\x1b[");
    const auto text = line.substr(0, escape);
    // A run that fits only just still has to leave room for the mark of what is cut behind it.
    const bool isCut = displayWidth(text) >= left;
    result += isCut ? truncatedToWidth(std::string(text) + " ", left) : std::string(text);
    if (isCut) break;
    left -= displayWidth(text);
    const auto end = escape == std::string_view::npos ? escape : line.find('m', escape);
    if (end == std::string_view::npos) break;
    const auto code = line.substr(escape, end + 1 - escape);
    result += code;
    isInked = code != "\x1b[0m";
    line.remove_prefix(end + 1);
  }
  return isInked ? result + "\x1b[0m" : result;
}

namespace {

double fractionOf(double fraction) { return std::isfinite(fraction) ? std::clamp(fraction, 0.0, 1.0) : 0.0; }

} // namespace

std::string bar(double fraction, int width) {
  constexpr std::string_view parts[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
  const int eighths = int(std::lround(fractionOf(fraction) * width * 8));
  std::string result;
  int columns = eighths / 8;
  for (int i = 0; i < columns; ++i) result += "█";
  if (eighths % 8 != 0) {
    result += parts[eighths % 8];
    ++columns;
  }
  for (; columns < width; ++columns) result += "░";
  return result;
}

std::string columnBar(double fraction) {
  constexpr std::string_view heights[] = {"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  return std::string(heights[std::min(7, int(fractionOf(fraction) * 8))]);
}

} // namespace korvell
