#include "Tool/UnreadableHistory.h"

#include "Base/Text.h"
#include "Core/History/HistoryStore.h"

namespace korvell {

int failUnreadableHistory(Context& context) {
  const auto path = context.host.folders.data + "/" + std::string(HistoryStore::fileName);
  return fail(context, localized("the history can't be read: {path}", {{"path", escapedControls(path)}}));
}

} // namespace korvell
