#include "Tool/Confirmation.h"

#include "Base/Localization.h"

#include <unistd.h>

namespace korvell {

bool confirmed(Context& context, const Arguments& arguments, std::string_view text) {
  if (arguments.flag("--yes")) return true;
  if (!context.in || isatty(fileno(context.in)) != 1) {
    context.err.line(text);
    fail(context, localized("Not done: there is no terminal to ask on; --yes confirms."));
    return false;
  }
  context.err.line(text);
  context.err.write(localized("Continue?") + " [y/N] ");
  context.err.flush();
  char answer[256] = {};
  if (!std::fgets(answer, sizeof answer, context.in)) {
    context.err.line();
    return false;
  }
  return answer[0] == 'y' || answer[0] == 'Y';
}

} // namespace korvell
