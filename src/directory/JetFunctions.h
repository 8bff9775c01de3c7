#pragma once

struct sqlite3;

// Registers the Jet functions the console's statements use on a connection:
// jet_right, jet_format, jet_cdate, jet_datediff and jet_datesub.
bool RegisterJetFunctions(sqlite3 *db);
