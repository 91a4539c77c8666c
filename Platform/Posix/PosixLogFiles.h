#pragma once
// Log files through the file system's own calls.

#include "Platform/LogFiles.h"

namespace korvell {

class PosixLogFiles final : public LogFiles {
public:
  std::vector<LogFile> list(const std::string& root, std::string_view extension) override;
  std::unique_ptr<OpenLog> open(const std::string& path) override;
};

} // namespace korvell
