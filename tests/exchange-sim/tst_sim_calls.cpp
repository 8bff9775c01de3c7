// The console's own extension in the simulated exchange, driven over loopback
// by a plain socket that sends what the console's keys send, and by the far
// end's calls. What comes back is read at the offsets of the packet tables.
#include "ExchangeSim.h"
#include "FakeConsole.h"

#include <QSignalSpy>
#include <QStringDecoder>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace sim_test;

namespace {

QString Text(const QByteArray &p, int at, int size) {
  QByteArray field = p.mid(at, size);
  if (const qsizetype nul = field.indexOf('\0'); nul >= 0)
    field.truncate(nul);
  QStringDecoder gbk("GBK");
  return gbk.decode(field);
}

int U16At(const QByteArray &p, int at) {
  return quint8(p.at(at)) | quint8(p.at(at + 1)) << 8;
}

// One line per packet from the exchange, pulses and the login answer left out:
// "7 8002 with 8005 line 3 out rights 16", "missed 8002", "userinfo ...".
QStringList Events(const FakeConsole &console) {
  QStringList events;
  for (const QByteArray &p : console.Packets()) {
    QStringList parts;
    switch (HeaderOf(p).Type) {
    case 17: {
      parts << QString::number(quint8(p.at(12))) << Text(p, 17, 21);
      if (const QString called = Text(p, 38, 21); !called.isEmpty())
        parts << u"with"_s << called;
      if (const qint16 line = qint16(U16At(p, 14)); line != 0)
        parts << u"line"_s << QString::number(line);
      if (p.at(59) != 0)
        parts << u"out"_s;
      if (const int rights = U16At(p, 64); rights != 0)
        parts << u"rights"_s << QString::number(rights);
      break;
    }
    case 21:
      parts << u"missed"_s << Text(p, 12, 21);
      break;
    case 19:
      parts << u"userinfo"_s << Text(p, 12, 21) << Text(p, 33, 41) << QString::number(U16At(p, 74))
            << Text(p, 76, 42) << QString::number(qint16(U16At(p, 118)))
            << Text(p, 120, int(p.size()) - 120).replace(u"\r\n"_s, u" "_s);
      break;
    default:
      continue;
    }
    parts.removeAll(QString());
    events << parts.join(u' ');
  }
  return events;
}

QByteArray DialPacket(const QByteArray &digits) {
  QByteArray codes;
  for (char c : digits)
    codes += c == '0' ? char(10) : c == '*' ? char(11) : c == '#' ? char(12) : char(c - '0');
  return ConsolePacket(18, 1, char(codes.size()) + codes + QByteArray(23 - codes.size(), '\0'));
}

QByteArray CommandPacket(quint16 code) {
  return ConsolePacket(20, 1, QByteArray(1, char(code & 0xFF)) + char(code >> 8) + Hex("0000"));
}

QByteArray HookPacket(bool off) {
  return ConsolePacket(24, 1, Hex(off ? "8600 0000" : "8700 0000"));
}

} // namespace

class SimCallsTest : public QObject {
  Q_OBJECT

  std::unique_ptr<ExchangeSim> Sim;

  // Connects and logs in as the console does, asking for the state at once.
  std::unique_ptr<FakeConsole> LoggedIn() {
    auto console = std::make_unique<FakeConsole>(Sim->Port());
    [&] {
      QTRY_COMPARE_WITH_TIMEOUT(console->Socket.state(), QAbstractSocket::ConnectedState, kWait);
    }();
    const qsizetype seen = Sim->Received().size();
    console->Send(LoginPacket("8001", "1234"));
    [&] { QTRY_VERIFY_WITH_TIMEOUT(console->Packets().size() == 1, kWait); }();
    console->Send(CommandPacket(133));
    [&] { QTRY_COMPARE_WITH_TIMEOUT(Sim->Received().size(), seen + 2, kWait); }();
    return console;
  }

