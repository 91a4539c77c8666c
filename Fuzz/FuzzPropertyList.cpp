// Property lists of any bytes: no crash, no endless unfolding; what is read can be printed.

#include "Base/PropertyList.h"
#include "Fuzz/Expect.h"

using namespace korvell;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto value = parsePropertyList(bytes);
  if (!value) return 0;
  expect(tamePropertyListForm(bytes).has_value());
  dumpJSON(*value);
  return 0;
}
