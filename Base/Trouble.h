#pragma once
// Something that went wrong, in words: for the user, who wants to know which file it is, and for whoever is
// asked for help, who must not learn what the user's files and programs are called.

#include "Base/Localization.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace korvell {

struct Trouble {
  std::string text;     ///< localised, with the names of files and what they hold
  std::string nameless; ///< English; "{path}" stands in place of a path, and the cause at the end

  bool operator==(const Trouble&) const = default;
};

/// The values stand in the text only. `cause` names nothing: the system's own words for an error, or a word
/// of a closed set; empty without one.
Trouble troubleOf(std::string_view key, std::initializer_list<LocalizedValue> values,
                  std::string_view cause = {});
/// Two sentences.
Trouble joined(Trouble first, const Trouble& second);

} // namespace korvell
