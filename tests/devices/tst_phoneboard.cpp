// The board's refresh, its layout file (order and legend colours), the wheel and
// the drop.
#include "common/PacketCapture.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/PhoneBoard.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/TextCodec.h"
#include "support/TextFile.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
struct Board {
  TestHome home;
  TCallControlDev table;
  TNetModule net;
  TPhoneBoard board{table, net};
  Board() {
    table.ParentWidth = 755;
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 2;
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
  }
  ~Board() { SetPacketOutlet(nullptr, nullptr); }
  void Layout(const QByteArray &xml) const { home.Write(u"ini/PhonePanels.xml"_s, xml); }
};

const QByteArray kColours =
    " Color_IDLE=\"1\" Color_Connect=\"7\" Color_CalledRing=\"2\" Color_BackCallRing=\"3\""
    " Color_Dial=\"4\" Color_Oncall=\"5\" Color_Hurryup=\"6\" Color_OutService=\"0\" "
    "Color_Other=\"8\"";
} // namespace

class PhoneBoardTest : public QObject {
  Q_OBJECT

private slots:
  void refreshStartsFromIdZero() {
    Board b;
    b.table.PortsID_ComboBox = {u"4"_s};
    QSignalSpy grid(&b.board, &TPhoneBoard::gridClearRequested);
    b.board.RefreshPhones_tefxButtonClick();
    QVERIFY(!b.board.RefrshPhones_tefxButton_Enabled);
    QVERIFY(b.table.PortsID_ComboBox.isEmpty());
    QCOMPARE(grid.size(), 1);
    QCOMPARE(CapturedPackets.size(), 1);
    QCOMPARE(GetI16(CapturedPackets[0].constData(), 6), qint16(34));
    QCOMPARE(GetU16(CapturedPackets[0].constData(), 16), quint16(0));
  }

  void noSaveWithoutALoadInThisRun() {
    Board b;
    b.Layout("<PhonePanels>old</PhonePanels>");
    b.table.AddPanel(1);
    b.board.savePhones_tefxButtonClick();
    QCOMPARE(b.home.Read(u"ini/PhonePanels.xml"_s), QByteArray("<PhonePanels>old</PhonePanels>"));
  }

  // The file's order comes back; its places are not read, the layout rules give them.
  void loadRestoresOrderAndColoursAndSaveWritesThemBack() {
    Board b;
    b.Layout("<?xml version=\"1.0\" encoding=\"GB2312\"?><PhonePanels><PhonePanelsGrp1" + kColours +
             "><PhonePanel ID=\"9\" left=\"500\" Top=\"500\"/><PhonePanel ID=\"2\" left=\"1\" "
             "Top=\"1\"/><PhonePanel ID=\"30\"/></PhonePanelsGrp1></PhonePanels>");
    QVERIFY(b.board.LoadPhones_tefxButtonClick());
    QVERIFY(b.table.LayoutLoaded);
    QCOMPARE(b.table.Ordered(), (std::vector<int>{9, 2, 30}));
    QCOMPARE(b.table.Record(9).Left, 5);
    QCOMPARE(b.table.Record(2).Left, 96);
    QCOMPARE(b.table.Colours[1], TColor(1));
    QCOMPARE(b.table.Colours[7], TColor(7));
    QCOMPARE(b.table.Colours[0], TColor(0));
    b.board.savePhones_tefxButtonClick();
    const QByteArray saved = b.home.Read(u"ini/PhonePanels.xml"_s);
    QVERIFY(saved.startsWith("<?xml version=\"1.0\" encoding=\"GB2312\"?>"));
    QVERIFY(saved.contains("<PhonePanel ID=\"9\" left=\"5\" Top=\"5\"/>"));
    QVERIFY(saved.contains("Color_IDLE=\"1\" Color_Connect=\"7\""));
    // And the next start reads it back the same.
    TCallControlDev again;
    again.ParentWidth = 755;
    TPhoneBoard board2(again, b.net);
    QVERIFY(board2.LoadPhones_tefxButtonClick());
    QCOMPARE(again.Ordered(), (std::vector<int>{9, 2, 30}));
  }

  void badColourEndsTheColoursButNotThePanels() {
    Board b;
    const TColor defaultDial = b.table.Colours[4];
    b.Layout("<PhonePanels><PhonePanelsGrp1 Color_IDLE=\"11\" Color_Connect=\"12\" "
             "Color_CalledRing=\"red\" Color_BackCallRing=\"13\" Color_Dial=\"14\">"
             "<PhonePanel ID=\"3\"/></PhonePanelsGrp1></PhonePanels>");
    QVERIFY(b.board.LoadPhones_tefxButtonClick());
    QCOMPARE(b.table.Colours[1], TColor(11));
    QCOMPARE(b.table.Colours[7], TColor(12));
    QCOMPARE(b.table.Colours[4], defaultDial); // after the bad one: untouched
    QCOMPARE(b.table.Ordered(), std::vector<int>{3});
  }

