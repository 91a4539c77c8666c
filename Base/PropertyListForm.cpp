#include "Base/PropertyList.h"

#include "Base/Text.h"

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
    sizes_.assign(objects, unknown);
    return unfolded(top, 0) <= mostUnfolded;
  }

private:
  static constexpr std::uint64_t unknown = 0, underWay = UINT64_MAX, tooLarge = UINT64_MAX - 1;

  std::uint8_t byte(std::uint64_t at) const { return static_cast<std::uint8_t>(bytes_[at]); }
  std::uint64_t bigEndian(std::uint64_t at, unsigned size) const {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < size; ++i) value = value << 8 | byte(at + i);
    return value;
  }
  bool inside(std::uint64_t at, std::uint64_t size) const { return at <= table_ && size <= table_ - at; }

  /// The size of an object with all that it refers to; tooLarge for a circle and for what is malformed.
  std::uint64_t unfolded(std::uint64_t object, int depth) {
    if (object >= sizes_.size() || depth > deepest) return tooLarge;
    auto& size = sizes_[object];
    if (size == underWay) return tooLarge;
    if (size == unknown) {
      size = underWay;
      size = measure(bigEndian(table_ + object * offsetSize_, offsetSize_), depth);
    }
    return size;
  }

  std::uint64_t measure(std::uint64_t at, int depth) {
    constexpr std::uint64_t overhead = 16;
    if (!inside(at, 1)) return tooLarge;
    const unsigned kind = byte(at) >> 4;
    std::uint64_t count = byte(at++) & 0x0F;
    if (kind >= 4 && kind != 8 && count == 0x0F) { // the count is an object of its own
      if (!inside(at, 1) || byte(at) >> 4 != 1 || (byte(at) & 0x0F) > 3) return tooLarge;
      const unsigned width = 1u << (byte(at++) & 0x0F);
      if (!inside(at, width)) return tooLarge;
      count = bigEndian(at, width);
      at += width;
    }
    if (count > bytes_.size()) return tooLarge;
    const bool container = kind == 0xA || kind == 0xC || kind == 0xD;
    if (!container) return overhead + 2 * count;

    const auto references = kind == 0xD ? 2 * count : count;
    if (!inside(at, references * referenceSize_)) return tooLarge;
    std::uint64_t sum = overhead;
    for (std::uint64_t i = 0; i < references; ++i) {
      const auto part = unfolded(bigEndian(at + i * referenceSize_, referenceSize_), depth + 1);
      if (part > mostUnfolded || (sum += part) > mostUnfolded) return tooLarge;
    }
    return sum;
  }

  const std::string_view bytes_;
  unsigned offsetSize_ = 0, referenceSize_ = 0;
  std::uint64_t table_ = 0;
  std::vector<std::uint64_t> sizes_; ///< by object
};

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
  if (!trimmed(bytes).starts_with('<') || containersOfXML(bytes) > mostContainers) return std::nullopt;
  return PropertyListForm::xml;
}

} // namespace korvell
