#pragma once
// Asking before something is done that matters.

#include "Tool/Command.h"

namespace korvell {

/// The option that answers the question.
inline Option yesOption() { return {"--yes", Option::Kind::flag, "Do not ask"}; }

/// Shows the text and asks "Continue? [y/N]". True for --yes and for an answer that begins with y or Y; an
/// end of input and anything else mean no. Without a terminal to answer from and without --yes nothing is
/// asked: the refusal is printed and the answer is no.
[[nodiscard]] bool confirmed(Context& context, const Arguments& arguments, std::string_view text);

} // namespace korvell
