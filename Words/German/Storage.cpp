// Storage: its catalogue, the scan, the clean-up.

#include "Words/German/Tables.h"

namespace korvell::german {

namespace {

constexpr LocalizedText texts[] = {
    {"Free {size}?", "{size} freigeben?"},
    {"Move {size} to the Trash?", "{size} in den Papierkorb legen?"},
    {"Move 1 item to the Trash?", "1 Objekt in den Papierkorb legen?"},
    {"Move {count} items to the Trash?", "{count} Objekte in den Papierkorb legen?"},
    {"Clean up {count} items?", "{count} Objekte aufräumen?"},
    {"Empty the Trash?", "Papierkorb leeren?"},
    {"Run \"{command}\"?", "„{command}“ ausführen?"},
    {"Delete Permanently", "Endgültig löschen"},
    {"Runs \"xcrun simctl delete unavailable\". Permanently deletes {simulators} for OS versions that are no "
     "longer installed, with their apps and data. This cannot be undone.",
     "Führt „xcrun simctl delete unavailable“ aus. Löscht {simulators} für nicht mehr installierte "
     "Systemversionen endgültig, samt Apps und Daten. Das lässt sich nicht rückgängig machen."},
    {"the simulators", "die Simulatoren"},
    {"Runs \"{command}\". Permanently deletes the downloads in {folder} and old versions of what you "
     "installed. This cannot be undone.",
     "Führt „{command}“ aus. Löscht die Downloads in {folder} und alte Versionen des Installierten "
     "endgültig. Das lässt sich nicht rückgängig machen."},
    {"the Homebrew cache", "dem Homebrew-Cache"},
    {"Runs \"{command}\". Permanently deletes every stopped container, networks no container uses, dangling "
     "images and unused build cache. Tagged images and volumes are kept. Stopped containers cannot be "
     "recovered.",
     "Führt „{command}“ aus. Löscht alle gestoppten Container, ungenutzte Netzwerke, verwaiste Images und "
     "ungenutzten Build-Cache endgültig. Images mit Tag und Volumes bleiben. Gestoppte Container lassen sich "
     "nicht wiederherstellen."},
    {"Runs \"{command}\". This cannot be undone.",
     "Führt „{command}“ aus. Das lässt sich nicht rückgängig machen."},
    {"Permanently deletes everything in your Trash ({folders}). This cannot be undone.",
     "Löscht alles im Papierkorb endgültig ({folders}). Das lässt sich nicht rückgängig machen."},
    {"Moves to the Trash:", "Kommt in den Papierkorb:"},
    {"Move to Trash…", "In den Papierkorb legen…"},
    {"Empty Trash…", "Papierkorb leeren…"},
    {"Prune…", "Bereinigen…"},
    {"Clean Up…", "Aufräumen…"},
    {"You can put it back from the Trash.", "Es lässt sich aus dem Papierkorb zurücklegen."},
    {"You can put them back from the Trash.", "Alles lässt sich aus dem Papierkorb zurücklegen."},
    {"What was not begun by then was left alone.",
     "Was bis dahin nicht begonnen war, wurde in Ruhe gelassen."},
    {"Freed {size}.", "{size} freigegeben."},
    {"The command ran, but nothing that can be measured was freed.",
     "Der Befehl lief, aber es wurde nichts Messbares freigegeben."},
    {"Moved {size} to the Trash. Empty the Trash to get the space back.",
     "{size} liegen im Papierkorb. Erst sein Leeren gibt den Platz zurück."},
    {"Nothing changed. The files may be in use or protected.",
     "Nichts hat sich geändert. Die Dateien sind vielleicht in Benutzung oder geschützt."},
    {"Another clean-up is running. Nothing was done.", "Es wird schon aufgeräumt. Es wurde nichts getan."},
    {"Removed 1 item from the Trash.", "1 Objekt aus dem Papierkorb entfernt."},
    {"Removed {count} items from the Trash.", "{count} Objekte aus dem Papierkorb entfernt."},
    {"Moved 1 item to the Trash.", "1 Objekt in den Papierkorb gelegt."},
    {"Moved {count} items to the Trash.", "{count} Objekte in den Papierkorb gelegt."},
    {"Downloaded packages kept to make installs faster. They are downloaded again when needed.",
     "Heruntergeladene Pakete, aufbewahrt für schnellere Installationen. Bei Bedarf werden sie neu geladen."},
    {"Build products and indexes. Xcode rebuilds them the next time you build a project.",
     "Build-Produkte und Indizes. Xcode erzeugt sie neu, sobald ein Projekt wieder gebaut wird."},
    {"Debug symbols copied from each iPhone, iPad or Mac OS version you connected. Xcode copies them again "
     "when that device connects.",
     "Debug-Symbole jeder angeschlossenen Version von iPhone, iPad oder Mac. Xcode kopiert sie erneut, "
     "sobald das Gerät wieder angeschlossen wird."},
    {"Builds you archived for distribution. You need them to read crash reports from those versions.",
     "Für die Verteilung archivierte Builds. Ohne sie lassen sich Absturzberichte dieser Versionen nicht "
     "lesen."},
    {"Simulators for OS versions that are no longer installed. They can never boot again.",
     "Simulatoren für nicht mehr installierte Systemversionen. Sie können nie wieder starten."},
    {"Shared caches the Simulator rebuilds when it starts.",
     "Gemeinsame Caches, die der Simulator beim Start neu anlegt."},
    {"Dependencies of projects you have not touched for 30 days. Run npm, pnpm or yarn install to get them "
     "back.",
     "Abhängigkeiten von Projekten, die seit 30 Tagen unberührt sind. npm, pnpm oder yarn install holt sie "
     "zurück."},
    {"Installers Homebrew already used, plus old versions of what you installed.",
     "Installationspakete, die Homebrew schon verwendet hat, und alte Versionen des Installierten."},
    {"Stopped containers, unused networks, dangling images and build cache.",
     "Gestoppte Container, ungenutzte Netzwerke, verwaiste Images und Build-Cache."},
    {"Files apps keep in ~/Library/Caches. Apps rebuild them, but some may sign you out or download content "
     "again.",
     "Dateien, die Apps in ~/Library/Caches ablegen. Apps legen sie neu an, aber manche verlangen eine neue "
     "Anmeldung oder laden Inhalte erneut."},
    {"Files you already deleted. Emptying the Trash is permanent.",
     "Bereits gelöschte Dateien. Den Papierkorb zu leeren ist endgültig."},
    {"Files over 500 MB in Downloads that you added more than 30 days ago.",
     "Dateien über 500 MB im Ordner Downloads, die seit mehr als 30 Tagen dort liegen."},
    {"Xcode", "Xcode"},
    {"Xcode DerivedData", "Xcode DerivedData"},
    {"Device support files", "Gerätesymbole (Device Support)"},
    {"Xcode Archives", "Xcode-Archive"},
    {"Unavailable simulators", "Nicht verfügbare Simulatoren"},
    {"Simulator caches", "Simulator-Caches"},
    {"node_modules in old projects", "node_modules alter Projekte"},
    {"Homebrew downloads", "Homebrew-Downloads"},
    {"npm cache", "npm-Cache"},
    {"pnpm store", "pnpm-Store"},
    {"Yarn cache", "Yarn-Cache"},
    {"pip cache", "pip-Cache"},
    {"uv cache", "uv-Cache"},
    {"Cargo registry", "Cargo-Registry"},
    {"Go build cache", "Go-Build-Cache"},
    {"CocoaPods cache", "CocoaPods-Cache"},
    {"Gradle caches", "Gradle-Caches"},
    {"Docker", "Docker"},
    {"App caches", "App-Caches"},
    {"Trash", "Papierkorb"},
    {"Large old downloads", "Große alte Downloads"},
    {"Projects", "Projekte"},
    {"Package managers", "Paketverwaltungen"},
    {"Your Mac", "Dieser Mac"},
    {"Safe to remove", "Gefahrlos entfernbar"},
    {"Check first", "Erst prüfen"},
    {"Keep unless you are sure", "Im Zweifel behalten"},
    {"Blue", "Blau"},
    {"Green", "Grün"},
    {"Orange", "Orange"},
    {"Cyan", "Cyan"},
    {"Purple", "Violett"},
    {"Gray", "Grau"},
    {"Indigo", "Indigo"},
    {"Command", "Befehl"},
    {"Empty Trash", "Papierkorb leeren"},
    {"Neither counted nor cleaned, because something is mounted there: {places} and {count} more.",
     "Weder gezählt noch aufgeräumt, weil dort etwas eingehängt ist: {places} und {count} weitere."},
    {"Neither counted nor cleaned, because something is mounted there: {places}.",
     "Weder gezählt noch aufgeräumt, weil dort etwas eingehängt ist: {places}."},
    {"Showing the 10 largest of {count} folders. macOS caches are left alone.",
     "Gezeigt werden die 10 größten von {count} Ordnern. Caches von macOS bleiben unangetastet."},
    {"Korvell needs Full Disk Access to see inside the Trash. Allow it in System Settings › Privacy & "
     "Security.",
     "Um in den Papierkorb zu sehen, braucht Korvell den Festplattenvollzugriff. Er lässt sich unter "
     "Systemeinstellungen › Datenschutz & Sicherheit erlauben."},
    {"{count} items in the Trash", "Objekte im Papierkorb: {count}"},
    {"Leave alone: {object} ({reason})", "In Ruhe lassen: {object} ({reason})"},
    {"It is no longer there.", "Es ist nicht mehr da."},
    {"Emptying the Trash was cut short.", "Das Leeren des Papierkorbs wurde abgebrochen."},
    {"{command} was killed, but has not ended yet.",
     "{command} wurde abgebrochen, ist aber noch nicht zu Ende."},
    {"{command} did not succeed.", "{command} war nicht erfolgreich."},
    {"{command} did not end when it was asked to and was killed.",
     "{command} hat sich auf Bitten nicht beendet und wurde abgebrochen."},
    {"{command} was asked to end and has ended.",
     "{command} wurde gebeten, sich zu beenden, und ist zu Ende."},
    {"Move to the Trash: {object}", "In den Papierkorb legen: {object}"},
    {"Delete permanently: {object}", "Endgültig löschen: {object}"},
    {"Run: {object}", "Ausführen: {object}"},
    {"1 simulator", "1 Simulator"},
    {"{count} simulators", "{count} Simulatoren"},
    {"Deleted with xcrun simctl delete unavailable", "Gelöscht mit xcrun simctl delete unavailable"},
    {"Docker is installed but not running, so there is nothing to measure.",
     "Docker ist installiert, läuft aber nicht; es gibt nichts zu messen."},
    {"Up to this much, plus dangling images", "Bis zu so viel, dazu verwaiste Images"},
    {"Kept: {images} in unused images, {volumes} in volumes. Remove those from Docker itself if you are "
     "sure.",
     "Bleibt: {images} in ungenutzten Images, {volumes} in Volumes. Wer sicher ist, entfernt sie mit Docker "
     "selbst."},
    {"Kept: {images} in unused images. Remove those from Docker itself if you are sure.",
     "Bleibt: {images} in ungenutzten Images. Wer sicher ist, entfernt sie mit Docker selbst."},
    {"Kept: {volumes} in volumes. Remove those from Docker itself if you are sure.",
     "Bleibt: {volumes} in Volumes. Wer sicher ist, entfernt sie mit Docker selbst."},
    {"macOS may ask Korvell for access to this folder. The scan continues once you answer.",
     "macOS fragt vielleicht, ob Korvell auf diesen Ordner zugreifen darf. Nach der Antwort geht es weiter."},
    {"What was freed could not be added to the log or to its total in the settings.",
     "Das Freigegebene ließ sich nicht ins Protokoll oder zur Summe in den Einstellungen schreiben."},
};
constexpr auto sorted = sortedTexts(texts);

} // namespace

std::span<const LocalizedText> storage() { return sorted; }

} // namespace korvell::german
