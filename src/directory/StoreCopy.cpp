#include "directory/StoreCopy.h"

#include "directory/StoreError.h"
#include "directory/StoreServerLink.h"
#include "directory/SysDM_Unit.h"
#include "support/Settings.h"

#include <QAtomicInt>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QUrl>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

QString TStorePlace::Describe() const {
  return IsServer() ? u"the server "_s + Server->Describe() : File;
}

std::optional<TStorePlace> ParseStorePlace(const QString &text, const TSysConfig &config,
                                           QString *error) {
  const auto fail = [&](const QString &why) {
    if (error)
      *error = why;
    return std::nullopt;
  };
  TStorePlace place;
  if (text == u"pg:"_s) {
    place.Server = TStoreServer::FromConfig(config);
    if (place.Server->Database.isEmpty() && place.Server->Service.isEmpty())
      return fail(u"pg: stands for the server in sys.ini, but its [DB] section names no "
                  u"Database or Service"_s);
    return place;
  }
  if (text.startsWith(u"postgresql://"_s) || text.startsWith(u"postgres://"_s)) {
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid())
      return fail(u"not a server address: %1 (%2)"_s.arg(text, url.errorString()));
    TStoreServer s;
    s.Host = url.host();
    s.User = url.userName();
    s.Password = url.password();
    s.Database = url.path().mid(1);
    const QUrlQuery query(url);
    for (const auto &[key, value] : query.queryItems(QUrl::FullyDecoded)) {
      if (key == u"service"_s)
        s.Service = value;
      else
        return fail(u"%1: the address takes only ?service=NAME, not %2"_s.arg(text, key));
    }
    s.Port = url.port(TStoreServer::kDefaultPort);
    if (s.Database.isEmpty() && s.Service.isEmpty())
      return fail(u"%1 names no database: add /DATABASE at its end"_s.arg(text));
    place.Server = s;
    return place;
  }
  if (text.isEmpty())
    return fail(u"an empty store name"_s);
  place.File = text;
  return place;
}

namespace {
// Tables the target makes for itself: the caller keys its triggers keep, and
// the engines' own bookkeeping.
bool Derived(const QString &table) {
  const QString t = table.toLower();
  return t == u"callerkeys"_s || t == u"callerkeystarts"_s || t.startsWith(u"sqlite_"_s);
}

// A connection of its own for one side of the copy, gone with the object.
class Side {
public:
  Side() : m_name(u"StoreCopy%1"_s.arg(s_serial.fetchAndAddRelaxed(1))) {}
  ~Side() {
    if (m_db.isValid()) {
      m_db.close();
      m_db = QSqlDatabase();
      QSqlDatabase::removeDatabase(m_name);
    }
  }
  Side(const Side &) = delete;
  Side &operator=(const Side &) = delete;

  // Opens an existing store only to read it. Empty, or why not.
  QString Open(const TStorePlace &place, bool readOnly) {
    if (place.IsServer()) {
      m_db = QSqlDatabase::addDatabase(u"QPSQL"_s, m_name);
      QString problem;
      if (!SetServerParameters(m_db, *place.Server, 10, &problem))
        return problem;
    } else {
      m_db = QSqlDatabase::addDatabase(u"QSQLITE"_s, m_name);
      m_db.setDatabaseName(place.File);
      // Read-only also means a missing file is not made.
      if (readOnly)
        m_db.setConnectOptions(u"QSQLITE_OPEN_READONLY"_s);
    }
    if (!m_db.open())
      return m_db.lastError().text().trimmed();
    QSqlQuery probe(m_db);
    // A file that isn't a database opens, and fails at its first statement.
    if (!place.IsServer() && !probe.exec(u"SELECT count(*) FROM sqlite_master"_s))
      return probe.lastError().text().trimmed();
    return {};
  }

