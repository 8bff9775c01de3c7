// A simulated exchange: it accepts the console's TCP connection, answers Login,
// sends Pulses while a session is open, records everything the console sends,
// and lets a test or a script push any packet or byte sequence at the console.
// One console at a time: a new connection replaces the old one. The logged-in
// console's own extension carries calls (SimCalls.h): its packets move them,
// and so do the far-end calls below and the script.
#pragma once

#include "Script.h"
#include "SimCalls.h"
#include "SimPackets.h"

#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpServer>
#include <QTimer>

class QTcpSocket;

class ExchangeSim : public QObject {
  Q_OBJECT
public:
  explicit ExchangeSim(QObject *parent = nullptr);
  ~ExchangeSim() override;

  // Port 0 takes any free port; Port() then tells which.
  bool Listen(quint16 port = 0, const QHostAddress &address = QHostAddress::LocalHost);
  quint16 Port() const;
  QString ListenError() const;

  // A Login with this number and password is answered with `result`: "1000"
  // accepts, "1001", "1002" and "1003" refuse. An unknown number or a wrong
  // password is answered "1001".
  void AddUser(const QString &telNo, const QString &password,
               const QString &result = QStringLiteral("1000"));
  // false: Login packets are recorded but never answered, as by a hung exchange.
  void SetAnswerLogin(bool answer);

  // Pulses go out every `ms` while a session is open; 0 sends none.
  void SetPulsePeriod(int ms);
  void StopPulses();
  void StartPulses();
  int PulsesSent() const { return Pulses; }

  // The id given at the last accepted login; ids start at 1 and rise.
  quint16 SessionId() const { return Session; }
  bool IsSessionOpen() const { return SessionOpen; }

  // Sending to the console; nothing happens without a connection.
  void SendRaw(const QByteArray &bytes); // one write, exactly these bytes
  // ID is the session id unless given; Len is 12 + payload unless given.
  void SendPacket(qint16 typeCode, const QByteArray &payload, int len = -1, int id = -1);
  static QByteArray BuildPacket(qint16 typeCode, quint16 id, const QByteArray &payload,
                                int len = -1);
  // `count` copies of `packet`, handed to the socket at once, so it writes them
  // in as few system writes as it can: for throughput tests.
  void SendBurst(const QByteArray &packet, int count);
  void SendCallState(quint8 state, qint16 line, const QString &caller, const QString &called = {},
                     bool logAsDialOut = false, quint16 rights = 0);
  void SendMissedCall(const QString &caller);

  // The console's own extension. Changes reach the console as CallState
  // packets while a session is open; the state outlives the session, as the
  // telephone on the desk does, and a new login asks for it.
  SimCall &Call() { return Calls; }
  quint8 CallStateOf() const { return Calls.CurrentState(); }
  void SetDialCompleteAfter(int ms) { Calls.SetDialCompleteAfter(ms); }
  void SetAnswerAfter(int ms) { Calls.SetAnswerAfter(ms); }
  void SetLine(qint16 line) { Calls.SetLine(line); }
  void SetRights(quint16 rights) { Calls.SetRights(rights); }
  // The far end. Each is false, and sends nothing, when the call is not in a
  // state it applies to: a ring reaches an idle extension only.
  bool RingConsole(const QString &caller, int line = -1); // line < 0: the extension's own
  bool CallBackConsole(const QString &caller);
  bool AnswerByFarEnd();
  bool HangUpByFarEnd();
  bool GiveUpRinging(bool sendMissedCall = true);
  void SendUserInfo(const QString &number, const QString &name, quint16 port,
                    const QString &description, bool admin, const QStringList &features);

  // Closes the console's connection as a lost link would (bytes already
  // written still go out first).
  void DropConnection();
  // While false, incoming connections are closed at once; the current one stays.
  void SetAccepting(bool accept);
  bool IsConnected() const;
  QString PeerAddress() const;

  QList<SimPacket> Received() const { return Log; }
  void ClearReceived() { Log.clear(); }

  // Runs a step file (see Script.h). A bad file runs nothing: the result is
  // false and *error names the bad lines. A new script replaces a running one.
  bool RunScript(const QString &fileName, QString *error = nullptr);
  bool RunScriptText(const QString &text, QString *error = nullptr);
  void StopScript();

signals:
  void consoleConnected();
  void consoleDisconnected();
  void packetReceived(const SimPacket &packet);
  void loginAnswered(const QString &telNo, const QString &result);
  void scriptFinished();
  void callStateChanged(const SimCallStatus &status);

private:
  struct User {
    QString Password;
    QString Result;
  };

  void OnNewConnection();
  void OnReadyRead();
  void OnConsoleGone();
  void Detach(QTcpSocket *socket);
  void AnswerLogin(const SimPacket &login);
  void OpenSession();
  void EndSession();
  void SendPulse();
  void UpdatePulseTimer();
  void Write(const QByteArray &bytes);
  void Perform(const ScriptStep &step);
  void ActOnCallPacket(const SimPacket &packet);
  void ReportCall(const SimCallStatus &status);

  QTcpServer Server;
  QPointer<QTcpSocket> Console;
  SimPackets::StreamCutter Cutter;
  QHash<QString, User> Users;
  bool Answering = true;
  bool Accepting = true;

  QTimer PulseTimer;
  int PulsePeriod = 5000;
  bool PulsesPaused = false;
  int Pulses = 0;

  bool SessionOpen = false;
  quint16 Session = 0;
  quint16 NextSession = 1;

  QList<SimPacket> Log;
  ScriptRunner Runner;
  SimCall Calls;
};
