// The front desk's keys table and the shift report's PDF: saved whole through
// Qt's own writer, or not at all when the folder can't take it.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "devices/CallControlDev.h"
#include "directory/SysDM_Unit.h"
#include "guest/ExtGridModel.h"
#include "guest/ShiftReport.h"
#include "support/Clock.h"
#include "support/IniFile.h"
#include "support/Settings.h"
#include "ui/FrontDeskKeys.h"
#include "ui/ShiftReportWindow.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

class FrontDeskTest : public QObject {
  Q_OBJECT

private slots:
  // Two entries on one key would make Qt fire neither.
  void everyKeyOnce() {
    QSet<QString> keys;
    QSet<QString> names;
    for (const TFrontDeskKeyEntry &e : FrontDeskKeys()) {
      QVERIFY2(!e.Keys.isEmpty(), qPrintable(e.Name));
      QVERIFY2(!keys.contains(e.Keys.toString()), qPrintable(e.Keys.toString()));
      QVERIFY(!names.contains(e.Name));
      keys.insert(e.Keys.toString());
      names.insert(e.Name);
    }
  }

  void savingThePdf_data() {
    QTest::addColumn<bool>("writable");
    QTest::newRow("a folder that takes it") << true;
    QTest::newRow("a folder that can't be written") << false;
  }
  void savingThePdf() {
    QFETCH(bool, writable);
    TestHome home;
    RecordingShell shell;
    Sys_DM().DataModuleCreate();
    SetClock([] { return QDateTime(QDate(2027, 1, 3), QTime(20, 0)); });
    TCallControlDev table;
    TExtGridModel rooms;
    TShiftReport_Form form(table, rooms);
    ShiftReportWindow window(form, nullptr);
    form.ShiftReportClick();
    QVERIFY(window.isVisible());

    // A folder that can't be written, even by an administrator: a file
    // stands where the folder should be.
    const QString folder = home.File(u"reports"_s);
    if (writable)
      QVERIFY(QDir().mkpath(folder));
    else
      home.Write(u"reports"_s, "not a folder");
    shell.FileToSave = folder + u"/shift.pdf"_s;
    QCOMPARE(form.SavePdfClick(), writable);

    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Kind, writable ? MessageKind::Information : MessageKind::Error);
    QCOMPARE(QFile::exists(shell.FileToSave), writable);
    if (writable)
      QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{u"shift.pdf"_s});
    if (!writable) {
      QVERIFY(SysConfig().LastShiftReport.IsZero()); // not handed over
      return;
    }
    QFile pdf(shell.FileToSave);
    QVERIFY(pdf.open(QIODevice::ReadOnly));
    QVERIFY(pdf.read(5) == "%PDF-");
    // The handover is kept at once, for the next sheet and the next start.
    IniFile ini;
    ini.Load(home.File(u"ini/sys.ini"_s));
    QCOMPARE(ini.ReadString(u"FrontDesk"_s, u"LastShiftReport"_s, QString()),
             u"2027-01-03 20:00:00"_s);
    QVERIFY(SysConfig().LastShiftReport.SameAs(form.Report.BuiltAt));
  }
};

QTEST_MAIN(FrontDeskTest)
#include "tst_frontdesk.moc"