  // A console key sends its packets; a far-end action calls the exchange.
  // "no " before a far-end action: the exchange must refuse it.
  void Do(FakeConsole &console, const QString &action) {
    const QStringList words = action.split(u' ');
    const QString verb = words.first();
    QByteArray bytes;
    if (verb == u"offhook"_s || verb == u"onhook"_s) {
      bytes = HookPacket(verb == u"offhook"_s);
    } else if (verb == u"dial"_s) {
      for (const QString &digits : words.mid(1)) // several packets in one write
        bytes += DialPacket(digits.toLatin1());
    } else if (verb == u"cmd"_s) {
      bytes = CommandPacket(quint16(words.at(1).toUInt()));
    }
    if (!bytes.isEmpty()) {
      const qsizetype packets = Sim->Received().size() + qMax<qsizetype>(words.size() - 1, 1);
      console.Send(bytes);
      QTRY_COMPARE_WITH_TIMEOUT(Sim->Received().size(), packets, kWait);
      return;
    }
    const bool refused = verb == u"no"_s;
    const QStringList far = refused ? words.mid(1) : words;
    const QString what = far.first();
    bool done = false;
    if (what == u"ring"_s)
      done = Sim->RingConsole(far.at(1), far.size() > 2 ? far.at(2).toInt() : -1);
    else if (what == u"callback"_s)
      done = Sim->CallBackConsole(far.at(1));
    else if (what == u"answer"_s)
      done = Sim->AnswerByFarEnd();
    else if (what == u"hangup"_s)
      done = Sim->HangUpByFarEnd();
    else if (what == u"giveup"_s)
      done = Sim->GiveUpRinging(far.value(1) != u"quiet"_s);
    else if (what == u"rights"_s)
      Sim->SetRights(quint16(far.at(1).toUInt())), done = true;
    else
      QFAIL(qPrintable(u"no such action: "_s + action));
    QVERIFY2(done != refused, qPrintable(action));
  }

private slots:
  void init() {
    Sim = std::make_unique<ExchangeSim>();
    QVERIFY(Sim->Listen());
    Sim->AddUser(u"8001"_s, u"1234"_s);
    Sim->SetPulsePeriod(0);
    Sim->SetDialCompleteAfter(0);
  }
  void cleanup() { Sim.reset(); }

