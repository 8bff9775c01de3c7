#include "api/ApiRooms.h"

#include "api/ApiBody.h"
#include "devices/CallControlDev.h"

#include <QJsonArray>

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
                   {u"name"_s, p.SrvClass >= 0 ? ClassName(classNames.value(p.SrvClass))
                                               : QString()}}},
      {u"memo"_s, r.Memo}};
  return room;
}

QString ParseWakeUpBody(const QByteArray &body, TDateTime now, TWakeUpBody *out) {
  TApiBody b(body, {u"time"_s, u"mode"_s, u"daily"_s});
  if (!b.Ok())
    return b.Error();
  const QString time = b.Text(u"time"_s, 32, true);
  if (!b.Ok())
    return u"\"time\" must be a string yyyy-MM-ddThh:mm"_s;
  QDateTime when = QDateTime::fromString(time, u"yyyy-MM-ddThh:mm"_s);
  if (!when.isValid())
    when = QDateTime::fromString(time, u"yyyy-MM-ddThh:mm:ss"_s);
  if (!when.isValid())
    return u"\"time\" is not a time yyyy-MM-ddThh:mm"_s;
  TWakeUpBody w;
  // The exchange keeps wake-ups to the minute.
  when.setTime(QTime(when.time().hour(), when.time().minute()));
  w.When = TDateTime::FromQDateTime(when);
  if (!(now < w.When))
    return u"\"time\" is not in the future"_s;
  w.Mode = b.Integer(u"mode"_s, 1, 3, 1);
  w.Daily = b.Boolean(u"daily"_s, false);
  if (!b.Ok())
    return b.Error();
  *out = w;
  return {};
}

namespace {
// "hh:mm" as a time of day; invalid for anything else.
QTime TimeOfDayText(const QJsonValue &v) {
  return v.isString() ? QTime::fromString(v.toString(), u"hh:mm"_s) : QTime();
}
} // namespace

QString ParseDndBody(const QByteArray &body, TDndBody *out) {
  TApiBody b(body, {u"mode"_s, u"windows"_s});
  TDndBody d;
  d.Mode = b.Integer(u"mode"_s, 0, 3, 0, true);
  d.HasWindows = b.Has(u"windows"_s);
  const QJsonArray windows = b.Array(u"windows"_s, 3);
  if (!b.Ok())
    return b.Error();
  for (qsizetype i = 0; i < windows.size(); ++i) {
    const QJsonObject w = windows.at(i).toObject();
    const QTime start = TimeOfDayText(w.value(u"start"_s));
    const QTime end = TimeOfDayText(w.value(u"end"_s));
    const QJsonValue on = w.value(u"on"_s);
    if (!windows.at(i).isObject() || w.size() != 3 || !start.isValid() || !end.isValid() ||
        !on.isBool())
      return u"window %1 must be {\"start\":\"hh:mm\",\"end\":\"hh:mm\",\"on\":true|false}"_s.arg(
          i + 1);
    d.Windows[i] = {on.toBool(), TDateTime::FromTime(start), TDateTime::FromTime(end)};
  }
  *out = d;
  return {};
}

QString ClassName(const QString &item) {
  const qsizetype colon = item.indexOf(u':');
  return colon < 0 ? item : item.mid(colon + 1);
}
