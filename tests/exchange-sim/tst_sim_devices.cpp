// The exchange's devices in the simulator, seen by a plain socket that plays
// the console over loopback: the lock-step enumeration, the class names, the
// answers to guest-room and SMS requests, and the UDP events. Expected bytes
// are written out by hand at the offsets of the packet tables.
#include "ExchangeSim.h"
#include "FakeConsole.h"
#include "SimDevicePackets.h"

#include <QElapsedTimer>
#include <QNetworkDatagram>
#include <QSignalSpy>
#include <QStringEncoder>
#include <QTest>
#include <QUdpSocket>

#include <functional>

using namespace Qt::StringLiterals;
using namespace sim_test;

namespace {

QByteArray Gbk(const QString &text) {
  QStringEncoder gbk("GBK");
  return gbk.encode(text);
}

int U16At(const QByteArray &p, int at) {
  return quint8(p.at(at)) | quint8(p.at(at + 1)) << 8;
}
int I16At(const QByteArray &p, int at) {
  return qint16(U16At(p, at));
}
QByteArray TextAt(const QByteArray &p, int at) {
  return QByteArray(p.constData() + at); // to the NUL
}

// The console's end of the event channel: keeps every datagram and its sender.
struct UdpEar {
  QUdpSocket Socket;
  QList<QNetworkDatagram> Got;
  UdpEar() {
    Socket.bind(QHostAddress::LocalHost, 0);
    QObject::connect(&Socket, &QUdpSocket::readyRead, [this] {
      while (Socket.hasPendingDatagrams())
        Got << Socket.receiveDatagram();
    });
  }
  quint16 Port() const { return Socket.localPort(); }
};

QString StateOf(const std::optional<SimDevice> &d) {
  if (!d)
    return u"absent"_s;
  return u"class %1 mix %2 wake %3"_s.arg(d->SrvClass)
      .arg(d->MixData, 4, 16, QChar(u'0'))
      .arg(d->WakeUp);
}

// ExtensionQuery: the device at or after this ID, please.
QByteArray Query(int nextId) {
  return ConsolePacket(34, 1,
                       Hex("0100 0000") + char(nextId & 0xFF) + char(nextId >> 8) + Hex("0000"));
}
// The next request of a lock-step enumeration, none after the end.
QByteArray NextQuery(const QByteArray &report) {
  const int id = I16At(report, 16);
  return id < 0 ? QByteArray() : Query(id + 1);
}

const QByteArray kSmsBlock = "D:13800000000\n\rT:1\n\rM:0002ab";

} // namespace

class SimDevicesTest : public QObject {
  Q_OBJECT

  std::unique_ptr<ExchangeSim> Sim;
  std::unique_ptr<UdpEar> Ear;

  std::unique_ptr<FakeConsole> LoggedIn() {
    auto console = std::make_unique<FakeConsole>(Sim->Port());
    [&] {
      QTRY_COMPARE_WITH_TIMEOUT(console->Socket.state(), QAbstractSocket::ConnectedState, kWait);
      console->Send(LoginPacket("8001", "1234"));
      QTRY_COMPARE_WITH_TIMEOUT(console->Packets().size(), 1, kWait);
    }();
    return console;
  }

  // Lock step as the console does it: the first request, then for each answer
  // of `type` the request that `next` makes of it, until it makes none.
  // Returns the answers in order.
  QList<QByteArray> Walk(FakeConsole &console, qint16 type, const QByteArray &first,
                         const std::function<QByteArray(const QByteArray &)> &next) {
    QList<QByteArray> answers;
    qsizetype seen = console.Packets().size();
    bool done = false;
    auto onRead = QObject::connect(&console.Socket, &QTcpSocket::readyRead, [&] {
      const QList<QByteArray> packets = console.Packets();
      for (; seen < packets.size(); ++seen) {
        const QByteArray &p = packets.at(seen);
        if (HeaderOf(p).Type != type)
          continue;
        answers << p;
        const QByteArray request = next(p);
        if (request.isEmpty())
          done = true;
        else
          console.Send(request);
      }
    });
    console.Send(first);
    [&] { QTRY_VERIFY_WITH_TIMEOUT(done, kWait); }();
    QObject::disconnect(onRead);
    return answers;
  }

