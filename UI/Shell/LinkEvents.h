#pragma once
// Links that the desktop hands to the running application as an event. macOS hands every link over so, the
// one that started the application among them; elsewhere links come by the command line. Main thread only.

#include <QObject>

#include <functional>
#include <string>
#include <vector>

namespace korvell {

class LinkEvents final : public QObject {
public:
  /// After the toolkit's application object. `opened` gets one address a time, as it was written; it may come
  /// from anybody, and may name a file.
  explicit LinkEvents(std::function<void(const std::vector<std::string>& urls)> opened);

  bool eventFilter(QObject* receiver, QEvent* event) override;

private:
  const std::function<void(const std::vector<std::string>&)> opened_;
};

} // namespace korvell
