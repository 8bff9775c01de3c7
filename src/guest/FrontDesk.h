#pragma once

#include "support/TDateTime.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

enum class MessageKind;
class TBatchWalk;
class TCallControlDev;
class TExtsView;
class TNetModule;

// Check-in and check-out of guest rooms: for the current room or for every
// checked row, through the batch walk (its progress and its time-out). A room
// is a short sequence of the ordinary requests, each sent once the exchange
// answered the one before, so a refusal or a silence stops it between two
// known steps. The room's own columns change only after the exchange took
// every request for it; what did go through is said and logged.
class TFrontDesk : public QObject {
  Q_OBJECT

public:
  TFrontDesk(TCallControlDev &table, TNetModule &net, TExtsView &exts, TBatchWalk &walk,
             QObject *parent = nullptr);

  // Longer names are refused rather than cut: a cut name would be a wrong one.
  static constexpr int kGuestNameMax = 60;

  struct CheckInValues {
    QString GuestName;
    QString Memo; // empty: the room's memo stays
    bool WakeUp = false;
    TDateTime WakeUpTime;
    int WakeUpMode = 1; // 1..3
  };

  // Check-in and check-out; the automation API also sets a room's class and
  // clears its voice mail through the same one-room sequence, so that it learns
  // whether the exchange took the request.
  enum class Action { CheckIn, CheckOut, SetClass, ClearVoiceMail };
  static QString ActionText(Action action); // "入住", "退房", ...

  // How a room's sequence ended.
  enum class Outcome { Done, Refused, NoAnswer, NotStored };

  // Start a sequence; false (and the operator told why) when it can't start,
  // in which case nothing was sent and nothing changed.
  bool CheckOut(bool checkedRooms);
  // The menu's check-out: asks first, naming how many rooms it resets.
  bool AskAndCheckOut(bool checkedRooms);
  bool CheckIn(const CheckInValues &values, bool checkedRooms);

  // One room for the automation API: nothing is asked or shown on the desk,
  // the sequence has its own time-out instead of the batch's, and the outcome
  // comes as roomFinished. `srvClass` -1 takes the class the settings name for
  // the action. Empty when it started; else why not, and nothing was sent.
  QString StartQuietly(Action action, int id, const CheckInValues &values, int srvClass = -1);

  // Whether a start would be refused now, and why; empty when it wouldn't.
  QString Refusal(Action action) const;
  // The class item ("n:name") a setting names, empty while unknown.
  QString ClassItem(int srvClass) const;

  bool Running() const { return m_running; }
  bool RoomInSequence(int id) const { return m_running && id == m_room; }

  // An answer of the exchange (type 22, 24/152, 35, 40) while a sequence runs:
  // true when it was the one awaited, which is then taken.
  bool Answer(int type, const char *work);

  // The exchange's class items, "1:name", ...; empty until it sent them.
  std::function<QStringList()> SrvClassItems;

signals:
  // The sequence ended, done or not; `summary` is its log line.
  void finished(const QString &summary);
  // One room's sequence ended; `why` says what stopped it.
  void roomFinished(int id, TFrontDesk::Action action, TFrontDesk::Outcome outcome,
                    const QString &why);

private:
  enum class Step { ClassSet, VoiceMailClear, NoDisturbOff, WakeCancel, WakeSet };
  QString RefusalFor(Action action, int srvClass) const;
  int SettingsClass(Action action) const;
  bool Start(Action action, bool checkedRooms);
  void Begin(Action action, int srvClass, bool checkedRooms, bool quiet);
  QTimer &StepTimer();
  void Say(MessageKind kind, const QString &text) const;
  void StartRoom(int id);
  void SendStep();
  void StepAnswered();
  void RoomDone();
  void CommitRoom();
  void Stop(const QString &why, Outcome outcome = Outcome::Refused);
  QString StepText(Step step) const;
  QString RoomText(int id) const;

  TCallControlDev &m_table;
  TNetModule &m_net;
  TExtsView &m_exts;
  TBatchWalk &m_walk;

  bool m_running = false;
  bool m_checkedRooms = false;
  bool m_quiet = false;
  QTimer *m_quietTimer = nullptr; // the quiet sequence's step time-out
  Action m_action = Action::CheckOut;
  CheckInValues m_values;
  int m_class = -1;
  int m_room = -1;
  QList<Step> m_steps; // of the room in hand; the first is the one awaited
  QStringList m_stepsDone;
  QStringList m_roomsDone;
};
