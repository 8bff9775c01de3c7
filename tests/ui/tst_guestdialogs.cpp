// The room dialogs as the front desk meets them: each opens from its column of
// the extension list, the do-not-disturb keys hand the operator's edits to the
// exchange and the store, and the service class dialog from the board holds
// the console while it is up. Driven through objectNames.
#include "ListedRooms.h"
#include "common/Controls.h"
#include "common/PacketCapture.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "devices/CallControlDev.h"
#include "directory/SysDM_Unit.h"
#include "guest/BatchWalk.h"
#include "guest/ExtsView.h"
#include "guest/Hint_Form.h"
#include "guest/Nodisturb_Form.h"
#include "link/SysParam.h"
#include "ui/BatchProgress.h"
#include "ui/ExtsGridView.h"
#include "ui/ExtsPage.h"
#include "ui/HintDialog.h"
#include "ui/MemoSetDialog.h"
#include "ui/NodisturbDialog.h"
#include "ui/VoiceMailDialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTest>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// A console's logic with four rooms 8001..8004 in the list, in session, and
// the room dialogs over it in one window.
struct Desk {
  TestHome home;
  RecordingShell shell;
  TMain_Form main;
  QWidget window;
  TExtsGridView *grid = nullptr;
  TExtsPage *page = nullptr;
  HintDialog hint{main.Hint_Form(), &window};
  NodisturbDialog nodisturb{main.Form_Nodisturb(), &window};
  VoiceMailDialog voiceMail{main.Form_VoiceMail_Set(), &window};
  MemoSetDialog memo{main.Form_MemoSet(), &window};

  Desk() {
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    ListRooms(main, 4);
    TExtsView &exts = main.ExtsView();
    SysParam().MyID = 9;
    CapturedPackets.clear();
    SetPacketOutlet(&CapturePacket, nullptr);
    grid = new TExtsGridView(main);
    page = new TExtsPage(exts, grid, new QWidget, nullptr, &window);
    Control<QTabWidget>(page, u"TeSPageControl_ExtView"_s)
        ->setCurrentIndex(TExtsView::TeSTabsheet_Listview);
    (new QVBoxLayout(&window))->addWidget(page);
    window.resize(900, 500);
    window.show();
  }
  ~Desk() { SetPacketOutlet(nullptr, nullptr); }

  void DoubleClick(int row, int column) {
    const QModelIndex cell = grid->model()->index(row, column);
    grid->scrollTo(cell);
    const QPoint at = grid->visualRect(cell).center();
    QTest::mouseClick(grid->viewport(), Qt::LeftButton, {}, at);
    QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, at);
  }
  static QString Exts(const QString &column, int id) {
    Sys_DM().PendingWrites().Flush();
    QSqlQuery q(StoreConnection());
    q.exec(u"select %1 from Exts where PortID=%2"_s.arg(column).arg(id));
    return q.next() ? q.value(0).toString() : QString();
  }
};
} // namespace

class GuestDialogsTest : public QObject {
  Q_OBJECT

private slots:
  void doubleClickOpensTheColumnsDialog_data() {
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("dialog");
    QTest::addColumn<QString>("title");
    QTest::newRow("service class") << int(TExtGridModel::ColSrvClass) << u"THint_Form"_s
                                   << u"话机等级设置"_s;
    QTest::newRow("do-not-disturb") << int(TExtGridModel::ColNodisturb) << u"TForm_Nodisturb"_s
                                    << u"8003-免打扰设置"_s;
    QTest::newRow("voice mail") << int(TExtGridModel::ColVoiceMail) << u"TForm_VoiceMail_Set"_s
                                << u"8003-留言操作"_s;
    QTest::newRow("memo") << int(TExtGridModel::ColMemo) << u"TForm_MemoSet"_s
                          << u"8003-备注修改"_s;
  }
  void doubleClickOpensTheColumnsDialog() {
    QFETCH(int, column);
    QFETCH(QString, dialog);
    QFETCH(QString, title);
    Desk d;
    d.DoubleClick(2, column);
    auto *opened = Control<QDialog>(&d.window, dialog);
    QVERIFY(opened->isVisible());
    QCOMPARE(opened->windowTitle(), title);
    // Only its own dialog opens.
    const QList<QDialog *> dialogs = d.window.findChildren<QDialog *>();
    QCOMPARE(std::count_if(dialogs.begin(), dialogs.end(), [](QDialog *w) { return w->isVisible(); }),
             1);
    // Escape is the cancel key: the logic closes, and the window with it.
    QTest::keyClick(opened, Qt::Key_Escape);
    QVERIFY(!opened->isVisible());
  }

