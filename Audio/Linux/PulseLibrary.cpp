#include "Audio/Linux/PulseLibrary.h"

#include <dlfcn.h>
#include <type_traits>

namespace korvell {

std::unique_ptr<PulseLibrary> PulseLibrary::open(const char* file) {
  void* handle = ::dlopen(file, RTLD_NOW | RTLD_LOCAL);
  if (!handle) return nullptr;
  auto library = std::make_unique<PulseLibrary>();
  bool isWhole = true;
  const auto find = [&](auto& function, const char* name) {
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(handle, name));
    isWhole &= function != nullptr;
  };
#define KORVELL_FIND(name) find(library->name, "pa_" #name);
  KORVELL_PULSE_FUNCTIONS(KORVELL_FIND)
#undef KORVELL_FIND
  if (isWhole) return library;
  ::dlclose(handle);
  return nullptr;
}

} // namespace korvell
