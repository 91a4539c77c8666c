#pragma once
// For what is told later, when the thread no longer speaks the language in which it was asked for.

#include "Base/Localization.h"

#include <string_view>
#include <utility>

namespace korvell {

/// A function that speaks the language in effect now, whenever and wherever it is called.
template <class Function>
auto inThisLanguage(Function then) {
  return [code = currentLanguage().code, then = std::move(then)](auto&&... values) {
    const InLanguage speaking(code);
    return then(std::forward<decltype(values)>(values)...);
  };
}

/// The process's own language, that of its views.
inline std::string_view ownLanguage() { return installedLanguages().front().code; }

} // namespace korvell