  // The operator's mode and window reach the room and the store through the
  // apply key, unless the exchange bars guest-room actions.
  void nodisturbApplyKey_data() {
    QTest::addColumn<bool>("allowed");
    QTest::newRow("allowed") << true;
    QTest::newRow("barred") << false;
  }
  void nodisturbApplyKey() {
    QFETCH(bool, allowed);
    Desk d;
    d.main.Form_Nodisturb().SetServiceAllowed(allowed);
    d.DoubleClick(1, TExtGridModel::ColNodisturb);
    QVERIFY(d.nodisturb.isVisible());
    QVERIFY(d.nodisturb.isModal());
    Control<QComboBox>(&d.nodisturb, u"TeComboBox_Nodisturb"_s)->setCurrentIndex(3);
    Control<QCheckBox>(&d.nodisturb, u"TeCheckBox_Time2"_s)->setChecked(true);
    Control<QTimeEdit>(&d.nodisturb, u"TeDateTimePicker_Time2_Start"_s)->setTime(QTime(12, 30));
    Control<QTimeEdit>(&d.nodisturb, u"TeDateTimePicker_Time2_End"_s)->setTime(QTime(14, 0));
    auto *apply = Control<QPushButton>(&d.nodisturb, u"TeButton_Nodisturb_Apply"_s);
    QCOMPARE(apply->isEnabled(), allowed);
    QCOMPARE(Control<QPushButton>(&d.nodisturb, u"TeButton_Nodisturb_ApplyMulti"_s)->isEnabled(),
             allowed);
    QTest::mouseClick(apply, Qt::LeftButton);

    QCOMPARE(d.nodisturb.isVisible(), !allowed);
    QCOMPARE(CapturedPackets.size(), allowed ? 1 : 0);
    QCOMPARE(Desk::Exts(u"NoDisturb_Time2_Checked"_s, 1) == u"1"_s, allowed);
    if (!allowed)
      return;
    QCOMPARE(int(GetU16(CapturedPackets.last().constData(), 16)), 1); // the room
    QCOMPARE(int(GetU16(CapturedPackets.last().constData(), 18)), 4); // outside calls barred
    QCOMPARE(Desk::Exts(u"NoDisturb_Time2_Start || '|' || NoDisturb_Time2_End"_s, 1),
             u"1899-12-30 12:30:00|1899-12-30 14:00:00"_s);
  }

  // From the board the class dialog holds the console until it is answered;
  // from the list it leaves the console usable. Neither waits in a loop of
  // its own: the call returns with the dialog up.
  void serviceClassDialogModality_data() {
    QTest::addColumn<bool>("fromBoard");
    QTest::newRow("board") << true;
    QTest::newRow("list") << false;
  }
  void serviceClassDialogModality() {
    QFETCH(bool, fromBoard);
    Desk d;
    d.main.OpenSrvClass(0, false); // up from the list first, then asked for again
    if (fromBoard)
      d.main.Template_PhoneSpeedButtonClick(2);
    else
      d.DoubleClick(2, TExtGridModel::ColSrvClass);
    QVERIFY(d.hint.isVisible());
    QCOMPARE(d.hint.windowModality(), fromBoard ? Qt::WindowModal : Qt::NonModal);
    QCOMPARE(d.main.Hint_Form().Target, 2);
    QVERIFY(Control<QLabel>(&d.hint, u"TelNos_LMDLabel"_s)->text().endsWith(u"8003"_s));
    // The place the board asks for stays on the screen.
    d.hint.PlaceAt(QPoint(-500, -500));
    QVERIFY(d.hint.screen()->availableGeometry().contains(d.hint.geometry().topLeft()));
    QTest::mouseClick(Control<QPushButton>(&d.hint, u"TeButton2"_s), Qt::LeftButton);
    QVERIFY(!d.hint.isVisible());
    QVERIFY(!d.main.Hint_Form().Visible());
  }

  // The status bar names the room a batch sent for, and lets go when the walk
  // ends; the dialog is gone meanwhile and the list stays in the operator's hands.
  void batchShowsItsRoomUntilTheWalkEnds() {
    Desk d;
    BatchProgress progress(d.main.BatchWalk(), d.main.CallControlDev(), &d.window);
    TExtGridModel &g = d.main.ExtsView().AdvStringGrid_Exts;
    g.SetCheck(g.SlotOfId(2), u"TRUE"_s);
    d.DoubleClick(0, TExtGridModel::ColVoiceMail);
    QTest::mouseClick(Control<QPushButton>(&d.voiceMail, u"TeButton_VoiceMail_ApplyMulti"_s),
                      Qt::LeftButton);
    QVERIFY(!d.voiceMail.isVisible());
    QVERIFY(!progress.isHidden());
    QCOMPARE(Control<QLabel>(&progress, u"TeLabel_Msg_MultiProcess"_s)->text(), u"8003"_s);
    QVERIFY(d.grid->isEnabled());
    d.main.BatchWalk().Timer_MultiProcessTimer(); // the clear's specified time-out
    QVERIFY(progress.isHidden());
  }
};

QTEST_MAIN(GuestDialogsTest)
#include "tst_guestdialogs.moc"
