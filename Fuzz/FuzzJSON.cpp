// JSON of any bytes: what is read prints as JSON that is read the same.

#include "Base/Value.h"
#include "Fuzz/Expect.h"

using namespace korvell;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const auto value = parseJSON({reinterpret_cast<const char*>(data), size});
  if (!value) return 0;
  const auto printed = dumpJSON(*value);
  const auto again = parseJSON(printed);
  expect(again.has_value());
  expect(dumpJSON(*again) == printed);
  return 0;
}
