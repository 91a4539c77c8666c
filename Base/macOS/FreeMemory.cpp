#include "Base/FreeMemory.h"

#include <malloc/malloc.h>

namespace korvell {

void giveFreeMemoryBack() { malloc_zone_pressure_relief(nullptr, 0); } // all zones, as much as there is

} // namespace korvell
