#include "directory/Query.h"

#include "directory/JetSql.h"
#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"

#include <QHash>
#include <QRegularExpression>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

using namespace Qt::StringLiterals;

namespace {
// The statement in the error, shortened: enough to find it, not a page of text.
[[noreturn]] void Fail(const QSqlError &error, const QString &sql) {
  // The shared server gone: the operator hears it once from the link, and
  // the operation ends quietly.
  if (Sys_DM().Link().CheckLost())
    throw EStoreAway(Sys_DM().Link().AwayText());
  throw EDatabaseError(error.text().trimmed() + u" ["_s + sql.simplified().left(160) + u']');
}

// Lower-case names of the columns of a table declared as dates.
QStringList DateColumns(const QString &table) {
  QSqlQuery info(StoreConnection());
  info.setForwardOnly(true);
  QStringList names;
  if (Sys_DM().Target() == SqlTarget::Postgres) {
    // A date column of the shared store is of the datetext domain. Asked of
    // the catalogue itself: the information schema's view of it costs a
    // millisecond or more on every open of a cursor.
    info.prepare(u"SELECT lower(a.attname) FROM pg_attribute a JOIN pg_type t ON t.oid = a.atttypid "
                 u"WHERE a.attrelid = to_regclass(lower(?)) AND t.typname = 'datetext' AND "
                 u"a.attnum > 0 AND NOT a.attisdropped"_s);
    info.addBindValue(table);
    if (info.exec()) {
      while (info.next())
        names << info.value(0).toString();
    }
    return names;
  }
  if (!info.exec(u"PRAGMA table_info("_s + table + u')'))
    return names;
  while (info.next()) {
    if (info.value(2).toString().contains(u"DATE"_s, Qt::CaseInsensitive))
      names << info.value(1).toString().toLower();
  }
  return names;
}

const QVariant &NullValue() {
  static const QVariant null;
  return null;
}
} // namespace

TADOQuery::TADOQuery(const QString &name) : Name(name) {}

// The one table a statement reads from: the word after its first FROM.
QString TADOQuery::BaseTable() const {
  static const QRegularExpression from(uR"(\bfrom\s+\[?(\w+)\]?)"_s,
                                       QRegularExpression::CaseInsensitiveOption);
  return from.match(SQL).captured(1);
}

void TADOQuery::Load() {
  // A read sees every record appended before it, unless the store can't take
  // them yet.
  if (Sys_DM().PendingWrites().Waiting() > 0)
    Sys_DM().PendingWrites().Flush();
  const QString sql = TranslateJet(SQL, Sys_DM().Target());
  if (HasSecondStatement(sql))
    throw EDatabaseError(u"Refused: more than one statement, or a NUL in it ["_s +
                         QString(SQL).replace(QChar(0), u"\\0"_s).left(160) + u']');
  QSqlQuery q(StoreConnection());
  q.setForwardOnly(true);
  if (!q.exec(sql))
    Fail(q.lastError(), SQL);
  m_fields.clear();
  const QSqlRecord record = q.record();
  for (int i = 0; i < record.count(); ++i)
    m_fields << record.fieldName(i);
  m_rows.clear();
  while (q.next()) {
    QVariantList row;
    row.reserve(m_fields.size());
    for (int i = 0; i < m_fields.size(); ++i)
      row << q.value(i);
    m_rows << row;
  }
  const QString table = BaseTable();
  m_dateFields = table.isEmpty() ? QStringList() : DateColumns(table);
}

void TADOQuery::Open() {
  Close();
  Load();
  m_active = true;
  First();
}

void TADOQuery::Close() {
  m_active = false;
  m_rows.clear();
  m_fields.clear();
  m_pos = -1;
  m_eof = m_bof = true;
  m_state = State::Browse;
}

void TADOQuery::ExecSQL() {
  const QString sql = TranslateJet(SQL, Sys_DM().Target());
  if (HasSecondStatement(sql))
    throw EDatabaseError(u"Refused: more than one statement, or a NUL in it ["_s +
                         QString(SQL).replace(QChar(0), u"\\0"_s).left(160) + u']');
  QSqlQuery q(StoreConnection());
  if (!q.exec(sql))
    Fail(q.lastError(), SQL);
  m_rowsAffected = q.numRowsAffected();
}

