// The floor of a store figure: the same statement straight on SQLite's own
// interface, on a second connection to the same file, every column of every
// row read and dropped. What the console adds (the dialect's translation, Qt's
// driver, the cursor's copy of the rows) is the distance to it.
#pragma once

#include <QString>
#include <QStringList>

#include <sqlite3.h>

class RawStore {
public:
  explicit RawStore(const QString &file) {
    sqlite3_open_v2(file.toUtf8().constData(), &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE,
                    nullptr);
    sqlite3_busy_timeout(m_db, 1000);
    // As durable as the console's own connection, no more.
    Exec(QStringLiteral("PRAGMA synchronous=NORMAL"));
  }
  ~RawStore() { sqlite3_close(m_db); }
  RawStore(const RawStore &) = delete;
  RawStore &operator=(const RawStore &) = delete;

  // Rows the statement yields (-1 if it fails), each column read as text.
  int Rows(const QString &sql) {
    sqlite3_stmt *stmt = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.toUtf8().constData(), -1, &stmt, nullptr) != SQLITE_OK)
      return -1;
    int rows = 0;
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      for (int c = 0, n = sqlite3_column_count(stmt); c < n; ++c)
        m_sink += sqlite3_column_bytes(stmt, c) + (sqlite3_column_text(stmt, c) != nullptr);
      ++rows;
    }
    sqlite3_finalize(stmt);
    return rc == SQLITE_DONE ? rows : -1;
  }

  bool Exec(const QString &sql) {
    return sqlite3_exec(m_db, sql.toUtf8().constData(), nullptr, nullptr, nullptr) == SQLITE_OK;
  }

  // The engine's plan for the statement, its steps joined by "; ".
  QString Plan(const QString &sql) {
    sqlite3_stmt *stmt = nullptr;
    QStringList steps;
    const QByteArray text = QByteArray("EXPLAIN QUERY PLAN ") + sql.toUtf8();
    if (sqlite3_prepare_v2(m_db, text.constData(), -1, &stmt, nullptr) != SQLITE_OK)
      return QStringLiteral("(fails)");
    while (sqlite3_step(stmt) == SQLITE_ROW)
      steps << QString::fromUtf8(reinterpret_cast<const char *>(sqlite3_column_text(stmt, 3)));
    sqlite3_finalize(stmt);
    return steps.join(QStringLiteral("; "));
  }

  sqlite3 *Handle() const { return m_db; }
  long long Sink() const { return m_sink; }

private:
  sqlite3 *m_db = nullptr;
  long long m_sink = 0;
};
