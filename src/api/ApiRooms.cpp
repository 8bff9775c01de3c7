#include "api/ApiRooms.h"

#include "devices/CallControlDev.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>

using namespace Qt::StringLiterals;

QJsonValue ApiTime(TDateTime t) {
  if (t.IsZero())
    return QJsonValue::Null;
  return t.ToQDateTime().toString(u"yyyy-MM-ddThh:mm:ss"_s);
}

namespace {
QString TimeOfDay(TDateTime t) {
  return t.Time().toString(u"hh:mm"_s);
}

QJsonObject Window(bool on, TDateTime start, TDateTime end) {
  return {{u"on"_s, on}, {u"start"_s, TimeOfDay(start)}, {u"end"_s, TimeOfDay(end)}};
}
} // namespace

QJsonObject RoomJson(const TPhoneTis &p, const QStringList &classNames) {
  const TExt_Record &r = p.LastExt;
  QJsonObject room{
      {u"ext"_s, p.TelNos},
      {u"id"_s, p.ID},
      {u"room"_s, r.RoomNo},
      {u"guest"_s, r.GuestName},
      {u"occupied"_s, r.Occupied},
      {u"status"_s, p.Status},
      {u"wakeup"_s,
       QJsonObject{{u"time"_s, ApiTime(p.MoringCallTime)},
                   {u"daily"_s, r.MoringCall_isEveryDay},
                   {u"dailyTime"_s, TimeOfDay(r.MoringCall_EveryDay_Time)},
                   {u"mode"_s, r.MoringCall_Mode},
                   {u"answered"_s, p.MoringCallAnswerFlag == 1},
                   {u"delayed"_s, p.MoringCallDelayFlag == 1}}},
      {u"dnd"_s,
       QJsonObject{{u"mode"_s, p.NoDisturbMode},
                   {u"windows"_s,
                    QJsonArray{Window(r.NoDisturb_Time1_Checked, r.NoDisturb_Time1_Start,
                                      r.NoDisturb_Time1_End),
                               Window(r.NoDisturb_Time2_Checked, r.NoDisturb_Time2_Start,
                                      r.NoDisturb_Time2_End),
                               Window(r.NoDisturb_Time3_Checked, r.NoDisturb_Time3_Start,
                                      r.NoDisturb_Time3_End)}}}},
      {u"voicemail"_s, p.VoiceMail},
      {u"class"_s,
       QJsonObject{{u"number"_s, p.SrvClass},
                   {u"name"_s, p.SrvClass >= 0 ? classNames.value(p.SrvClass) : QString()}}},
      {u"memo"_s, r.Memo}};
  return room;
}

QString ParseWakeUpBody(const QByteArray &body, TDateTime now, TWakeUpBody *out) {
  QJsonParseError error{};
  const QJsonDocument doc = QJsonDocument::fromJson(body, &error);
  if (error.error != QJsonParseError::NoError)
    return u"body is not JSON: %1 at %2"_s.arg(error.errorString()).arg(error.offset);
  if (!doc.isObject())
    return u"body must be a JSON object"_s;
  const QJsonObject o = doc.object();
  for (auto it = o.begin(); it != o.end(); ++it) {
    if (it.key() != u"time"_s && it.key() != u"mode"_s && it.key() != u"daily"_s)
      return u"unknown field \"%1\""_s.arg(it.key().left(40));
  }
  const QJsonValue time = o.value(u"time"_s);
  if (!time.isString())
    return u"\"time\" must be a string yyyy-MM-ddThh:mm"_s;
  QDateTime when = QDateTime::fromString(time.toString(), u"yyyy-MM-ddThh:mm"_s);
  if (!when.isValid())
    when = QDateTime::fromString(time.toString(), u"yyyy-MM-ddThh:mm:ss"_s);
  if (!when.isValid())
    return u"\"time\" is not a time yyyy-MM-ddThh:mm"_s;
  TWakeUpBody b;
  // The exchange keeps wake-ups to the minute.
  when.setTime(QTime(when.time().hour(), when.time().minute()));
  b.When = TDateTime::FromQDateTime(when);
  if (!(now < b.When))
    return u"\"time\" is not in the future"_s;
  if (o.contains(u"mode"_s)) {
    const QJsonValue mode = o.value(u"mode"_s);
    const double m = mode.toDouble(-1);
    if (!mode.isDouble() || m != double(int(m)) || m < 1 || m > 3)
      return u"\"mode\" must be 1, 2 or 3"_s;
    b.Mode = int(m);
  }
  if (o.contains(u"daily"_s)) {
    if (!o.value(u"daily"_s).isBool())
      return u"\"daily\" must be true or false"_s;
    b.Daily = o.value(u"daily"_s).toBool();
  }
  *out = b;
  return {};
}