  // Office: 8001 is the console's own, 8002 has a message waiting, 8003 has a
  // wake-up of mode 3, then a trunk and a GSM module.
  void AddOffice() {
    Sim->AddDevice(0, 1, u"8001"_s);
    Sim->AddDevice(1, 1, u"8002"_s);
    Sim->SetDeviceMixData(1, 0x0041);
    Sim->AddDevice(2, 4, u"8003"_s);
    Sim->SetDeviceMixData(2, 0x1001);
    Sim->Devices().Find(2)->WakeUp = u"202501020730"_s;
    Sim->AddDevice(10, 5, u"701"_s);
    Sim->AddDevice(20, 12, u"13800000001"_s);
  }

private slots:
  void init() {
    Sim = std::make_unique<ExchangeSim>();
    QVERIFY(Sim->Listen());
    Sim->AddUser(u"8001"_s, u"1234"_s);
    Sim->SetPulsePeriod(0);
    Ear = std::make_unique<UdpEar>();
    QVERIFY(Ear->Port() != 0);
    Sim->SetEventTarget(QHostAddress::LocalHost, Ear->Port());
  }
  void cleanup() {
    Sim.reset();
    Ear.reset();
  }

  void numbersCountUp_data() {
    QTest::addColumn<QString>("number");
    QTest::addColumn<int>("steps");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << u"8001"_s << 99 << u"8100"_s;
    QTest::newRow("leading zero kept") << u"0899"_s << 1 << u"0900"_s;
    QTest::newRow("run grows") << u"999"_s << 1 << u"1000"_s;
    QTest::newRow("prefix and suffix kept") << u"T09#"_s << 1 << u"T10#"_s;
    QTest::newRow("longer than any integer")
        << u"99999999999999999999"_s << 1 << u"100000000000000000000"_s;
    QTest::newRow("no digits") << u"desk"_s << 2 << u"desk2"_s;
  }
  void numbersCountUp() {
    QFETCH(QString, number);
    QFETCH(int, steps);
    QFETCH(QString, expected);
    QCOMPARE(NumberAfter(number, steps), expected);
  }

  void deviceListsAndLimits() {
    SimDeviceSet set;
    QString error;
    QVERIFY2(ParseDeviceList(u"# id type number status name\n"
                             "0      1  8001\n"
                             "1-3    4  8002   7   Room block A   # a run\n"
                             "3071   12 13800000001 0\n"_s,
                             &set, &error),
             qPrintable(error));
    QCOMPARE(set.Ids(), (QList<int>{0, 1, 2, 3, 3071}));
    QCOMPARE(set.Find(3)->Number, u"8004"_s);
    QCOMPARE(set.Find(3)->Status, quint8(7));
    QCOMPARE(set.Find(3)->Name, u"Room block A"_s);
    QCOMPARE(set.Find(0)->MixData, quint16(0x0001)); // an extension is logged on
    QCOMPARE(set.Find(3071)->ModuleType, u"GSM"_s);

    // A bad line adds nothing, and every bad line is named.
    QVERIFY(!ParseDeviceList(u"5 1 8100\n3072 1 9000\n7 3 9001\n9-8 1 9002\n"_s, &set, &error));
    QCOMPARE(error.count(u"line "_s), 3);
    QVERIFY(error.startsWith(u"line 2:"_s));
    QCOMPARE(set.Count(), 5);

    QVERIFY(!Sim->AddDevice(3072, 1, u"9000"_s));
    QVERIFY(!Sim->AddDevice(-1, 1, u"9000"_s));
    QCOMPARE(Sim->AddDevices(3070, 5, 5, u"701"_s), 2);
    QCOMPARE(Sim->Devices().Ids(), (QList<int>{3070, 3071}));
  }

