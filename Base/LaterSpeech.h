#pragma once
// For what is told later, when the thread no longer speaks the language in which it was asked for.

#include "Base/Localization.h"

#include <string_view>
#include <utility>

namespace korvell {

/// A function that speaks the language in effect now, whenever and wherever it is called. Where that is the
/// process's own, it is the process's own of that later moment.
template <class Function>
auto inThisLanguage(Function then) {
  const auto now = currentLanguage().code;
  return [code = now == ownLanguage() ? std::string_view() : now, then = std::move(then)](auto&&... values) {
    const InLanguage speaking(code); // none changes nothing
    return then(std::forward<decltype(values)>(values)...);
  };
}

} // namespace korvell
