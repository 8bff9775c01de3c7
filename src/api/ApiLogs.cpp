#include "api/ApiLogs.h"

#include "api/ApiRooms.h"
#include "directory/BoundQuery.h"
#include "support/TDateTime.h"

#include <QDateTime>
#include <QJsonArray>
#include <QRegularExpression>
#include <QUrlQuery>

#include <functional>

using namespace Qt::StringLiterals;

namespace {
constexpr int kMaxPage = 1000000;

// The statement's conditions: fixed text, each with its value bound by name.
struct Conditions {
  QStringList Text;
  QVariantMap Values;
  QString Error;

  void Add(const QString &text, const QString &name, const QVariant &value) {
    Text << text;
    Values.insert(name, value);
  }
  QString Where() const { return Text.isEmpty() ? QString() : u" WHERE "_s + Text.join(u" AND "_s); }

  // A time bound on `column`; "to" of a date alone reaches to its last second.
  void Time(const QUrlQuery &q, const QString &key, const QString &column, bool upper) {
    if (!q.hasQueryItem(key))
      return;
    const QString text = q.queryItemValue(key, QUrl::FullyDecoded);
    QDateTime t;
    for (const QString &format : {u"yyyy-MM-ddThh:mm:ss"_s, u"yyyy-MM-ddThh:mm"_s}) {
      if (!t.isValid())
        t = QDateTime::fromString(text, format);
    }
    if (!t.isValid()) {
      const QDate d = QDate::fromString(text, u"yyyy-MM-dd"_s);
      if (d.isValid())
        t = QDateTime(d, upper ? QTime(23, 59, 59) : QTime(0, 0));
    }
    if (!t.isValid()) {
      Error = u"\"%1\" is not a time yyyy-MM-dd[Thh:mm[:ss]]"_s.arg(key);
      return;
    }
    Add(u"%1 %2 :%3"_s.arg(column, upper ? u"<="_s : u">="_s, key), key,
        FormatFull(TDateTime::FromQDateTime(t)));
  }

  int Page(const QUrlQuery &q) {
    if (!q.hasQueryItem(u"page"_s))
      return 1;
    bool ok = false;
    const int page = q.queryItemValue(u"page"_s).toInt(&ok);
    if (!ok || page < 1 || page > kMaxPage) {
      Error = u"\"page\" must be a whole number from 1 to %1"_s.arg(kMaxPage);
      return 1;
    }
    return page;
  }
};

QJsonValue Time(const QVariant &stored) {
  const QString text = stored.toString();
  if (text.isEmpty())
    return QJsonValue::Null;
  return ApiTime(TDateTime::FromQDateTime(QDateTime::fromString(text, u"yyyy-MM-dd hh:mm:ss"_s)));
}

int Count(const QString &table, const Conditions &c) {
  const TBoundRows n = SelectBound(u"SELECT count(*) FROM "_s + table + c.Where(), c.Values);
  return n.Rows.isEmpty() ? 0 : n.Rows.first().value(0).toInt();
}

// One page of `table` under the conditions, newest first by `order`, each row
// made JSON by `json`; with the page number from the query and the count.
QJsonObject PageOf(const QUrlQuery &query, Conditions &c, const QString &columns,
                   const QString &table, const QString &order, const QString &key,
                   const std::function<QJsonObject(const QVariantList &)> &json, QString *error) {
  const int page = c.Page(query);
  if (!c.Error.isEmpty()) {
    *error = c.Error;
    return {};
  }
  QVariantMap values = c.Values;
  values.insert(u"pageOffset"_s, (page - 1) * kApiPageSize);
  const TBoundRows rows = SelectBound(u"SELECT %1 FROM %2%3 ORDER BY %4 LIMIT %5 OFFSET :pageOffset"_s
                                          .arg(columns, table, c.Where(), order)
                                          .arg(kApiPageSize),
                                      values);
  QJsonArray list;
  for (const QVariantList &r : rows.Rows)
    list.append(json(r));
  return {{u"page"_s, page}, {u"pageSize"_s, kApiPageSize}, {u"count"_s, Count(table, c)}, {key, list}};
}
} // namespace

