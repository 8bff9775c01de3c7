// Packets against byte vectors worked out by hand from the packet tables.
#include "common/PacketCapture.h"
#include "common/TestHome.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QByteArray Hex(const char *text) {
  return QByteArray::fromHex(text);
}
} // namespace

class PacketsTest : public QObject {
  Q_OBJECT

private slots:
  void init() {
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
    SysParam() = TNetPhone_SysParam{};
  }
  void cleanup() { SetPacketOutlet(nullptr, nullptr); }

  void checksum_data() {
    QTest::addColumn<QByteArray>("packet"); // checksum field zero
    QTest::addColumn<int>("checksum");
    // A 12-byte packet: only its six header bytes from offset 6 count,
    // 01+07+0C = 0x14, so the byte is 0x100-0x14.
    QTest::newRow("12 bytes") << Hex("121910390000"
                                     "0100"
                                     "0700"
                                     "0c00")
                              << 0xEC;
    // F4+0C = 0x100: the sum is 0 and so is the checksum (never 0x100).
    QTest::newRow("sum zero") << Hex("121910390000"
                                     "f400"
                                     "0000"
                                     "0c00")
                              << 0x00;
    // The magic never counts, whatever it holds.
    QTest::newRow("magic ignored") << Hex("ffffffff0000"
                                          "0100"
                                          "0700"
                                          "0c00")
                                   << 0xEC;
  }
  void checksum() {
    QFETCH(QByteArray, packet);
    QFETCH(int, checksum);
    QCOMPARE(int(PacketChecksum(packet.constData(), int(packet.size()))), checksum);
  }

  void sendWritesMagicAndChecksum() {
    const QByteArray bare = Hex("000000000000"
                                "0100"
                                "0700"
                                "0c00");
    sendPacket2Socket(bare.constData(), 12, 1);
    QCOMPARE(CapturedPackets.size(), 1);
    QCOMPARE(CapturedPackets[0], Hex("12191039ec00"
                                     "0100"
                                     "0700"
                                     "0c00"));
  }

  // Login 8001 / 1234: 10 00 | 00 00 | 40 00 | "8001" | "1234" | "02"
  // sum 0x10+0x40+0xC9+0xCA+0x62 = 0x245 -> 0x45 -> checksum 0xBB.
  void loginPacket() {
    SysParam().MyID = 65535; // a login goes out without a session
    SendLogin(u"8001"_s, u"1234"_s);
    QCOMPARE(CapturedPackets.size(), 1);
    QByteArray expected(64, '\0');
    expected.replace(0, 12,
                     Hex("12191039bb00"
                         "1000"
                         "0000"
                         "4000"));
    expected.replace(12, 4, "8001");
    expected.replace(33, 4, "1234");
    expected.replace(54, 2, "02");
    QCOMPARE(CapturedPackets[0], expected);
  }

  void loginKeepsItsNulsWithLongAndChineseText() {
    const QByteArray p = BuildLoginPacket(u"12345678901234567890"_s, u"密码"_s);
    QCOMPARE(p.size(), 64);
    QCOMPARE(p.mid(12, 20), QByteArray("12345678901234567890"));
    QCOMPARE(p[32], '\0');                     // 20 characters fill the field; its NUL stays
    QCOMPARE(p.mid(33, 5), Hex("c3dcc2eb00")); // GBK
    const QByteArray cut = BuildLoginPacket(u"123456789012345678901234"_s, QString());
    QCOMPARE(cut.mid(12, 21), QByteArray("12345678901234567890") + '\0');
    QCOMPARE(cut[33], '\0');
  }

  // PhoneCommand 133, session 5: 14 00 05 00 10 00 85 00 00 00, sum 0xAE.
  void phoneCommand() {
    SysParam().MyID = 5;
    SendPhoneCommand(133);
    QCOMPARE(CapturedPackets, QList<QByteArray>{Hex("1219103952001400050010008500"
                                                    "0000")});
  }

