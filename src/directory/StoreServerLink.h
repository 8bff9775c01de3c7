#pragma once

#include "support/StoreServer.h"

#include <QSqlDatabase>
#include <QString>

// The one place that turns a TStoreServer into a QPSQL connection's
// parameters: the console's start, the settings window's test and the store
// copy all connect alike. The service goes in as libpq's service option; the
// fields that are set go in as parameters and win over the service's entry.
// A server that doesn't answer holds the caller for timeoutSeconds at most.
// `moreOptions` (libpq's, ';'-joined) go in beside them. False, with the
// reason in *problem, for a service name the driver can't pass.
bool SetServerParameters(QSqlDatabase &db, const TStoreServer &server, int timeoutSeconds,
                         QString *problem = nullptr, const QString &moreOptions = {});

// Tries a connection as the settings window's test does, on its own
// connection, so it may run on any thread: reached or not, and in the
// operator's words why not or whether the console's tables are there.
TServerProbe ProbeStoreServer(const TStoreServer &server, int timeoutSeconds);

// What a refused or failed connection means for the operator: which of the
// usual causes (no server there, a wrong name or password, a missing
// database, no answer in time) it is, with the driver's text after it.
QString ServerProblemInWords(const QString &driverText, const TStoreServer &server,
                             int timeoutSeconds);

// What the settings window says of a server that took the test connection:
// whether the console's tables are already there.
QString ServerReadyInWords(bool hasConsoleTables);
