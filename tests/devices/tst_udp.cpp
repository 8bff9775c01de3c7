// The UDP event channel over real sockets on loopback: who may send, how much,
// what reaches the device table's handler and what lands in the store.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "link/Public_Unit.h"
#include "devices/UDPServerMain.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"

#include <QSignalSpy>
#include <QSqlDatabase>
#include <QTest>
#include <QUdpSocket>

using namespace Qt::StringLiterals;

namespace {
bool LogHas(const QString &text) {
  for (const QString &line : LogMemo().Lines())
    if (line.contains(text))
      return true;
  return false;
}

// A datagram of `size` bytes: the header, then the fields the caller puts in.
QByteArray Datagram(int size, quint16 type, qint16 id, quint16 len, quint16 subCode) {
  QByteArray d(qMax(size, 16), '\0');
  PutU16(d.data(), 6, type);
  PutU16(d.data(), 8, quint16(id));
  PutU16(d.data(), 10, len);
  PutU16(d.data(), 12, subCode);
  d.resize(size);
  return d;
}

QByteArray Status(qint16 id, int size = 108, quint16 len = 108) {
  QByteArray d = Datagram(qMax(size, 108), 24, id, len, 136);
  PutU16(d.data(), 14, 1);      // analogue extension
  PutU16(d.data(), 16, 3);      // status
  PutU16(d.data(), 22, 0x1801); // MixData
  PutText(d.data(), 42, 20, u"202501010700"_s);
  PutText(d.data(), 62, 20, u"Room 301"_s);
  for (int i = 108; i < d.size(); ++i)
    d[i] = char(0x5A); // bytes beyond the record must never reach it
  d.resize(size);
  return d;
}

struct Channel {
  TestHome home;
  RecordingShell shell;
  TUDPMainForm form{0};
  QUdpSocket sender;
  QList<QByteArray> records;
  QList<QPair<int, int>> refreshed; // id, MixData
  int finds = 0;

  Channel() {
    SysConfig().Host = u"127.0.0.1"_s;
    SysConfig().Debug = 1;
    form.DeviceStatusHandler = [this](const char *record, int length) {
      records.append(QByteArray(record, length));
    };
    form.RefreshMixShow = [this](int id, quint16 mixData) { refreshed.append({id, mixData}); };
    form.SpeedButton_FindClick = [this] { ++finds; };
    if (!form.FormCreate())
      qFatal("UDP listener can't bind");
    if (!sender.bind(QHostAddress(u"127.0.0.1"_s), 0))
      qFatal("sender can't bind");
  }
  ~Channel() {
    Sys_DM().mainADOQuery.Close();
    Sys_DM().ADOQuery_Temp.Close();
    QSqlDatabase::removeDatabase(QString::fromUtf16(TSys_DM::kConnectionName));
  }
  void Send(const QByteArray &d, QUdpSocket *from = nullptr) {
    (from ? from : &sender)->writeDatagram(d, QHostAddress(u"127.0.0.1"_s), form.LocalPort());
  }
};
} // namespace

