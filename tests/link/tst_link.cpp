// The receive path over a real loopback connection to the simulated exchange:
// what arrives, in which pieces, and what the console does with each.
#include "common/TestHome.h"
#include "link/ExchangeLink.h"
#include "link/Public_Unit.h"
#include "support/Log.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace {
struct Seen {
  int Type;
  int Id;
  int Len;
  QByteArray Bytes; // what the handler could read: Len bytes, or 64 if Len is larger
};

QByteArray Pulse(quint16 id) {
  return ExchangeSim::BuildPacket(1, id, {});
}

bool LogHas(const QString &text) {
  for (const QString &line : LogMemo().Lines())
    if (line.contains(text))
      return true;
  return false;
}

// A console link connected to a fresh simulated exchange, recording every packet.
struct Bench {
  TestHome home;
  ExchangeSim sim;
  TExchangeLink link;
  QList<Seen> seen;
  int throwOnId = -1;

  Bench() {
    SysConfig().Debug = 1;
    link.SetPacketHandler([this](const char *p, int len) {
      const PacketHeader h = PacketHeader::Read(p);
      seen.append({h.TypeCode, h.ID, len, QByteArray(p, qBound(12, len, 64))});
      if (h.ID == throwOnId)
        throw std::runtime_error("handler fault");
    });
  }
  bool Connect() {
    if (!sim.Listen())
      return false;
    link.StartWorker();
    link.Winsock_TCP().RemoteHost = u"127.0.0.1"_s;
    link.Winsock_TCP().RemotePort = sim.Port();
    link.Winsock_TCP().Connect();
    return QTest::qWaitFor([this] { return link.Winsock_TCP().State() == 7 && sim.IsConnected(); },
                           10000);
  }
};
} // namespace

class LinkTest : public QObject {
  Q_OBJECT

private slots:
  void twoPacketsInOneReadBothInOrder() {
    Bench b;
    QVERIFY(b.Connect());
    b.sim.SendRaw(Pulse(1) + Pulse(2));
    QTRY_COMPARE(b.seen.size(), 2);
    QCOMPARE(b.seen[0].Id, 1);
    QCOMPARE(b.seen[1].Id, 2);
    QVERIFY(LogHas(u"<-DataLen:24"_s));
    QVERIFY(LogHas(u"Length:[24] :18 25 16 57 "_s)); // the byte trace
  }

  // A packet the network split reaches the walk whole.
  void splitPacketIsNotLost() {
    Bench b;
    QVERIFY(b.Connect());
    const QByteArray p = Pulse(7);
    b.sim.SendRaw(p.left(5));
    QTest::qWait(30);
    b.sim.SendRaw(p.mid(5));
    QTRY_COMPARE(b.seen.size(), 1);
    QCOMPARE(b.seen[0].Id, 7);
  }

  void shortReadIsEnqueuedAndIgnored() {
    Bench b;
    QVERIFY(b.Connect());
    b.sim.SendRaw("abc");
    QTRY_VERIFY(LogHas(u"<-DataLen:3"_s));
    QVERIFY(b.seen.isEmpty());
    b.sim.SendRaw(Pulse(9)); // and the link goes on
    QTRY_COMPARE(b.seen.size(), 1);
  }

  // The stream ends inside a packet: after the socket's hold the tail goes on as
  // it is, shorter than a header. Only its own bytes are looked at (a sanitizer
  // build sees any read past them), and the link goes on.
  void shortTailAfterAPacket_data() {
    QTest::addColumn<int>("tail");
    QTest::addColumn<bool>("goodMagic");
    for (int n : {4, 7, 11}) {
      QTest::addRow("%d bytes, magic", n) << n << true;
      QTest::addRow("%d bytes, no magic", n) << n << false;
    }
  }
  void shortTailAfterAPacket() {
    QFETCH(int, tail);
    QFETCH(bool, goodMagic);
    Bench b;
    QVERIFY(b.Connect());
    QByteArray cut = Pulse(2).left(tail);
    if (!goodMagic)
      cut[0] = 0x13;
    b.sim.SendRaw(Pulse(1) + cut);
    QTRY_COMPARE(b.seen.size(), 1);
    const QString dropped = u"数据包异常，数据被篡改，忽略处理!"_s;
    if (goodMagic)
      QTRY_VERIFY(LogHas(u"<-DataLen:%1"_s.arg(tail)));
    else
      QTRY_VERIFY(LogHas(dropped));
    b.sim.SendRaw(Pulse(3));
    QTRY_COMPARE(b.seen.size(), 2);
    QCOMPARE(b.seen[1].Id, 3);
  }

  void badMagicIsDroppedBeforeTheWalk() {
    Bench b;
    QVERIFY(b.Connect());
    QByteArray p = Pulse(3);
    p[0] = 0x13;
    b.sim.SendRaw(p);
    QTRY_VERIFY(LogHas(u"数据包异常，数据被篡改，忽略处理!"_s));
    QVERIFY(!LogHas(u"<-DataLen"_s));
    b.sim.SendRaw(Pulse(4));
    QTRY_COMPARE(b.seen.size(), 1);
    QCOMPARE(b.seen[0].Id, 4);
  }

