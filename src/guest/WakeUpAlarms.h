#pragma once

#include "devices/ExtRecord.h"
#include "directory/WakeUpAlarmStore.h"
#include "support/FormLogic.h"
#include "support/TDateTime.h"

#include <QList>

class TCallControlDev;
class TNetModule;
struct TPhoneTis;

// The front desk's follow-up of wake-ups that were not answered. Each failed
// ring raises (or counts on) the room's alarm, which stays in the store until
// a person acknowledges it or the room answers a later wake-up. With retries on
// ([FrontDesk] WakeRetry), the console sets the room a new wake-up some minutes
// on, a few times at most. This is also the logic of the alarm window: its
// list, its current row and its two acknowledge keys.
class TForm_WakeUpAlarms : public TFormLogic {
  Q_OBJECT

public:
  TForm_WakeUpAlarms(TCallControlDev &table, TNetModule &net, QObject *parent = nullptr);

  // The open alarms, oldest first; the window's rows.
  const QList<TWakeUpAlarm> &Alarms() const { return m_alarms; }
  int Count() const { return int(m_alarms.size()); }
  int ItemIndex = -1; // the window's current row
  // The status bar's word: empty while no alarm is open.
  QString StatusText() const;

  // Reads the open alarms from the store: at start, once the store is open.
  void Reload();

  // A wake-up result the extension list logged (state 1 answered, 2 not). The
  // answer is the attempt the result belongs to, for the log row: 1 for the
  // operator's own wake-up, 2.. for the console's retries.
  int ResultSeen(const TExt_Record &room, TDateTime wakeTime, int state);
  // True while the room waits for a retry the console set, which the daily
  // wake-up's re-sending must not overwrite.
  bool RetryPending(int id) const;

  // The window's keys.
  void AcknowledgeClick();    // the current row
  void AcknowledgeAllClick(); // every open alarm

signals:
  void alarmsChanged();
  // A failure was announced by a balloon; a click on it opens the window.
  void alarmRaised(int id);

private:
  int IndexOfRoom(int id) const;
  void Acknowledge(const QList<qint32> &ids, const QString &by);
  void SendRetry(int id, TDateTime when);

  TCallControlDev &m_table;
  TNetModule &m_net;
  QList<TWakeUpAlarm> m_alarms;
};

// Why a wake-up at `when` may not reach the room: a checked do-not-disturb
// window of the room that holds that time of day, or a do-not-disturb mode in
// force now. Empty when nothing is in the way.
QString WakeUpDndConflict(const TPhoneTis &room, TDateTime when);