class UdpTest : public QObject {
  Q_OBJECT

private slots:
  // An exchange's restart pushes a status for every device at once, while the
  // console is busy elsewhere: the kernel must hold them all until it reads.
  void restartBurstArrivesWhole() {
    Channel c;
    constexpr int kBurst = 3072;
    QVERIFY(LogHas(u"receive buffer %1 bytes"_s.arg(c.form.ReceiveBufferBytes())));
    // What one small datagram takes of a buffer on loopback, generously.
    QUdpSocket probe;
    probe.bind(QHostAddress(u"127.0.0.1"_s), 0);
    probe.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption,
                          TUDPMainForm::kReceiveBufferBytes);
    if (probe.socketOption(QAbstractSocket::ReceiveBufferSizeSocketOption).toInt() < kBurst * 2048)
      QSKIP("the system grants too small a UDP receive buffer for this burst");
    for (int id = 0; id < kBurst; ++id)
      c.Send(Status(qint16(id)));
    QTRY_COMPARE_WITH_TIMEOUT(c.records.size(), kBurst, 20000);
  }

  void statusRecordReachesTheHandler_data() {
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("len");
    QTest::addColumn<int>("kept"); // bytes of the datagram in the record; zeros after

    QTest::newRow("whole record") << 108 << 108 << 108;
    QTest::newRow("short datagram is zero-filled") << 40 << 108 << 40;
    QTest::newRow("length field shorter than the datagram") << 108 << 30 << 30;
    QTest::newRow("200 bytes, length field past the record") << 200 << 200 << 108;
    QTest::newRow("length field far past everything") << 64 << 65535 << 64;
  }
  void statusRecordReachesTheHandler() {
    QFETCH(int, size);
    QFETCH(int, len);
    QFETCH(int, kept);
    Channel c;
    const QByteArray d = Status(7, size, quint16(len));
    c.Send(d);
    QTRY_COMPARE_WITH_TIMEOUT(c.records.size(), 1, 10000);

    QByteArray expected = d.left(kept);
    expected.append(QByteArray(108 - kept, '\0'));
    QCOMPARE(c.records[0], expected);
    // The small icon is asked again with the MixData the record holds.
    const int mix = kept >= 24 ? 0x1801 : 0;
    QCOMPARE(c.refreshed, (QList<QPair<int, int>>{{7, mix}}));
    QVERIFY(LogHas(u"收到UDP!UdpServerDataReceived,Id:7 长度:%1"_s.arg(size)));
    if (kept >= 62)
      QVERIFY(LogHas(u"UDP:ID:7 Status:3 moringCall:202501010700  mixData:$1801 "_s));
  }

  void unwantedDatagramsAreDropped_data() {
    QTest::addColumn<QByteArray>("datagram");
    QTest::addColumn<QString>("logLine"); // empty: the channel says nothing

    QTest::newRow("201 bytes") << Status(9, 201, 108) << u"201 bytes dropped"_s;
    QTest::newRow("ID past the table") << Status(3072) << u"device ID 3072 outside"_s;
    QTest::newRow("negative ID") << Status(-1) << u"device ID -1 outside"_s;
    QTest::newRow("status sub-code 137") << Datagram(108, 24, 9, 108, 137) << QString();
    QTest::newRow("call record sub-code 2") << Datagram(64, 41, 9, 64, 2) << QString();
    QTest::newRow("empty") << QByteArray() << QString();
  }
  void unwantedDatagramsAreDropped() {
    QFETCH(QByteArray, datagram);
    QFETCH(QString, logLine);
    Channel c;
    c.Send(datagram);
    // Loopback keeps the order: once the good one is in, the bad one was seen.
    c.Send(Status(5));
    QTRY_COMPARE_WITH_TIMEOUT(c.refreshed.size(), 1, 10000);
    QCOMPARE(c.records.size(), 1);
    QCOMPARE(c.refreshed[0].first, 5);
    QCOMPARE(c.finds, 0);
    if (!logLine.isEmpty())
      QVERIFY(LogHas(logLine));
  }

  void otherSendersAreIgnored() {
    Channel c;
    QUdpSocket stranger;
    if (!stranger.bind(QHostAddress(u"127.0.0.2"_s), 0))
      QSKIP("this machine can't send from 127.0.0.2");
    c.Send(Status(8), &stranger);
    c.Send(Status(5));
    QTRY_COMPARE_WITH_TIMEOUT(c.refreshed.size(), 1, 10000);
    QCOMPARE(c.refreshed[0].first, 5);
    QVERIFY(!LogHas(u"Id:8"_s)); // strangers leave no trace in the log
  }

  void hostIsComparedAsText_data() {
    QTest::addColumn<QString>("host");
    QTest::addColumn<bool>("taken");
    QTest::newRow("same text") << u"192.168.1.10"_s << true;
    QTest::newRow("a name for it") << u"pbx.local"_s << false;
    QTest::newRow("trailing space") << u"192.168.1.10 "_s << false;
    QTest::newRow("empty setting") << QString() << false;
  }
  void hostIsComparedAsText() {
    QFETCH(QString, host);
    QFETCH(bool, taken);
    Channel c;
    SysConfig().Host = host;
    c.form.HandleDatagram(Status(4), u"192.168.1.10"_s);
    QCOMPARE(c.records.size(), taken ? 1 : 0);
    // The dual-stack listener reports IPv4 senders as mapped addresses.
    QCOMPARE(TUDPMainForm::SenderText(QHostAddress(u"::ffff:192.168.1.10"_s)), u"192.168.1.10"_s);
  }

  void callRecordLandsInTheStore_data() {
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("called");
    QTest::addColumn<int>("ioFlag");
    QTest::addColumn<int>("recType");
    QTest::newRow("whole record") << 64 << u"13900001111"_s << 1 << 2;
    QTest::newRow("cut after the associated type") << 40 << QString() << 0 << 0;
  }
  void callRecordLandsInTheStore() {
    QFETCH(int, size);
    QFETCH(QString, called);
    QFETCH(int, ioFlag);
    QFETCH(int, recType);
    Channel c;
    Sys_DM().DataModuleCreate();
    const QDateTime arrival(QDate(2026, 3, 14), QTime(15, 9, 26));
    SetClock([arrival] { return arrival; });

    QByteArray d = Datagram(64, 41, 12, 64, 1);
    PutText(d.data(), 16, 22, u"8001"_s);
    PutU16(d.data(), 38, 3);
    PutText(d.data(), 40, 20, u"13900001111"_s);
    PutU16(d.data(), 60, 1);
    PutU16(d.data(), 62, 2);
    c.Send(d.left(size));
    QTRY_COMPARE_WITH_TIMEOUT(c.finds, 1, 10000);

    TADOQuery q;
    Sys_DM().OpenSQL(u"select * from PBXConRecords"_s, q);
    QCOMPARE(q.RecordCount(), 1);
    QCOMPARE(q.AsString(u"Caller"_s), u"8001"_s);
    QCOMPARE(q.AsInteger(u"assType"_s), 3);
    QCOMPARE(q.AsString(u"Called"_s), called);
    QCOMPARE(q.AsString(u"assPhone"_s), QString());
    QCOMPARE(q.AsInteger(u"IOFlag"_s), ioFlag);
    QCOMPARE(q.AsInteger(u"RecType"_s), recType);
    QCOMPARE(q.AsDateTime(u"startTime"_s).ToQDateTime(), arrival);
    QVERIFY(q.AsDateTime(u"stopTime"_s).IsZero());
    QVERIFY(LogHas(u"Event_PBX_ConRecord->ID:12 Extnum:8001 assPhone:%1 "_s.arg(called)));
    QVERIFY(c.records.isEmpty());
  }

  // A record the store can't take keeps its place in the queue; the channel
  // goes on and the operator hears of it once.
  void storeErrorKeepsTheRecordAndTheChannel() {
    Channel c;
    Sys_DM().DataModuleCreate();
    Sys_DM().Execute(u"drop table PBXConRecords"_s);
    QByteArray d = Datagram(64, 41, 12, 64, 1);
    PutText(d.data(), 16, 22, u"8001"_s);
    c.Send(d);
    c.Send(Status(6));
    QTRY_COMPARE_WITH_TIMEOUT(c.records.size(), 1, 10000);
    QTRY_COMPARE(c.shell.Messages.size(), 1);
    QCOMPARE(c.shell.Messages[0].Kind, MessageKind::Warning);
    QCOMPARE(Sys_DM().PendingWrites().Waiting(), 1);
    Sys_DM().DataModuleCreate(); // the next start makes the table again
    QTRY_COMPARE(Sys_DM().PendingWrites().Waiting(), 0);
  }

  void takenPortEndsTheProgram() {
    TestHome home;
    RecordingShell shell;
    // A holder without address reuse keeps the port to itself; reuse on our side
    // only helps against ports left behind by a console that has ended.
    QUdpSocket holder;
    QVERIFY(holder.bind(QHostAddress::Any, 0, QAbstractSocket::DontShareAddress));
    TUDPMainForm form(holder.localPort());
    QSignalSpy fatal(&form, &TUDPMainForm::fatalBindError);
    QVERIFY(!form.FormCreate());
    const QString text = u"警告:无法启动UDP网络服务,请检查您的网络配置!"_s;
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Kind, MessageKind::Error);
    QCOMPARE(shell.Messages[0].Text, text);
    QCOMPARE(fatal.size(), 1);
    QCOMPARE(fatal[0][0].toString(), text);
  }
};

QTEST_GUILESS_MAIN(UdpTest)
#include "tst_udp.moc"
