// Timed steps for the simulated exchange, read from a small text file:
//
//   # comment
//   at 0    send 17 02 00 ...      type code, then payload bytes in hex (spaces allowed)
//   at 500  raw 12 19 10 39 ...    bytes exactly as written, in one write
//   at 900  callstate 2 5 8002     state, line, caller [, called]: a ready-made CallState
//   at 950  missed 8002            a ready-made MissedCall
//   at 1000 pulses off             or "pulses on"
//   at 2000 drop                   close the console's connection
//
// Times are milliseconds from the start of the script; steps with the same time
// run in the order of the file.
#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

struct ScriptStep {
  enum class Kind { Send, Raw, Drop, PulsesOff, PulsesOn, CallState, Missed };
  Kind Action = Kind::Drop;
  int At = 0;   // ms after the start
  int Line = 0; // line in the file, for messages
  qint16 TypeCode = 0;
  QByteArray Bytes; // payload of Send, the bytes of Raw
  quint8 State = 0;
  qint16 DeviceLine = 0;
  QString Caller;
  QString Called;
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
