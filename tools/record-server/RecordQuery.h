// The one thing a console may ask of the store: a read-only select over
// Record_Table, with its values as named parameters, answered as JSON.
#pragma once

#include <QByteArray>
#include <QString>

struct sqlite3;

namespace RecordQuery {

inline constexpr int kVersion = 1;
inline constexpr qsizetype kMaxBody = 64 * 1024;
// A console shows a page of rows, not a million: past this the answer is refused.
inline constexpr int kMaxRows = 100000;
// A statement that runs longer than this (a join of the table with itself
// several times, say) is stopped, so one console can't stall the server.
inline constexpr int kMaxMilliseconds = 5000;

struct Result {
  int Status = 200;
  QByteArray Json; // the whole answer, also for a refusal
  int Rows = 0;
  QString Error;
};

// Lets a connection do nothing but read Record_Table: the authorizer refuses
// every other table, every write, pragma, attach and extension loading while
// a statement is prepared.
void InstallReadOnlyGuard(sqlite3 *db);

// Answers the protocol request `body` (the JSON of a POST /bin) from `db`,
// which must carry the read-only guard.
Result Answer(sqlite3 *db, const QByteArray &body);

// The answer carrying `error` alone.
QByteArray ErrorJson(const QString &error);

} // namespace RecordQuery
