// Any bytes as text: what is repaired stays as it is, what is escaped obeys no terminal, what is cut fits.

#include "Base/Date.h"
#include "Base/Text.h"
#include "Fuzz/Expect.h"

#include <algorithm>

using namespace korvell;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto repaired = repairedUTF8(bytes);
  expect(repairedUTF8(repaired) == repaired);
  const auto escaped = escapedControls(bytes);
  expect(repairedUTF8(escaped) == escaped);
  expect(std::none_of(escaped.begin(), escaped.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }));
  for (const int columns : {0, 1, 2, 7, 80})
    expect(displayWidth(truncatedToWidth(repaired, columns)) <= columns);
  if (const auto date = parseRFC3339(bytes)) expect(parseRFC3339(rfc3339(*date)).has_value());
  return 0;
}
