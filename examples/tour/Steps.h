#pragma once

#include "Report.h"

class QDir;

// The steps of the tour, in the order in which a client goes through them. Each notes its calls in the
// report.

/// The assets: opened and checked, identity, fonts, palette, strings, endpoints.
void showAssets(Report& report);

/// The contacts of the JSON files in \a folder, read, stored as records, written back, and searched.
void showDirectory(Report& report, QDir const& folder);

/// A dialled number, and the call that it starts.
void showCall(Report& report);

/// A chat message on its way to the screen.
void showChat(Report& report);

/// Two recordings in \a scratch whose headers were never finished, repaired and joined.
void showRecordings(Report& report, QDir const& scratch);

/// A settings blob, scrambled and back.
void showSettings(Report& report);

/// A file fetched into \a scratch from a server on this machine, and the reconnection when it was away.
void showTransfer(Report& report, QDir const& scratch);
