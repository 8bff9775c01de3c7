#include "RecordQuery.h"

#include <QDeadlineTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <sqlite3.h>

#include <cmath>
#include <limits>

using namespace Qt::StringLiterals;

namespace RecordQuery {

namespace {

constexpr char kTable[] = "Record_Table";

const QString kOnlyReads = u"只接受对 Record_Table 的只读查询"_s;

// Whether the guard refused something while the current statement was
// prepared: a refused function comes back as a plain error, not as SQLITE_AUTH.
thread_local bool t_refused = false;

bool Allowed(int action, const char *first, const char *second) {
  switch (action) {
  case SQLITE_SELECT:
    return true;
  case SQLITE_READ:
    return first && sqlite3_stricmp(first, kTable) == 0;
  case SQLITE_FUNCTION:
    return !second || sqlite3_stricmp(second, "load_extension") != 0;
  default:
    return false;
  }
}

int Authorize(void *, int action, const char *first, const char *second, const char *,
              const char *) {
  if (Allowed(action, first, second))
    return SQLITE_OK;
  t_refused = true;
  return SQLITE_DENY;
}

int StopWhenLate(void *deadline) {
  return static_cast<QDeadlineTimer *>(deadline)->hasExpired() ? 1 : 0;
}

Result Refuse(int status, const QString &error) {
  return {status, ErrorJson(error), 0, error};
}

// Closes the statement and the deadline however the answer ends.
struct Statement {
  sqlite3 *Db;
  sqlite3_stmt *Handle = nullptr;
  explicit Statement(sqlite3 *db) : Db(db) {}
  ~Statement() {
    sqlite3_finalize(Handle);
    sqlite3_progress_handler(Db, 0, nullptr, nullptr);
  }
  QString Message() const { return QString::fromUtf8(sqlite3_errmsg(Db)); }
};

// Binds every parameter the statement names from `params`; the error
// sentence when one is missing or of a kind the protocol doesn't carry.
QString Bind(sqlite3_stmt *stmt, const QJsonObject &params) {
  const int count = sqlite3_bind_parameter_count(stmt);
  for (int i = 1; i <= count; ++i) {
    const char *name = sqlite3_bind_parameter_name(stmt, i);
    if (!name || name[0] != ':')
      return u"参数须写作 :名字"_s;
    const QString key = QString::fromUtf8(name + 1);
    const auto value = params.constFind(key);
    if (value == params.constEnd())
      return u"缺少参数 :%1"_s.arg(key);
    int rc = SQLITE_OK;
    if (value->isString()) {
      const QByteArray text = value->toString().toUtf8();
      rc = sqlite3_bind_text(stmt, i, text.constData(), int(text.size()), SQLITE_TRANSIENT);
    } else if (value->isDouble()) {
      const double d = value->toDouble();
      const bool whole = std::trunc(d) == d && std::abs(d) < 9007199254740992.0;
      rc = whole ? sqlite3_bind_int64(stmt, i, static_cast<sqlite3_int64>(d))
                 : sqlite3_bind_double(stmt, i, d);
    } else if (value->isNull()) {
      rc = sqlite3_bind_null(stmt, i);
    } else {
      return u"参数 :%1 只能是文字、数字或 null"_s.arg(key);
    }
    if (rc != SQLITE_OK)
      return u"参数 :%1 无法使用"_s.arg(key);
  }
  return {};
}

// The answer of a search is written as text directly: a console's page of
// 5,000 rows is built several times faster than through JSON objects.
void AppendString(QByteArray &out, QByteArrayView text) {
  QByteArray repaired;
  if (!text.isValidUtf8()) {
    repaired = QString::fromUtf8(text).toUtf8();
    text = repaired;
  }
  out += '"';
  qsizetype run = 0; // start of the bytes not yet copied
  for (qsizetype i = 0; i < text.size(); ++i) {
    const auto c = static_cast<uchar>(text[i]);
    if (c >= 0x20 && c != '"' && c != '\\')
      continue;
    out += text.sliced(run, i - run);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += char(c);
    } else {
      static constexpr char kHex[] = "0123456789abcdef";
      out += "\\u00";
      out += kHex[c >> 4];
      out += kHex[c & 0xF];
    }
    run = i + 1;
  }
  out += text.sliced(run);
  out += '"';
}

void AppendCell(QByteArray &out, sqlite3_stmt *stmt, int column) {
  switch (sqlite3_column_type(stmt, column)) {
  case SQLITE_INTEGER:
    out += QByteArray::number(static_cast<qint64>(sqlite3_column_int64(stmt, column)));
    break;
  case SQLITE_FLOAT: {
    const double d = sqlite3_column_double(stmt, column);
    out += std::isfinite(d) ? QByteArray::number(d, 'g', 17) : QByteArray("null");
    break;
  }
  case SQLITE_NULL:
    out += "null";
    break;
  default: // text, and a blob as the text it holds
    AppendString(out, QByteArrayView(static_cast<const char *>(sqlite3_column_blob(stmt, column)),
                                     sqlite3_column_bytes(stmt, column)));
    break;
  }
}

} // namespace

