#pragma once

#include <QString>
#include <QTemporaryDir>

// A throwaway PostgreSQL server for one test program: a new cluster in a
// temporary folder (initdb), started on a free port of 127.0.0.1 and on a unix
// socket in that folder, with one empty database, trusted for its one user.
// Run as root, the server runs as the system's postgres user (or nobody),
// since PostgreSQL refuses to run as root. The destructor stops it and the
// folder goes away.
//
// A server that cannot start leaves Running() false and says why in Error();
// the tests fail with that reason rather than skip.
class PgServer {
public:
  PgServer();
  ~PgServer();
  PgServer(const PgServer &) = delete;
  PgServer &operator=(const PgServer &) = delete;

  bool Running() const { return m_running; }
  QString Error() const { return m_error; }

  QString Host() const { return QStringLiteral("127.0.0.1"); }
  int Port() const { return m_port; }
  QString Database() const { return QStringLiteral("trunkdesk_test"); }
  QString User() const { return QStringLiteral("trunkdesk"); }
  // A user the server asks for a password (the others are trusted); the
  // test that uses it makes the role.
  QString PasswordUser() const { return QStringLiteral("trunkdesk_pw"); }

  // The server going away and coming back on the same port with the same
  // data, as a restart at the hotel would.
  bool Stop();
  bool Start();

private:
  bool Run(const QString &program, const QStringList &arguments, int timeoutMs);

  QTemporaryDir m_dir;
  QString m_options;
  QString m_bin;
  QString m_runAs; // the system user the server runs as; empty when not root
  int m_port = 0;
  bool m_running = false;
  QString m_error;
};