void TADOQuery::First() {
  m_pos = m_rows.isEmpty() ? -1 : 0;
  m_eof = m_bof = m_rows.isEmpty();
}

void TADOQuery::Last() {
  m_pos = int(m_rows.size()) - 1;
  m_eof = m_bof = m_rows.isEmpty();
}

void TADOQuery::Next() {
  if (m_pos + 1 < m_rows.size()) {
    ++m_pos;
    m_bof = false;
  } else {
    m_eof = true;
  }
}

void TADOQuery::Prior() {
  if (m_pos > 0) {
    --m_pos;
    m_eof = false;
  } else {
    m_bof = true;
  }
}

bool TADOQuery::Eof() const {
  return m_eof;
}
bool TADOQuery::Bof() const {
  return m_bof;
}

void TADOQuery::SetRecNo(int recNo) {
  if (recNo >= 1 && recNo <= m_rows.size()) {
    m_pos = recNo - 1;
    m_eof = m_bof = false;
  }
}

int TADOQuery::FieldIndex(const QString &name) const {
  for (int i = 0; i < m_fields.size(); ++i) {
    if (m_fields[i].compare(name, Qt::CaseInsensitive) == 0)
      return i;
  }
  return -1;
}

const QVariant &TADOQuery::Cell(const QString &name) const {
  const int i = FieldIndex(name);
  if (i < 0)
    throw EDatabaseError(u"Field not found: "_s + name + u" ("_s + Name + u')');
  if (m_state != State::Browse)
    return m_editRow[i];
  if (m_pos < 0 || m_pos >= m_rows.size())
    return NullValue();
  return m_rows[m_pos][i];
}

QVariant TADOQuery::Value(const QString &name) const {
  return Cell(name);
}
bool TADOQuery::IsNull(const QString &name) const {
  return Cell(name).isNull();
}

QString TADOQuery::AsString(const QString &name) const {
  const QVariant &v = Cell(name);
  if (v.isNull())
    return QString();
  if (m_dateFields.contains(name.toLower())) {
    const TDateTime t = AsDateTime(name);
    return t.IsZero() ? QString() : DateTimeToStr(t);
  }
  return v.toString();
}

int TADOQuery::AsInteger(const QString &name) const {
  return Cell(name).toInt();
}
bool TADOQuery::AsBoolean(const QString &name) const {
  return Cell(name).toInt() != 0;
}

TDateTime TADOQuery::AsDateTime(const QString &name) const {
  const QVariant &v = Cell(name);
  if (v.isNull())
    return TDateTime();
  if (v.typeId() == QMetaType::Double || v.typeId() == QMetaType::LongLong ||
      v.typeId() == QMetaType::Int)
    return TDateTime(v.toDouble());
  TDateTime t;
  return TryStrToDateTime(v.toString(), &t) ? t : TDateTime();
}

void TADOQuery::Append() {
  if (!m_active)
    throw EDatabaseError(u"Query not open: "_s + Name);
  m_state = State::Insert;
  m_editRow = QVariantList(m_fields.size());
  m_changed.clear();
}

void TADOQuery::Edit() {
  if (m_pos < 0 || m_pos >= m_rows.size())
    throw EDatabaseError(u"No row to edit: "_s + Name);
  m_state = State::Edit;
  m_editRow = m_rows[m_pos];
  m_changed.clear();
}

void TADOQuery::SetField(const QString &name, const QVariant &value) {
  if (m_state == State::Browse)
    throw EDatabaseError(u"Not in edit mode: "_s + Name);
  const int i = FieldIndex(name);
  if (i < 0)
    throw EDatabaseError(u"Field not found: "_s + name + u" ("_s + Name + u')');
  m_editRow[i] = value;
  if (!m_changed.contains(i))
    m_changed << i;
}

void TADOQuery::SetString(const QString &name, const QString &value) {
  // Stored as a search would spell it, so that it is found again.
  SetField(name, StorableText(value));
}
void TADOQuery::SetInteger(const QString &name, int value) {
  SetField(name, value);
}
void TADOQuery::SetBoolean(const QString &name, bool value) {
  SetField(name, value ? 1 : 0);
}
void TADOQuery::SetNull(const QString &name) {
  SetField(name, QVariant());
}

