#include "directory/PendingWrites.h"

#include "directory/SysDM_Unit.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QScopeGuard>
#include <QSqlError>
#include <QSqlQuery>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
// The spill file starts with the offset of its first row not yet written, as a
// fixed-width line that is rewritten in place as rows reach the store.
constexpr int kHeaderSize = 21;

QByteArray Header(qint64 offset) {
  return QByteArray::number(offset).rightJustified(kHeaderSize - 1, '0') + '\n';
}

QByteArray RowLine(const TPendingRow &row) {
  QJsonArray values;
  for (const QVariant &v : row.Values)
    values.append(QJsonValue::fromVariant(v));
  const QJsonObject object{{u"t"_s, row.Table},
                           {u"c"_s, QJsonArray::fromStringList(row.Columns)},
                           {u"v"_s, values}};
  return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

bool ParseRow(const QByteArray &line, TPendingRow *row) {
  const QJsonObject object = QJsonDocument::fromJson(line).object();
  row->Table = object.value(u"t"_s).toString();
  row->Columns.clear();
  row->Values.clear();
  for (const QJsonValue &c : object.value(u"c"_s).toArray())
    row->Columns << c.toString();
  for (const QJsonValue &v : object.value(u"v"_s).toArray()) {
    // Numbers come back from JSON as doubles; the stored ones are whole.
    if (v.isDouble() && v.toDouble() == double(qint64(v.toDouble())))
      row->Values << QVariant(qint64(v.toDouble()));
    else
      row->Values << v.toVariant();
  }
  return !row->Table.isEmpty() && !row->Columns.isEmpty() &&
         row->Columns.size() == row->Values.size();
}

} // namespace

TPendingWrites::TPendingWrites() = default;

TPendingWrites::~TPendingWrites() {
  // The process is ending: whatever still waits goes to the spill file, to be
  // written at the next start. The log may be gone by now, so nothing is said.
  if (!m_memory.isEmpty() && !m_spillPath.isEmpty())
    SpillRows(m_memory); // after the rows already there: they are older
  if (m_timer)
    m_timer->stop();
}

void TPendingWrites::Open(const QString &spillFile) {
  m_spillPath = spillFile;
  CountSpill();
  if (m_spilledRows > 0) {
    WriteLog(u"Store: %1 records kept from an earlier run wait in %2"_s.arg(m_spilledRows)
                 .arg(m_spillPath));
    ScheduleFlush(0);
  }
}

void TPendingWrites::Close() {
  if (m_timer)
    m_timer->stop();
  SpillMemory();
}

void TPendingWrites::Append(const TPendingRow &row) {
  m_memory.append(row);
  // Past the bound the next turn moves memory to the spill file at once.
  ScheduleFlush(0);
}

qint64 TPendingWrites::AppendNow(const TPendingRow &row) {
  if (m_spilledRows == 0 && m_memory.size() < kRowsPerTurn && !m_flushing) {
    QList<TPendingRow> batch = m_memory;
    batch.append(row);
    qint64 lastId = -1;
    if (Begin() == Outcome::Written && WriteRows(batch, &lastId) == Outcome::Written) {
      m_memory.clear();
      NoteWritten();
      return lastId;
    }
  }
  Append(row);
  return -1;
}

bool TPendingWrites::Flush() {
  if (m_flushing)
    return Waiting() == 0;
  if (Waiting() == 0)
    return true;
  // The shared store is away: what arrives goes to the spill file at once,
  // where a crash can't take it, and the link writes it when the server is back.
  if (Sys_DM().Link().Away()) {
    SpillMemory();
    return false;
  }
  m_flushing = true;
  // The file holds the oldest rows, memory the newest: past the bound the
  // oldest in memory join the file's end, so the order of arrival is the order
  // of writing.
  if (m_memory.size() > kMemoryRows) {
    const qsizetype over = m_memory.size() - kMemoryRows;
    const bool first = m_spilledRows == 0;
    if (SpillRows(m_memory.mid(0, over))) {
      m_memory.remove(0, over);
      if (first)
        WriteLog(u"Store: more than %1 records wait; the oldest go to %2"_s.arg(kMemoryRows)
                     .arg(m_spillPath));
    }
  }

  Outcome outcome = Begin();
  if (outcome == Outcome::Written && m_spilledRows > 0) {
    qint64 end = 0;
    qint64 lines = 0;
    QList<TPendingRow> rows = ReadSpill(kRowsPerTurn, &end, &lines);
    outcome = WriteRows(rows, nullptr);
    if (outcome == Outcome::Written)
      ConsumeSpill(end, lines);
  } else if (outcome == Outcome::Written) {
    QList<TPendingRow> rows = m_memory.mid(0, kRowsPerTurn);
    outcome = WriteRows(rows, nullptr);
    if (outcome == Outcome::Written)
      m_memory.remove(0, rows.size());
  }
  m_flushing = false;

  if (Waiting() == 0) {
    NoteWritten();
    return true;
  }
  ScheduleFlush(outcome == Outcome::Written ? 0 : kRetryMs);
  return false;
}

