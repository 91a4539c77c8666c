#pragma once
// A file in "autostart" of the user's configuration folder, which every desktop's session reads.

#include "Base/UserFolders.h"
#include "Platform/Formats/AutostartEntry.h"
#include "Platform/LoginItem.h"

#include <string>

namespace korvell {

class AutostartFile final : public LoginItem {
public:
  /// `program` is what the entry starts; empty where it is not known, and then nothing can be enabled.
  AutostartFile(const UserFolders& folders, std::string program,
                const std::string& fileName = "korvell.desktop", AutostartTitle title = {});

  bool isEnabled() const override;
  /// Keeps what others wrote in the entry.
  Outcome setEnabled(bool enabled) override;
  bool isThere() const override;
  Outcome remove() override;

private:
  const std::string folder_, path_, program_;
  const AutostartTitle title_;
};

} // namespace korvell
