#pragma once

#include <QString>

struct TSysConfig;

// A PostgreSQL server holding a shared store, as [DB] names it, the settings
// window's database page shows it, or the command line gives it. Empty fields
// are left to libpq: to the service's entry when Service is set, else to its
// own defaults (the local socket, the login's name, ~/.pgpass).
struct TStoreServer {
  QString Host;
  int Port = kDefaultPort;
  QString Database;
  QString User;
  QString Password;
  QString Service;

  static constexpr int kDefaultPort = 5432;
  // A port can't be left empty in sys.ini's int key, so with a service the
  // default port counts as unset and the service's own port applies.
  bool PortIsSet() const { return Service.isEmpty() || Port != kDefaultPort; }

  static TStoreServer FromConfig(const TSysConfig &config);
  void ToConfig(TSysConfig &config) const; // also sets Driver=QPSQL
  // "user@host:port/database", with "service NAME" when a service is named.
  QString Describe() const;
  bool operator==(const TStoreServer &) const = default;
};

// The outcome of trying a server: reached or not, and what to tell the
// operator either way.
struct TServerProbe {
  bool Reached = false;
  QString Words;
};
