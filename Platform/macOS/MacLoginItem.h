#pragma once
// The application's own login item (SMAppService), as System Settings > Login Items lists it.

#include "Platform/LoginItem.h"

namespace korvell {

class MacLoginItem final : public LoginItem {
public:
  bool isEnabled() const override;
  Outcome setEnabled(bool enabled) override;
};

} // namespace korvell
