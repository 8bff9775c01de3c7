#include "ExchangeSim.h"

#include <QFile>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace {
const QString kAccepted = u"1000"_s;
const QString kUnknownUser = u"1001"_s;
// The console reads 65535 as "no session", so that id is never handed out.
constexpr quint16 kNoSession = 65535;
// DeviceControl codes for the console's own handset.
constexpr quint16 kOffHook = 134;
constexpr quint16 kOnHook = 135;
} // namespace

ExchangeSim::ExchangeSim(QObject *parent) : QObject(parent) {
  connect(&Server, &QTcpServer::newConnection, this, &ExchangeSim::OnNewConnection);
  connect(&PulseTimer, &QTimer::timeout, this, &ExchangeSim::SendPulse);
  connect(&Runner, &ScriptRunner::finished, this, &ExchangeSim::scriptFinished);
  connect(&Calls, &SimCall::stateChanged, this, [this](const SimCallStatus &status) {
    ReportCall(status);
    emit callStateChanged(status);
  });
  connect(&Calls, &SimCall::stateRepeated, this, &ExchangeSim::ReportCall);
  LiveTimer.setTimerType(Qt::PreciseTimer);
  connect(&LiveTimer, &QTimer::timeout, this, &ExchangeSim::SendLiveStatus);
  connect(&WakeUpTimer, &QTimer::timeout, this, &ExchangeSim::RingDueWakeUps);
  WakeUpTimer.start(1000);
  connect(&RecordTimer, &QTimer::timeout, this, &ExchangeSim::SendStreamRecord);
  ClassNames = {u"无限制"_s, u"限声讯台"_s, u"国内长途"_s, u"市话"_s, u"内线"_s};
}

ExchangeSim::~ExchangeSim() {
  Runner.Stop();
  if (Console) {
    Console->disconnect(this);
    Console->abort();
  }
}

bool ExchangeSim::Listen(quint16 port, const QHostAddress &address) {
  return Server.listen(address, port);
}

void ExchangeSim::Close() {
  Server.close();
  DropConnection();
}

quint16 ExchangeSim::Port() const {
  return Server.serverPort();
}

QString ExchangeSim::ListenError() const {
  return Server.errorString();
}

void ExchangeSim::AddUser(const QString &telNo, const QString &password, const QString &result) {
  Users.insert(telNo, User{password, result});
}

void ExchangeSim::SetAnswerLogin(bool answer) {
  Answering = answer;
}

void ExchangeSim::SetPulsePeriod(int ms) {
  PulsePeriod = std::max(ms, 0);
  if (PulseTimer.isActive() && PulsePeriod > 0)
    PulseTimer.start(PulsePeriod);
  UpdatePulseTimer();
}

void ExchangeSim::StopPulses() {
  PulsesPaused = true;
  UpdatePulseTimer();
}

void ExchangeSim::StartPulses() {
  PulsesPaused = false;
  UpdatePulseTimer();
}

void ExchangeSim::SendRaw(const QByteArray &bytes) {
  Write(bytes);
}

void ExchangeSim::SendPacket(qint16 typeCode, const QByteArray &payload, int len, int id) {
  const quint16 packetId = id < 0 ? Session : static_cast<quint16>(id);
  Write(BuildPacket(typeCode, packetId, payload, len));
}

QByteArray ExchangeSim::BuildPacket(qint16 typeCode, quint16 id, const QByteArray &payload,
                                    int len) {
  return SimPackets::BuildPacket(typeCode, id, payload, len);
}

void ExchangeSim::SendBurst(const QByteArray &packet, int count) {
  if (count > 0)
    Write(packet.repeated(count));
}

void ExchangeSim::SendCallState(quint8 state, qint16 line, const QString &caller,
                                const QString &called, bool logAsDialOut, quint16 rights) {
  Write(SimPackets::CallStatePacket(Session, state, line, caller, called, logAsDialOut, rights));
}

void ExchangeSim::SendMissedCall(const QString &caller) {
  Write(SimPackets::MissedCallPacket(Session, caller));
}

bool ExchangeSim::RingConsole(const QString &caller, int line) {
  return Calls.Ring(caller, line);
}

bool ExchangeSim::CallBackConsole(const QString &caller) {
  return Calls.RingBack(caller);
}

bool ExchangeSim::AnswerByFarEnd() {
  return Calls.AnswerByFarEnd();
}

bool ExchangeSim::HangUpByFarEnd() {
  return Calls.HangUpByFarEnd();
}

bool ExchangeSim::GiveUpRinging(bool sendMissedCall) {
  QString caller;
  if (!Calls.GiveUp(&caller))
    return false;
  if (sendMissedCall && SessionOpen)
    SendMissedCall(caller);
  return true;
}