void InstallReadOnlyGuard(sqlite3 *db) {
  sqlite3_set_authorizer(db, Authorize, nullptr);
}

QByteArray ErrorJson(const QString &error) {
  return QJsonDocument(QJsonObject{{u"version"_s, kVersion},
                                   {u"error"_s, error},
                                   {u"columns"_s, QJsonArray()},
                                   {u"rows"_s, QJsonArray()}})
      .toJson(QJsonDocument::Compact);
}

Result Answer(sqlite3 *db, const QByteArray &body) {
  if (body.size() > kMaxBody)
    return Refuse(413, u"请求超过 64 KiB"_s);
  QJsonParseError parseError;
  const QJsonDocument doc = QJsonDocument::fromJson(body, &parseError);
  if (parseError.error != QJsonParseError::NoError || !doc.isObject())
    return Refuse(400, u"请求不是 JSON 对象"_s);
  const QJsonObject request = doc.object();

  const QJsonValue version = request.value(u"version"_s);
  const double v = version.toDouble(-1);
  if (!version.isDouble() || v < 1 || std::trunc(v) != v)
    return Refuse(400, u"请求缺少协议版本"_s);
  if (v > kVersion)
    return Refuse(400, u"不支持协议版本 %1，本服务器只支持 %2"_s.arg(v).arg(kVersion));

  const QJsonValue statement = request.value(u"statement"_s);
  if (!statement.isString())
    return Refuse(400, u"请求缺少查询语句"_s);
  const QJsonValue params = request.value(u"params"_s);
  if (!params.isUndefined() && !params.isObject())
    return Refuse(400, u"params 必须是对象"_s);

  Statement stmt(db);
  const QByteArray sql = statement.toString().toUtf8();
  const char *tail = nullptr;
  t_refused = false;
  const int rc = sqlite3_prepare_v2(db, sql.constData(), int(sql.size()), &stmt.Handle, &tail);
  if (rc == SQLITE_AUTH || t_refused)
    return Refuse(403, kOnlyReads);
  if (rc != SQLITE_OK)
    return Refuse(400, u"查询语句有误：%1"_s.arg(stmt.Message()));
  if (!stmt.Handle)
    return Refuse(400, u"查询语句是空的"_s);
  // One statement only: whatever follows the first one is refused, even a comment.
  if (tail && !QByteArrayView(tail, sql.constData() + sql.size() - tail).trimmed().isEmpty())
    return Refuse(403, kOnlyReads);
  if (!sqlite3_stmt_readonly(stmt.Handle) || sqlite3_stmt_isexplain(stmt.Handle) ||
      sqlite3_column_count(stmt.Handle) == 0)
    return Refuse(403, kOnlyReads);
  if (const QString error = Bind(stmt.Handle, params.toObject()); !error.isEmpty())
    return Refuse(400, error);

  QDeadlineTimer deadline(kMaxMilliseconds);
  sqlite3_progress_handler(db, 10000, StopWhenLate, &deadline);

  const int columnCount = sqlite3_column_count(stmt.Handle);
  QByteArray json = R"({"version":)" + QByteArray::number(kVersion) + R"(,"error":"","columns":[)";
  for (int c = 0; c < columnCount; ++c) {
    if (c)
      json += ',';
    AppendString(json, sqlite3_column_name(stmt.Handle, c));
  }
  json += R"(],"rows":[)";
  int rows = 0;
  int step = SQLITE_ROW;
  while ((step = sqlite3_step(stmt.Handle)) == SQLITE_ROW) {
    if (rows >= kMaxRows)
      return Refuse(500, u"结果超过 %1 行，请缩小查询范围"_s.arg(kMaxRows));
    json += rows++ ? ",[" : "[";
    for (int c = 0; c < columnCount; ++c) {
      if (c)
        json += ',';
      AppendCell(json, stmt.Handle, c);
    }
    json += ']';
  }
  if (step == SQLITE_INTERRUPT)
    return Refuse(500, u"查询用时过长，已中止，请缩小查询范围"_s);
  if (step != SQLITE_DONE)
    return Refuse(500, u"录音记录库出错：%1"_s.arg(stmt.Message()));
  json += "]}";
  return {200, json, rows, {}};
}

} // namespace RecordQuery
