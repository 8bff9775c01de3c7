#pragma once

#include "support/TDateTime.h"

#include <QList>
#include <QString>

// A failed wake-up the front desk has not yet dealt with. One open alarm per
// room: a later failure of the same room counts another attempt on it.
struct TWakeUpAlarm {
  qint32 ID = 0; // 0 until stored
  qint32 PortID = -1;
  QString RoomNo;
  QString Ext;
  TDateTime MoringCallTime; // the wake-up that failed last
  TDateTime CreateTime;     // when the first failure was seen
  qint32 Attempts = 0;      // failed rings so far
  TDateTime RetryTime;      // the retry the console set; 0 none
};

// The alarms live in WakeUpAlarms; an acknowledged one keeps its row with the
// time and by whom, so the shift's failures can still be read afterwards.
namespace WakeUpAlarmStore {
inline constexpr char16_t kTable[] = u"WakeUpAlarms";
// Who cleared an alarm when the room answered a later wake-up.
inline constexpr char16_t kByAnswer[] = u"answered";

// The upgrade step: the alarm table, and the attempt column of the wake-up log.
// An older store takes both and keeps every row it had; run at each start.
void EnsureSchema();
// The alarms nobody acknowledged, oldest first.
QList<TWakeUpAlarm> Open();
// Inserts (ID 0, which is then set) or updates the alarm.
void Save(TWakeUpAlarm &alarm);
// Acknowledges these alarms (all open ones for an empty list).
void Acknowledge(const QList<qint32> &ids, TDateTime when, const QString &by);
} // namespace WakeUpAlarmStore