TPendingWrites::Outcome TPendingWrites::Begin() {
  QSqlDatabase db = StoreConnection();
  if (!db.isOpen()) {
    // The driver closes a connection whose server went away.
    Sys_DM().Link().CheckLost();
    NoteWaiting(u"the database is not open"_s);
    return Outcome::Busy;
  }
  QSqlQuery q(db);
  // A server orders concurrent writers itself; a plain transaction will do.
  if (Sys_DM().Target() == SqlTarget::Postgres) {
    if (q.exec(u"BEGIN"_s))
      return Outcome::Written;
    const QString reason = q.lastError().text();
    Sys_DM().Link().CheckLost();
    NoteWaiting(reason);
    return Outcome::Busy;
  }
  // Never wait for another program's lock here: the caller is the main thread.
  int busyTimeout = 0;
  if (q.exec(u"PRAGMA busy_timeout"_s) && q.next())
    busyTimeout = q.value(0).toInt();
  q.exec(u"PRAGMA busy_timeout=0"_s);
  const bool begun = q.exec(u"BEGIN IMMEDIATE"_s);
  const QString reason = q.lastError().text();
  q.exec(u"PRAGMA busy_timeout=%1"_s.arg(busyTimeout));
  if (!begun) {
    NoteWaiting(reason);
    return Outcome::Busy;
  }
  return Outcome::Written;
}

TPendingWrites::Outcome TPendingWrites::WriteRows(const QList<TPendingRow> &rows, qint64 *lastId) {
  // Called inside the transaction Begin opened; ends it either way.
  QSqlDatabase db = StoreConnection();
  QSqlQuery q(db);
  const bool server = Sys_DM().Target() == SqlTarget::Postgres;
  QHash<QString, std::shared_ptr<QSqlQuery>> inserts;
  const auto keyOf = [](const TPendingRow &row) -> QString {
    return row.Table + u'|' + row.Columns.join(u',');
  };
  // The server is a round trip away: a run of rows for one table goes in one
  // statement of several rows. The file takes them one by one, in process.
  // The row whose ID is asked for goes alone, so the ID is its own.
  const qsizetype perStatement = server ? kServerRowsPerStatement : 1;
  for (qsizetype i = 0; i < rows.size();) {
    const TPendingRow &row = rows.at(i);
    const QString key = keyOf(row);
    qsizetype n = 1;
    while (i + n < rows.size() && n < perStatement && keyOf(rows.at(i + n)) == key &&
           !(lastId && i + n == rows.size() - 1))
      ++n;
    const QString statementKey = key + u'|' + QString::number(n);
    auto it = inserts.find(statementKey);
    if (it == inserts.end()) {
      QStringList columns;
      for (const QString &c : row.Columns)
        columns << u'[' + c + u']';
      const QString tuple = u'(' + QStringList(columns.size(), u"?"_s).join(u',') + u')';
      auto insert = std::make_shared<QSqlQuery>(db);
      QString sql = u"INSERT INTO [%1] (%2) VALUES %3"_s.arg(
          row.Table, columns.join(u','), QStringList(int(n), tuple).join(u','));
      // The server's driver knows no last insert id; every appended table
      // has its ID, and the row says it. Several desks append the same call
      // record there: the one that comes second adds nothing (the store's
      // uniqueness rule), and that is no failure.
      if (server)
        sql = TranslateJet(sql, SqlTarget::Postgres) + u" ON CONFLICT DO NOTHING RETURNING ID"_s;
      insert->prepare(sql);
      it = inserts.insert(statementKey, insert);
    }
    const qsizetype width = row.Columns.size();
    for (qsizetype r = 0; r < n; ++r) {
      const QVariantList &values = rows.at(i + r).Values;
      for (qsizetype c = 0; c < width; ++c)
        (*it)->bindValue(int(r * width + c), values.value(c));
    }
    i += n;
    if ((*it)->exec()) {
      if (lastId && i == rows.size())
        *lastId = server ? ((*it)->next() ? (*it)->value(0).toLongLong() : -1)
                         : (*it)->lastInsertId().toLongLong();
      continue;
    }
    // Whatever the reason (a lock, a full disk, a table gone until the schema
    // check at the next start makes it again), the rows are kept, never dropped.
    const QString reason = (*it)->lastError().text();
    inserts.clear();
    q.exec(u"ROLLBACK"_s);
    // A lost server closes the store and moves what waits in memory to the
    // spill file; the rows of this try are still where they were.
    Sys_DM().Link().CheckLost();
    NoteWaiting(reason);
    return Outcome::Busy;
  }
  inserts.clear();
  if (!q.exec(u"COMMIT"_s)) {
    const QString reason = q.lastError().text();
    QSqlQuery(db).exec(u"ROLLBACK"_s);
    Sys_DM().Link().CheckLost();
    NoteWaiting(reason);
    return Outcome::Busy;
  }
  return Outcome::Written;
}