void ExchangeSim::SendUserInfo(const QString &number, const QString &name, quint16 port,
                               const QString &description, bool admin,
                               const QStringList &features) {
  // The console shows the list as it comes, so each code gets a line of its own.
  Write(SimPackets::UserInfoPacket(Session, number, name, port, description, admin ? 1 : 0,
                                   features.join(u"\r\n"_s)));
}

void ExchangeSim::DropConnection() {
  if (!Console)
    return;
  QTcpSocket *socket = Console;
  Detach(socket);
  emit consoleDisconnected();
}

void ExchangeSim::SetAccepting(bool accept) {
  Accepting = accept;
}

bool ExchangeSim::IsConnected() const {
  return Console && Console->state() == QAbstractSocket::ConnectedState;
}

QString ExchangeSim::PeerAddress() const {
  if (!Console)
    return {};
  return u"%1:%2"_s.arg(Console->peerAddress().toString()).arg(Console->peerPort());
}

bool ExchangeSim::RunScript(const QString &fileName, QString *error) {
  QFile file(fileName);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
    if (error)
      *error = u"cannot read %1: %2"_s.arg(fileName, file.errorString());
    return false;
  }
  return RunScriptText(QString::fromUtf8(file.readAll()), error);
}

bool ExchangeSim::RunScriptText(const QString &text, QString *error) {
  QList<ScriptStep> steps;
  if (!ParseScript(text, &steps, error))
    return false;
  Runner.Start(steps, [this](const ScriptStep &step) { Perform(step); });
  return true;
}

void ExchangeSim::StopScript() {
  Runner.Stop();
}

void ExchangeSim::OnNewConnection() {
  while (QTcpSocket *socket = Server.nextPendingConnection()) {
    if (!Accepting) {
      socket->abort();
      socket->deleteLater();
      continue;
    }
    // The exchange serves the newest console; the older one is let go.
    if (Console) {
      Detach(Console);
      emit consoleDisconnected();
    }
    Console = socket;
    Cutter.Clear();
    // Small packets should leave when written, not wait to be merged.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket, &QTcpSocket::readyRead, this, &ExchangeSim::OnReadyRead);
    connect(socket, &QTcpSocket::disconnected, this, &ExchangeSim::OnConsoleGone);
    emit consoleConnected();
  }
}

void ExchangeSim::OnReadyRead() {
  auto *socket = qobject_cast<QTcpSocket *>(sender());
  if (!socket || socket != Console)
    return;
  const QList<SimPacket> packets = Cutter.Feed(socket->readAll());
  for (const SimPacket &packet : packets) {
    Log << packet;
    emit packetReceived(packet);
    if (packet.TypeCode == SimPackets::Login && !packet.Malformed)
      AnswerLogin(packet);
    else if (SessionOpen && !packet.Malformed) {
      ActOnCallPacket(packet);
      ActOnDevicePacket(packet);
    }
  }
}

void ExchangeSim::OnConsoleGone() {
  auto *socket = qobject_cast<QTcpSocket *>(sender());
  if (!socket || socket != Console)
    return;
  Detach(socket);
  emit consoleDisconnected();
}

// Lets go of a console's socket: the session ends, the socket closes after
// what was written has gone out, and it is deleted once closed.
void ExchangeSim::Detach(QTcpSocket *socket) {
  if (socket == Console) {
    Console = nullptr;
    EndSession();
    Cutter.Clear();
  }
  socket->disconnect(this);
  connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
  socket->disconnectFromHost();
  if (socket->state() == QAbstractSocket::UnconnectedState)
    socket->deleteLater();
}

void ExchangeSim::AnswerLogin(const SimPacket &login) {
  if (!Answering || !Console)
    return;
  const QString telNo = login.Fields.value(u"TelNo"_s).toString();
  const QString password = login.Fields.value(u"Password"_s).toString();
  const auto user = Users.constFind(telNo);
  const QString result =
      user != Users.cend() && user->Password == password ? user->Result : kUnknownUser;
  if (result == kAccepted) {
    SessionTelNo = telNo;
    OpenSession();
  } else {
    // A refused console no longer has a session with us, whatever it had before.
    EndSession();
  }
  Write(SimPackets::LoginAnswer(result == kAccepted ? Session : 0, result));
  emit loginAnswered(telNo, result);
}

void ExchangeSim::OpenSession() {
  Session = NextSession;
  NextSession = NextSession + 1 >= kNoSession ? 1 : NextSession + 1;
  SessionOpen = true;
  // A fresh session counts its first period from the answer.
  PulseTimer.stop();
  UpdatePulseTimer();
}

void ExchangeSim::EndSession() {
  SessionOpen = false;
  UpdatePulseTimer();
}

void ExchangeSim::SendPulse() {
  if (!IsConnected())
    return;
  Write(SimPackets::PulsePacket(Session));
  ++Pulses;
}

