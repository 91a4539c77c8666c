#include "Base/PropertyList.h"

#include "Base/macOS/CoreFoundation.h"

namespace korvell {

std::optional<Value> parsePropertyList(std::string_view bytes) {
  if (!tamePropertyListForm(bytes)) return std::nullopt;
  const CFOwned<CFDataRef> data(CFDataCreateWithBytesNoCopy(
      nullptr, reinterpret_cast<const UInt8*>(bytes.data()), CFIndex(bytes.size()), kCFAllocatorNull));
  const CFOwned<CFPropertyListRef> list(
      CFPropertyListCreateWithData(nullptr, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
  if (!list) return std::nullopt;
  return cfValue(list.get());
}

} // namespace korvell
