// The simulated exchange over real loopback sockets, with a plain QTcpSocket
// playing the console. Expected bytes are worked out by hand here, not taken
// from the simulator's own builder.
#include "ExchangeSim.h"
#include "FakeConsole.h"

#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace sim_test;

class ExchangeSimTest : public QObject {
  Q_OBJECT

  std::unique_ptr<ExchangeSim> Sim;

  std::unique_ptr<FakeConsole> Connect() {
    auto console = std::make_unique<FakeConsole>(Sim->Port());
    [&] { QTRY_VERIFY_WITH_TIMEOUT(Sim->IsConnected(), kWait); }();
    return console;
  }

private slots:
  void init() {
    Sim = std::make_unique<ExchangeSim>();
    QVERIFY(Sim->Listen());
    Sim->AddUser(u"8001"_s, u"1234"_s);
    Sim->AddUser(u"8003"_s, u"abc"_s, u"1003"_s);
  }
  void cleanup() { Sim.reset(); }

  void builtPacketsMatchHandComputedBytes_data() {
    QTest::addColumn<QByteArray>("built");
    QTest::addColumn<QByteArray>("expected");
    // Bytes 6..11 = 01 00 01 00 0C 00 add up to 0x0E; 0x100 - 0x0E = 0xF2.
    QTest::newRow("pulse, id 1") << SimPackets::PulsePacket(1)
                                 << Hex("12191039 F200 0100 0100 0C00");
    // 10+01+40 = 0x51, "1000" = 31+30+30+30 = 0xC1; 0x51+0xC1 = 0x112, so 0xEE.
    QTest::newRow("login answer 1000, id 1")
        << SimPackets::LoginAnswer(1, u"1000"_s)
        << Hex("12191039 EE00 1000 0100 4000") + Field("1000", 52);
    // A lying Len is written as given and still summed: 11+02+0B+02 = 0x20, so 0xE0.
    QTest::newRow("Len 11 as asked")
        << ExchangeSim::BuildPacket(17, 2, Hex("02"), 11) << Hex("12191039 E000 1100 0200 0B00 02");
    // FF+FF+0C = 0x20A, so 0xF6.
    QTest::newRow("type -1") << ExchangeSim::BuildPacket(-1, 0, {})
                             << Hex("12191039 F600 FFFF 0000 0C00");
    // F4+0C = 0x100: a zero sum gives 0, never 0x100.
    QTest::newRow("sum zero") << ExchangeSim::BuildPacket(244, 0, {})
                              << Hex("12191039 0000 F400 0000 0C00");
    QTest::newRow("missed call") << SimPackets::MissedCallPacket(3, u"8002"_s)
                                 << ConsolePacket(21, 3, Field("8002", 21) + Field({}, 21));
    QTest::newRow("call state") << SimPackets::CallStatePacket(3, 2, 7, u"13800138000"_s, u"8001"_s,
                                                               true, 16)
                                << ConsolePacket(17, 3,
                                                 Hex("02 00 0700 00") + Field("13800138000", 21) +
                                                     Field("8001", 21) + Hex("01 00000000 1000"));
    // The feature list is not a fixed field: it runs to its NUL at the end.
    QTest::newRow("user info") << SimPackets::UserInfoPacket(3, u"8001"_s, u"前台"_s, 5003,
                                                             u"desk"_s, -1, u"*72\r\n*73"_s)
                               << ConsolePacket(19, 3,
                                                Field("8001", 21) + Field("\xC7\xB0\xCC\xA8", 41) +
                                                    Hex("8B13") + Field("desk", 42) + Hex("FFFF") +
                                                    QByteArray("*72\r\n*73", 8) + Hex("00"));
  }
  void builtPacketsMatchHandComputedBytes() {
    QFETCH(QByteArray, built);
    QFETCH(QByteArray, expected);
    QCOMPARE(built.toHex(' '), expected.toHex(' '));
  }

