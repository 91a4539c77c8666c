#include "Base/PropertyList.h"

#include "Base/Text.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace korvell {

namespace {

constexpr std::size_t mostBytes = std::size_t{1} << 20;
constexpr std::size_t mostContainers = 4000;
constexpr std::uint64_t mostUnfolded = std::uint64_t{8} << 20;
constexpr int deepest = 512;

constexpr std::string_view binaryMagic = "bplist00", byteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t trailerSize = 32;

/// The shape of a binary document: objects that refer to others by number. Computes how large the document
/// becomes once every reference is a copy.
class BinaryShape {
public:
  explicit BinaryShape(std::string_view bytes) : bytes_(bytes) {}

  bool isTame() {
    const auto trailer = bytes_.size() - trailerSize;
    offsetSize_ = byte(trailer + 6);
    referenceSize_ = byte(trailer + 7);
    const auto objects = bigEndian(trailer + 8, 8), top = bigEndian(trailer + 16, 8);
    table_ = bigEndian(trailer + 24, 8);
    if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8) return false;
    if (table_ > trailer || objects > (trailer - table_) / offsetSize_ || top >= objects) return false;
    measures_.assign(objects, Measure{});
    return unfolded(top, 0).size <= mostUnfolded;
  }

private:
  struct Measure {
    std::uint64_t size = 0; ///< once every reference is a copy
    int height = 0;         ///< of containers in each other
  };
  static constexpr std::uint64_t unknown = 0, underWay = UINT64_MAX;
  static constexpr Measure tooLarge{UINT64_MAX - 1, 0};

  std::uint8_t byte(std::uint64_t at) const { return static_cast<std::uint8_t>(bytes_[at]); }
  std::uint64_t bigEndian(std::uint64_t at, unsigned size) const {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i) value = value << 8 | byte(at + i);
    return value;
  }
  bool inside(std::uint64_t at, std::uint64_t size) const { return at <= table_ && size <= table_ - at; }

  /// Measures an object with all that it refers to; too large for a circle and for what is malformed.
  Measure unfolded(std::uint64_t object, int depth) {
    if (object >= measures_.size() || depth > deepest) return tooLarge;
    auto& known = measures_[object];
    if (known.size == underWay) return tooLarge;
    if (known.size == unknown) {
      known.size = underWay;
      known = measure(offsetOf(object), depth);
    }
    // It may have been measured where it stood less deep.
    return depth + known.height <= deepest ? known : tooLarge;
  }

  std::uint64_t offsetOf(std::uint64_t object) const {
    return bigEndian(table_ + object * offsetSize_, offsetSize_);
  }

  /// Where an object's content is; nothing when it is not inside the file.
  struct Header {
    unsigned kind = 0;
    std::uint64_t count = 0;
    std::uint64_t content = 0;
  };
  std::optional<Header> header(std::uint64_t at) const {
    if (!inside(at, 1)) return std::nullopt;
    Header header{unsigned(byte(at) >> 4), byte(at) & 0x0Fu, at + 1};
    if (header.kind >= 4 && header.kind != 8 && header.count == 0x0F) { // the count is an object of its own
      at = header.content;
      if (!inside(at, 1) || byte(at) >> 4 != 1 || (byte(at) & 0x0F) > 3) return std::nullopt;
      const unsigned width = 1u << (byte(at) & 0x0F);
      if (!inside(at + 1, width)) return std::nullopt;
      header.count = bigEndian(at + 1, width);
      header.content = at + 1 + width;
    }
    if (header.count > bytes_.size()) return std::nullopt;
    return header;
  }

  /// A text without NUL. A parser of ours gives up with an assertion on other names.
  bool isName(std::uint64_t object) const {
    const auto text = object < measures_.size() ? header(offsetOf(object)) : std::nullopt;
    if (!text || (text->kind != 5 && text->kind != 6)) return false;
    const unsigned width = text->kind - 4; // bytes a character
    if (!inside(text->content, text->count * width)) return false;
    for (std::uint64_t i = 0; i < text->count; ++i)
      if (bigEndian(text->content + i * width, width) == 0) return false;
    return true;
  }

  Measure measure(std::uint64_t at, int depth) {
    constexpr std::uint64_t overhead = 16;
    const auto object = header(at);
    if (!object) return tooLarge;
    const auto [kind, count, content] = *object;
    const bool container = kind == 0xA || kind == 0xC || kind == 0xD;
    if (!container) return {overhead + 2 * count, 0};

    const auto references = kind == 0xD ? 2 * count : count;
    if (!inside(content, references * referenceSize_)) return tooLarge;
    Measure sum{overhead, 0};
    for (std::uint64_t i = 0; i < references; ++i) {
      const auto part = bigEndian(content + i * referenceSize_, referenceSize_);
      if (kind == 0xD && i < count && !isName(part)) return tooLarge;
      const auto one = unfolded(part, depth + 1);
      if (one.size > mostUnfolded || (sum.size += one.size) > mostUnfolded) return tooLarge;
      sum.height = std::max(sum.height, one.height + 1);
    }
    return sum;
  }

  const std::string_view bytes_;
  unsigned offsetSize_ = 0, referenceSize_ = 0;
  std::uint64_t table_ = 0;
  std::vector<Measure> measures_; ///< by object
};

/// A character NUL, as it is or as a reference; in a name it makes a parser give up with an assertion.
bool holdsNUL(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return true;
  for (auto at = text.find("&#"); at != std::string_view::npos; at = text.find("&#", at + 2)) {
    auto digits = text.substr(at + 2);
    if (digits.starts_with('x') || digits.starts_with('X')) digits.remove_prefix(1);
    const auto end = digits.find_first_not_of('0');
    if (end == std::string_view::npos || digits[end] == ';') return true;
  }
  return false;
}

/// Comments and quoted markup count too: an upper bound of the depth is enough.
std::size_t containersOfXML(std::string_view text) {
  std::size_t count = 0;
  for (const std::string_view tag : {"<array", "<dict"})
    for (auto at = text.find(tag); at != std::string_view::npos; at = text.find(tag, at + tag.size()))
      ++count;
  return count;
}

} // namespace

std::optional<PropertyListForm> tamePropertyListForm(std::string_view bytes) {
  if (bytes.size() > mostBytes) return std::nullopt;
  if (bytes.starts_with(binaryMagic)) {
    if (bytes.size() < binaryMagic.size() + trailerSize || !BinaryShape(bytes).isTame()) return std::nullopt;
    return PropertyListForm::binary;
  }
  if (bytes.starts_with(byteOrderMark)) bytes.remove_prefix(byteOrderMark.size());
  if (!trimmed(bytes).starts_with('<') || holdsNUL(bytes)) return std::nullopt;
  if (containersOfXML(bytes) > mostContainers) return std::nullopt;
  return PropertyListForm::xml;
}

} // namespace korvell