  void callFollowsConsoleAndFarEnd_data() {
    QTest::addColumn<int>("dialPause");
    QTest::addColumn<int>("answerAfter");
    QTest::addColumn<QStringList>("actions");
    QTest::addColumn<QStringList>("expected"); // after the "1" that answers the login's query

    QTest::newRow("dial out, answered at once, on hook")
        << 0 << 0 << QStringList{u"offhook"_s, u"dial 8002"_s, u"onhook"_s}
        << QStringList{u"4"_s, u"5 8002 out"_s, u"7 8002 out"_s, u"1"_s};
    QTest::newRow("digits over two packets make one number")
        << 200 << 0 << QStringList{u"offhook"_s, u"dial 80 0*#"_s}
        << QStringList{u"4"_s, u"5 800*# out"_s, u"7 800*# out"_s};
    QTest::newRow("far end answers, then hangs up")
        << 0 << -1
        << QStringList{u"offhook"_s, u"dial 8002"_s, u"answer"_s, u"hangup"_s, u"onhook"_s}
        << QStringList{u"4"_s, u"5 8002 out"_s, u"7 8002 out"_s, u"6 8002 out"_s, u"1"_s};
    QTest::newRow("cancel while calling out")
        << 0 << -1 << QStringList{u"offhook"_s, u"dial 8002"_s, u"cmd 132"_s}
        << QStringList{u"4"_s, u"5 8002 out"_s, u"1"_s};
    QTest::newRow("hold, cancel returns to the held call")
        << 0 << 0 << QStringList{u"offhook"_s, u"dial 8002"_s, u"cmd 131"_s, u"cmd 132"_s}
        << QStringList{u"4"_s, u"5 8002 out"_s, u"7 8002 out"_s, u"4"_s, u"7 8002 out"_s};
    // The console's transfer key in a call sends hold and then transfer.
    QTest::newRow("incoming call, consult, transfer")
        << 0 << 0 << QStringList{u"ring 13800138000 3"_s, u"offhook"_s, u"cmd 131"_s,
                                 u"dial 8003"_s,          u"cmd 131"_s, u"cmd 130"_s}
        << QStringList{u"2 13800138000 line 3"_s, u"7 13800138000 line 3"_s, u"4 line 3"_s,
                       u"5 8003 line 3 out"_s,    u"7 8003 line 3 out"_s,    u"1"_s};
    QTest::newRow("transfer from dial tone")
        << 0 << 0 << QStringList{u"ring 8005"_s, u"offhook"_s, u"cmd 131"_s, u"cmd 130"_s}
        << QStringList{u"2 8005"_s, u"7 8005"_s, u"4"_s, u"1"_s};
    QTest::newRow("conference joins the held call")
        << 0 << 0
        << QStringList{u"ring 8005"_s, u"offhook"_s, u"cmd 131"_s, u"dial 8003"_s, u"cmd 129"_s}
        << QStringList{u"2 8005"_s,     u"7 8005"_s,     u"4"_s,
                       u"5 8003 out"_s, u"7 8003 out"_s, u"7 8003 with 8005 out"_s};
    QTest::newRow("consulted party hangs up, cancel returns")
        << 0 << 0 << QStringList{u"ring 8005"_s, u"offhook"_s, u"cmd 131"_s,
                                 u"dial 8003"_s, u"hangup"_s,  u"cmd 132"_s}
        << QStringList{u"2 8005"_s,     u"7 8005"_s,     u"4"_s,     u"5 8003 out"_s,
                       u"7 8003 out"_s, u"6 8003 out"_s, u"7 8005"_s};
    QTest::newRow("ringing, on hook unanswered")
        << 0 << 0 << QStringList{u"ring 8005"_s, u"onhook"_s} << QStringList{u"2 8005"_s, u"1"_s};
    QTest::newRow("ringing given up, missed call follows")
        << 0 << 0 << QStringList{u"ring 8005 2"_s, u"giveup"_s}
        << QStringList{u"2 8005 line 2"_s, u"1"_s, u"missed 8005"_s};
    QTest::newRow("call back given up quietly")
        << 0 << 0 << QStringList{u"callback 8005"_s, u"giveup quiet"_s}
        << QStringList{u"3 8005"_s, u"1"_s};
    QTest::newRow("call back lifted calls the party")
        << 0 << 0 << QStringList{u"callback 8005"_s, u"offhook"_s}
        << QStringList{u"3 8005"_s, u"5 8005 out"_s, u"7 8005 out"_s};
    QTest::newRow("query repeats the state")
        << 0 << 0 << QStringList{u"offhook"_s, u"cmd 128"_s, u"cmd 133"_s}
        << QStringList{u"4"_s, u"4"_s, u"4"_s};
    QTest::newRow("rights go with every report")
        << 0 << 0 << QStringList{u"rights 16"_s, u"offhook"_s} << QStringList{u"4 rights 16"_s};
    QTest::newRow("keys and far-end acts that do not apply")
        << 0 << 0
        << QStringList{u"cmd 131"_s,          u"cmd 132"_s,   u"cmd 129"_s,   u"cmd 130"_s,
                       u"cmd 140"_s,          u"onhook"_s,    u"dial 8002"_s, u"no answer"_s,
                       u"no hangup"_s,        u"no giveup"_s, u"ring 8005"_s, u"no ring 8006"_s,
                       u"no callback 8006"_s, u"cmd 131"_s,   u"offhook"_s,   u"offhook"_s,
                       u"dial 5"_s,           u"cmd 129"_s,   u"cmd 132"_s}
        << QStringList{u"2 8005"_s, u"7 8005"_s};
  }
  void callFollowsConsoleAndFarEnd() {
    QFETCH(int, dialPause);
    QFETCH(int, answerAfter);
    QFETCH(QStringList, actions);
    QFETCH(QStringList, expected);
    Sim->SetDialCompleteAfter(dialPause);
    Sim->SetAnswerAfter(answerAfter);
    auto console = LoggedIn();
    QTRY_COMPARE_WITH_TIMEOUT(Events(*console), QStringList{u"1"_s}, kWait);
    for (const QString &action : std::as_const(actions)) {
      Do(*console, action);
      if (QTest::currentTestFailed())
        return;
    }
    expected.prepend(u"1"_s);
    QTRY_COMPARE_WITH_TIMEOUT(Events(*console), expected, kWait);
    // Nothing more is on its way.
    QTest::qWait(dialPause + 100);
    QCOMPARE(Events(*console), expected);
  }

