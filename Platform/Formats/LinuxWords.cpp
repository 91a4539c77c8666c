#include "Platform/Formats/LinuxWords.h"

namespace korvell {

namespace {

constexpr LocalizedText words[] = {
    {"Your Mac", "Your computer"},
    {"My Mac’s health", "My computer’s health"},
    {"Your Mac is throttling", "Your computer is throttling"},
    {"Your Mac is running out of memory", "Your computer is running out of memory"},
    {"Your Mac last week: {score} out of 100", "Your computer last week: {score} out of 100"},
    {"macOS is compressing and swapping heavily, so everything slows down.",
     "The system is compressing and swapping heavily, so everything slows down."},
    {"{n}% of your Mac, about {c} cores, for 10 minutes.",
     "{n}% of your computer, about {c} cores, for 10 minutes."},
    {"{free} free. macOS needs room for swap and updates.",
     "{free} free. The system needs room for swap and updates."},
    {"{cycles} cycles. Apple recommends service below 80%.",
     "{cycles} cycles. A new battery is worth it below 80%."},
    {"From ~/.claude and ~/.codex, nothing leaves your Mac.",
     "From ~/.claude and ~/.codex, nothing leaves your computer."},
    {"API-equivalent cost is what these tokens would cost at API list prices (checked {date}). Subscription "
     "plans do not pay per token. Tokens include cache reads and writes. Cursor keeps no usage data on this "
     "Mac, so it is not shown.",
     "API-equivalent cost is what these tokens would cost at API list prices (checked {date}). Subscription "
     "plans do not pay per token. Tokens include cache reads and writes. Cursor keeps no usage data on this "
     "computer, so it is not shown."},
    {"Background programs that launch with your Mac. Leftovers point to programs that no longer exist, "
     "usually "
     "from apps you already deleted.",
     "Background programs that launch with your computer. Leftovers point to programs that no longer exist, "
     "usually from apps you already deleted."},
    {"Your launch agents", "Your startup programs"},
    {"Launch agents for all users", "Startup programs for all users"},
    {"System daemons", "System services"},
    {"The mark in the menu bar", "The mark in the tray"},
    {"Show Folder in Finder", "Show Folder"},
    {"Show {folder} in Finder", "Show {folder}"},
    {"Show File in Finder", "Show File"},
    {"Show in Finder", "Show in File Manager"},
    {"Files apps keep in ~/Library/Caches. Apps rebuild them, but some may sign you out or download content "
     "again.",
     "Files apps keep in ~/.cache. Apps rebuild them, but some may sign you out or download content again."},
    {"Showing the 10 largest of {count} folders. macOS caches are left alone.",
     "Showing the 10 largest of {count} folders."},
    {"Korvell needs Full Disk Access to see inside the Trash. Allow it in System Settings › Privacy & "
     "Security.",
     "Korvell may not look inside the Trash. Check the permissions of its folder."},
    {"macOS hides the memory and CPU of processes owned by the system unless an administrator approves a "
     "helper. It is read-only: it can only report those numbers.",
     "Linux hides what other users' processes read from and write to storage unless an administrator enables "
     "a helper. It is read-only: it can only report those numbers."},
    {"macOS may ask Korvell for access to this folder. The scan continues once you answer.",
     "The system may ask Korvell for access to this folder. The scan continues once you answer."},
    {"Menu bar", "Tray"},
    {"System daemon", "System service"},
    {"Trackpad", "Touchpad"},
    {"Links korvell into ~/.local/bin so you can run korvell status in Terminal.",
     "Links korvell into ~/.local/bin so you can run korvell status in a terminal."},
    {"Waiting for approval in System Settings > Login Items", "Waiting for an administrator's approval"},
    {"Open Login Items", "Open Settings"},
    {"Enabled, but not for this user",
     "Enabled for members of the group “korvell”: have an administrator add you, then log in again"},
};
constexpr auto sorted = sortedTexts(words);

} // namespace

std::span<const LocalizedText> linuxWords() { return sorted; }

} // namespace korvell