  // Each report is asked for with the ID after the last one; gaps are skipped
  // and the list ends with ID -1.
  void enumerationWalksInIdOrder_data() {
    QTest::addColumn<QString>("set");
    QTest::addColumn<QList<int>>("ids");
    QTest::addColumn<QList<int>>("types");
    QTest::newRow("mixed kinds with gaps")
        << u"0 1 8001\n3 4 8003\n7 21 8007\n10 5 701\n11 9 702\n12 22 703\n13 14 704\n"
           "20 12 13800000001\n3071 6 600\n"_s
        << QList<int>{0, 3, 7, 10, 11, 12, 13, 20, 3071, -1}
        << QList<int>{1, 4, 21, 5, 9, 22, 14, 12, 6, 0};
    QTest::newRow("no devices") << QString() << QList<int>{-1} << QList<int>{0};
    QList<int> all, allTypes;
    for (int id = 0; id < 3072; ++id)
      all << id, allTypes << 1;
    QTest::newRow("the whole table") << u"0-3071 1 1000"_s << (all << -1) << (allTypes << 0);
  }
  void enumerationWalksInIdOrder() {
    QFETCH(QString, set);
    QFETCH(QList<int>, ids);
    QFETCH(QList<int>, types);
    QString error;
    QVERIFY2(ParseDeviceList(set, &Sim->Devices(), &error), qPrintable(error));
    auto console = LoggedIn();
    const QList<QByteArray> reports = Walk(*console, 34, Query(0), NextQuery);
    QList<int> gotIds, gotTypes;
    for (const QByteArray &r : reports) {
      QCOMPARE(HeaderOf(r).Len, qint16(r.size()));
      QCOMPARE(U16At(r, 12), 1);
      gotIds << I16At(r, 16);
      gotTypes << I16At(r, 18);
    }
    QCOMPARE(gotIds, ids);
    QCOMPARE(gotTypes, types);
    // One answer for each request: the console never got ahead of the exchange.
    QCOMPARE(Sim->Received().size(), 1 + reports.size());
    QCOMPARE(reports.last(), ConsolePacket(34, 1, Hex("0100 0000 ffff") + QByteArray(84, '\0')));
  }

  void reportsCarryEveryField() {
    Sim->AddDevice(3, 4, u"8003"_s, 2);
    SimDevice *ext = Sim->Devices().Find(3);
    ext->Name = u"前台"_s;
    ext->SrvClass = 1;
    ext->MixData = 0x0201;
    ext->WakeUp = u"202501020730"_s;
    Sim->AddDevice(20, 12, u"13800000001"_s);
    auto console = LoggedIn();
    const QList<QByteArray> reports = Walk(*console, 34, Query(0), NextQuery);
    QCOMPARE(reports.size(), 3);
    QCOMPARE(reports.at(0),
             ConsolePacket(34, 1,
                           Hex("0100 0000 0300 0400 02") + Field("8003", 21) +
                               Field(Gbk(u"前台"_s), 21) + Hex("01 0102") + Hex("0000 0000 0000") +
                               Field("", 10) + Field("202501020730", 20)));
    // A module: signal 20, SIM and lock known and unlocked, GSM service.
    QCOMPARE(reports.at(1),
             ConsolePacket(34, 1,
                           Hex("0100 0000 1400 0c00 01") + Field("13800000001", 21) +
                               Field("", 21) + Hex("00 0000") + Hex("1400 0b00 1000") +
                               Field("GSM", 10) + Field("", 20)));
  }

  void classNamesComeOneByOne_data() {
    QTest::addColumn<QStringList>("names");
    QTest::newRow("three") << QStringList{u"无限制"_s, u"国内长途"_s, u"Internal"_s};
    QTest::newRow("none") << QStringList{};
  }
  void classNamesComeOneByOne() {
    QFETCH(QStringList, names);
    Sim->SetServiceClassNames(names);
    auto console = LoggedIn();
    auto ask = [](int index) {
      return ConsolePacket(36, 1, Hex("0100 0000") + char(index) + Hex("00 0000"));
    };
    const QList<QByteArray> answers = Walk(*console, 36, ask(0), [&](const QByteArray &a) {
      const int index = U16At(a, 16);
      return index == 65535 ? QByteArray() : ask(index + 1);
    });
    QCOMPARE(answers.size(), names.size() + 1);
    for (int i = 0; i < names.size(); ++i) {
      QCOMPARE(answers.at(i),
               ConsolePacket(36, 1,
                             Hex("0100 0000") + char(i) + Hex("00") + Field(Gbk(names.at(i)), 22)));
    }
    QCOMPARE(answers.last(), ConsolePacket(36, 1, Hex("0100 0000 ffff") + QByteArray(22, '\0')));
  }