  QSqlDatabase &Db() { return m_db; }

private:
  static inline QAtomicInt s_serial;
  QString m_name;
  QSqlDatabase m_db;
};

QString Quoted(const QSqlDatabase &db, const QString &name) {
  return db.driver()->escapeIdentifier(name, QSqlDriver::FieldName);
}

// The same table or column of the other store: PostgreSQL keeps the names in
// lower case, SQLite as the schema spelled them.
QString Match(const QStringList &names, const QString &name) {
  for (const QString &n : names) {
    if (n.compare(name, Qt::CaseInsensitive) == 0)
      return n;
  }
  return {};
}

QStringList FieldNames(const QSqlRecord &record) {
  QStringList names;
  for (int i = 0; i < record.count(); ++i)
    names << record.fieldName(i);
  return names;
}

// The tables of a store that hold rows a person or the exchange put there.
// The room table's rows count only when they hold more than the port number
// a new store gives each of them.
QStringList TablesWithRows(QSqlDatabase &db) {
  QStringList found;
  QStringList tables = db.tables(QSql::Tables);
  tables.sort(Qt::CaseInsensitive);
  for (const QString &table : tables) {
    if (Derived(table))
      continue;
    QString condition = u"1=1"_s;
    if (table.compare(u"Exts"_s, Qt::CaseInsensitive) == 0) {
      QStringList set;
      for (const QString &column : FieldNames(db.record(table))) {
        if (!QStringList{u"id"_s, u"portid"_s, u"occupied"_s}.contains(column.toLower()))
          set << u"coalesce(CAST(%1 AS text), '') NOT IN ('', '0')"_s.arg(Quoted(db, column));
      }
      condition = set.isEmpty() ? u"1=2"_s : set.join(u" OR "_s);
    }
    QSqlQuery q(db);
    if (!q.exec(u"SELECT count(*) FROM %1 WHERE %2"_s.arg(Quoted(db, table), condition)) ||
        !q.next() || q.value(0).toLongLong() > 0)
      found << table;
  }
  return found;
}

QString Fail(QSqlQuery &q, const QString &what) {
  return what + u": "_s + q.lastError().text().trimmed();
}

// One table from the source into the target, in ID order and in slices, so
// a million call records never sit in memory at once. Many rows go into each
// insert, one statement a row would take the server's round trip for every
// row; the values are written into its text by the target's own driver, so
// a failed statement leaves no prepared statement to free in the aborted
// transaction.
QString CopyTable(QSqlDatabase &source, const QString &from, QSqlDatabase &target,
                  const QString &to, bool server, qint64 *copied, qint64 *merged,
                  const std::function<void(const QString &)> &progress) {
  const QStringList targetColumns = FieldNames(target.record(to));
  QStringList read, write;
  for (const QString &column : FieldNames(source.record(from))) {
    const QString match = Match(targetColumns, column);
    if (match.isEmpty())
      return u"%1: the target has no column %2; is the source from a newer console?"_s.arg(from,
                                                                                           column);
    read << Quoted(source, column);
    write << Quoted(target, match);
  }
  const int id = read.indexOf(Quoted(source, Match(FieldNames(source.record(from)), u"ID"_s)));
  const QString insert = u"INSERT INTO %1 (%2) VALUES "_s.arg(Quoted(target, to), write.join(u','));
  constexpr int kRowsPerInsert = 200;
  constexpr int kSlice = 20000;
  QSqlDriver *driver = target.driver();
  QVariant lastId;
  *copied = 0;
  *merged = 0;
  for (;;) {
    QSqlQuery rows(source);
    rows.setForwardOnly(true);
    QString select = u"SELECT %1 FROM %2"_s.arg(read.join(u','), Quoted(source, from));
    if (id >= 0) {
      if (lastId.isValid())
        select += u" WHERE %1 > %2"_s.arg(read[id]).arg(lastId.toLongLong());
      select += u" ORDER BY %1 LIMIT %2"_s.arg(read[id]).arg(kSlice);
    }
    if (!rows.exec(select))
      return Fail(rows, u"Reading "_s + from);
    QStringList tuples;
    qint64 inSlice = 0;
    const auto flush = [&]() -> QString {
      QSqlQuery q(target);
      // The server keeps each pushed call record once, as two desks that got
      // it both store it: a file's records that the rule counts as one
      // record become one row there, rather than failing the copy.
      if (!q.exec(insert + tuples.join(u',') + (server ? u" ON CONFLICT DO NOTHING"_s : QString())))
        return Fail(q, u"Writing "_s + to + u" near ID "_s + lastId.toString());
      *merged += tuples.size() - q.numRowsAffected();
      tuples.clear();
      return {};
    };
    QStringList values;
    while (rows.next()) {
      values.clear();
      for (int c = 0; c < read.size(); ++c) {
        const QVariant v = rows.value(c);
        QSqlField field(QString(), v.metaType());
        field.setValue(v);
        values << driver->formatValue(field);
      }
      tuples << u'(' + values.join(u',') + u')';
      if (id >= 0)
        lastId = rows.value(id);
      ++inSlice;
      if (tuples.size() == kRowsPerInsert) {
        if (QString failed = flush(); !failed.isEmpty())
          return failed;
      }
    }
    if (rows.lastError().isValid())
      return Fail(rows, u"Reading "_s + from);
    if (!tuples.isEmpty()) {
      if (QString failed = flush(); !failed.isEmpty())
        return failed;
    }
    *copied += inSlice;
    if (id < 0 || inSlice < kSlice) {
      *copied -= *merged;
      return {};
    }
    // A big table says how far it is, so a long copy isn't taken for a hang.
    if (*copied % (5 * kSlice) == 0)
      progress(u"%1: %2 rows so far"_s.arg(from).arg(*copied));
  }
}

qint64 RowCount(QSqlDatabase &db, const QString &table) {
  QSqlQuery q(db);
  return q.exec(u"SELECT count(*) FROM "_s + Quoted(db, table)) && q.next()
             ? q.value(0).toLongLong()
             : -1;
}

// The copy proper, on the data module's connection, already in a transaction.
QString CopyTables(QSqlDatabase &source, QSqlDatabase &target, bool server,
                   const std::function<void(const QString &)> &progress) {
  const QStringList targetTables = target.tables(QSql::Tables);
  // A replaced target keeps no row of its own; a new one only the rooms a
  // new store is given, which the source's rooms replace.
  for (const QString &table : targetTables) {
    QSqlQuery clear(target);
    if (!Derived(table) && !clear.exec(u"DELETE FROM "_s + Quoted(target, table)))
      return Fail(clear, u"Emptying "_s + table);
  }
  QStringList tables = source.tables(QSql::Tables);
  tables.sort(Qt::CaseInsensitive);
  qint64 total = 0;
  for (const QString &table : std::as_const(tables)) {
    if (Derived(table))
      continue;
    const QString to = Match(targetTables, table);
    if (to.isEmpty()) {
      progress(u"%1: skipped, not a table of the console"_s.arg(table));
      continue;
    }
    qint64 copied = 0;
    qint64 merged = 0;
    if (QString failed = CopyTable(source, table, target, to, server, &copied, &merged, progress);
        !failed.isEmpty())
      return failed;
    // Every row read is in the target once: nothing doubled, nothing dropped.
    if (const qint64 there = RowCount(target, to); there != copied)
      return u"%1: %2 rows read but %3 in the target"_s.arg(table).arg(copied).arg(there);
    if (server && target.record(to).contains(u"id"_s)) {
      // The next row a desk adds gets the number after the highest copied.
      QSqlQuery next(target);
      if (!next.exec(
              u"SELECT setval(pg_get_serial_sequence('%1', 'id'), coalesce(max(id), 0) "
              u"+ 1, false) FROM %2 WHERE pg_get_serial_sequence('%1', 'id') IS NOT NULL"_s.arg(
                  Quoted(target, to).replace(u'\'', u"''"_s), Quoted(target, to))))
        return Fail(next, u"Numbering of "_s + table);
    }
    progress(u"%1: %2 %3%4"_s.arg(table)
                 .arg(copied)
                 .arg(copied == 1 ? u"row"_s : u"rows"_s)
                 .arg(merged ? u" (%1 more the same record as one already copied, kept once)"_s.arg(merged)
                             : QString()));
    total += copied;
  }
  progress(u"%1 rows in all"_s.arg(total));
  return {};
}
} // namespace

