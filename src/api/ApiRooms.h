#pragma once

#include "support/TDateTime.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

struct TPhoneTis;

class TJsonText;

// A room as the API shows it, written into `out`: the live device part and the
// room part the grid last showed. `classNames` are the exchange's service
// class items ("n:name").
void WriteRoom(TJsonText &out, const TPhoneTis &p, const QStringList &classNames);

// The times of the API: local time, "yyyy-MM-ddThh:mm:ss"; null for none.
QJsonValue ApiTime(TDateTime t);

// The body of PUT .../wakeup: {"time":"yyyy-MM-ddThh:mm[:ss]","mode":1..3,
// "daily":bool}; mode and daily may be left out (1, false). Anything else,
// a time that isn't after `now`, a wrong type: the message why, for a 400.
struct TWakeUpBody {
  TDateTime When;
  int Mode = 1;
  bool Daily = false;
};
QString ParseWakeUpBody(const QByteArray &body, TDateTime now, TWakeUpBody *out);

// The body of PUT .../dnd: {"mode":0..3,"windows":[{"start":"hh:mm",
// "end":"hh:mm","on":bool}, ...]}. Up to three windows fill the room's
// windows in order and turn the others off; without "windows" they stay.
struct TDndBody {
  int Mode = 0;
  bool HasWindows = false;
  struct Window {
    bool On = false;
    TDateTime Start; // the time of day counts
    TDateTime End;
  };
  Window Windows[3];
};
QString ParseDndBody(const QByteArray &body, TDndBody *out);

// The exchange's name of a class item "n:name": the part after the colon.
QString ClassName(const QString &item);
