#pragma once

#include "support/TDateTime.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

struct TPhoneTis;

// A room as the API shows it: the live device part and the room part the grid
// last showed. `classNames` are the exchange's service class names.
QJsonObject RoomJson(const TPhoneTis &p, const QStringList &classNames);

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
