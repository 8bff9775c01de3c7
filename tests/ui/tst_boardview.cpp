// The board as the operator handles it: finding a panel under the hand, dragging
// one onto another (or onto its text), the wheel, the colours on screen, and the
// legend's colour choice.
#include "common/PacketCapture.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/PhoneBoard.h"
#include "support/LanguagePack.h"
#include "ui/BoardView.h"
#include "ui/LegendBar.h"
#include "ui/StatusColours.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {
constexpr int kFirst = 100;
constexpr int kPanels = 12;

// Twelve panels, IDs 100..111, four to a row in a viewport 420 wide (pitch 91),
// three rows (pitch 72): taller than the 150 the viewport shows.
struct Board {
  TestHome home;
  TCallControlDev table;
  TNetModule net;
  TPhoneBoard board{table, net};
  TBoardView view{table, board, nullptr};

  Board() {
    for (int id = kFirst; id < kFirst + kPanels; ++id) {
      table.AddPanel(id);
      TPhonePanel &p = table.Record(id).Panel;
      p.TelNosLabel = u"[%1]"_s.arg(8000 + id);
      p.NameLabel = u"Room %1"_s.arg(id);
      p.PhoneButtonGlyph = u"LoginOn_SpeedButton"_s;
    }
    view.show();
    view.resize(420 + view.verticalScrollBar()->sizeHint().width() + 2 * view.frameWidth(),
                150 + 2 * view.frameWidth());
    QVERIFY(QTest::qWaitForWindowExposed(&view));
  }
  QWidget *Viewport() { return view.viewport(); }
  QList<int> Order() const {
    QList<int> order;
    for (int id : table.Ordered())
      order.append(id - kFirst);
    return order;
  }
};

QList<int> Sequence(std::initializer_list<int> head) {
  QList<int> order(head);
  for (int i = 0; i < kPanels; ++i) {
    if (!order.contains(i))
      order.append(i);
  }
  return order;
}
} // namespace

class BoardViewTest : public QObject {
  Q_OBJECT

private slots:
  void panelAtFindsThePanelUnderThePoint_data() {
    QTest::addColumn<QPoint>("point");
    QTest::addColumn<int>("panel"); // index from kFirst, -1 for none
    QTest::newRow("first panel's corner") << QPoint(5, 5) << 0;
    QTest::newRow("last pixel of the first") << QPoint(85, 61) << 0;
    QTest::newRow("gap between columns") << QPoint(90, 20) << -1;
    QTest::newRow("second column") << QPoint(96, 20) << 1;
    QTest::newRow("fourth column") << QPoint(5 + 3 * 91 + 40, 30) << 3;
    QTest::newRow("gap between rows") << QPoint(20, 70) << -1;
    QTest::newRow("second row") << QPoint(20, 80) << 4;
    QTest::newRow("beyond the last column") << QPoint(400, 20) << -1;
    QTest::newRow("left margin") << QPoint(2, 20) << -1;
  }
  void panelAtFindsThePanelUnderThePoint() {
    QFETCH(QPoint, point);
    QFETCH(int, panel);
    Board b;
    QCOMPARE(b.table.Columns, 4);
    QCOMPARE(b.view.PanelAt(point), panel < 0 ? -1 : kFirst + panel);
  }

