#include "app/DemoExchange.h"

#include "ExchangeSim.h"
#include "RecordServer.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

DemoExchange::DemoExchange() = default;
DemoExchange::~DemoExchange() = default;

bool DemoExchange::Start() {
  if (!m_home.isValid())
    return false;
  m_sim = std::make_unique<ExchangeSim>();
  m_sim->AddUser(u"8001"_s, u"1234"_s);
  m_sim->SetPulsePeriod(5000);
  // Sixty rooms, a few trunks of each kind, a GSM module and an IVR port.
  m_sim->AddDevices(0, 60, 1, u"8001"_s);
  m_sim->AddDevices(100, 4, 5, u"701"_s);
  m_sim->AddDevices(104, 2, 9, u"801"_s);
  m_sim->AddDevices(106, 2, 22, u"901"_s);
  m_sim->AddDevice(108, 14, u"951"_s);
  m_sim->AddDevice(110, 12, u"13800000001"_s);
  m_sim->AddDevice(112, 6, u"600"_s);
  // Three rooms with a wake-up in the next minutes, so the list shows the
  // exchange ringing them: one answers, one sleeps on, one is left to chance.
  const QDateTime now = QDateTime::currentDateTime();
  const struct {
    int Id;
    int Minutes;
    ExchangeSim::WakeUpResult Result;
  } kWakeUps[] = {{2, 2, ExchangeSim::WakeUpResult::Answer},
                  {6, 3, ExchangeSim::WakeUpResult::NoAnswer},
                  {11, 5, ExchangeSim::WakeUpResult::Random}};
  for (const auto &w : kWakeUps) {
    m_sim->Devices().Find(w.Id)->WakeUp = now.addSecs(w.Minutes * 60).toString(u"yyyyMMddHHmm01"_s);
    m_sim->SetWakeUpResult(w.Id, w.Result);
  }
  m_sim->SetServiceClassNames({u"客房"_s, u"内线"_s, u"市话"_s, u"长途"_s, u"国际"_s});
  if (StartRecordings())
    m_sim->SetRecordServer(u"1000"_s, u"127.0.0.1"_s);
  if (!m_sim->Listen())
    return false;

  // A free port for the console's event channel.
  {
    QUdpSocket probe;
    if (!probe.bind(QHostAddress::LocalHost, 0))
      return false;
    m_eventPort = probe.localPort();
  }
  m_sim->SetEventTarget(QHostAddress::LocalHost, m_eventPort);
  m_sim->StartLiveStatus(2.0);
  // The rooms' calls keep the call-record page filling: one every two seconds.
  m_sim->RunScriptText(u"at 1500 records 0.5\n"_s);

  QDir().mkpath(m_home.path() + u"/ini"_s);
  QFile ini(m_home.path() + u"/ini/sys.ini"_s);
  if (!ini.open(QIODevice::WriteOnly))
    return false;
  // The front desk's additions on: check-in gives a room "客房", check-out
  // "内线", and a wake-up nobody answers raises its alarm. The automation API
  // listens on this machine only, with a token anyone may read here.
  ini.write(u"[host]\nIP=127.0.0.1\nPort=%1\n[user]\nuserName=8001\npassWord=1234\nrecPwdFlag=1\n"
            u"[FrontDesk]\nVacantClass=1\nOccupiedClass=0\nWakeFollowUp=1\n"
            u"[Api]\nEnabled=1\nPort=%2\nListen=127.0.0.1\nToken=%3\n"_s
                .arg(m_sim->Port())
                .arg(kDemoApiPort)
                .arg(QString::fromLatin1(kDemoApiToken))
                .toUtf8());
  ini.close();

  // A call for the front desk every half minute or so; one in three rings out
  // unanswered, and now and then a room's call record arrives.
  connect(&m_calls, &QTimer::timeout, this, &DemoExchange::RingSomeone);
  m_calls.start(30000);
  QTimer::singleShot(8000, this, &DemoExchange::RingSomeone);
  return true;
}

bool DemoExchange::StartRecordings() {
  m_records = std::make_unique<RecordServer>();
  m_records->SetFileRoot(m_home.path() + u"/records"_s);
  if (!m_records->OpenStore(m_home.path() + u"/recordings.db"_s) ||
      !m_records->Listen(QHostAddress::LocalHost) || !m_records->FillDemo(300)) {
    qWarning("demo: no recording server: %s", qUtf8Printable(m_records->Error()));
    m_records.reset();
    return false;
  }
  return true;
}

void DemoExchange::RingSomeone() {
  ++m_callNo;
  const QString caller = u"139%1"_s.arg(10000000 + m_callNo * 7919 % 9000000);
  if (m_sim->RingConsole(caller) && m_callNo % 3 == 0)
    QTimer::singleShot(15000, this, [this] { m_sim->GiveUpRinging(true); });
  m_sim->SendCallRecord(u"80%1"_s.arg(10 + m_callNo % 50), caller);
}
