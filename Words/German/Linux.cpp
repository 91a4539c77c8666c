// Where Linux has other words than macOS.

#include "Words/German/Tables.h"

namespace korvell::german {

namespace {

constexpr LocalizedText texts[] = {
    {"Your Mac", "Dieser Rechner"},
    {"My Mac’s health", "Zustand meines Rechners"},
    {"Your Mac is throttling", "Dieser Rechner wird gedrosselt"},
    {"Your Mac is running out of memory", "Auf diesem Rechner wird der Arbeitsspeicher knapp"},
    {"Your Mac last week: {score} out of 100", "Dieser Rechner in der letzten Woche: {score} von 100"},
    {"macOS is compressing and swapping heavily, so everything slows down.",
     "Das System komprimiert und lagert stark aus, dadurch wird alles langsamer."},
    {"{n}% of your Mac, about {c} cores, for 10 minutes.",
     "{n} % dieses Rechners, etwa {c} Kerne, seit 10 Minuten."},
    {"{free} free. macOS needs room for swap and updates.",
     "{free} frei. Das System braucht Platz für Auslagerung und Updates."},
    {"{cycles} cycles. Apple recommends service below 80%.",
     "Ladezyklen: {cycles}. Unter 80 % lohnt sich eine neue Batterie."},
    {"From ~/.claude and ~/.codex, nothing leaves your Mac.",
     "Aus ~/.claude und ~/.codex; nichts verlässt diesen Rechner."},
    {"API-equivalent cost is what these tokens would cost at API list prices (checked {date}). Subscription "
     "plans do not pay per token. Tokens include cache reads and writes. Cursor keeps no usage data on this "
     "Mac, so it is not shown.",
     "Der API-Gegenwert ist, was diese Tokens zu API-Listenpreisen kosten würden (geprüft {date}). Bei Abos "
     "wird nicht pro Token bezahlt. Tokens zählen Lesen und Schreiben des Caches mit. Cursor hinterlegt auf "
     "diesem Rechner keine Nutzungsdaten und fehlt daher."},
    {"Background programs that launch with your Mac. Leftovers point to programs that no longer exist, "
     "usually from apps you already deleted.",
     "Hintergrundprogramme, die mit diesem Rechner starten. Verwaiste Einträge verweisen auf Programme, die "
     "es nicht mehr gibt, meist von bereits gelöschten Apps."},
    {"Your launch agents", "Eigene Startprogramme"},
    {"Launch agents for all users", "Startprogramme für alle Benutzer"},
    {"System daemons", "Systemdienste"},
    {"Show Folder in Finder", "Ordner zeigen"},
    {"Show {folder} in Finder", "{folder} zeigen"},
    {"Show File in Finder", "Datei zeigen"},
    {"Show in Finder", "Im Dateimanager zeigen"},
    {"Files apps keep in ~/Library/Caches. Apps rebuild them, but some may sign you out or download content "
     "again.",
     "Dateien, die Apps in ~/.cache ablegen. Apps legen sie neu an, aber manche verlangen eine neue "
     "Anmeldung oder laden Inhalte erneut."},
    {"Showing the 10 largest of {count} folders. macOS caches are left alone.",
     "Gezeigt werden die 10 größten von {count} Ordnern."},
    {"Korvell needs Full Disk Access to see inside the Trash. Allow it in System Settings › Privacy & "
     "Security.",
     "Korvell darf nicht in den Papierkorb sehen. Die Berechtigungen seines Ordners prüfen."},
    {"macOS hides the memory and CPU of processes owned by the system unless an administrator approves a "
     "helper. It is read-only: it can only report those numbers.",
     "Linux verbirgt, was Prozesse anderer Benutzer von Datenträgern lesen und darauf schreiben, solange "
     "kein Administrator einen Hilfsdienst aktiviert. Der Dienst kann nur lesen: Er meldet diese Werte und "
     "sonst nichts."},
    {"macOS may ask Korvell for access to this folder. The scan continues once you answer.",
     "Das System fragt vielleicht, ob Korvell auf diesen Ordner zugreifen darf. Nach der Antwort geht es "
     "weiter."},
    {"Menu bar", "Infobereich"},
    {"System daemon", "Systemdienst"},
    {"Trackpad", "Touchpad"},
    {"Links korvell into ~/.local/bin so you can run korvell status in Terminal.",
     "Verlinkt korvell in ~/.local/bin, damit sich korvell status in einem Terminal ausführen lässt."},
    {"Waiting for approval in System Settings > Login Items",
     "Wartet auf die Erlaubnis eines Administrators"},
    {"Open Login Items", "Einstellungen öffnen"},
    {"Enabled, but not for this user", "Aktiviert für Mitglieder der Gruppe „korvell“: Ein Administrator "
                                       "nimmt das Konto auf, danach neu anmelden"},
    {"The mark in the menu bar", "Das Zeichen im Infobereich"},
};
constexpr auto sorted = sortedTexts(texts);

} // namespace

std::span<const LocalizedText> onLinux() { return sorted; }

} // namespace korvell::german
