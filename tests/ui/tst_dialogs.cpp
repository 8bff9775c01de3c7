// The dialogs as the operator meets them, driven through their controls'
// objectNames: what they show, what they hand to the logic, how they follow a
// language switch and where the pop-up stands.
#include "common/Controls.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "devices/GSM_Unit.h"
#include "directory/PopMsg_Form.h"
#include "support/LanguagePack.h"
#include "support/Settings.h"
#include "support/Sysset_Unit.h"
#include "ui/GsmDialog.h"
#include "ui/LoginDialog.h"
#include "ui/PopMsgWindow.h"
#include "ui/SettingsDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
struct LoginDesk {
  TestHome home;
  RecordingShell shell;
  TMain_Form main;
  TLogin_Form login{&main};
  LoginDialog dialog{login};

  LoginDesk() { home.UseChinese(); }
};
} // namespace

class DialogsTest : public QObject {
  Q_OBJECT

private slots:
  void enterInLoginBoxLogsIn_data() {
    QTest::addColumn<QString>("box");
    QTest::newRow("number") << u"TelNo_TeComboBox"_s;
    QTest::newRow("password") << u"Pwd_TeMaskEdit"_s;
  }
  void enterInLoginBoxLogsIn() {
    QFETCH(QString, box);
    LoginDesk d;
    SysConfig().UserName = u"8001"_s;
    SysConfig().Host = u"10.0.0.7"_s;
    d.login.ShowModal();
    QVERIFY(d.dialog.isVisible());
    // The first show fills the boxes from the settings.
    auto *number = Control<QComboBox>(&d.dialog, u"TelNo_TeComboBox"_s);
    QTRY_COMPARE(number->currentText(), u"8001"_s);
    QCOMPARE(Control<QLineEdit>(&d.dialog, u"HostIP_TeMaskEdit"_s)->text(), u"10.0.0.7"_s);
    QCOMPARE(Control<QLineEdit>(&d.dialog, u"Pwd_TeMaskEdit"_s)->echoMode(), QLineEdit::Password);

    // The operator empties the number; Enter hands that to the login, which refuses it.
    number->lineEdit()->clear();
    // Keys reach the combo box itself (its edit line is only its proxy).
    QTest::keyClick(Control<QWidget>(&d.dialog, box), Qt::Key_Return);
    QCOMPARE(d.shell.Messages.size(), 1); // once: no default key logs in a second time
    QCOMPARE(d.shell.Messages.first().Text, LangText(568));
    QCOMPARE(d.login.TelNo_TeComboBox, QString());
    QVERIFY(d.dialog.isVisible());
  }

  void leavingTheLoginDialog_data() {
    QTest::addColumn<quint32>("mode");
    QTest::addColumn<bool>("closeBox");
    QTest::addColumn<bool>("quits");
    QTest::newRow("start, leave key") << 0u << false << true;
    QTest::newRow("start, close box") << 0u << true << true;
    QTest::newRow("re-login, leave key") << 1u << false << false;
    QTest::newRow("re-login, close box") << 1u << true << false;
  }
  void leavingTheLoginDialog() {
    QFETCH(quint32, mode);
    QFETCH(bool, closeBox);
    QFETCH(bool, quits);
    LoginDesk d;
    QSignalSpy quit(&d.login, &TLogin_Form::quitRequested);
    d.login.LoginMode = mode;
    d.login.ShowModal();
    auto *leave = Control<QPushButton>(&d.dialog, u"TeButton2"_s);
    QCOMPARE(leave->text(), LangText(mode == 0 ? 573 : 574));
    if (closeBox)
      d.dialog.close();
    else
      QTest::mouseClick(leave, Qt::LeftButton);
    QVERIFY(!d.dialog.isVisible());
    QVERIFY(!d.login.Visible());
    QCOMPARE(quit.count(), quits ? 1 : 0);
  }

