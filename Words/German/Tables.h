#pragma once
// The German texts, a table for each part of Korvell.
//
// Glossary, so that a thing has one name everywhere. Buttons and menu items are infinitives ("Beenden…"),
// sentences address nobody, and there is a narrow no-break space before "%" and "°".
//
//   alert            Meldung (a finding's severity "warning" is Warnung)
//   app, application App; a program or a command is a Programm
//   clean up         aufräumen; to free: freigeben
//   dev server       Dev-Server
//   finding          Befund
//   health, score    Zustand, Zustandswert
//   helper           Hilfsdienst
//   idle             untätig
//   item             Objekt; a startup item is an Autostart-Eintrag
//   keeper           das führende Korvell
//   leftover         verwaister Eintrag
//   memory, storage  Speicher (in sentences Arbeitsspeicher), Speicherplatz
//   panel            Übersicht
//   pressure         Druck, Speicherdruck
//   scan             durchsuchen
//   Trash            Papierkorb
//   tray             Infobereich (what it stands in, the desktop's panel, is a Leiste)
//   wired            reserviert

#include "Base/Localization.h"

#include <span>

namespace korvell::german {

std::span<const LocalizedText> general();
std::span<const LocalizedText> health();
std::span<const LocalizedText> interface();
std::span<const LocalizedText> storage();
std::span<const LocalizedText> system();
std::span<const LocalizedText> tool();
/// Where Linux has other words.
std::span<const LocalizedText> onLinux();

} // namespace korvell::german
