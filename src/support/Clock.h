#pragma once

#include "support/TDateTime.h"

#include <QDateTime>

#include <functional>

// The one source of the present time. Everything that reads the time of day (the
// wake-up tick, the do-not-disturb windows, task colours, the daily log file)
// asks here, so a test can stand at 06:59:59 or at midnight without waiting.
QDateTime CurrentDateTime();
TDateTime Now();
// The same present as milliseconds since the epoch, without the local-time
// conversion (which asks the system for its zone on every call): for callers
// that only need to notice that time moved on.
qint64 CurrentMSecsSinceEpoch();

using ClockSource = std::function<QDateTime()>;
// Replaces the system clock; an empty function restores it.
void SetClock(ClockSource source);