  // More than a read may hold: refused with its log line, and dropped so that
  // the link can't stall on it.
  void overlongReadIsRefused() {
    Bench b;
    QVERIFY(b.Connect());
    QByteArray big = ExchangeSim::BuildPacket(1, 5, QByteArray(10241 - 12, '\x01'), 0x7FFF);
    b.sim.SendRaw(big);
    QTRY_VERIFY(LogHas(u"数据包超长!!! 10241 字节"_s));
    QVERIFY(b.seen.isEmpty());
    b.sim.SendRaw(Pulse(6));
    QTRY_COMPARE(b.seen.size(), 1);
    QCOMPARE(b.seen[0].Id, 6);
  }

  void blockAboveTheWalkLimitIsNotWalked() {
    Bench b;
    QVERIFY(b.Connect());
    b.sim.SendRaw(ExchangeSim::BuildPacket(1, 5, QByteArray(10235 - 12, '\0')));
    QTRY_VERIFY(LogHas(u"<-DataLen:10235"_s));
    QTest::qWait(50);
    QVERIFY(b.seen.isEmpty());
  }

  // A length that can't move the walk forward ends its block; the next block is fine.
  void lengthBelowAHeaderEndsTheBlock_data() {
    QTest::addColumn<int>("len");
    QTest::newRow("0") << 0;
    QTest::newRow("11") << 11;
    QTest::newRow("negative") << -12;
  }
  void lengthBelowAHeaderEndsTheBlock() {
    QFETCH(int, len);
    Bench b;
    QVERIFY(b.Connect());
    QByteArray bad = ExchangeSim::BuildPacket(1, 2, QByteArray(20, '\0'));
    PutU16(bad.data(), 10, quint16(len));
    b.sim.SendRaw(Pulse(1) + bad + Pulse(3));
    // The good first packet goes on its own; the rest is one block the walk gives up on.
    QTRY_VERIFY(LogHas(u"<-DataLen:44"_s));
    b.sim.SendRaw(Pulse(4));
    QTRY_COMPARE(b.seen.size(), 2);
    QCOMPARE(b.seen[0].Id, 1);
    QCOMPARE(b.seen[1].Id, 4);
  }

  // A length beyond what came gives the handler the bytes there are and zeros.
  void lengthBeyondTheBlockReadsZeros() {
    Bench b;
    QVERIFY(b.Connect());
    QByteArray cut = ExchangeSim::BuildPacket(17, 2, QByteArray(30, '\x07'), 100).left(42);
    b.sim.SendRaw(Pulse(1) + cut);
    QTRY_COMPARE(b.seen.size(), 2);
    QCOMPARE(b.seen[1].Len, 100);
    QCOMPARE(b.seen[1].Bytes.mid(12, 30), QByteArray(30, '\x07'));
    QCOMPARE(b.seen[1].Bytes.mid(42), QByteArray(22, '\0'));
  }

  // A handler that fails ends its own packet only; the worker goes on.
  void faultInAHandlerIsContained() {
    Bench b;
    QVERIFY(b.Connect());
    b.throwOnId = 1;
    b.sim.SendRaw(Pulse(1) + Pulse(2));
    QTRY_COMPARE(b.seen.size(), 2);
    QVERIFY(LogHas(u"Packet handler failed: handler fault"_s));
    b.sim.SendRaw(Pulse(3));
    QTRY_COMPARE(b.seen.size(), 3);
  }

  void burstArrivesWhole() {
    Bench b;
    SysConfig().Debug = 0;
    QVERIFY(b.Connect());
    b.sim.SendBurst(Pulse(1), 30000);
    QTRY_COMPARE_WITH_TIMEOUT(b.seen.size(), 30000, 30000);
  }

  void exchangeClosingIsReported() {
    Bench b;
    QVERIFY(b.Connect());
    bool closed = false;
    QObject::connect(&b.link.Winsock_TCP(), &TExchangeSocket::OnClose,
                     [&closed] { closed = true; });
    b.sim.DropConnection();
    QTRY_VERIFY(closed);
    QCOMPARE(b.link.Winsock_TCP().State(), 0);
    // Sending now drops the bytes: they must not wait and go out on the next
    // connection, where the exchange would take them for new.
    const QByteArray stale = ExchangeSim::BuildPacket(20, 1, QByteArray(4, '\0'));
    b.link.SendBytes(stale.constData(), int(stale.size()));
    b.sim.ClearReceived();
    b.link.Winsock_TCP().Connect();
    QTRY_VERIFY(b.sim.IsConnected());
    const QByteArray fresh = ExchangeSim::BuildPacket(16, 2, QByteArray(52, '\0'));
    b.link.SendBytes(fresh.constData(), int(fresh.size()));
    QTRY_COMPARE(b.sim.Received().size(), 1);
    QCOMPARE(b.sim.Received().first().TypeCode, qint16(16));
  }

  void ourOwnCloseIsNotReported() {
    Bench b;
    QVERIFY(b.Connect());
    bool closed = false;
    QObject::connect(&b.link.Winsock_TCP(), &TExchangeSocket::OnClose,
                     [&closed] { closed = true; });
    b.link.Winsock_TCP().Close();
    QTest::qWait(50);
    QVERIFY(!closed);
    QTRY_VERIFY(!b.sim.IsConnected());
  }
};

QTEST_GUILESS_MAIN(LinkTest)
#include "tst_link.moc"
