// The extensions page as the front desk meets it: the list tab over the
// logic's rows, the kept column widths, the wake-up columns' double click, and
// the find box by the tab that is up. Driven through objectNames.
#include "ListedRooms.h"
#include "common/Controls.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Main_Form.h"
#include "devices/CallControlDev.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall_Unit.h"
#include "support/Settings.h"
#include "ui/ExtsGridView.h"
#include "ui/ExtsPage.h"
#include "ui/MoringCallDialog.h"

#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// A console's logic with four rooms 8001..8004 in the grid, and the page over it.
struct Desk {
  TestHome home;
  RecordingShell shell;
  TMain_Form main;
  TExtsGridView *grid = nullptr;
  std::unique_ptr<TExtsPage> page;
  std::unique_ptr<MoringCallDialog> dialog;

  Desk() {
    home.UseChinese();
    Sys_DM().DataModuleCreate();
    ListRooms(main, 4);
    TExtsView &exts = main.ExtsView();
    grid = new TExtsGridView(main);
    page = std::make_unique<TExtsPage>(exts, grid, new QWidget, nullptr);
    dialog = std::make_unique<MoringCallDialog>(main.MoringCall_Form(), main.DeviceEvents());
    page->resize(900, 500);
    page->show();
  }
  void ShowTab(int tab) {
    Control<QTabWidget>(page.get(), u"TeSPageControl_ExtView"_s)->setCurrentIndex(tab);
  }
  QString CurrentNumber() const {
    const QModelIndex at = grid->currentIndex();
    return grid->model()->index(at.row(), TExtGridModel::ColTelNos).data().toString();
  }
};
} // namespace

class ExtsPageTest : public QObject {
  Q_OBJECT

private slots:
  void listTabShowsTheRowsAndKeepsTheirWidths() {
    Desk d;
    d.ShowTab(TExtsView::TeSTabsheet_Listview);
    QCOMPARE(d.main.ExtsView().TeSPageControl_ExtView_ActivePage,
             int(TExtsView::TeSTabsheet_Listview));
    auto *grid = Control<QTableView>(d.page.get(), u"AdvStringGrid_Exts"_s);
    QCOMPARE(grid->model()->rowCount(), 4);
    QCOMPARE(grid->model()->index(3, TExtGridModel::ColTelNos).data().toString(), u"8004"_s);
    QVERIFY(grid->isColumnHidden(TExtGridModel::ColSpare));

    // sys.ini keeps what the operator dragged, and the hidden column its width.
    const TSettingsBindings &b = SettingsBindings();
    QVERIFY(b.ExtsGridColumnWidths && b.SetExtsGridColumnWidth);
    b.SetExtsGridColumnWidth(TExtGridModel::ColRoomNo, 120);
    b.SetExtsGridColumnWidth(TExtGridModel::ColID, 0); // a broken file's width is left
    QCOMPARE(grid->columnWidth(TExtGridModel::ColRoomNo), 120);
    grid->horizontalHeader()->resizeSection(TExtGridModel::ColTelNos, 150);
    const QList<int> kept = b.ExtsGridColumnWidths();
    QCOMPARE(kept.size(), int(TExtGridModel::kColumnCount));
    QCOMPARE(kept.at(TExtGridModel::ColRoomNo), 120);
    QCOMPARE(kept.at(TExtGridModel::ColTelNos), 150);
    QCOMPARE(kept.at(TExtGridModel::ColID), TExtsGridView::DesignWidths().at(TExtGridModel::ColID));
    QCOMPARE(kept.at(TExtGridModel::ColSpare), 64);
  }

  void doubleClickOnTheWakeUpColumnsOpensTheDialog_data() {
    QTest::addColumn<int>("column");
    QTest::addColumn<bool>("opens");
    QTest::newRow("wake-up time") << int(TExtGridModel::ColMoringTime) << true;
    QTest::newRow("wake-up mode") << int(TExtGridModel::ColMoringMode) << true;
    QTest::newRow("number") << int(TExtGridModel::ColTelNos) << false;
  }
  void doubleClickOnTheWakeUpColumnsOpensTheDialog() {
    QFETCH(int, column);
    QFETCH(bool, opens);
    Desk d;
    d.ShowTab(TExtsView::TeSTabsheet_Listview);
    const QModelIndex cell = d.grid->model()->index(2, column);
    QTest::mouseClick(d.grid->viewport(), Qt::LeftButton, {}, d.grid->visualRect(cell).center());
    QTest::mouseDClick(d.grid->viewport(), Qt::LeftButton, {}, d.grid->visualRect(cell).center());
    QCOMPARE(d.dialog->isVisible(), opens);
    QCOMPARE(d.main.MoringCall_Form().Visible(), opens);
    if (!opens)
      return;
    QCOMPARE(Control<QLabel>(d.dialog.get(), u"TelNos_StaticText"_s)->text(), u"8003"_s);
    // Escape is the cancel key: the logic closes, and the window with it.
    QTest::keyClick(d.dialog.get(), Qt::Key_Escape);
    QVERIFY(!d.main.MoringCall_Form().Visible());
    QVERIFY(!d.dialog->isVisible());
  }

  void enterInTheFindBoxFindsByTheTabUp_data() {
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("current"); // the grid's current row afterwards
    QTest::addColumn<int>("hints");       // the board's find tells its result
    QTest::newRow("list, a room") << int(TExtsView::TeSTabsheet_Listview) << u" 8003 "_s
                                  << u"8003"_s << 0;
    QTest::newRow("list, no such room")
        << int(TExtsView::TeSTabsheet_Listview) << u"8999"_s << u"8001"_s << 0;
    QTest::newRow("board") << int(TExtsView::TeSTabsheet_Panel) << u"8999"_s << u"8002"_s << 1;
  }
  void enterInTheFindBoxFindsByTheTabUp() {
    QFETCH(int, tab);
    QFETCH(QString, number);
    QFETCH(QString, current);
    QFETCH(int, hints);
    Desk d;
    d.ShowTab(TExtsView::TeSTabsheet_Listview);
    d.grid->setCurrentIndex(d.grid->model()->index(1, TExtGridModel::ColTelNos));
    d.ShowTab(tab);
    auto *box = Control<QComboBox>(d.page.get(), u"TeSComboBox_Ext"_s);
    box->lineEdit()->setText(u"8001"_s);
    QTest::keyClick(box, Qt::Key_Return);
    box->lineEdit()->setText(number);
    QTest::keyClick(box, Qt::Key_Return);
    QCOMPARE(d.CurrentNumber(), current);
    QCOMPARE(d.shell.Hints.size(), hints * 2);
    // Every search enters the history, newest on top, found or not.
    QCOMPARE(box->count(), 2);
    QCOMPARE(box->itemText(0), number.trimmed());
    QCOMPARE(box->itemText(1), u"8001"_s);
  }
};

QTEST_MAIN(ExtsPageTest)
#include "tst_extspage.moc"