  void onlyALoggedInConsoleDrivesTheCall() {
    FakeConsole stranger(Sim->Port());
    QTRY_VERIFY_WITH_TIMEOUT(Sim->IsConnected(), kWait);
    stranger.Send(HookPacket(true));
    QTRY_COMPARE_WITH_TIMEOUT(Sim->Received().size(), 1, kWait);
    QCOMPARE(Sim->CallStateOf(), quint8(1));
    // The far end still reaches the extension, but nothing goes to a console
    // that has not logged in.
    QVERIFY(Sim->RingConsole(u"8002"_s));
    QCOMPARE(Sim->CallStateOf(), quint8(2));
    QVERIFY(Sim->GiveUpRinging());
    QTest::qWait(50);
    QVERIFY(stranger.Got.isEmpty());

    // The extension stays off hook when the console goes; the next login sees it.
    auto first = LoggedIn();
    Do(*first, u"offhook"_s);
    QTRY_COMPARE_WITH_TIMEOUT(Events(*first), (QStringList{u"1"_s, u"4"_s}), kWait);
    Sim->DropConnection();
    auto second = LoggedIn();
    QTRY_COMPARE_WITH_TIMEOUT(Events(*second), QStringList{u"4"_s}, kWait);
    QCOMPARE(HeaderOf(second->Packets().last()).Id, Sim->SessionId());
  }

  void scriptDrivesTheFarEnd() {
    Sim->SetAnswerAfter(-1);
    auto console = LoggedIn();
    QSignalSpy finished(Sim.get(), &ExchangeSim::scriptFinished);
    QSignalSpy changes(Sim.get(), &ExchangeSim::callStateChanged);
    QString error;
    QVERIFY2(Sim->RunScriptText(u"at 30 callback 8005\n"
                                "at 0  ring 8002 4   # rings before the user info: file order\n"
                                "at 20 giveup\n"
                                "at 0  userinfo 8001 前台 5003 1 *72 *73\n"_s,
                                &error),
             qPrintable(error));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 1, kWait);
    Do(*console, u"offhook"_s);
    QVERIFY2(Sim->RunScriptText(u"at 0 answer\nat 10 hangup\n"_s, &error), qPrintable(error));
    QTRY_COMPARE_WITH_TIMEOUT(finished.size(), 2, kWait);
    QTRY_COMPARE_WITH_TIMEOUT(
        Events(*console),
        (QStringList{u"1"_s, u"2 8002 line 4"_s, u"userinfo 8001 前台 5003 1 *72 *73"_s, u"1"_s,
                     u"missed 8002"_s, u"3 8005"_s, u"5 8005 out"_s, u"7 8005 out"_s,
                     u"6 8005 out"_s}),
        kWait);
    // One announcement per change; the answer to the login's query is not one.
    QCOMPARE(changes.size(), 6);
  }
};

QTEST_GUILESS_MAIN(SimCallsTest)
#include "tst_sim_calls.moc"
