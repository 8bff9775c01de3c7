#include "guest/MoringCall.h"

#include "devices/NetModule.h"
#include "support/Log.h"

using namespace Qt::StringLiterals;

QString MoringCallTimeText(TDateTime when) {
  const QDateTime dt = when.ToQDateTime();
  const QDate d = dt.date();
  const QTime t = dt.time();
  return QString::asprintf("%.4d%.2d%.2d%.2d%.2d01", d.year(), d.month(), d.day(), t.hour(),
                           t.minute());
}

TDateTime MoringCallText2DateTime(const QString &text) {
  const QString t = text.trimmed();
  if (t.isEmpty())
    return TDateTime();
  bool digits = t.size() >= 12;
  for (int i = 0; digits && i < 12; ++i)
    digits = t.at(i).isDigit() && t.at(i).unicode() < 128;
  if (!digits)
    throw EConvertError("not a wake-up time: " + t.toStdString());
  const QDate date(t.mid(0, 4).toInt(), t.mid(4, 2).toInt(), t.mid(6, 2).toInt());
  const QTime time(t.mid(8, 2).toInt(), t.mid(10, 2).toInt());
  if (!date.isValid() || !time.isValid())
    throw EConvertError("not a wake-up time: " + t.toStdString());
  return TDateTime::FromQDateTime(QDateTime(date, time));
}

TDateTime MoringCallNextEveryDay(TDateTime now, TDateTime everyDayTime) {
  const TDateTime timeOfDay = everyDayTime.TimePart();
  const TDateTime nowTime = now.TimePart();
  TDateTime day = now.DatePart();
  if (timeOfDay < nowTime && !timeOfDay.SameAs(nowTime))
    day = day + 1.0;
  return TDateTime(day.Value + timeOfDay.Value);
}

void MoringCall_SetEveryDay(TNetModule &net, int id, int mode, TDateTime when) {
  net.DstID = id;
  net.CallTime = MoringCallTimeText(when);
  net.MoringMode = mode;
  net.Send(TNetModule::MoringCallSet);
  if (LogEnabled())
    WriteLog(u"叫醒设置 myportid:%1 ->%2 moringCall_Mode:%3"_s.arg(id)
                 .arg(DateTimeToStr(when))
                 .arg(mode));
}
