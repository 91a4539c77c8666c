#include "Base/FreeMemory.h"

#include <malloc.h>

namespace korvell {

void giveFreeMemoryBack() { malloc_trim(0); }

} // namespace korvell
