// The record views on screen, driven through objectNames: the call-record
// page's search, paging and related search, and the wake-up log window opened
// from its key and from a room's menu.
#include "common/Controls.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtsView.h"
#include "guest/MoringCallLog_Unit.h"
#include "guest/PBXRecords.h"
#include "support/Clock.h"
#include "ui/MainWindow.h"
#include "ui/MoringCallLogWindow.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSqlQuery>
#include <QTableView>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
void Exec(const QString &sql) {
  QSqlQuery q(StoreConnection());
  if (!q.exec(sql))
    qFatal("%s", qPrintable(sql));
}
} // namespace

class RecordViewsTest : public QObject {
  Q_OBJECT

private slots:

  void callRecordPageSearchesPagesAndRelates() {
    TestHome home;
    home.UseChinese();
    SetClock([] { return QDateTime(QDate(2027, 1, 3), QTime(12, 0)); });
    Sys_DM().DataModuleCreate();
    RecordingShell shell;
    StoreConnection().transaction();
    for (int i = 1; i <= 60; ++i)
      Exec(u"INSERT INTO PBXConRecords (Caller, Called, startTime, IOFlag, RecType) VALUES "
           "('%1', '0215550%2', '2027-01-03 09:00:00', 0, 5)"_s.arg(i % 2 ? u"801"_s : u"802"_s)
               .arg(i));
    StoreConnection().commit();
    TMain_Form main;
    TMainWindow window(main);
    window.show();
    QWidget *page = Control<QWidget>(&window, u"TeTabSheet2"_s);
    auto *grid = Control<QTableView>(page, u"DBGridEh_PBXConRecords"_s);
    auto *result = Control<QLabel>(page, u"Label_searchResult"_s);

    QTest::mouseClick(Control<QPushButton>(page, u"SpeedButton_Find"_s), Qt::LeftButton);
    QCOMPARE(result->text(), u"共有记录60条，共2页"_s);
    QCOMPARE(grid->model()->rowCount(), 50);
    QCOMPARE(grid->model()->index(0, 4).data().toString(), u"5-通话结束"_s);
    QTest::mouseClick(Control<QPushButton>(page, u"Frame_DataPage_Label6"_s), Qt::LeftButton);
    QCOMPARE(grid->model()->rowCount(), 10);
    QCOMPARE(Control<QComboBox>(page, u"ComboBox_PageIndex"_s)->currentText(), u"2"_s);

    // The caller's menu on a row: that caller's calls, within the same dates.
    grid->selectRow(1);
    Control<QComboBox>(page, u"TeSComboBox_RecType"_s)->setCurrentIndex(2);
    Control<QMenu>(page, u"PopupMenu_PBXRecord_Caller"_s)
        ->findChild<QAction *>(u"N24"_s)
        ->trigger();
    QCOMPARE(Control<QLineEdit>(page, u"Edit_PBXCon_TelNos"_s)->text(), u"801"_s);
    QCOMPARE(Control<QComboBox>(page, u"TeSComboBox_RecType"_s)->currentIndex(), 0);
    QCOMPARE(result->text(), u"共有记录30条，共1页"_s);
    QVERIFY(shell.Messages.isEmpty());
  }

  void wakeUpLogWindowFromItsKeyAndARoom() {
    TestHome home;
    home.UseChinese();
    SetClock([] { return QDateTime(QDate(2027, 1, 3), QTime(12, 0)); });
    Sys_DM().DataModuleCreate();
    RecordingShell shell;
    Exec(u"INSERT INTO MoringCallLog (RoomNo, Ext, MoringCallTime, State) VALUES "
         "('405', '8405', '2027-01-03 06:30:00', 2)"_s);
    TMain_Form main;
    TMainWindow window(main);
    MoringCallLogWindow log(main.Form_MoringCallLog(), &window);
    window.show();
    auto *grid = Control<QTableView>(&log, u"cxGrid_MoringCallLog"_s);

    main.ExtsView().moringCallLogRequested(u"8312"_s); // a room with no wake-up
    QVERIFY(log.isVisible());
    QVERIFY(log.isWindow() && !log.isModal());
    QVERIFY(log.windowFlags() & Qt::WindowStaysOnTopHint);
    QCOMPARE(Control<QLineEdit>(&log, u"cxTextEdit_Ext"_s)->text(), u"8312"_s);
    QCOMPARE(grid->model()->rowCount(), 0);

    log.close();
    QVERIFY(!main.Form_MoringCallLog().Visible());
    Control<QLineEdit>(&log, u"cxTextEdit_Ext"_s)->clear();
    QTest::mouseClick(Control<QPushButton>(&log, u"SpeedButton_Find"_s), Qt::LeftButton);
    window.findChild<QAction *>(u"tefxButton_MCallRecord"_s)->trigger();
    QVERIFY(log.isVisible());
    QCOMPARE(grid->model()->rowCount(), 1);
    QCOMPARE(grid->model()->index(0, 4).data().toString(), u"叫醒失败"_s);
    main.Form_MoringCallLog().ADOQuery_MoringCallLog.Close();
    main.PBXRecords().ADOQuery_PBXConRecords.Close();
  }
};

QTEST_MAIN(RecordViewsTest)
#include "tst_recordviews.moc"
