#pragma once

#include "support/StoreServer.h"

#include <QString>

#include <functional>
#include <optional>

struct TSysConfig;

// A store as the command line names it: an SQLite file or a database server.
struct TStorePlace {
  QString File; // the SQLite file; empty for a server
  std::optional<TStoreServer> Server;
  bool IsServer() const { return Server.has_value(); }
  QString Describe() const;
};

// Reads a store's name from the command line:
//   postgresql://[user[:password]@][host][:port]/database[?service=NAME]
//     (or postgres://), a database server;
//   pg:  the database server sys.ini's [DB] names (config);
//   anything else  an SQLite file.
// Nothing, with the reason in *error, for a name that names no store.
std::optional<TStorePlace> ParseStorePlace(const QString &text, const TSysConfig &config,
                                           QString *error);

struct TStoreCopyOptions {
  // A target that holds data is refused unless this is set; then its rows go.
  bool Replace = false;
  // One line per table as it is copied.
  std::function<void(const QString &line)> Progress;
};

// Copies one store into another, either way between a file and a server, so
// a hotel can move its desk's store onto a shared server or take it back.
// The target gets the console's schema first (the same start steps a desk
// runs), then every table of the source in one transaction on the target:
// IDs, dates and texts as they are, and the server's numbering moved past the
// highest ID. The source is only read. Any failure leaves the target as it
// was (a new file is removed again) and comes back as a message; empty when
// the copy is done. A target that holds data is refused unless Replace.
// Runs on the data module's connection: meant for a process that isn't a
// running console.
QString CopyStore(const TStorePlace &from, const TStorePlace &to, const TStoreCopyOptions &options);