  void textFieldsCutWholeCharacters_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("kept");
    QTest::newRow("fits") << u"8001"_s << 21 << u"8001"_s;
    QTest::newRow("20 digits keep the NUL")
        << u"12345678901234567890"_s << 21 << u"12345678901234567890"_s;
    QTest::newRow("21 digits lose one")
        << u"123456789012345678901"_s << 21 << u"12345678901234567890"_s;
    QTest::newRow("no half character") << u"张三"_s << 4 << u"张"_s;
    QTest::newRow("mixed") << u"前台A总机"_s << 7 << u"前台A"_s;
  }
  void textFieldsCutWholeCharacters() {
    QFETCH(QString, text);
    QFETCH(int, size);
    QFETCH(QString, kept);
    const QByteArray field = SimPackets::TextField(text, size);
    QCOMPARE(field.size(), size);
    QCOMPARE(field.at(size - 1), '\0');
    QCOMPARE(SimPackets::ReadText(field, 0, size), kept);
  }

  void consolePacketsAreDecoded_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QVariantMap>("fields");
    QTest::addColumn<bool>("checksumOk");
    QTest::newRow("login, 20-digit number")
        << ConsolePacket(16, 0,
                         Field("12345678901234567890", 21) + Field("pw", 21) + Field("02", 10))
        << QVariantMap{{u"TelNo"_s, u"12345678901234567890"_s},
                       {u"Password"_s, u"pw"_s},
                       {u"Version"_s, u"02"_s}}
        << true;
    QTest::newRow("login, GBK password")
        << ConsolePacket(16, 0, Field("8001", 21) + Field("\xC3\xDC\xC2\xEB", 21) + Field("02", 10))
        << QVariantMap{{u"TelNo"_s, u"8001"_s}, {u"Password"_s, u"密码"_s}, {u"Version"_s, u"02"_s}}
        << true;
    QTest::newRow("dial digits") << ConsolePacket(18, 1,
                                                  Hex("06 010203 0B0C0A") + QByteArray(17, '\0'))
                                 << QVariantMap{{u"Count"_s, 6}, {u"Digits"_s, u"123*#0"_s}}
                                 << true;
    QTest::newRow("phone command")
        << ConsolePacket(20, 1, Hex("8500 0000")) << QVariantMap{{u"Code"_s, 133}} << true;
    QTest::newRow("record server query") << ConsolePacket(37, 1, Hex("1000 0000 00000000"), 0)
                                         << QVariantMap{{u"Sub"_s, 16}} << true;
    QByteArray spoiled = ConsolePacket(24, 1, Hex("86 000000"));
    spoiled[4] = char(spoiled.at(4) + 1);
    QTest::newRow("device control, wrong checksum")
        << spoiled << QVariantMap{{u"Sub"_s, 134}} << false;
  }
  void consolePacketsAreDecoded() {
    QFETCH(QByteArray, bytes);
    QFETCH(QVariantMap, fields);
    QFETCH(bool, checksumOk);
    const SimPacket p = SimPackets::Decode(bytes);
    QVERIFY(p.MagicOk);
    QVERIFY(!p.Malformed);
    QCOMPARE(p.ChecksumOk, checksumOk);
    for (auto it = fields.cbegin(); it != fields.cend(); ++it)
      QCOMPARE(p.Fields.value(it.key()).toString(), it.value().toString());
  }

  // How the stream is cut, fed in pieces as they might arrive.
  void streamIsCutIntoPackets_data() {
    QTest::addColumn<QList<QByteArray>>("reads");
    QTest::addColumn<QList<int>>("sizes"); // negative: a malformed piece of that size
    const QByteArray pulse = ConsolePacket(1, 1, {});
    const QByteArray command = ConsolePacket(20, 1, Hex("8500 0000"));
    const QByteArray query = ConsolePacket(37, 1, Hex("1000 0000 00000000"), 0);
    const QByteArray both = pulse + command;
    QTest::newRow("two in one read") << QList<QByteArray>{both} << QList<int>{12, 16};
    QTest::newRow("split in the header")
        << QList<QByteArray>{command.left(5), command.mid(5)} << QList<int>{16};
    QList<QByteArray> bytewise;
    for (char c : both)
      bytewise << QByteArray(1, c);
    QTest::newRow("a byte at a time") << bytewise << QList<int>{12, 16};
    QTest::newRow("type 37 with Len 0 is 20 bytes")
        << QList<QByteArray>{query + pulse} << QList<int>{20, 12};
    QTest::newRow("Len 11 takes the rest")
        << QList<QByteArray>{ConsolePacket(17, 1, Hex("02"), 11) + pulse, pulse}
        << QList<int>{-25, 12};
    QTest::newRow("Len 0 of another type")
        << QList<QByteArray>{ConsolePacket(20, 1, {}, 0)} << QList<int>{-12};
    QTest::newRow("bad magic, then a good write")
        << QList<QByteArray>{Hex("12191040") + pulse, pulse} << QList<int>{-16, 12};
  }
  void streamIsCutIntoPackets() {
    QFETCH(QList<QByteArray>, reads);
    QFETCH(QList<int>, sizes);
    SimPackets::StreamCutter cutter;
    QList<int> got;
    for (const QByteArray &read : reads) {
      for (const SimPacket &p : cutter.Feed(read))
        got << (p.Malformed ? -int(p.Bytes.size()) : int(p.Bytes.size()));
    }
    QCOMPARE(got, sizes);
    QCOMPARE(cutter.PendingBytes(), 0);
  }

  void packetsArriveOverTheSocket_data() {
    QTest::addColumn<QList<QByteArray>>("writes");
    QTest::addColumn<QList<qint16>>("types");
    QTest::addColumn<QList<int>>("sizes");
    const QByteArray command = ConsolePacket(20, 1, Hex("8500 0000"));
    const QByteArray dial = ConsolePacket(18, 1, Hex("01 01") + QByteArray(22, '\0'));
    QTest::newRow("two in one write")
        << QList<QByteArray>{command + dial} << QList<qint16>{20, 18} << QList<int>{16, 36};
    QTest::newRow("one over two writes")
        << QList<QByteArray>{dial.left(20), dial.mid(20)} << QList<qint16>{18} << QList<int>{36};
    QTest::newRow("type 37 with Len 0")
        << QList<QByteArray>{ConsolePacket(37, 1, Hex("1000 0000 00000000"), 0) + command}
        << QList<qint16>{37, 20} << QList<int>{20, 16};
  }
  void packetsArriveOverTheSocket() {
    QFETCH(QList<QByteArray>, writes);
    QFETCH(QList<qint16>, types);
    QFETCH(QList<int>, sizes);
    auto console = Connect();
    QSignalSpy spy(Sim.get(), &ExchangeSim::packetReceived);
    for (const QByteArray &w : writes) {
      console->Send(w);
      QTest::qWait(30); // give each write its own read where the system allows
    }
    QTRY_COMPARE_WITH_TIMEOUT(Sim->Received().size(), types.size(), kWait);
    QCOMPARE(spy.size(), types.size());
    for (qsizetype i = 0; i < types.size(); ++i) {
      const SimPacket p = Sim->Received().at(i);
      QCOMPARE(p.TypeCode, types.at(i));
      QCOMPARE(p.Bytes.size(), sizes.at(i));
      QVERIFY(p.ChecksumOk);
    }
  }

  void loginIsAnswered_data() {
    QTest::addColumn<QByteArray>("telNo");
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<QString>("result");
    QTest::newRow("right password") << QByteArray("8001") << QByteArray("1234") << u"1000"_s;
    QTest::newRow("wrong password") << QByteArray("8001") << QByteArray("4321") << u"1001"_s;
    QTest::newRow("unknown number") << QByteArray("8999") << QByteArray("1234") << u"1001"_s;
    QTest::newRow("configured refusal") << QByteArray("8003") << QByteArray("abc") << u"1003"_s;
  }
  void loginIsAnswered() {
    QFETCH(QByteArray, telNo);
    QFETCH(QByteArray, password);
    QFETCH(QString, result);
    const bool accepted = result == u"1000"_s;
    Sim->SetPulsePeriod(20);
    auto console = Connect();
    QSignalSpy answered(Sim.get(), &ExchangeSim::loginAnswered);
    console->Send(LoginPacket(telNo, password));

    QTRY_VERIFY_WITH_TIMEOUT(!console->Packets().isEmpty(), kWait);
    const QByteArray answer = console->Packets().first();
    QCOMPARE(answer.size(), 64);
    QCOMPARE(HeaderOf(answer).Type, qint16(16));
    QCOMPARE(SimPackets::ReadText(answer, 12, 52), result);
    QCOMPARE(answered.size(), 1);
    QCOMPARE(answered.first(), (QVariantList{QString::fromLatin1(telNo), result}));
    QCOMPARE(Sim->IsSessionOpen(), accepted);

    if (accepted) {
      QCOMPARE(HeaderOf(answer).Id, quint16(1));
      QCOMPARE(Sim->SessionId(), quint16(1));
      QTRY_VERIFY_WITH_TIMEOUT(console->Packets().size() >= 3, kWait);
      const QByteArray pulse = console->Packets().at(1);
      QCOMPARE(pulse.toHex(), Hex("12191039 F200 0100 0100 0C00").toHex());
    } else {
      // A refused console gets nothing more, however long it waits.
      QTest::qWait(150);
      QCOMPARE(console->Packets().size(), 1);
      QCOMPARE(Sim->PulsesSent(), 0);
    }
  }

  void silentExchangeNeverAnswers() {
    Sim->SetAnswerLogin(false);
    auto console = Connect();
    QSignalSpy answered(Sim.get(), &ExchangeSim::loginAnswered);
    console->Send(LoginPacket("8001", "1234"));
    // The answer would be written before the next packet is read.
    console->Send(ConsolePacket(20, 0, Hex("8500 0000")));
    QTRY_COMPARE_WITH_TIMEOUT(Sim->Received().size(), 2, kWait);
    QTest::qWait(100);
    QVERIFY(console->Got.isEmpty());
    QCOMPARE(answered.size(), 0);
    QCOMPARE(Sim->Received().first().Fields.value(u"TelNo"_s).toString(), u"8001"_s);
  }

  void newestConsoleTakesOverWithARisingSessionId() {
    Sim->SetPulsePeriod(20);
    auto first = Connect();
    first->Send(LoginPacket("8001", "1234"));
    QTRY_COMPARE_WITH_TIMEOUT(Sim->SessionId(), quint16(1), kWait);

    QSignalSpy gone(Sim.get(), &ExchangeSim::consoleDisconnected);
    FakeConsole second(Sim->Port());
    QTRY_VERIFY_WITH_TIMEOUT(first->Closed, kWait);
    QCOMPARE(gone.size(), 1);
    QVERIFY(!Sim->IsSessionOpen());

    second.Send(LoginPacket("8001", "1234"));
    QTRY_VERIFY_WITH_TIMEOUT(second.Packets().size() >= 2, kWait);
    QCOMPARE(HeaderOf(second.Packets().at(0)).Id, quint16(2));
    QCOMPARE(HeaderOf(second.Packets().at(1)).Id, quint16(2));
    QVERIFY(!second.Closed);
  }

  void pulsesPauseAndResume() {
    Sim->SetPulsePeriod(20);
    auto console = Connect();
    console->Send(LoginPacket("8001", "1234"));
    QTRY_VERIFY_WITH_TIMEOUT(Sim->PulsesSent() >= 2, kWait);
    Sim->StopPulses();
    const int paused = Sim->PulsesSent();
    QTest::qWait(150);
    QCOMPARE(Sim->PulsesSent(), paused);
    Sim->StartPulses();
    QTRY_VERIFY_WITH_TIMEOUT(Sim->PulsesSent() >= paused + 2, kWait);
    Sim->SetPulsePeriod(0);
    const int stopped = Sim->PulsesSent();
    QTest::qWait(150);
    QCOMPARE(Sim->PulsesSent(), stopped);
  }

  void dropAndRefusal() {
    auto console = Connect();
    QSignalSpy gone(Sim.get(), &ExchangeSim::consoleDisconnected);
    Sim->SendPacket(1, {});
    Sim->DropConnection();
    QVERIFY(!Sim->IsConnected());
    QCOMPARE(gone.size(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(console->Closed, kWait);
    QCOMPARE(console->Packets().size(), 1); // written before the drop, still delivered

    Sim->SetAccepting(false);
    QSignalSpy arrived(Sim.get(), &ExchangeSim::consoleConnected);
    FakeConsole refused(Sim->Port());
    QTRY_VERIFY_WITH_TIMEOUT(refused.Closed, kWait);
    QCOMPARE(arrived.size(), 0);
    QVERIFY(!Sim->IsConnected());

    Sim->SetAccepting(true);
    auto welcome = Connect();
    QCOMPARE(arrived.size(), 1);
  }

  void burstArrivesWhole() {
    auto console = Connect();
    Sim->SendBurst(SimPackets::PulsePacket(0), 5000);
    QTRY_COMPARE_WITH_TIMEOUT(console->Got.size(), 5000 * 12, kWait);
    QCOMPARE(console->Got, SimPackets::PulsePacket(0).repeated(5000));
  }

  void scriptRunsItsStepsInOrder() {
    auto console = Connect();
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write("# a ring, answered, hung up\n"
               "at 40 drop\n"
               "at 0  send 24 88 00 05 00   # same time as the next: file order\n"
               "at 0  raw 12191039 F3 00 01 00 00 00 0C 00\n"
               "\n"
               "at 10 callstate 2 5 8002\n"
               "at 20 pulses off\n"
               "at 25 missed 8002\n");
    file.close();
    QSignalSpy finished(Sim.get(), &ExchangeSim::scriptFinished);
    QString error;
    QVERIFY2(Sim->RunScript(file.fileName(), &error), qPrintable(error));
    QTRY_VERIFY_WITH_TIMEOUT(console->Closed, kWait);
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kWait);
    QCOMPARE(console->Types(), (QList<qint16>{24, 1, 17, 21}));
    const QByteArray call = console->Packets().at(2);
    QCOMPARE(quint8(call.at(12)), quint8(2));
    QCOMPARE(SimPackets::ReadText(call, 17, 21), u"8002"_s);
  }

  void badScriptRunsNothing_data() {
    QTest::addColumn<QString>("line");
    QTest::newRow("unknown step") << u"at 10 dance"_s;
    QTest::newRow("odd hex") << u"at 10 raw 12 19 1"_s;
    QTest::newRow("not hex") << u"at 10 send 17 zz"_s;
    QTest::newRow("no time") << u"send 17 02"_s;
    QTest::newRow("negative time") << u"at -5 drop"_s;
    QTest::newRow("type too big") << u"at 0 send 40000"_s;
    QTest::newRow("pulses what") << u"at 0 pulses maybe"_s;
    QTest::newRow("drop with more") << u"at 0 drop now"_s;
    QTest::newRow("ring without a caller") << u"at 0 ring"_s;
    QTest::newRow("ring on no line") << u"at 0 ring 8002 x"_s;
    QTest::newRow("ring on a negative line") << u"at 0 ring 8002 -1"_s;
    QTest::newRow("callback of two") << u"at 0 callback 8002 8003"_s;
    QTest::newRow("answer with more") << u"at 0 answer 8002"_s;
    QTest::newRow("giveup with more") << u"at 0 giveup now"_s;
    QTest::newRow("userinfo short") << u"at 0 userinfo 8001 front 5003"_s;
    QTest::newRow("userinfo port too big") << u"at 0 userinfo 8001 front 70000 1"_s;
    QTest::newRow("userinfo admin 2") << u"at 0 userinfo 8001 front 5003 2 *72"_s;
    QTest::newRow("status without one") << u"at 0 status 5"_s;
    QTest::newRow("status too big") << u"at 0 status 5 256"_s;
    QTest::newRow("status of no device") << u"at 0 status -1 1"_s;
    QTest::newRow("mixdata beyond 16 bits") << u"at 0 mixdata 5 0x10000"_s;
    QTest::newRow("hold of no kind") << u"at 0 hold login"_s;
    QTest::newRow("hold a negative count") << u"at 0 hold srvclass -1"_s;
    QTest::newRow("delay without a time") << u"at 0 delay nodisturb"_s;
    QTest::newRow("srvresult without a code") << u"at 0 srvresult"_s;
    QTest::newRow("cdr of one number") << u"at 0 cdr 8001"_s;
    QTest::newRow("cdr code not a number") << u"at 0 cdr 8001 8002 x"_s;
    QTest::newRow("live at no rate") << u"at 0 live 0"_s;
    QTest::newRow("live what") << u"at 0 live fast"_s;
    QTest::newRow("clock of no time") << u"at 0 clock 202713010700"_s;
    QTest::newRow("clock of two times") << u"at 0 clock 202701030700 202701030701"_s;
    QTest::newRow("wakeresult what") << u"at 0 wakeresult 8001 maybe"_s;
    QTest::newRow("wakeresult negative ring") << u"at 0 wakeresult 8001 answer -5"_s;
    QTest::newRow("records at no rate") << u"at 0 records -1"_s;
  }
  void badScriptRunsNothing() {
    QFETCH(QString, line);
    auto console = Connect();
    QString error;
    QVERIFY(
        !Sim->RunScriptText(u"# header\nat 0 send 1\n\n"_s + line + u"\nat 5 drop\n"_s, &error));
    QVERIFY2(error.startsWith(u"line 4:"_s), qPrintable(error));
    QTest::qWait(100);
    QVERIFY(console->Got.isEmpty());
    QVERIFY(Sim->IsConnected());
  }

  void missingScriptFileIsReported() {
    QString error;
    QVERIFY(!Sim->RunScript(u"/nonexistent/steps.txt"_s, &error));
    QVERIFY(error.contains(u"/nonexistent/steps.txt"_s));
  }
};

QTEST_GUILESS_MAIN(ExchangeSimTest)
#include "tst_exchange_sim.moc"