QString CopyStore(const TStorePlace &from, const TStorePlace &to,
                  const TStoreCopyOptions &options) {
  const auto progress = [&](const QString &line) {
    if (options.Progress)
      options.Progress(line);
  };
  if (from.IsServer() == to.IsServer() &&
      (from.IsServer()
           ? from.Server->Describe() == to.Server->Describe()
           : QFileInfo(from.File).absoluteFilePath() == QFileInfo(to.File).absoluteFilePath()))
    return u"The source and the target are the same store: "_s + to.Describe();

  // The source: read only, and one state of it throughout (a desk may still
  // be writing to it).
  if (!from.IsServer() && !QFileInfo(from.File).isFile())
    return u"The source store does not exist: "_s + from.File;
  Side source;
  if (QString failed = source.Open(from, true); !failed.isEmpty())
    return u"Cannot read the source store %1: %2"_s.arg(from.Describe(), failed);
  if (!source.Db().tables().contains(u"MainInfo"_s, Qt::CaseInsensitive))
    return u"The source is not a store of this console (it has no contact table MainInfo): "_s +
           from.Describe();
  if (!source.Db().transaction())
    return u"Cannot read the source store %1: %2"_s.arg(from.Describe(),
                                                        source.Db().lastError().text());
  if (from.IsServer())
    QSqlQuery(source.Db()).exec(u"SET TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY"_s);

  // The target: refused while it holds data, unless told; looked at before
  // anything is made in it.
  const bool newFile = !to.IsServer() && !QFileInfo::exists(to.File);
  if (newFile && !QFileInfo(QFileInfo(to.File).absolutePath()).isDir())
    return u"The target's folder does not exist: "_s + QFileInfo(to.File).absolutePath();
  if (!newFile) {
    Side look;
    if (QString failed = look.Open(to, !to.IsServer()); !failed.isEmpty())
      return u"Cannot open the target store %1: %2"_s.arg(to.Describe(), failed);
    const QStringList used = TablesWithRows(look.Db());
    if (!used.isEmpty() && !options.Replace)
      return u"The target %1 already holds data (%2). Nothing was copied; add --replace to "
             u"overwrite it with the source."_s.arg(to.Describe(), used.join(u", "_s));
  }

  // The console's schema on the target, by the start steps every desk runs.
  const TSysConfig saved = SysConfig();
  TSysConfig &c = SysConfig();
  auto restore = qScopeGuard([&] { c = saved; });
  if (to.IsServer()) {
    to.Server->ToConfig(c);
  } else {
    c.DBDriver.clear();
    c.DBFile = to.File;
    if (newFile) {
      QFile made(to.File);
      if (!made.open(QIODevice::WriteOnly))
        return u"Cannot make the target file %1: %2"_s.arg(to.File, made.errorString());
    }
  }
  const auto removeNewFile = [&] {
    if (newFile) {
      for (const char *suffix : {"", "-wal", "-shm", "-journal"})
        QFile::remove(to.File + QLatin1StringView(suffix));
    }
  };
  const auto closeTarget = [] {
    Sys_DM().PendingWrites().Close();
    StoreConnection().close();
  };
  try {
    Sys_DM().DataModuleCreate();
  } catch (const EDatabaseError &error) {
    closeTarget();
    removeNewFile();
    return u"Cannot prepare the target store %1: %2"_s.arg(to.Describe(), error.Message());
  }
  progress(u"Copying %1 into %2"_s.arg(from.Describe(), to.Describe()));

  QSqlDatabase target = StoreConnection();
  QString failed;
  if (!target.transaction()) {
    failed = target.lastError().text();
  } else {
    failed = CopyTables(source.Db(), target, to.IsServer(), progress);
    if (failed.isEmpty() && !target.commit())
      failed = u"Commit: "_s + target.lastError().text();
    if (!failed.isEmpty())
      target.rollback();
  }
  source.Db().rollback();
  closeTarget();
  if (!failed.isEmpty()) {
    removeNewFile();
    return u"The copy failed; nothing was copied into the target: "_s + failed;
  }
  return {};
}
