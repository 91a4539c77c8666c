#include "Platform/Formats/LinuxWords.h"

namespace korvell {

namespace {

constexpr LocalizedText words[] = {
    {"Your Mac", "Your computer"},
    {"Your Mac is throttling", "Your computer is throttling"},
    {"Your Mac is running out of memory", "Your computer is running out of memory"},
    {"Your Mac last week: {score} out of 100", "Your computer last week: {score} out of 100"},
    {"{n}% of your Mac, about {c} cores, for 10 minutes.",
     "{n}% of your computer, about {c} cores, for 10 minutes."},
    {"{free} free. macOS needs room for swap and updates.",
     "{free} free. The system needs room for swap and updates."},
    {"{cycles} cycles. Apple recommends service below 80%.",
     "{cycles} cycles. A new battery is worth it below 80%."},
    {"From ~/.claude and ~/.codex, nothing leaves your Mac.",
     "From ~/.claude and ~/.codex, nothing leaves your computer."},
    {"Background programs that launch with your Mac. Leftovers point to programs that no longer exist, "
     "usually "
     "from apps you already deleted.",
     "Background programs that launch with your computer. Leftovers point to programs that no longer exist, "
     "usually from apps you already deleted."},
    {"Show Folder in Finder", "Show Folder"},
};

} // namespace

std::span<const LocalizedText> linuxWords() { return words; }

} // namespace korvell
