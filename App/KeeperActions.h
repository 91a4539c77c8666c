#pragma once
// What the keeper does for other processes, each {"do":"NAME", …} on a line:
//
//   {"do":"stopServer","pid":1234,"startedAt":"2026-03-01T12:34:56.789Z"}   -> "outcome"
//   {"do":"quit","processes":[{"pid":1234,"start":5678}],"force":false}     -> "sent", "gone", "denied"
//   {"do":"rescanStartupItems"}                                             -> "startupItems"
//   {"do":"removeStartupItem","plistPath":"…","label":"…","program":"…"}
//
// Only servers and startup items that the model lists are touched, and processes only while they still are
// those that the caller saw ("start" as the process table tells it). The answer comes when the lists are up
// to date again.

#include "App/Keeper.h"

namespace korvell {

/// Teaches the keeper all of them; the model outlives it.
void addModelActions(Keeper& keeper, AppModel& model);

} // namespace korvell