  // Each request, the answer in full, the device afterwards and how many
  // status events tell the console of the change.
  void requestsAreAnswered_data() {
    QTest::addColumn<QString>("setup");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("answer"); // empty: none
    QTest::addColumn<int>("device");        // -1: the SMS handed over instead
    QTest::addColumn<QString>("after");
    QTest::addColumn<int>("pushed");

    const QByteArray wakeUp = Field("202501020730", 20);
    const QByteArray noTime(20, '\0');

    QTest::newRow("service class set")
        << QString() << ConsolePacket(22, 1, Hex("0100 0000 0100 0300"))
        << ConsolePacket(22, 1, Hex("0100 0000 0100") + Field("000000", 10)) << 1
        << u"class 3 mix 0041 wake "_s << 1;
    QTest::newRow("service class refused")
        << u"srvresult 000123"_s << ConsolePacket(22, 1, Hex("0100 0000 0100 0300"))
        << ConsolePacket(22, 1, Hex("0100 0000 0100") + Field("000123", 10)) << 1
        << u"class 0 mix 0041 wake "_s << 0;
    QTest::newRow("service class of a trunk")
        << QString() << ConsolePacket(22, 1, Hex("0100 0000 0a00 0300"))
        << ConsolePacket(22, 1, Hex("0100 0000 0a00") + Field("000001", 10)) << 10
        << u"class 0 mix 0000 wake "_s << 0;
    QTest::newRow("do-not-disturb from outside")
        << QString() << ConsolePacket(24, 1, Hex("9800 0000 0100 0400"))
        << ConsolePacket(24, 1, Hex("9800 0000 0100 0400")) << 1 << u"class 0 mix 0441 wake "_s
        << 1;
    QTest::newRow("do-not-disturb off")
        << u"mix 1 0205"_s << ConsolePacket(24, 1, Hex("9800 0000 0100 0000"))
        << ConsolePacket(24, 1, Hex("9800 0000 0100 0000")) << 1 << u"class 0 mix 0001 wake "_s
        << 1;
    QTest::newRow("console's own do-not-disturb on")
        << QString() << ConsolePacket(24, 1, Hex("9500 0000 0100 0000")) << QByteArray() << 0
        << u"class 0 mix 0005 wake "_s << 1;
    QTest::newRow("console's own do-not-disturb off, already off")
        << QString() << ConsolePacket(24, 1, Hex("9500 0000 0000 0000")) << QByteArray() << 0
        << u"class 0 mix 0001 wake "_s << 0;
    QTest::newRow("messages cleared")
        << QString() << ConsolePacket(40, 1, Hex("0100 0000 0100 0000"))
        << ConsolePacket(40, 1, Hex("0100 0000 0100 0000 0000 0000")) << 1
        << u"class 0 mix 0001 wake "_s << 1;
    QTest::newRow("mailbox server unreachable")
        << u"mailbox down"_s << ConsolePacket(40, 1, Hex("0100 0000 0100 0000"))
        << ConsolePacket(40, 1, Hex("0100 0000 0100 0000 ffff 0000")) << 1
        << u"class 0 mix 0041 wake "_s << 0;
    QTest::newRow("wake-up set") << QString()
                                 << ConsolePacket(35, 1,
                                                  Hex("0100 0000 0100") + wakeUp + Hex("0000"))
                                 << ConsolePacket(35, 1,
                                                  Hex("0100 0000 0100") + wakeUp + Hex("0100"))
                                 << 1 << u"class 0 mix 0041 wake 202501020730"_s << 1;
    QTest::newRow("wake-up set with mode 3")
        << QString() << ConsolePacket(35, 1, Hex("0400 0000 0100") + wakeUp + Hex("0300"))
        << ConsolePacket(35, 1, Hex("0400 0000 0100") + wakeUp + Hex("0300")) << 1
        << u"class 0 mix 1041 wake 202501020730"_s << 1;
    QTest::newRow("wake-up asked for")
        << QString() << ConsolePacket(35, 1, Hex("0200 0000 0200") + noTime + Hex("0000"))
        << ConsolePacket(35, 1, Hex("0200 0000 0200") + wakeUp + Hex("0300")) << 2
        << u"class 0 mix 1001 wake 202501020730"_s << 0;
    QTest::newRow("wake-up cancelled")
        << QString() << ConsolePacket(35, 1, Hex("0300 0000 0200") + noTime + Hex("0000"))
        << ConsolePacket(35, 1, Hex("0300 0000 0200") + noTime + Hex("0100")) << 2
        << u"class 0 mix 0001 wake "_s << 1;
    QTest::newRow("wake-up of a trunk asked for")
        << QString() << ConsolePacket(35, 1, Hex("0200 0000 0a00") + noTime + Hex("0000"))
        << ConsolePacket(35, 1, Hex("0200 0000 0a00") + noTime + Hex("0100")) << 10
        << u"class 0 mix 0000 wake "_s << 0;

    // The recording server's question has no Len, as the console sends it.
    const QByteArray askRecorder = ConsolePacket(37, 1, Hex("1000 0000 00000000"), 0);
    QTest::newRow("no recording server")
        << QString() << askRecorder
        << ConsolePacket(37, 1, Hex("1000 0000") + Field("1001", 7) + QByteArray(64, '\0')) << 0
        << u"class 0 mix 0001 wake "_s << 0;
    QTest::newRow("recording server's address")
        << u"recorder 192.168.10.20"_s << askRecorder
        << ConsolePacket(37, 1, Hex("1000 0000") + Field("1000", 7) + Field("192.168.10.20", 64))
        << 0 << u"class 0 mix 0001 wake "_s << 0;

    const QByteArray choose = ConsolePacket(32, 1, Hex("0100 0000"));
    const QByteArray send =
        ConsolePacket(32, 1, Hex("0200 1400 1c00") + Field(kSmsBlock, 220 - 18));
    QTest::newRow("SMS: module chosen")
        << QString() << choose << ConsolePacket(32, 1, Hex("0300 1400")) << -1 << QString() << 0;
    QTest::newRow("SMS: sent") << QString() << send << ConsolePacket(32, 1, Hex("0400 1400")) << -1
                               << QString::fromLatin1(kSmsBlock) << 0;
    QTest::newRow("SMS: failed") << u"gsm failed"_s << send
                                 << ConsolePacket(32, 1, Hex("0500 1400")) << -1
                                 << QString::fromLatin1(kSmsBlock) << 0;
    QTest::newRow("SMS: no module free")
        << u"gsm none"_s << choose << ConsolePacket(32, 1, Hex("0600 ffff")) << -1 << QString()
        << 0;
    QTest::newRow("SMS: exchange without modules")
        << u"nomodules"_s << choose << ConsolePacket(32, 1, Hex("0600 ffff")) << -1 << QString()
        << 0;
  }
  void requestsAreAnswered() {
    QFETCH(QString, setup);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, answer);
    QFETCH(int, device);
    QFETCH(QString, after);
    QFETCH(int, pushed);
    AddOffice();
    const QStringList words = setup.split(u' ');
    if (words.first() == u"srvresult"_s)
      Sim->SetSrvClassResult(words.at(1));
    else if (setup == u"mailbox down"_s)
      Sim->SetVoiceMailServerReachable(false);
    else if (setup == u"gsm failed"_s)
      Sim->SetGsmOutcome(ExchangeSim::GsmOutcome::Failed);
    else if (setup == u"gsm none"_s)
      Sim->SetGsmOutcome(ExchangeSim::GsmOutcome::NoModule);
    else if (setup == u"nomodules"_s)
      Sim->Devices().Remove(20);
    else if (words.first() == u"recorder"_s)
      Sim->SetRecordServer(u"1000"_s, words.at(1));
    else if (words.first() == u"mix"_s)
      Sim->SetDeviceMixData(words.at(1).toInt(), quint16(words.at(2).toUInt(nullptr, 16)));