  // DialDigits "1*0#" = 1, 11, 10, 12; sum 0x12+0x05+0x24+0x04+0x22 = 0x61.
  void dialDigits() {
    SysParam().MyID = 5;
    SendDialDigits(QByteArray("\x01\x0b\x0a\x0c", 4));
    QByteArray expected(36, '\0');
    expected.replace(0, 17,
                     Hex("121910399f00"
                         "1200"
                         "0500"
                         "2400"
                         "04"
                         "010b0a0c"));
    QCOMPARE(CapturedPackets, QList<QByteArray>{expected});
  }

  void dialDigitsKeepTwentyThree() {
    SysParam().MyID = 5;
    SendDialDigits(QByteArray(30, '\x01'));
    QCOMPARE(int(CapturedPackets[0][12]), 23);
    QCOMPARE(CapturedPackets[0].size(), 36);
  }

  // RecordServerQuery leaves its length 0: 25 00 05 00 00 00 10 00, sum 0x3A.
  void recordServerQueryHasNoLength() {
    SysParam().MyID = 5;
    SendRecordServerQuery();
    QCOMPARE(CapturedPackets, QList<QByteArray>{Hex("12191039c600"
                                                    "2500"
                                                    "0500"
                                                    "0000"
                                                    "1000"
                                                    "0000"
                                                    "00000000")});
  }

  void passThroughSetsIdAndLength_data() {
    QTest::addColumn<int>("size");
    QTest::newRow("16") << 16;
    QTest::newRow("20") << 20;
    QTest::newRow("220") << 220;
  }
  void passThroughSetsIdAndLength() {
    QFETCH(int, size);
    SysParam().MyID = 0x0102;
    QByteArray record(size, '\0');
    PutU16(record.data(), 6, 24);
    record[12] = 7;
    if (size == 16)
      SendPacket16(record.data());
    else if (size == 20)
      SendPacket20(record.data());
    else
      SendPacket220(record.data());
    QCOMPARE(CapturedPackets.size(), 1);
    const PacketHeader h = PacketHeader::Read(CapturedPackets[0].constData());
    QCOMPARE(h.ID, quint16(0x0102));
    QCOMPARE(int(h.Len), size);
    QCOMPARE(h.Magic, kPacketMagic);
    QCOMPARE(int(PacketChecksum(CapturedPackets[0].constData(), size)), int(h.Checksum));
  }

  // Without a session nothing but a login leaves the console.
  void noSessionSendsNothing() {
    SysParam().MyID = 65535;
    char record[220] = {};
    SendPhoneCommand(131);
    SendDialDigits("\x01");
    SendRecordServerQuery();
    SendPacket16(record);
    SendPacket20(record);
    SendPacket220(record);
    QVERIFY(CapturedPackets.isEmpty());
  }

  void callStateRecord_data() {
    QTest::addColumn<QByteArray>("caller"); // 21 bytes at offset 17
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << QByteArray("8002") << u"8002"_s;
    QTest::newRow("no NUL in field") << QByteArray(21, '9') << QString(21, u'9');
    QTest::newRow("quote and GBK") << QByteArray("O'\xD5\xC5") << u"O'张"_s;
  }
  void callStateRecord() {
    QFETCH(QByteArray, caller);
    QFETCH(QString, expected);
    QByteArray work(kWorkBufferSize, '\0');
    work[12] = 2;
    PutU16(work.data(), 14, quint16(-3));
    work.replace(17, caller.size(), caller);
    work.replace(38, 4, "8001");
    work[59] = 1;
    PutU16(work.data(), 64, 16);
    const TCallStateRecord r = TCallStateRecord::Parse(work.constData());
    QCOMPARE(int(r.State), 2);
    QCOMPARE(int(r.Line), -3);
    QCOMPARE(r.Caller, expected);
    QCOMPARE(r.Called, u"8001"_s); // a full field ends at its own end
    QCOMPARE(int(r.LogAsDialOut), 1);
    QCOMPARE(int(r.Rights), 16);
  }
};

QTEST_GUILESS_MAIN(PacketsTest)
#include "tst_packets.moc"