QJsonObject CallsPage(const QUrlQuery &query, QString *error) {
  Conditions c;
  c.Time(query, u"from"_s, u"startTime"_s, false);
  c.Time(query, u"to"_s, u"startTime"_s, true);
  if (query.hasQueryItem(u"number"_s)) {
    const QString number = query.queryItemValue(u"number"_s, QUrl::FullyDecoded);
    // Dialled characters only, so the pattern has no wildcard of its own.
    static const QRegularExpression dialled(u"^[0-9*#+]{1,32}$"_s);
    if (!dialled.match(number).hasMatch()) {
      c.Error = u"\"number\" must be 1 to 32 digits, * # or +"_s;
    } else {
      // Each place a value goes has its own name: not every driver binds one
      // name twice.
      const QString pattern = u'%' + number + u'%';
      c.Add(u"(Caller LIKE :caller OR Called LIKE :called)"_s, u"caller"_s, pattern);
      c.Values.insert(u"called"_s, pattern);
    }
  }
  return PageOf(query, c,
                u"ID, Caller, Called, startTime, stopTime, RecType, IOFlag, assType, assPhone"_s,
                u"PBXConRecords"_s, u"startTime DESC, ID DESC"_s, u"calls"_s,
                [](const QVariantList &r) {
                  return QJsonObject{{u"id"_s, r.value(0).toLongLong()},
                                     {u"caller"_s, r.value(1).toString()},
                                     {u"called"_s, r.value(2).toString()},
                                     {u"start"_s, Time(r.value(3))},
                                     {u"stop"_s, Time(r.value(4))},
                                     {u"type"_s, r.value(5).toInt()},
                                     {u"direction"_s, r.value(6).toInt()},
                                     {u"assType"_s, r.value(7).toInt()},
                                     {u"assPhone"_s, r.value(8).toString()}};
                },
                error);
}

QJsonObject WakeUpsPage(const QUrlQuery &query, QString *error) {
  Conditions c;
  c.Time(query, u"from"_s, u"MoringCallTime"_s, false);
  c.Time(query, u"to"_s, u"MoringCallTime"_s, true);
  if (query.hasQueryItem(u"room"_s)) {
    const QString room = query.queryItemValue(u"room"_s, QUrl::FullyDecoded);
    if (room.isEmpty() || room.size() > 50) {
      c.Error = u"\"room\" must be 1 to 50 characters"_s;
    } else {
      c.Add(u"(RoomNo = :room OR Ext = :ext)"_s, u"room"_s, room);
      c.Values.insert(u"ext"_s, room);
    }
  }
  if (query.hasQueryItem(u"state"_s)) {
    const QString state = query.queryItemValue(u"state"_s);
    if (state == u"answered"_s)
      c.Add(u"State = :state"_s, u"state"_s, 1);
    else if (state == u"failed"_s)
      c.Add(u"State = :state"_s, u"state"_s, 2);
    else
      c.Error = u"\"state\" must be answered or failed"_s;
  }
  return PageOf(query, c, u"ID, RoomNo, Ext, CreateTime, MoringCallTime, State"_s,
                u"MoringCallLog"_s, u"MoringCallTime DESC, ID DESC"_s, u"wakeups"_s,
                [](const QVariantList &r) {
                  return QJsonObject{{u"id"_s, r.value(0).toLongLong()},
                                     {u"room"_s, r.value(1).toString()},
                                     {u"ext"_s, r.value(2).toString()},
                                     {u"created"_s, Time(r.value(3))},
                                     {u"time"_s, Time(r.value(4))},
                                     {u"answered"_s, r.value(5).toInt() == 1}};
                },
                error);
}
