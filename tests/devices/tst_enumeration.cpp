// A login enumerates the simulated exchange's devices in lock step, prunes the
// absent, fetches the class names and asks for the recording server.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "link/ExchangeLink.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/DeviceEvents.h"
#include "devices/PhoneBoard.h"
#include "support/Settings.h"

#include "ExchangeSim.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

class EnumerationTest : public QObject {
  Q_OBJECT

private slots:
  void loginEnumeratesEveryDevice() {
    TestHome home;
    RecordingShell shell;
    SysConfig().TypeVisible.fill(true);
    SysParam() = TNetPhone_SysParam{};
    ExchangeSim sim;
    sim.AddUser(u"8001"_s, u"1234"_s);
    sim.SetPulsePeriod(0);
    sim.AddDevices(0, 40, 1, u"8000"_s);
    sim.AddDevice(100, 5, u"1"_s);
    sim.AddDevice(101, 22, u"2"_s);
    sim.AddDevice(102, 12, u"3"_s);
    sim.AddDevice(103, 6, u"4"_s);
    sim.SetServiceClassNames({u"Guest"_s, u"Staff"_s, u"Barred"_s});
    QVERIFY(sim.Listen());

    TCallControlDev table;
    table.ParentWidth = 755;
    table.AddPanel(500); // from an old layout: the exchange has no such device
    TNetModule net;
    TDeviceEvents events(table, net);
    TPhoneBoard board(table, net);
    TExchangeLink link;
    link.SetPacketHandler([&](const char *p, int len) {
      QByteArray work(2048, '\0');
      work.replace(0, qMin(len, 2048), QByteArray(p, qMin(len, 2048)));
      const PacketHeader h = PacketHeader::Read(work.constData());
      if (h.TypeCode == 16)
        SysParam().MyID = h.ID;
      else if (h.TypeCode == 34)
        events.processPacketFromSocket_OtherTIS(work.constData());
      else if (h.TypeCode == 36)
        events.processPacketFromSocket_SrvClassName(work.constData());
    });
    link.StartWorker();
    link.Winsock_TCP().RemoteHost = u"127.0.0.1"_s;
    link.Winsock_TCP().RemotePort = sim.Port();
    link.Winsock_TCP().Connect();
    QTRY_VERIFY(link.Winsock_TCP().State() == 7);
    SendLogin(u"8001"_s, u"1234"_s);
    QTRY_VERIFY(SysParam().MyID != 65535);

    QSignalSpy done(&events, &TDeviceEvents::enumerationFinished);
    board.RefreshPhones_tefxButtonClick();
    QTRY_COMPARE_WITH_TIMEOUT(done.size(), 1, 20000);
    // Every device in ID order; the old one pruned.
    std::vector<int> expected;
    for (int id = 0; id < 40; ++id)
      expected.push_back(id);
    for (int id : {100, 101, 102, 103})
      expected.push_back(id);
    QCOMPARE(table.Ordered(), expected);
    QCOMPARE(table.Record(39).Panel.TelNosLabel, u"[8039]"_s);
    QCOMPARE(table.Record(101).Panel.TelNosLabel, u"SIPT[2]"_s);
    QVERIFY(events.Timer_ExcuteAction.isActive());
    // Then the class names one by one, and at their end the recording server.
    QTRY_COMPARE(events.SrvClassNames.rowCount(), 3);
    QCOMPARE(events.SrvClassNames.stringList().first(), u"1:Guest"_s);
    const auto askedForRecorder = [&sim] {
      const QList<SimPacket> received = sim.Received();
      return std::any_of(received.begin(), received.end(),
                         [](const SimPacket &p) { return p.TypeCode == 37; });
    };
    QTRY_VERIFY(askedForRecorder());
  }
};

QTEST_GUILESS_MAIN(EnumerationTest)
#include "tst_enumeration.moc"