  void settingsDatabaseFileCheck_data() {
    QTest::addColumn<bool>("exists");
    QTest::addColumn<int>("message");
    QTest::newRow("missing") << false << 530;
    QTest::newRow("present") << true << 529;
  }
  void settingsDatabaseFileCheck() {
    QFETCH(bool, exists);
    QFETCH(int, message);
    TestHome home;
    home.UseChinese();
    RecordingShell shell;
    Tsysset_Form logic;
    logic.FormCreate();
    SettingsDialog dialog(logic);
    const QString before = SysConfig().DBFile;
    SysConfig().Host = u"10.1.1.1"_s; // as the login dialog would change it
    logic.Show();
    QVERIFY(dialog.isVisible());
    QCOMPARE(Control<QLineEdit>(&dialog, u"HostIP_LMDEdit"_s)->text(), u"10.1.1.1"_s);

    if (exists)
      home.Write(u"Database/other.db"_s, "x");
    const QString path = home.File(u"Database/other.db"_s);
    Control<QTabWidget>(&dialog, u"PageControl1"_s)
        ->setCurrentWidget(Control<QWidget>(&dialog, u"TabSheet2"_s));
    auto *file = Control<QLineEdit>(&dialog, u"DBFile_TeEdit"_s);
    file->clear();
    QTest::keyClicks(file, path);
    QTest::mouseClick(Control<QPushButton>(&dialog, u"TeEffectButton3"_s), Qt::LeftButton);
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages.first().Text, LangText(message));
    QCOMPARE(SysConfig().DBFile, exists ? path : before);
    QVERIFY(dialog.isVisible()); // the check leaves the window open
    // The main window's host key opens it on the exchange page, with that address.
    logic.ShowExchangePage(u"10.2.2.2"_s);
    QCOMPARE(Control<QTabWidget>(&dialog, u"PageControl1"_s)->currentWidget()->objectName(),
             u"TabSheet1"_s);
    QCOMPARE(Control<QLineEdit>(&dialog, u"HostIP_LMDEdit"_s)->text(), u"10.2.2.2"_s);
  }

  // The server's fields show once a server is chosen; what is typed reaches
  // the logic at the apply, and the test key's answer lands on the page
  // without undoing what was typed meanwhile.
  void settingsDatabaseServerFields() {
    TestHome home;
    RecordingShell shell;
    Tsysset_Form logic;
    logic.FormCreate();
    logic.ProbeStoreServer = [](const TStoreServer &server) {
      return TServerProbe{true, u"连接成功 "_s + server.Host};
    };
    SettingsDialog dialog(logic);
    logic.Show();
    Control<QTabWidget>(&dialog, u"PageControl1"_s)
        ->setCurrentWidget(Control<QWidget>(&dialog, u"TabSheet2"_s));
    auto *fields = Control<QWidget>(&dialog, u"DB_ServerFields"_s);
    QVERIFY(!fields->isVisible());
    Control<QComboBox>(&dialog, u"DB_Kind_TeComboBox"_s)->setCurrentIndex(1);
    QVERIFY(fields->isVisible());
    QTest::keyClicks(Control<QLineEdit>(&dialog, u"DB_Host_TeEdit"_s), u"db1"_s);
    QTest::keyClicks(Control<QLineEdit>(&dialog, u"DB_Database_TeEdit"_s), u"hotel"_s);
    QTest::mouseClick(Control<QPushButton>(&dialog, u"TeButton_DB_Test"_s), Qt::LeftButton);
    QTest::keyClicks(Control<QLineEdit>(&dialog, u"DB_User_TeEdit"_s), u"night"_s);
    auto *result = Control<QLabel>(&dialog, u"TeLabel_DBTestResult"_s);
    QTRY_COMPARE(result->text(), u"连接成功 db1"_s);
    QVERIFY(Control<QPushButton>(&dialog, u"TeButton_DB_Test"_s)->isEnabled());
    QCOMPARE(Control<QLineEdit>(&dialog, u"DB_User_TeEdit"_s)->text(), u"night"_s);
    QTest::mouseClick(Control<QPushButton>(&dialog, u"TeEffectButton3"_s), Qt::LeftButton);
    QCOMPARE(SysConfig().DBDriver, u"QPSQL"_s);
    QCOMPARE(SysConfig().DBHost, u"db1"_s);
    QCOMPARE(SysConfig().DBUser, u"night"_s);
  }

  void languageSwitchReachesOpenDialogs() {
    LoginDesk d;
    d.home.CopyShipped(u"ini/lang_English.lan"_s);
    ApplyLanguage();
    // A dialog built after the texts were applied shows them from the start.
    TGSM_Form gsmLogic;
    GsmDialog gsm(gsmLogic);
    auto *login = Control<QPushButton>(&d.dialog, u"Login_TeButton"_s);
    auto *send = Control<QPushButton>(&gsm, u"TeButton1"_s);
    auto *tabs = Control<QTabWidget>(&d.dialog, u"Login_TePageControl"_s);
    QCOMPARE(login->text(), LangText(783));
    const QString chinese = login->text();

    QVERIFY(SelectLanguage(1));
    QCOMPARE(login->text(), LangText(783));
    QVERIFY(login->text() != chinese);
    QCOMPARE(send->text(), LangText(826));
    QCOMPARE(tabs->tabText(tabs->indexOf(Control<QWidget>(&d.dialog, u"TeTabSheet2"_s))),
             LangText(775));
    QCOMPARE(d.dialog.windowTitle(), LangText(773));
  }

  void popUpStandsInTheCornerWithoutFocus() {
    TestHome home;
    TForm_PopMsg logic;
    PopMsgWindow pop(logic);
    logic.ShowPopMsg(u"13900001111"_s);
    QVERIFY(pop.isVisible());
    QCOMPARE(Control<QLabel>(&pop, u"Label_Incoming"_s)->text(), u"13900001111"_s);
    QVERIFY(pop.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
    QVERIFY(pop.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus));
    QVERIFY(pop.testAttribute(Qt::WA_ShowWithoutActivating));
    const QRect free = QGuiApplication::primaryScreen()->availableGeometry();
    QCOMPARE(pop.frameGeometry().right(), free.right());
    QCOMPARE(pop.frameGeometry().bottom(), free.bottom());

    QTest::mouseClick(Control<QWidget>(&pop, u"Close_ToolButton"_s), Qt::LeftButton);
    QVERIFY(!pop.isVisible());
    QVERIFY(!logic.Visible());
  }

  void smsCountFollowsTyping() {
    TestHome home;
    home.UseChinese();
    RecordingShell shell;
    TGSM_Form logic;
    GsmDialog dialog(logic);
    logic.Show();
    auto *status = Control<QLabel>(&dialog, u"Main_StatusBar_Panel1"_s);
    // Untouched, the send key does nothing: showing the window isn't typing.
    QTest::mouseClick(Control<QPushButton>(&dialog, u"TeButton1"_s), Qt::LeftButton);
    QVERIFY(shell.Balloons.isEmpty());
    QVERIFY(dialog.isVisible());

    QTest::keyClicks(Control<QWidget>(&dialog, u"SMSBody_TeMemo"_s), u"ab"_s);
    QCOMPARE(status->text(), LangFormat(657, {68}));
    QTest::keyClicks(Control<QWidget>(&dialog, u"SMSBody_TeMemo"_s), QString(69, u'x'));
    QCOMPARE(status->text(), LangText(658));
  }
};

QTEST_MAIN(DialogsTest)
#include "tst_dialogs.moc"
