// Timed steps for the simulated exchange, read from a small text file:
//
//   # comment
//   at 0    send 17 02 00 ...      type code, then payload bytes in hex (spaces allowed)
//   at 500  raw 12 19 10 39 ...    bytes exactly as written, in one write
//   at 900  callstate 2 5 8002     state, line, caller [, called]: a ready-made CallState,
//                                  which leaves the extension's own call as it is
//   at 950  missed 8002            a ready-made MissedCall
//   at 1000 pulses off             or "pulses on"
//   at 2000 drop                   close the console's connection
//
// Steps of the console's own extension, which move its call as a far end would
// (each does nothing when the call is not in a state it applies to):
//   at 0    ring 8002 [line]       an idle extension rings; the line defaults to its own
//   at 0    callback 8002          an idle extension is rung back
//   at 3000 answer                 the party called out to answers
//   at 9000 hangup                 the other party hangs up: "please hang up"
//   at 5000 giveup                 a ringing call stops unanswered; a MissedCall follows
//   at 0    userinfo 8001 前台 5003 1 *72 *73   number, name, port, admin 0|1, feature codes
//
// How the exchange answers the guest-room requests (answer kinds: srvclass,
// nodisturb, voicemail, wakeup):
//   at 0    srvresult 000007       refuse every service class change with this code;
//                                  "srvresult 000000" accepts again
//   at 0    hold nodisturb 2       the next 2 answers of the kind are never sent
//                                  (1 when left out, 0 ends a hold)
//   at 0    delay srvclass 12000 1 the next answer of the kind goes 12000 ms late
//                                  (every later one when the count is left out)
//
// Steps of the exchange's devices, pushed to the console as UDP events:
//   at 100  status 5 7             device 5 changes to status 7, and says so
//   at 100  mixdata 5 0x0245       device 5's status word changes, and says so
//   at 200  cdr 8001 13900001111 [asstype [direction [rectype]]]   a call record
//   at 0    live 50                random status changes, 50 a second; "live off" stops
//   at 500  records 2              call records of random rooms, 2 a second; "records off" stops
//
// Wake-ups, which the exchange rings by its own clock:
//   at 0    clock 202701030659     the exchange's clock reads this now (seconds may
//                                  follow as two more digits) and runs on from there
//   at 0    wakeresult 8003 answer 5000   how the room's wake-ups end: answer,
//                                  noanswer or random, after a ring of 5000 ms
//                                  (random length when left out)
//
// Times are milliseconds from the start of the script; steps with the same time
// run in the order of the file.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>

struct ScriptStep {
  enum class Kind {
    Send,
    Raw,
    Drop,
    PulsesOff,
    PulsesOn,
    CallState,
    Missed,
    Ring,
    CallBack,
    Answer,
    HangUp,
    GiveUp,
    UserInfo,
    SrvResult,
    Hold,
    Delay,
    Status,
    MixData,
    CallRecord,
    Live,
    Clock,
    WakeResult,
    CallRecords,
  };
  Kind Action = Kind::Drop;
  int At = 0;   // ms after the start
  int Line = 0; // line in the file, for messages
  qint16 TypeCode = 0;
  QByteArray Bytes; // payload of Send, the bytes of Raw
  quint8 State = 0;
  qint16 DeviceLine = 0;
  QString Caller; // also the extension's number of UserInfo
  QString Called;
  QString Name;
  quint16 Port = 0;
  bool Admin = false;
  QStringList Features;
  int Device = 0;
  int Value = 0;       // the status of Status, the word of MixData, the count of Hold/Delay
  int DelayMs = 0;     // how late Delay sends
  double Rate = 0;     // events a second of Live and CallRecords; 0 stops the stream
  QList<qint16> Codes; // associated type, direction and record type of CallRecord
  QDateTime Moment;    // the time of Clock
  int RingMs = -1;     // of WakeResult; negative: random
};

// The type code of the answers of a kind named in hold and delay steps
// (srvclass 22, nodisturb 24, wakeup 35, voicemail 40); 0 for another name.
qint16 AnswerTypeCode(const QString &kind);

// Parses a whole script. On any bad line nothing is returned as usable: the
// result is false and *error names every bad line by its number.
bool ParseScript(const QString &text, QList<ScriptStep> *steps, QString *error);

// Plays parsed steps on time through a callback.
class ScriptRunner : public QObject {
  Q_OBJECT
public:
  using Perform = std::function<void(const ScriptStep &)>;
  explicit ScriptRunner(QObject *parent = nullptr);
  void Start(QList<ScriptStep> steps, Perform perform);
  void Stop();
  bool IsRunning() const { return Next < Steps.size(); }

signals:
  void finished();

private:
  void RunDue();
  void ArmTimer();

  QList<ScriptStep> Steps;
  qsizetype Next = 0;
  Perform Act;
  QElapsedTimer Clock;
  QTimer Timer;
};