  void dragReordersAsTheTableSays_data() {
    QTest::addColumn<int>("source");
    QTest::addColumn<int>("target");
    QTest::addColumn<QPoint>("inTarget"); // where in the target the drop lands
    QTest::addColumn<QList<int>>("order");
    const QPoint centre(40, 28);
    const QPoint nameLine(60, 45);
    const QPoint numberLine(30, 10);
    QTest::newRow("forward lands behind") << 0 << 2 << centre << Sequence({1, 2, 0});
    QTest::newRow("backward lands in front") << 5 << 1 << centre << Sequence({0, 5, 1});
    QTest::newRow("onto the name line") << 5 << 1 << nameLine << Sequence({0, 5, 1});
    QTest::newRow("onto the number, next row")
        << 1 << 6 << numberLine << Sequence({0, 2, 3, 4, 5, 6, 1});
    QTest::newRow("onto the bare board") << 0 << -1 << QPoint() << Sequence({});
    QTest::newRow("onto itself") << 2 << 2 << nameLine << Sequence({});
  }
  void dragReordersAsTheTableSays() {
    QFETCH(int, source);
    QFETCH(int, target);
    QFETCH(QPoint, inTarget);
    QFETCH(QList<int>, order);
    Board b;
    const QPoint from = b.view.PanelRect(kFirst + source).topLeft() + QPoint(40, 30);
    const QPoint to =
        target < 0 ? QPoint(400, 20) : b.view.PanelRect(kFirst + target).topLeft() + inTarget;
    QTest::mousePress(b.Viewport(), Qt::LeftButton, {}, from);
    QTest::mouseMove(b.Viewport(), from + QPoint(3, 0)); // within the threshold
    QTest::mouseMove(b.Viewport(), (from + to) / 2);
    QTest::mouseMove(b.Viewport(), to);
    QTest::mouseRelease(b.Viewport(), Qt::LeftButton, {}, to);
    QCOMPARE(b.Order(), order);
  }

  void panelHeldAtTheEdgeScrollsToFarRows() {
    Board b;
    const QPoint from = b.view.PanelRect(kFirst).center();
    const QPoint edge(200, b.Viewport()->height() - 4);
    QTest::mousePress(b.Viewport(), Qt::LeftButton, {}, from);
    QTest::mouseMove(b.Viewport(), from + QPoint(20, 20));
    QTest::mouseMove(b.Viewport(), edge);
    QTRY_COMPARE_WITH_TIMEOUT(b.table.ScrollY, 61, 10000); // as far as the board goes
    const QPoint last = b.view.PanelRect(kFirst + kPanels - 1).center();
    QTest::mouseMove(b.Viewport(), last);
    QTest::mouseRelease(b.Viewport(), Qt::LeftButton, {}, last);
    QCOMPARE(b.Order(), Sequence({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 0}));
  }

  void wheelScrollsByTenAndTheBarFollows() {
    Board b;
    const QPoint at(200, 60);
    auto turn = [&](int delta) {
      QWheelEvent wheel(at, b.Viewport()->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton,
                        Qt::NoModifier, Qt::NoScrollPhase, false);
      QApplication::sendEvent(b.Viewport(), &wheel);
    };
    turn(-120);
    QCOMPARE(b.table.ScrollY, 10);
    QCOMPARE(b.view.verticalScrollBar()->value(), 10);
    QCOMPARE(b.view.PanelAt(QPoint(20, 70)), kFirst + 4); // the second row moved up
    turn(-120);
    turn(120);
    QCOMPARE(b.table.ScrollY, 10);
    turn(120);
    turn(120);
    QCOMPARE(b.table.ScrollY, 0);
    // The board ends where its last row ends: 211 high in a viewport of 150.
    for (int i = 0; i < 20; ++i)
      turn(-120);
    QCOMPARE(b.table.ScrollY, 61);
    QCOMPARE(b.view.verticalScrollBar()->maximum(), 61);
  }

  void panelShowsItsColour() {
    Board b;
    const int id = kFirst + 5;
    b.table.Record(id).Panel.Colour = 0x0000FF; // red as the table writes it
    b.table.Record(id).Panel.StatusLabel.clear();
    b.view.UpdatePanel(id);
    const QImage shot = b.Viewport()->grab().toImage();
    const QPoint centre = b.view.PanelRect(id).center() * shot.devicePixelRatio();
    QCOMPARE(shot.pixelColor(centre), QColor(Qt::red));
    const QPoint idle = b.view.PanelRect(kFirst + 6).center() * shot.devicePixelRatio();
    QCOMPARE(shot.pixelColor(idle), ToQColor(clBtnFace, b.view.palette()));
  }

