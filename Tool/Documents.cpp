// korvell-documents FOLDER DATE: writes the manual page and the shells' completions, for the build.

#include "Tool/Commands.h"
#include "Tool/Completion.h"
#include "Tool/ManPage.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

int main(int argc, char** argv) {
  using namespace korvell;
  if (argc != 3) return exitUsage;
  const std::filesystem::path folder = argv[1];
  const std::pair<const char*, std::string> files[] = {
      {"korvell.1", manPage(allCommands(), argv[2])},
      {"korvell", std::string(completionScript(CompletedShell::bash))},
      {"_korvell", std::string(completionScript(CompletedShell::zsh))},
      {"korvell.fish", std::string(completionScript(CompletedShell::fish))}};
  for (const auto& [name, text] : files) {
    std::ofstream file(folder / name, std::ios::binary);
    if (!file.write(text.data(), std::streamsize(text.size())).flush()) {
      std::fprintf(stderr, "korvell-documents: %s could not be written\n", name);
      return exitFailed;
    }
  }
  return exitOK;
}
