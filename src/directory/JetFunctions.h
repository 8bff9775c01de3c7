#pragma once

#include <QStringList>

struct sqlite3;

// Registers the Jet functions the console's statements use on a connection:
// jet_right, jet_format, jet_cdate, jet_datediff and jet_datesub.
bool RegisterJetFunctions(sqlite3 *db);

// The same functions for a shared store on PostgreSQL, as CREATE OR REPLACE
// FUNCTION statements the schema step runs: jet_right, jet_format (over to_char;
// the translator turns the Jet pattern into to_char's), jet_cdate and
// jet_datesub (a difference of dates in days and back to a time of day), and
// jet_datediff.
QStringList PostgresJetFunctions();
