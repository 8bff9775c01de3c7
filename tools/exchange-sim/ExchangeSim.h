// A simulated exchange: it accepts the console's TCP connection, answers Login,
// sends Pulses while a session is open, records everything the console sends,
// and lets a test or a script push any packet or byte sequence at the console.
// One console at a time: a new connection replaces the old one. The logged-in
// console's own extension carries calls (SimCalls.h): its packets move them,
// and so do the far-end calls below and the script. It also keeps the
// exchange's devices (SimDevices.h): it answers the console's enumeration,
// service class, do-not-disturb, voice-mail, wake-up and SMS requests from
// them and pushes their status over UDP.
#pragma once

#include "Script.h"
#include "SimCalls.h"
#include "SimDevices.h"
#include "SimEvents.h"
#include "SimPackets.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QHash>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRandomGenerator>
#include <QString>
#include <QTcpServer>
#include <QTimer>

#include <functional>

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
  // Goes down as a stopped exchange does: the console's connection drops and
  // connects are refused until Listen() again, on the same port if wanted.
  void Close();

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

  // The devices. IDs run from 0 to 3071; an Add outside that is refused. The
  // setters change the exchange's own state and send nothing: PushStatus tells
  // the console.
  SimDeviceSet &Devices() { return DeviceSet; }
  bool AddDevice(int id, qint16 type, const QString &number, quint8 status = 1);
  int AddDevices(int fromId, int count, qint16 type, const QString &firstNumber);
  bool SetDeviceStatus(int id, quint8 status);
  bool SetDeviceMixData(int id, quint16 mixData);
  std::optional<SimDevice> Device(int id) const;
  // Answered one by one to SrvClassName, index 0 first.
  void SetServiceClassNames(const QStringList &names) { ClassNames = names; }
  QStringList ServiceClassNames() const { return ClassNames; }

  // How the guest-room requests come out. "000000" is success; any other
  // result refuses every service class change with that code.
  void SetSrvClassResult(const QString &result) { SrvClassResult = result; }
  // An unreachable mailbox server answers every clear with 65535.
  void SetVoiceMailServerReachable(bool reachable) { MailboxReachable = reachable; }
  enum class GsmOutcome { Sent, Failed, NoModule };
  // Sent: a channel is granted (3) and the message goes (4). Failed: granted,
  // then 5. NoModule: 6 to both; a set without GSM modules also answers 6.
  void SetGsmOutcome(GsmOutcome outcome) { SmsOutcome = outcome; }
  // The text blocks of the SMS the console handed over, in order.
  QStringList SmsSent() const { return Sms; }
  // The console's question for the recording server is answered with this
  // code and address: "1000" and the server's address when there is one. By
  // default the exchange has none ("1001", no address).
  void SetRecordServer(const QString &code, const QString &address) {
    RecordCode = code;
    RecordAddress = address;
  }
  // A change made by a request is pushed as a status event, as the exchange
  // does; off, only PushStatus and the live stream send.
  void SetPushOnChange(bool push) { PushOnChange = push; }
  // Answers to the guest-room requests, by the answer's type code (22 service
  // class, 24 do-not-disturb, 35 wake-up, 37 recording server, 40 voice
  // mail), so a test can see the console's time-out and late answers. The request itself still acts.
  // The next `count` answers of the type are never sent; 0 ends a hold.
  void HoldAnswers(qint16 typeCode, int count = 1);
  // The next `count` answers of the type go `ms` late; a negative count delays
  // every later one, and 0 ends the delay. A hold comes first.
  void DelayAnswers(qint16 typeCode, int ms, int count = -1);

  // UDP events, to 127.0.0.1:5009 unless told otherwise.
  SimEventChannel &Events() { return Udp; }
  void SetEventTarget(const QHostAddress &address, quint16 port) { Udp.SetTarget(address, port); }
  // Sends from this address (see SimEvents.h); false if it cannot be bound.
  bool SetEventSender(const QHostAddress &address) { return Udp.SetSenderAddress(address); }
  int DatagramsSent() const { return Udp.Sent(); }
  // The device's current status as a status event; false for an unknown device.
  bool PushStatus(int id);
  // A finished call's record; its ID is the device of `extension` when there is one.
  void SendCallRecord(const QString &extension, const QString &associated, qint16 assType = 0,
                      qint16 direction = 0, qint16 recordType = 0);
  // Random devices change to random statuses of their kind, `perSecond` on
  // average, each change pushed at once. The count follows the clock, so a
  // busy event loop catches up instead of falling behind.
  void StartLiveStatus(double perSecond);
  void StopLiveStatus();
  bool IsLiveStatusRunning() const { return LiveTimer.isActive(); }
  int LiveStatusSent() const { return LiveSent; }
  void SetRandomSeed(quint32 seed) { Random.seed(seed); }
  // Call records of random extensions to random numbers, `perSecond` of them
  // (at most 1000), as a busy hotel's exchange sends them; 0 stops.
  void StartCallRecords(double perSecond);
  void StopCallRecords() { RecordTimer.stop(); }
  int CallRecordsSent() const { return RecordsSent; }

  // Wake-ups. The exchange rings a room when its wake-up time comes by the
  // exchange's own clock: the room goes to status 3 (rung back by the
  // exchange), and after the ring time either answers (the answer flag in
  // MixData, status 7, idle after the talk time) or stops ringing unanswered
  // (idle). Either way that wake-up is used up. A time more than an hour past
  // is never rung. Each change goes out as a status event; the random live
  // stream leaves a room alone while it has a wake-up set or ringing.
  using Clock = std::function<QDateTime()>;
  void SetClock(Clock clock); // null: the system's clock
  // From now on the exchange's clock reads `at` and runs on from there.
  void SetClockTo(const QDateTime &at);
  QDateTime Now() const;
  enum class WakeUpResult { Random, Answer, NoAnswer };
  // How the extension's next wake-ups end. Random answers three times in four;
  // a negative ring time picks one from 4 to 12 seconds. False for a device
  // that is not an extension.
  bool SetWakeUpResult(int id, WakeUpResult result, int ringMs = -1);
  // How often the clock is read for due wake-ups (default 1000 ms), and how
  // long an answered wake-up call lasts (default 3000 ms).
  void SetWakeUpCheckPeriod(int ms);
  void SetWakeUpTalkTime(int ms) { WakeUpTalk = std::max(ms, 0); }
  // From the first ring to idle again.
  bool IsInWakeUpCall(int id) const { return WakeUpCalls.contains(id); }

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
  void wakeUpRinging(int id);
  void wakeUpEnded(int id, bool answered);

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
  void ActOnDevicePacket(const SimPacket &packet);
  void ReportDeviceFrom(int id);
  void AnswerSrvClassName(int index);
  void SetSrvClass(int id, int srvClass);
  void SetNoDisturb(int id, quint16 command, bool answer);
  void ClearVoiceMail(int id);
  void AnswerMoringCall(const SimPacket &packet);
  void AnswerGsm(const SimPacket &packet);
  bool ChangeMixData(int id, quint16 keepMask, quint16 bits);
  void Changed(int id);
  void SendLiveStatus();
  void SendStreamRecord();
  void ReportCall(const SimCallStatus &status);
  void RingDueWakeUps();
  void EndWakeUpRing(int id, bool answered);
  void EndWakeUpCall(int id, bool answered);

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

  QString SessionTelNo;

  SimDeviceSet DeviceSet;
  QStringList ClassNames;
  QString SrvClassResult = QStringLiteral("000000");
  bool MailboxReachable = true;
  GsmOutcome SmsOutcome = GsmOutcome::Sent;
  QStringList Sms;
  QString RecordCode = QStringLiteral("1001");
  QString RecordAddress;
  bool PushOnChange = true;
  struct AnswerPlan {
    int Hold = 0;
    int DelayMs = 0;
    int DelayCount = 0; // negative: every answer
  };
  QHash<qint16, AnswerPlan> AnswerPlans;
  // Writes a guest-room answer as its plan says: now, late, or not at all.
  void WriteAnswer(qint16 typeCode, const QByteArray &bytes);

  SimEventChannel Udp;
  QTimer LiveTimer;
  QElapsedTimer LiveClock;
  double LiveRate = 0;
  qint64 LiveDueSent = 0; // sent since the stream started
  int LiveSent = 0;
  QTimer RecordTimer;
  int RecordsSent = 0;
  QRandomGenerator Random{QRandomGenerator::securelySeeded()};

  struct WakeUpPlan {
    WakeUpResult Result = WakeUpResult::Random;
    int RingMs = -1;
  };
  Clock BaseClock;
  qint64 ClockOffsetMs = 0;
  QTimer WakeUpTimer;
  int WakeUpTalk = 3000;
  QHash<int, WakeUpPlan> WakeUpPlans;
  QHash<int, QString> WakeUpCalls; // device ID -> the wake-up time it rings for

  QList<SimPacket> Log;
  ScriptRunner Runner;
  SimCall Calls;
};
