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
// Steps of the exchange's devices, pushed to the console as UDP events:
//   at 100  status 5 7             device 5 changes to status 7, and says so
//   at 100  mixdata 5 0x0245       device 5's status word changes, and says so
//   at 200  cdr 8001 13900001111 [asstype [direction [rectype]]]   a call record
//   at 0    live 50                random status changes, 50 a second; "live off" stops
//   at 500  records 2              call records of random rooms, 2 a second; "records off" stops
//
// Times are milliseconds from the start of the script; steps with the same time
// run in the order of the file.
#pragma once

#include <QByteArray>
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
    Status,
    MixData,
    CallRecord,
    Live,
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
  int Value = 0;       // the status of Status, the word of MixData
  double Rate = 0;     // events a second of Live and CallRecords; 0 stops the stream
  QList<qint16> Codes; // associated type, direction and record type of CallRecord
};

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
