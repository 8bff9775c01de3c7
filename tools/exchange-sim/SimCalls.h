// The logged-in console's own extension as the exchange sees it: one call with
// at most one more held, moved by the console's hook, digits and call-control
// commands on one side and by the far end (a test, a script) on the other.
// Every change of state is announced so the exchange can report it; nothing
// here knows about sockets.
//
// States, as the console numbers them: 0 out of service, 1 idle, 2 ringing,
// 3 call back, 4 off hook and dialling, 5 calling out, 6 to hang up, 7 connected.
#pragma once

#include <QMetaType>
#include <QObject>
#include <QString>
#include <QTimer>

#include <algorithm>

// What one CallState packet reports.
struct SimCallStatus {
  quint8 State = 1;
  qint16 Line = 0;
  QString Caller; // the other party
  QString Called;
  bool LogAsDialOut = false;
  quint16 Rights = 0;
};
Q_DECLARE_METATYPE(SimCallStatus)

class SimCall : public QObject {
  Q_OBJECT
public:
  enum State : quint8 {
    OutOfService = 0,
    Idle = 1,
    Ringing = 2,
    CallBack = 3,
    Dialling = 4,
    Calling = 5,
    ToHangUp = 6,
    Connected = 7,
  };
  // Call-control codes of PhoneCommand.
  enum Command : quint16 {
    Query = 128,
    Conference = 129,
    Transfer = 130,
    Hold = 131,
    Cancel = 132,
    AskState = 133,
  };

  explicit SimCall(QObject *parent = nullptr);

  static QString StateName(quint8 state);

  // Quiet between the last digit and the call going out; 0 dials at once.
  void SetDialCompleteAfter(int ms) { DialCompleteAfter = std::max(ms, 0); }
  // Ringing time at the far end before it answers; 0 answers at once, a
  // negative value never: only AnswerByFarEnd() answers then.
  void SetAnswerAfter(int ms) { AnswerAfter = ms; }
  // The extension's own line, reported whenever a call does not name another.
  void SetLine(qint16 line);
  // The Rights word of every report from now on.
  void SetRights(quint16 rights) { Now.Rights = rights; }

  SimCallStatus Status() const { return Now; }
  quint8 CurrentState() const { return Now.State; }
  QString HeldCaller() const { return Held; }
  bool IsHolding() const { return Holding; }
  QString DialledDigits() const { return Digits; }

  // The console's side. Each returns false when it has no effect in the current state.
  bool OffHook();
  bool OnHook();
  bool Dial(const QString &digits);
  // 128 and 133 only repeat the current state; the others move the call.
  bool PhoneCommand(quint16 code);

  // The far end's side.
  bool Ring(const QString &caller, int line = -1); // line < 0: the extension's own
  bool RingBack(const QString &caller);
  bool AnswerByFarEnd();
  bool HangUpByFarEnd();
  // A ringing call stops unanswered; *caller gets who it was.
  bool GiveUp(QString *caller = nullptr);

signals:
  // After every change of state, and after a re-send asked for by 128 or 133.
  void stateChanged(const SimCallStatus &status);
  void stateRepeated(const SimCallStatus &status);

private:
  void Enter(quint8 state, const QString &caller, bool logAsDialOut, const QString &called = {});
  void ToIdle();
  void DialComplete();
  void ResumeHeld();

  SimCallStatus Now;
  qint16 OwnLine = 0;
  int DialCompleteAfter = 1500;
  int AnswerAfter = 2000;

  QString Digits; // collected while dialling
  bool Holding = false;
  QString Held; // the held party, while Holding
  bool HeldLogAsDialOut = false;

  QTimer DialTimer;
  QTimer AnswerTimer;
};