    auto console = LoggedIn();
    console->Send(request);
    QTRY_COMPARE_WITH_TIMEOUT(Sim->Received().size(), 2, kWait);
    QList<QByteArray> expected{console->Packets().first()};
    if (!answer.isEmpty())
      expected << answer;
    QTRY_COMPARE_WITH_TIMEOUT(console->Packets().size(), expected.size(), kWait);
    QCOMPARE(console->Packets(), expected);

    if (device >= 0)
      QCOMPARE(StateOf(Sim->Device(device)), after);
    else
      QCOMPARE(Sim->SmsSent().join(u'|'), after);

    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), pushed, kWait);
    QTest::qWait(50);
    QCOMPARE(Ear->Got.size(), pushed);
    if (pushed) {
      const QByteArray d = Ear->Got.last().data();
      QCOMPARE(I16At(d, 8), device);
      QCOMPARE(U16At(d, 22), int(Sim->Device(device)->MixData));
      QCOMPARE(I16At(d, 40), int(Sim->Device(device)->SrvClass));
      QCOMPARE(TextAt(d, 42), Sim->Device(device)->WakeUp.toLatin1());
    }
  }

  void requestsWithoutASessionAreNotAnswered() {
    AddOffice();
    FakeConsole stranger(Sim->Port());
    QTRY_VERIFY_WITH_TIMEOUT(Sim->IsConnected(), kWait);
    stranger.Send(Query(0) + ConsolePacket(24, 1, Hex("9800 0000 0100 0400")));
    QTRY_COMPARE_WITH_TIMEOUT(Sim->Received().size(), 2, kWait);
    QTest::qWait(50);
    QVERIFY(stranger.Got.isEmpty());
    QCOMPARE(StateOf(Sim->Device(1)), u"class 0 mix 0041 wake "_s);
  }

  void datagramsMatchHandComputedBytes_data() {
    QTest::addColumn<QByteArray>("datagram");
    QTest::addColumn<QByteArray>("expected");

    SimDevice ext = MakeDevice(7, 1, u"8001"_s, 7);
    ext.Name = u"Room 7"_s;
    ext.SrvClass = 2;
    ext.MixData = 0x0245;
    ext.WakeUp = u"202501020730"_s;
    QTest::newRow("extension status")
        << SimPackets::StatusDatagram(ext)
        << ConsolePacket(24, 7,
                         Hex("8800 0100 0700 00000000 4502 0000 0000 0000") + Field("", 10) +
                             Hex("0200") + Field("202501020730", 20) + Field("Room 7", 46));

    SimDevice module = MakeDevice(20, 12, u"13800000001"_s, 0);
    module.Signal = 24;
    module.ModuleState = 0x0510;
    QTest::newRow("module status")
        << SimPackets::StatusDatagram(module)
        << ConsolePacket(24, 20,
                         Hex("8800 0c00 0000 00000000 0000 1800 0b00 1005") + Field("GSM", 10) +
                             Hex("0000") + QByteArray(20 + 46, '\0'));

    QTest::newRow("call record") << SimPackets::CallRecordDatagram(5, u"8001"_s, 1,
                                                                   u"13900001111"_s, 2, 3)
                                 << ConsolePacket(41, 5,
                                                  Hex("0100 0000") + Field("8001", 22) +
                                                      Hex("0100") + Field("13900001111", 20) +
                                                      Hex("0200 0300"));
  }
  void datagramsMatchHandComputedBytes() {
    QFETCH(QByteArray, datagram);
    QFETCH(QByteArray, expected);
    QCOMPARE(datagram.toHex(' '), expected.toHex(' '));
  }

  void senderAddressIsChosen_data() {
    QTest::addColumn<QString>("sender");
    QTest::addColumn<QString>("seen");
    QTest::newRow("system's choice") << QString() << u"127.0.0.1"_s;
    QTest::newRow("another loopback address") << u"127.0.0.2"_s << u"127.0.0.2"_s;
  }
  void senderAddressIsChosen() {
    QFETCH(QString, sender);
    QFETCH(QString, seen);
    Sim->AddDevice(0, 1, u"8001"_s);
    if (!sender.isEmpty() && !Sim->SetEventSender(QHostAddress(sender)))
      QSKIP("this machine's loopback has no second address");
    QVERIFY(Sim->PushStatus(0));
    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), 1, kWait);
    QCOMPARE(Ear->Got.at(0).senderAddress().toString(), seen);
    // And back to the system's choice.
    QVERIFY(Sim->SetEventSender(QHostAddress()));
    QVERIFY(Sim->PushStatus(0));
    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), 2, kWait);
    QCOMPARE(Ear->Got.at(1).senderAddress().toString(), u"127.0.0.1"_s);
  }

  void unbindableSenderIsRefused() {
    QVERIFY(!Sim->SetEventSender(QHostAddress(u"192.0.2.1"_s)));
    QVERIFY(!Sim->Events().LastError().isEmpty());
    QVERIFY(Sim->Events().SenderAddress().isNull());
  }

  // Counted over a window measured around the stream, with wide bounds: the
  // stream follows the clock, so it can fall behind on a busy machine but
  // never run ahead.
  void liveStreamKeepsItsRate() {
    Sim->AddDevices(0, 40, 1, u"8001"_s);
    Sim->AddDevices(40, 4, 9, u"701"_s);
    Sim->AddDevices(44, 2, 12, u"13800000001"_s);
    Sim->SetRandomSeed(7);
    constexpr double kRate = 200;
    QElapsedTimer window;
    window.start();
    Sim->StartLiveStatus(kRate);
    QVERIFY(Sim->IsLiveStatusRunning());
    QTest::qWait(1000);
    Sim->StopLiveStatus();
    const double most = kRate * double(window.elapsed()) / 1000.0;
    const int sent = Sim->LiveStatusSent();
    QVERIFY2(sent <= most + 1 && sent >= most / 4,
             qPrintable(u"%1 sent in %2 ms"_s.arg(sent).arg(window.elapsed())));
    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), sent, kWait);
    QTest::qWait(100);
    QCOMPARE(Ear->Got.size(), sent);

    // Each one a status event of a device there is, of its own type.
    QSet<int> devices;
    for (const QNetworkDatagram &g : std::as_const(Ear->Got)) {
      const QByteArray d = g.data();
      QCOMPARE(d.size(), 108);
      QCOMPARE(U16At(d, 12), 136);
      const int id = I16At(d, 8);
      QVERIFY(Sim->Device(id).has_value());
      QCOMPARE(I16At(d, 14), int(Sim->Device(id)->Type));
      if (Sim->Device(id)->Type == 1)
        QVERIFY(I16At(d, 16) <= 8);
      devices << id;
    }
    QVERIFY2(devices.size() > 10, "the changes should spread over the devices");
  }

  // The console sets a wake-up; the exchange rings it when its clock, stepped
  // by the script, reaches the time, and the room answers or not.
  void wakeUpsRingAtTheirTime_data() {
    QTest::addColumn<QString>("script");
    QTest::addColumn<QStringList>("events"); // status, MixData, wake-up text
    const QString set = u"1 0001 20270103070501"_s;
    QTest::newRow("answered") << u"at 0 wakeresult 8002 answer 0\nat 0 clock 202701030705"_s
                              << QStringList{set, u"3 0001 20270103070501"_s,
                                             u"7 0101 20270103070501"_s, u"1 0001 "_s};
    QTest::newRow("not answered")
        << u"at 0 wakeresult 8002 noanswer 10\nat 0 clock 20270103070530"_s
        << QStringList{set, u"3 0001 20270103070501"_s, u"1 0001 "_s};
    QTest::newRow("not yet due") << u"at 0 wakeresult 8002 answer 0\nat 0 clock 202701030704"_s
                                 << QStringList{set};
    QTest::newRow("over an hour late")
        << u"at 0 wakeresult 8002 answer 0\nat 0 clock 202701030806"_s << QStringList{set};
  }
  void wakeUpsRingAtTheirTime() {
    QFETCH(QString, script);
    QFETCH(QStringList, events);
    Sim->AddDevice(1, 1, u"8002"_s);
    Sim->SetClockTo(QDateTime(QDate(2027, 1, 3), QTime(6, 0)));
    Sim->SetWakeUpCheckPeriod(10);
    Sim->SetWakeUpTalkTime(10);
    auto console = LoggedIn();
    console->Send(ConsolePacket(35, 1, Hex("0100 0000 0100") + Field("20270103070501", 20) +
                                           Hex("0000")));
    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), 1, kWait);
    QTest::qWait(50);
    QSignalSpy finished(Sim.get(), &ExchangeSim::scriptFinished);
    QString error;
    QVERIFY2(Sim->RunScriptText(script, &error), qPrintable(error));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kWait);
    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), events.size(), kWait);
    QTRY_VERIFY_WITH_TIMEOUT(!Sim->IsInWakeUpCall(1), kWait);
    QTest::qWait(50);
    QStringList got;
    for (const QNetworkDatagram &g : std::as_const(Ear->Got)) {
      const QByteArray d = g.data();
      got << u"%1 %2 %3"_s.arg(I16At(d, 16))
                 .arg(U16At(d, 22), 4, 16, QChar(u'0'))
                 .arg(QString::fromLatin1(TextAt(d, 42)));
    }
    QCOMPARE(got, events);
  }

  // A script refuses classes, holds one answer back and sends another late;
  // the requests still act.
  void scriptShapesAnswers() {
    AddOffice();
    auto console = LoggedIn();
    QSignalSpy finished(Sim.get(), &ExchangeSim::scriptFinished);
    QVERIFY(Sim->RunScriptText(u"at 0 srvresult 000007\nat 0 hold srvclass\n"
                               u"at 0 delay nodisturb 50 1\n"_s));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kWait);
    console->Send(ConsolePacket(22, 1, Hex("0100 0000 0100 0300")));
    console->Send(ConsolePacket(22, 1, Hex("0100 0000 0100 0300")));
    console->Send(ConsolePacket(24, 1, Hex("9800 0000 0100 0400")));
    QTRY_COMPARE_WITH_TIMEOUT(console->Types(), (QList<qint16>{16, 22, 24}), kWait);
    QCOMPARE(TextAt(console->Packets().at(1), 18), QByteArray("000007"));
    QCOMPARE(StateOf(Sim->Device(1)), u"class 0 mix 0441 wake "_s);
  }

  void scriptPushesEvents() {
    Sim->AddDevice(1, 1, u"8002"_s);
    Sim->AddDevice(5, 1, u"8001"_s);
    QSignalSpy finished(Sim.get(), &ExchangeSim::scriptFinished);
    QString error;
    QVERIFY2(Sim->RunScriptText(u"at 0  status 1 7\n"
                                "at 0  status 99 7      # no such device: nothing\n"
                                "at 10 mixdata 1 0x0245\n"
                                "at 20 cdr 8001 13900001111 1 2 3\n"
                                "at 30 live 1000\n"
                                "at 200 live off\n"_s,
                                &error),
             qPrintable(error));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kWait);
    QVERIFY(!Sim->PushStatus(99));
    QVERIFY(!Sim->IsLiveStatusRunning());
    QVERIFY(Sim->LiveStatusSent() > 0);
    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), 3 + Sim->LiveStatusSent(), kWait);
    const QByteArray status = Ear->Got.at(0).data(), mix = Ear->Got.at(1).data(),
                     record = Ear->Got.at(2).data();
    QCOMPARE(I16At(status, 8), 1);
    QCOMPARE(I16At(status, 16), 7);
    QCOMPARE(U16At(mix, 22), 0x0245);
    QCOMPARE(HeaderOf(record).Type, qint16(41));
    QCOMPARE(HeaderOf(record).Id, quint16(5));
    QCOMPARE(TextAt(record, 40), QByteArray("13900001111"));
    QCOMPARE(I16At(record, 38), 1);
    QCOMPARE(I16At(record, 60), 2);
    QCOMPARE(I16At(record, 62), 3);
  }

  void scriptStreamsCallRecords() {
    Sim->AddDevices(0, 10, 1, u"8001"_s);
    Sim->AddDevices(10, 2, 5, u"701"_s);
    QSignalSpy finished(Sim.get(), &ExchangeSim::scriptFinished);
    QVERIFY(Sim->RunScriptText(u"at 0 records 100\nat 200 records off\n"_s));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kWait);
    const int sent = Sim->CallRecordsSent();
    QVERIFY(sent > 0);
    QTRY_COMPARE_WITH_TIMEOUT(Ear->Got.size(), sent, kWait);
    for (const QNetworkDatagram &g : std::as_const(Ear->Got)) {
      const QByteArray d = g.data();
      QCOMPARE(HeaderOf(d).Type, qint16(41));
      QVERIFY(HeaderOf(d).Id < 10); // a room, never a trunk
      QCOMPARE(TextAt(d, 16), Sim->Device(HeaderOf(d).Id)->Number.toLatin1());
      QVERIFY(I16At(d, 60) <= 1 && I16At(d, 62) <= 8);
    }
    QTest::qWait(100); // stopped: nothing more comes
    QCOMPARE(Sim->CallRecordsSent(), sent);
  }
};

QTEST_GUILESS_MAIN(SimDevicesTest)
#include "tst_sim_devices.moc"