  // The fitted lines are kept between paints: a changed label must still show.
  void changedLabelIsDrawnWithItsNewText() {
    Board b;
    const int id = kFirst + 2;
    TPhonePanel &panel = b.table.Record(id).Panel;
    auto shot = [&](const QString &status) {
      panel.StatusLabel = status;
      b.view.UpdatePanel(id);
      return b.Viewport()->grab(b.view.PanelRect(id)).toImage();
    };
    const QImage idle = shot(u"[idle]"_s);
    const QImage busy = shot(u"[busy]"_s);
    QVERIFY(busy != idle);
    QCOMPARE(shot(u"[idle]"_s), idle);
  }

  void panelMenuFollowsTheDeviceAndReachesTheMainForm() {
    TestHome home;
    home.UseChinese();
    TMain_Form main;
    SysParam() = TNetPhone_SysParam{};
    SysParam().MyID = 3;
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
    TCallControlDev &table = main.CallControlDev();
    for (int id : {40, 41}) {
      table.AddPanel(id);
      table.Record(id).DevType = id == 40 ? AnalogTrunk : AnalogExtension;
      table.Record(id).TelNos = u"80%1"_s.arg(id);
    }
    TBoardView view(table, main.Board(), &main);
    view.resize(400, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    // Opens the menu over a panel, notes the items shown and chooses one.
    auto choose = [&](int id, const QString &item) {
      QMap<QString, QString> shown;
      QTimer::singleShot(0, this, [&] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
          return;
        for (QAction *a : menu->actions()) {
          if (a->isVisible())
            shown.insert(a->objectName(), a->text());
          if (a->objectName() == item)
            a->trigger();
        }
        menu->close();
      });
      const QPoint at = view.PanelRect(id).center();
      QContextMenuEvent event(QContextMenuEvent::Mouse, at, view.viewport()->mapToGlobal(at));
      QApplication::sendEvent(view.viewport(), &event);
      return shown;
    };
    const auto trunk = choose(40, u"PopMenu_ResetTrunk"_s);
    QCOMPARE(trunk.keys(), (QStringList{u"PopMenu_ResetTrunk"_s, u"test1"_s}));
    QCOMPARE(trunk.value(u"test1"_s), LangText(422));
    QCOMPARE(CapturedPackets.size(), 1);
    QCOMPARE(GetU16(CapturedPackets[0].constData(), 12), quint16(150));
    QCOMPARE(GetU16(CapturedPackets[0].constData(), 16), quint16(40));

    QSignalSpy wakeUp(&view, &TBoardView::wakeUpRequested);
    const auto extension = choose(41, u"N2"_s);
    QCOMPARE(extension.keys(), (QStringList{u"N15"_s, u"N2"_s, u"test1"_s}));
    QCOMPARE(extension.value(u"N15"_s), u"转移"_s);
    QCOMPARE(wakeUp.size(), 1);
    QCOMPARE(wakeUp[0][0].toInt(), 41);
    QCOMPARE(view.CurrentPanel(), 41);
    SetPacketOutlet(nullptr, nullptr);
  }

  void legendDoubleClickSetsTheTableEntry() {
    Board b;
    TLegendBar legend(b.table, b.board);
    legend.ChooseColour = [](const QColor &, QWidget *) { return QColor(10, 20, 30); };
    legend.show();
    QWidget *dial = legend.findChild<QWidget *>(u"Dial_Panel"_s);
    QVERIFY(dial);
    QTest::mouseDClick(dial, Qt::LeftButton);
    QCOMPARE(b.table.Colours[4], FromQColor(QColor(10, 20, 30)));
    QCOMPARE(b.table.Colours[5], DefaultStatusColour(5)); // only that entry
  }
};

QTEST_MAIN(BoardViewTest)
#include "tst_boardview.moc"