void ExchangeSim::UpdatePulseTimer() {
  const bool wanted = SessionOpen && Console && PulsePeriod > 0 && !PulsesPaused;
  if (!wanted)
    PulseTimer.stop();
  else if (!PulseTimer.isActive())
    PulseTimer.start(PulsePeriod);
}

void ExchangeSim::Write(const QByteArray &bytes) {
  if (!IsConnected() || bytes.isEmpty())
    return;
  Console->write(bytes);
  // Hand the bytes to the system now, so that each call is one write of its own.
  Console->flush();
}

// Only a logged-in console drives its extension; before that its packets are
// merely recorded.
void ExchangeSim::ActOnCallPacket(const SimPacket &packet) {
  switch (packet.TypeCode) {
  case SimPackets::DeviceControl: {
    const QByteArray &b = packet.Bytes;
    const quint16 code = b.size() >= 14 ? static_cast<quint16>(static_cast<quint8>(b.at(12)) |
                                                               static_cast<quint8>(b.at(13)) << 8)
                                        : 0;
    if (code == kOffHook)
      Calls.OffHook();
    else if (code == kOnHook)
      Calls.OnHook();
    break;
  }
  case SimPackets::DialDigits:
    Calls.Dial(packet.Fields.value(u"Digits"_s).toString().remove(u'?'));
    break;
  case SimPackets::PhoneCommand:
    Calls.PhoneCommand(static_cast<quint16>(packet.Fields.value(u"Code"_s).toUInt()));
    break;
  default:
    break;
  }
}

void ExchangeSim::ReportCall(const SimCallStatus &status) {
  if (!SessionOpen)
    return;
  SendCallState(status.State, status.Line, status.Caller, status.Called, status.LogAsDialOut,
                status.Rights);
}

void ExchangeSim::Perform(const ScriptStep &step) {
  switch (step.Action) {
  case ScriptStep::Kind::Send:
    SendPacket(step.TypeCode, step.Bytes);
    break;
  case ScriptStep::Kind::Raw:
    SendRaw(step.Bytes);
    break;
  case ScriptStep::Kind::Drop:
    DropConnection();
    break;
  case ScriptStep::Kind::PulsesOff:
    StopPulses();
    break;
  case ScriptStep::Kind::PulsesOn:
    StartPulses();
    break;
  case ScriptStep::Kind::CallState:
    SendCallState(step.State, step.DeviceLine, step.Caller, step.Called);
    break;
  case ScriptStep::Kind::Missed:
    SendMissedCall(step.Caller);
    break;
  case ScriptStep::Kind::Ring:
    RingConsole(step.Caller, step.DeviceLine);
    break;
  case ScriptStep::Kind::CallBack:
    CallBackConsole(step.Caller);
    break;
  case ScriptStep::Kind::Answer:
    AnswerByFarEnd();
    break;
  case ScriptStep::Kind::HangUp:
    HangUpByFarEnd();
    break;
  case ScriptStep::Kind::GiveUp:
    GiveUpRinging(true);
    break;
  case ScriptStep::Kind::UserInfo:
    SendUserInfo(step.Caller, step.Name, step.Port, {}, step.Admin, step.Features);
    break;
  case ScriptStep::Kind::SrvResult:
    SetSrvClassResult(step.Name);
    break;
  case ScriptStep::Kind::Hold:
    HoldAnswers(AnswerTypeCode(step.Name), step.Value);
    break;
  case ScriptStep::Kind::Delay:
    DelayAnswers(AnswerTypeCode(step.Name), step.DelayMs, step.Value);
    break;
  case ScriptStep::Kind::Status:
    if (SetDeviceStatus(step.Device, static_cast<quint8>(step.Value)))
      PushStatus(step.Device);
    break;
  case ScriptStep::Kind::MixData:
    if (SetDeviceMixData(step.Device, static_cast<quint16>(step.Value)))
      PushStatus(step.Device);
    break;
  case ScriptStep::Kind::CallRecord:
    SendCallRecord(step.Caller, step.Called, step.Codes.value(0), step.Codes.value(1),
                   step.Codes.value(2));
    break;
  case ScriptStep::Kind::Live:
    StartLiveStatus(step.Rate); // 0 stops it
    break;
  case ScriptStep::Kind::Clock:
    SetClockTo(step.Moment);
    break;
  case ScriptStep::Kind::WakeResult:
    if (const SimDevice *d = DeviceSet.ByNumber(step.Caller))
      SetWakeUpResult(d->ID, static_cast<WakeUpResult>(step.Value), step.RingMs);
    break;
  case ScriptStep::Kind::CallRecords:
    StartCallRecords(step.Rate); // 0 stops it
    break;
  }
}