void TADOQuery::SetDateTime(const QString &name, TDateTime value) {
  SetField(name, value.IsZero() ? QVariant() : QVariant(FormatFull(value)));
}

void TADOQuery::Post() {
  if (m_state == State::Browse)
    return;
  const QString table = BaseTable();
  if (table.isEmpty())
    throw EDatabaseError(u"No table to write: "_s + Name);
  QSqlQuery q(StoreConnection());
  const bool server = Sys_DM().Target() == SqlTarget::Postgres;
  QStringList columns;
  for (int i : m_changed)
    columns << u'[' + m_fields[i] + u']';
  if (m_state == State::Insert) {
    const int id = FieldIndex(u"ID"_s);
    QString sql = columns.isEmpty() ? u"INSERT INTO %1 DEFAULT VALUES"_s.arg(table)
                                    : u"INSERT INTO %1 (%2) VALUES (%3)"_s.arg(
                                          table, columns.join(u','),
                                          QStringList(columns.size(), u"?"_s).join(u','));
    // The server's driver knows no last insert id; the row says its own.
    if (server) {
      sql = TranslateJet(sql, SqlTarget::Postgres);
      if (id >= 0)
        sql += u" RETURNING ID"_s;
    }
    q.prepare(sql);
    for (int i : m_changed)
      q.addBindValue(m_editRow[i]);
    if (!q.exec())
      Fail(q.lastError(), sql);
    if (id >= 0)
      m_editRow[id] = server ? (q.next() ? q.value(0) : QVariant()) : q.lastInsertId();
    m_rows << m_editRow;
    m_pos = int(m_rows.size()) - 1;
  } else {
    const int id = FieldIndex(u"ID"_s);
    if (id < 0)
      throw EDatabaseError(u"No ID to write by: "_s + Name);
    if (!m_changed.isEmpty()) {
      QStringList sets;
      for (const QString &c : columns)
        sets << c + u"=?"_s;
      QString sql = u"UPDATE %1 SET %2 WHERE ID=?"_s.arg(table, sets.join(u','));
      if (server)
        sql = TranslateJet(sql, SqlTarget::Postgres);
      q.prepare(sql);
      for (int i : m_changed)
        q.addBindValue(m_editRow[i]);
      q.addBindValue(m_rows[m_pos][id]);
      if (!q.exec())
        Fail(q.lastError(), sql);
    }
    m_rows[m_pos] = m_editRow;
  }
  m_state = State::Browse;
  m_eof = m_bof = false;
  m_changed.clear();
}

void TADOQuery::Cancel() {
  m_state = State::Browse;
  m_changed.clear();
}

void TADOQuery::Delete() {
  if (m_pos < 0 || m_pos >= m_rows.size())
    throw EDatabaseError(u"No row to delete: "_s + Name);
  const int id = FieldIndex(u"ID"_s);
  const QString table = BaseTable();
  if (id < 0 || table.isEmpty())
    throw EDatabaseError(u"No row key to delete by: "_s + Name);
  QSqlQuery q(StoreConnection());
  const QString sql = u"DELETE FROM %1 WHERE ID=?"_s.arg(table);
  q.prepare(sql);
  q.addBindValue(m_rows[m_pos][id]);
  if (!q.exec())
    Fail(q.lastError(), sql);
  m_rows.removeAt(m_pos);
  if (m_pos >= m_rows.size())
    m_pos = int(m_rows.size()) - 1;
  m_eof = m_bof = m_rows.isEmpty();
}

bool TADOQuery::Locate(const QString &name, const QVariant &value) {
  const int i = FieldIndex(name);
  if (i < 0)
    throw EDatabaseError(u"Field not found: "_s + name + u" ("_s + Name + u')');
  const QString wanted = value.toString();
  for (int r = 0; r < m_rows.size(); ++r) {
    if (m_rows[r][i].toString().compare(wanted, Qt::CaseInsensitive) == 0) {
      m_pos = r;
      m_eof = m_bof = false;
      return true;
    }
  }
  return false;
}

void TADOQuery::Refresh() {
  const int id = FieldIndex(u"ID"_s);
  const QVariant key =
      (id >= 0 && m_pos >= 0 && m_pos < m_rows.size()) ? m_rows[m_pos][id] : QVariant();
  Load();
  m_active = true;
  First();
  if (!key.isNull())
    Locate(u"ID"_s, key);
}