void TPendingWrites::ScheduleFlush(int ms) {
  if (!QCoreApplication::instance())
    return;
  if (!m_timer) {
    // Owned by the application, so it is gone before the statics are.
    m_timer.reset(new QTimer);
    m_timer->setSingleShot(true);
    connect(m_timer.get(), &QTimer::timeout, this, [this] { Flush(); });
    connect(QCoreApplication::instance(), &QObject::destroyed, this, [this] { m_timer.reset(); });
  }
  if (m_timer->isActive() && m_timer->remainingTime() <= ms)
    return;
  m_timer->start(ms);
}

void TPendingWrites::SpillMemory() {
  if (m_memory.isEmpty() || m_spillPath.isEmpty())
    return;
  if (SpillRows(m_memory)) {
    WriteLog(u"Store: %1 records wait in %2"_s.arg(m_memory.size()).arg(m_spillPath));
    m_memory.clear();
  }
}

bool TPendingWrites::SpillRows(const QList<TPendingRow> &rows) {
  QFile file(m_spillPath);
  const bool fresh = !file.exists() || file.size() < kHeaderSize;
  if (!file.open(fresh ? QIODevice::WriteOnly | QIODevice::Truncate
                       : QIODevice::WriteOnly | QIODevice::Append))
    return false;
  QByteArray bytes = fresh ? Header(kHeaderSize) : QByteArray();
  for (const TPendingRow &row : rows)
    bytes += RowLine(row);
  if (file.write(bytes) != bytes.size() || !file.flush())
    return false;
  m_spilledRows += rows.size();
  return true;
}

QList<TPendingRow> TPendingWrites::ReadSpill(int maxRows, qint64 *endOffset, qint64 *lines) {
  QList<TPendingRow> rows;
  QFile file(m_spillPath);
  if (!file.open(QIODevice::ReadOnly)) {
    m_spilledRows = 0;
    return rows;
  }
  const qint64 start = file.readLine(kHeaderSize + 1).trimmed().toLongLong();
  file.seek(qMax<qint64>(start, kHeaderSize));
  while (rows.size() < maxRows && !file.atEnd()) {
    const QByteArray line = file.readLine();
    if (!line.trimmed().isEmpty())
      ++*lines;
    TPendingRow row;
    if (ParseRow(line, &row))
      rows.append(row);
    else if (!line.trimmed().isEmpty())
      WriteLog(u"Store: unreadable line in %1 skipped"_s.arg(m_spillPath));
  }
  *endOffset = file.pos();
  return rows;
}

void TPendingWrites::ConsumeSpill(qint64 endOffset, qint64 lines) {
  QFile file(m_spillPath);
  if (endOffset >= file.size()) {
    file.remove();
    m_spilledRows = 0;
    return;
  }
  if (file.open(QIODevice::ReadWrite)) {
    file.write(Header(endOffset));
    file.close();
  }
  m_spilledRows = qMax<qint64>(0, m_spilledRows - lines);
}

void TPendingWrites::CountSpill() {
  m_spilledRows = 0;
  QFile file(m_spillPath);
  if (m_spillPath.isEmpty() || !file.open(QIODevice::ReadOnly))
    return;
  const qint64 start = file.readLine(kHeaderSize + 1).trimmed().toLongLong();
  file.seek(qMax<qint64>(start, kHeaderSize));
  while (!file.atEnd()) {
    if (!file.readLine().trimmed().isEmpty())
      ++m_spilledRows;
  }
}

void TPendingWrites::NoteWaiting(const QString &reason) {
  if (m_waitingNoticed)
    return;
  m_waitingNoticed = true;
  WriteLog(u"Store: records can't be written now (%1); they are kept and written later"_s.arg(
      reason.trimmed()));
  // The link has said it in its own words.
  if (Sys_DM().Link().Away())
    return;
  TheShell().Message(MessageKind::Warning,
                     u"The database is busy or not writable (%1). Call records are kept and "
                     u"will be written as soon as it is free again."_s.arg(reason.trimmed()));
}

void TPendingWrites::NoteWritten() {
  if (!m_waitingNoticed)
    return;
  m_waitingNoticed = false;
  WriteLog(u"Store: every waiting record is written"_s);
}
