#include "api/ApiRooms.h"

#include "api/ApiBody.h"
#include "api/JsonText.h"
#include "devices/CallControlDev.h"


using namespace Qt::StringLiterals;

QJsonValue ApiTime(TDateTime t) {
  if (t.IsZero())
    return QJsonValue::Null;
  return t.ToQDateTime().toString(u"yyyy-MM-ddThh:mm:ss"_s);
}

namespace {
// "hh:mm" by hand: QTime's pattern formatting costs more than the rest of a
// room together.
QString TimeOfDay(TDateTime t) {
  const QTime time = t.Time();
  const int h = time.hour();
  const int m = time.minute();
  const char16_t text[5] = {char16_t(u'0' + h / 10), char16_t(u'0' + h % 10), u':',
                            char16_t(u'0' + m / 10), char16_t(u'0' + m % 10)};
  return QString(reinterpret_cast<const QChar *>(text), 5);
}

void WriteTime(TJsonText &out, TDateTime t) {
  const QJsonValue v = ApiTime(t);
  if (v.isNull())
    out.Null();
  else
    out.String(v.toString());
}

void WriteWindow(TJsonText &out, bool on, TDateTime start, TDateTime end) {
  out.BeginObject();
  out.Key("on").Bool(on).Key("start").String(TimeOfDay(start)).Key("end").String(TimeOfDay(end));
  out.EndObject();
}
} // namespace

void WriteRoom(TJsonText &out, const TPhoneTis &p, const QStringList &classNames) {
  const TExt_Record &r = p.LastExt;
  out.BeginObject();
  out.Key("ext").String(p.TelNos).Key("id").Number(p.ID).Key("room").String(r.RoomNo);
  out.Key("guest").String(r.GuestName).Key("occupied").Bool(r.Occupied);
  out.Key("status").Number(p.Status);
  out.Key("wakeup").BeginObject().Key("time");
  WriteTime(out, p.MoringCallTime);
  out.Key("daily").Bool(r.MoringCall_isEveryDay);
  out.Key("dailyTime").String(TimeOfDay(r.MoringCall_EveryDay_Time));
  out.Key("mode").Number(r.MoringCall_Mode);
  out.Key("answered").Bool(p.MoringCallAnswerFlag == 1);
  out.Key("delayed").Bool(p.MoringCallDelayFlag == 1);
  out.EndObject();
  out.Key("dnd").BeginObject().Key("mode").Number(p.NoDisturbMode).Key("windows").BeginArray();
  WriteWindow(out, r.NoDisturb_Time1_Checked, r.NoDisturb_Time1_Start, r.NoDisturb_Time1_End);
  WriteWindow(out, r.NoDisturb_Time2_Checked, r.NoDisturb_Time2_Start, r.NoDisturb_Time2_End);
  WriteWindow(out, r.NoDisturb_Time3_Checked, r.NoDisturb_Time3_Start, r.NoDisturb_Time3_End);
  out.EndArray().EndObject();
  out.Key("voicemail").Number(p.VoiceMail);
  out.Key("class").BeginObject().Key("number").Number(p.SrvClass).Key("name").String(
      p.SrvClass >= 0 ? ClassName(classNames.value(p.SrvClass)) : QString());
  out.EndObject();
  out.Key("memo").String(r.Memo);
  out.EndObject();
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
