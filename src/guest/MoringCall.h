#pragma once

#include "support/TDateTime.h"

#include <QString>

#include <stdexcept>

class TNetModule;

// A wake-up time text that isn't one: the caller decides what to drop.
class EConvertError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

// "YYYYMMDDHHNN01": the wake-up time as the exchange takes it.
QString MoringCallTimeText(TDateTime when);
// The first twelve characters of a wake-up text as a date-time (seconds 0);
// empty (after trimming) is 0. Anything else that isn't a real date and time
// raises EConvertError.
TDateTime MoringCallText2DateTime(const QString &text);
// The next ring of a daily wake-up: today at its time of day, or tomorrow when
// that time has passed. The same time to the millisecond counts as today.
TDateTime MoringCallNextEveryDay(TDateTime now, TDateTime everyDayTime);
// The tick's sender: the next occurrence of a daily wake-up to the exchange.
void MoringCall_SetEveryDay(TNetModule &net, int id, int mode, TDateTime when);