  void damagedFilesLoadAsFarAsTheyGo_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<std::vector<int>>("panels");
    QTest::newRow("an ID that is no number stops")
        << QByteArray("<P><PhonePanelsGrp1><PhonePanel ID=\"1\"/><PhonePanel ID=\"x\"/><PhonePanel "
                      "ID=\"2\"/></PhonePanelsGrp1></P>")
        << std::vector<int>{1};
    QTest::newRow("truncated") << QByteArray("<P><PhonePanelsGrp1><PhonePanel ID=\"4\"/><PhonePan")
                               << std::vector<int>{4};
    QTest::newRow("huge ID dropped")
        << QByteArray("<P><PhonePanelsGrp1><PhonePanel ID=\"99999\"/><PhonePanel ID=\"5\"/>"
                      "</PhonePanelsGrp1></P>")
        << std::vector<int>{5};
    QTest::newRow("no root") << QByteArray("") << std::vector<int>{};
    QTest::newRow("not XML") << QByteArray("\xFF\xFE\x00garbage", 10) << std::vector<int>{};
    QTest::newRow("GBK text in it")
        << QByteArray(
               "<?xml version=\"1.0\" encoding=\"GB2312\"?><P \xD6\xD0=\"1\"><PhonePanelsGrp1>"
               "<PhonePanel ID=\"6\"/></PhonePanelsGrp1></P>")
        << std::vector<int>{6};
  }
  void damagedFilesLoadAsFarAsTheyGo() {
    QFETCH(QByteArray, file);
    QFETCH(std::vector<int>, panels);
    Board b;
    b.Layout(file);
    QVERIFY(b.board.LoadPhones_tefxButtonClick());
    QCOMPARE(b.table.Ordered(), panels);
  }

  // The file as an older console writes it and reads it: the group named
  // "Normal", signed colours, GB2312.
  void layoutFileKeepsTheSharedFormat() {
    Board b;
    const QByteArray group = "<PhonePanelsGrp1 name=\"Normal\" Color_IDLE=\"-2147483633\" "
                             "Color_Connect=\"255\" Color_CalledRing=\"-16777201\" "
                             "Color_BackCallRing=\"3\" Color_Dial=\"4\" Color_Oncall=\"5\" "
                             "Color_Hurryup=\"6\" Color_OutService=\"0\" Color_Other=\"8\">";
    const QByteArray head = "<?xml version=\"1.0\" encoding=\"GB2312\"?>\r\n<PhonePanels>\r\n";
    b.Layout(head + group + "\r\n<PhonePanel ID=\"7\" left=\"5\" Top=\"5\"/>\r\n"
                            "</PhonePanelsGrp1>\r\n</PhonePanels>\r\n");
    QVERIFY(b.board.LoadPhones_tefxButtonClick());
    QCOMPARE(b.table.Colours[1], clBtnFace);
    QCOMPARE(b.table.Colours[2], TColor(0xFF00000F));
    b.board.savePhones_tefxButtonClick();
    const QByteArray saved = b.home.Read(u"ini/PhonePanels.xml"_s);
    QVERIFY2(saved.startsWith(QByteArray(head + group + "\r\n")), saved.left(400).constData());
    TCallControlDev again;
    TPhoneBoard board2(again, b.net);
    QVERIFY(board2.LoadPhones_tefxButtonClick());
    QCOMPARE(again.Colours, b.table.Colours);
    QCOMPARE(again.Ordered(), std::vector<int>{7});
  }

  // A layout file too large or not text is neither read nor written over; the
  // layout is kept beside it.
  void refusedLayoutFileIsLeftAlone_data() {
    QTest::addColumn<QByteArray>("file");
    QByteArray big = "<PhonePanels><PhonePanelsGrp1>";
    while (big.size() <= kMaxTextFileBytes)
      big += "<PhonePanel ID=\"1\"/>";
    QTest::newRow("over 1 MB") << big;
    QByteArray noise(4096, 0);
    for (qsizetype i = 0; i < noise.size(); ++i)
      noise[i] = char((i * 7919 + 13) % 251);
    QTest::newRow("not text") << noise;
  }
  void refusedLayoutFileIsLeftAlone() {
    QFETCH(QByteArray, file);
    Board b;
    RecordingShell shell;
    b.Layout(file);
    QVERIFY(b.board.LoadPhones_tefxButtonClick());
    QVERIFY(b.table.Ordered().empty());
    QCOMPARE(shell.Messages.size(), 1);
    QVERIFY2(shell.Messages[0].Text.contains(u"PhonePanels.xml.new"_s),
             qPrintable(shell.Messages[0].Text));
    b.table.AddPanel(4);
    b.board.savePhones_tefxButtonClick();
    QCOMPARE(b.home.Read(u"ini/PhonePanels.xml"_s), file);
    TCallControlDev again;
    TPhoneBoard board2(again, b.net);
    QVERIFY(board2.LoadPhones_tefxButtonClick()); // from the file beside it
    QCOMPARE(again.Ordered(), std::vector<int>{4});
  }

  void missingFileLeavesTheBoardAndLaterSavesAlone() {
    Board b;
    b.table.AddPanel(1);
    QVERIFY(!b.board.LoadPhones_tefxButtonClick());
    QVERIFY(!b.table.LayoutLoaded);
    b.board.savePhones_tefxButtonClick();
    QVERIFY(b.home.Read(u"ini/PhonePanels.xml"_s).isEmpty());
    QCOMPARE(b.table.Ordered(), std::vector<int>{1});
  }

  void wheelDropAndLegend() {
    Board b;
    b.board.Wheel(true);
    b.board.Wheel(true);
    QCOMPARE(b.table.ScrollY, 20);
    b.board.Wheel(false);
    QCOMPARE(b.table.ScrollY, 10);
    for (int id = 0; id < 3; ++id)
      b.table.AddPanel(id);
    b.board.Drop(0, -1); // nowhere: no move
    QCOMPARE(b.table.Ordered(), (std::vector<int>{0, 1, 2}));
    b.board.Drop(0, 2);
    QCOMPARE(b.table.Ordered(), (std::vector<int>{1, 2, 0}));
    b.board.LegendColourChosen(4, 0x123456);
    QCOMPARE(b.table.Colours[4], TColor(0x123456));
    b.board.LegendColourChosen(40, 1); // no such entry
  }
};

QTEST_GUILESS_MAIN(PhoneBoardTest)
#include "tst_phoneboard.moc"
