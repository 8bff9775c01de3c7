// sys.ini, the line-state texts and the settings window.
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/Sysset_Unit.h"
#include "support/TextFile.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QThread>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QString LoadedDriver(const TestHome &) {
  TSysConfig read;
  LoadConfig(read);
  return read.DBDriver;
}

// The file a save on an empty home must produce: every key of the record in its
// written spelling, in the order the console writes them.
QString ExpectedDefaultFile(const QString &dbFile) {
  QString s = u"[Record]\nIP=127.0.0.1\n[host]\nIP=192.168.0.144\nPort=5003\n"
              u"[user]\nuserName=\npassWord=\nrecPwdFlag=0\n"
              u"[other]\noutNo=9\nlDNo=0\nLinkURL=\n"
              u"[company]\ncaption=\nURL=\n[GSM]\nSMSReturnNos=\ncompany=\n[MainDBgrid]\n"
              u"ColWidths0=20\nColWidths1=100\nColWidths2=100\nColWidths3=100\nColWidths4=100\n"
              u"ColWidths5=100\n[DB]\nDBFile="_s +
              dbFile + u"\n[Ring]\nFlag=0\nIncomStyle=0\n[Lang]\nLangID=0\n[ExtsPanel]\n"_s;
  for (int i = 0; i < kTypeVisibleCount; ++i)
    s += u"TypeVisible%1=1\n"_s.arg(i);
  return s;
}

} // namespace

class SettingsTest : public QObject {
  Q_OBJECT

private slots:
  void missingFileGivesDefaultsSilently() {
    TestHome home;
    RecordingShell shell;
    TSysConfig c;
    LoadConfig(c);
    QVERIFY(shell.Messages.isEmpty());
    QCOMPARE(c.Host, u"192.168.0.144"_s);
    QCOMPARE(c.Port, u"5003"_s);
    QCOMPARE(c.OutNo, u"9"_s);
    QCOMPARE(c.LDNo, u"0"_s);
    QCOMPARE(c.RecordIP, u"127.0.0.1"_s);
    QCOMPARE(c.ColWidths, (std::array<int, 6>{20, 100, 100, 100, 100, 100}));
    QVERIFY(std::all_of(c.TypeVisible.begin(), c.TypeVisible.end(), [](bool v) { return v; }));
    QCOMPARE(c.DBFile, home.Path() + u"Database/Notes_DB.db"_s);
    QCOMPARE(c.RingFlag, 0);
    QCOMPARE(c.Debug, 0);
    QVERIFY(!c.RecPwdFlag);
  }

  void saveOnEmptyHomeWritesEveryKeyInItsWrittenSpelling() {
    TestHome home;
    TSysConfig c;
    LoadConfig(c);
    SaveConfig(c);
    QCOMPARE(QString::fromUtf8(home.Read(u"ini/sys.ini"_s)), ExpectedDefaultFile(c.DBFile));
  }

  void readSpellingsAndWrittenSpellingsBothLoad_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("read spellings")
        << QByteArray("[User]\nuserName=8001\npassword=pw\nrecPwdFlag=1\n"
                      "[other]\nLDNo=00\n[company]\ncaption=Hotel\n");
    QTest::newRow("written spellings")
        << QByteArray("[user]\nuserName=8001\npassWord=pw\nrecPwdFlag=1\n"
                      "[other]\nlDNo=00\n[Company]\ncaption=Hotel\n");
  }
  void readSpellingsAndWrittenSpellingsBothLoad() {
    QFETCH(QByteArray, file);
    TestHome home;
    home.Write(u"ini/sys.ini"_s, file);
    TSysConfig c;
    LoadConfig(c);
    QCOMPARE(c.UserName, u"8001"_s);
    QCOMPARE(c.Password, u"pw"_s);
    QVERIFY(c.RecPwdFlag);
    QCOMPARE(c.LDNo, u"00"_s);
    QCOMPARE(c.CompanyCaption, u"Hotel"_s);
  }

  // A save owns its keys and nothing else: hand-set switches, keys of other
  // versions and comments stay as they were.
  void saveKeepsWhatItDoesNotOwn() {
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "; front desk PC 2\n[System]\nDebug=1\nisAGMode=1\n"
                                 "[host]\nIP=10.1.1.9\nFutureKey=x\n[Vendor]\nsomething=else\n"
                                 "[Other]\nIMHost=im.hotel.local\n");
    TSysConfig c;
    LoadConfig(c);
    QCOMPARE(c.Debug, 1);
    QVERIFY(c.isAGMode);
    c.Debug = 0; // even a changed record never writes these two
    c.isAGMode = false;
    c.Host = u"10.1.1.10"_s;
    SaveConfig(c);
    const QString text = QString::fromUtf8(home.Read(u"ini/sys.ini"_s));
    QVERIFY(text.startsWith(
        u"; front desk PC 2\n[System]\nDebug=1\nisAGMode=1\n"
        u"[host]\nIP=10.1.1.10\nFutureKey=x\nPort=5003\n[Vendor]\nsomething=else\n"_s));
    TSysConfig again;
    LoadConfig(again);
    QCOMPARE(again.Debug, 1);
    QVERIFY(again.isAGMode);
    QCOMPARE(again.IMHost, u"im.hotel.local"_s);
  }

  // Each field is read back by the key it was written under: a spelling that
  // differs between reading and writing would lose the value at the next start.
  void everyFieldSurvivesASaveAndALoad() {
    TestHome home;
    TSysConfig c;
    LoadConfig(c);
    c = {u"10.0.0.5"_s,
         u"6003"_s,
         u"8008"_s,
         u"p=w d"_s,
         true,
         u"0"_s,
         u"9"_s,
         u"海景酒店"_s,
         u"http://hotel.example"_s,
         u"13800138000"_s,
         u"海景"_s,
         u"/data/notes.db"_s,
         {1, 2, 3, 4, 5, 6},
         1,
         3,
         0,
         c.TypeVisible,
         u"/usr/bin/crm --caller"_s,
         u"10.0.0.7"_s,
         false};
    c.TypeVisible[5] = false;
    c.ApiEnabled = true;
    c.ApiPort = 5011;
    c.ApiListen = u"192.168.1.20"_s;
    c.ApiToken = u"0123456789abcdefXYZ"_s;
    SaveConfig(c);
    const QByteArray first = home.Read(u"ini/sys.ini"_s);
    TSysConfig back;
    LoadConfig(back);
    QCOMPARE(back.Password, c.Password);
    QCOMPARE(back.CompanyCaption, c.CompanyCaption);
    QCOMPARE(back.TypeVisible, c.TypeVisible);
    QCOMPARE(back.ApiEnabled, true);
    QCOMPARE(back.ApiPort, 5011);
    QCOMPARE(back.ApiListen, c.ApiListen);
    QCOMPARE(back.ApiToken, c.ApiToken);
    SaveConfig(back);
    QCOMPARE(home.Read(u"ini/sys.ini"_s), first);
    for (const char *value :
         {"10.0.0.5", "6003", "8008", "p=w d", "海景酒店", "http://hotel.example", "13800138000",
          "/data/notes.db", "ColWidths5=6", "Flag=1", "IncomStyle=3", "TypeVisible5=0",
          "crm --caller", "10.0.0.7", "[Api]", "Port=5011", "0123456789abcdefXYZ"})
      QVERIFY2(first.contains(value), value);
  }

  // The shared store's keys appear once a driver is set, and come back.
  void sharedStoreKeysOnceSet() {
    TestHome home;
    TSysConfig c;
    LoadConfig(c);
    c.DBHost = u"10.0.0.9"_s; // without a driver, nothing of it is written
    SaveConfig(c);
    QVERIFY(!home.Read(u"ini/sys.ini"_s).contains("Driver="));
    c.DBDriver = u"QPSQL"_s;
    c.DBPort = 6543;
    c.DBDatabase = u"hotel"_s;
    c.DBUser = u"desk"_s;
    c.DBPassword = u"p=w d"_s;
    SaveConfig(c);
    TSysConfig back;
    LoadConfig(back);
    QCOMPARE(back.DBDriver, c.DBDriver);
    QCOMPARE(back.DBHost, c.DBHost);
    QCOMPARE(back.DBPort, 6543);
    QCOMPARE(back.DBDatabase, c.DBDatabase);
    QCOMPARE(back.DBUser, c.DBUser);
    QCOMPARE(back.DBPassword, c.DBPassword);
  }

  void incomStyleOutsideItsRangeIsKept() {
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "[Ring]\nIncomStyle=7\n");
    QList<int> checked;
    SettingsBindings().IncomStyleLoaded = [&checked](int v) { checked << v; };
    TSysConfig c;
    LoadConfig(c);
    QCOMPARE(c.IncomStyle, 7);
    QCOMPARE(checked, QList<int>{7});
    SaveConfig(c);
    QVERIFY(home.Read(u"ini/sys.ini"_s).contains("IncomStyle=7"));
  }

  void extensionGridWidthsComeAndGo() {
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "[AdvStringGrid_Exts]\nColWidths1=77\n");
    QList<int> grid{50, 60, 70};
    SettingsBindings().ExtsGridColumnWidths = [&grid] { return grid; };
    SettingsBindings().SetExtsGridColumnWidth = [&grid](int col, int w) { grid[col] = w; };
    TSysConfig c;
    LoadConfig(c);
    QCOMPARE(grid, (QList<int>{50, 77, 70}));
    grid[2] = 99;
    SaveConfig(c);
    const QByteArray text = home.Read(u"ini/sys.ini"_s);
    QVERIFY(text.contains("[AdvStringGrid_Exts]\nColWidths1=77\nColWidths0=50\nColWidths2=99\n"));
  }

  void garbageFileLoadsWhatItCan() {
    TestHome home;
    QByteArray junk("\x00\xFF\n", 3);
    junk += "[host\nIP=10.9.9.9\n==\n[Ring\nFlag=abc\n[User]\nuserName=";
    junk += QByteArray(100000, '7');
    junk += "\n\xFE\xFE\xFE\n";
    home.Write(u"ini/sys.ini"_s, junk);
    RecordingShell shell;
    TSysConfig c;
    LoadConfig(c);
    QVERIFY(shell.Messages.isEmpty());
    QCOMPARE(c.Host, u"10.9.9.9"_s);
    QCOMPARE(c.RingFlag, 0); // "abc" is no number: the default
    QCOMPARE(c.UserName.size(), 100000);
    SaveConfig(c); // and it survives a save
    TSysConfig back;
    LoadConfig(back);
    QCOMPARE(back.Host, u"10.9.9.9"_s);
  }

  // A settings file too large or not text: defaults, one message naming the file
  // the settings go to instead, and the file itself never written.
  void refusedSettingsFileIsLeftAlone_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("over 1 MB") << QByteArray("[host]\nIP=10.1.1.1\n[a]\nb=") +
                                      QByteArray(kMaxTextFileBytes, 'x') + "\n";
    QByteArray noise(65536, 0);
    for (qsizetype i = 0; i < noise.size(); ++i)
      noise[i] = char((i * 7919 + 13) % 251);
    QTest::newRow("not text") << noise;
  }
  void refusedSettingsFileIsLeftAlone() {
    QFETCH(QByteArray, file);
    TestHome home;
    home.Write(u"ini/sys.ini"_s, file);
    RecordingShell shell;
    TSysConfig c;
    LoadConfig(c);
    QCOMPARE(c.Host, u"192.168.0.144"_s);
    QCOMPARE(shell.Messages.size(), 1);
    QVERIFY2(shell.Messages[0].Text.contains(u"sys.ini.new"_s), qPrintable(shell.Messages[0].Text));
    c.Host = u"10.2.2.2"_s;
    SaveConfig(c);
    QCOMPARE(home.Read(u"ini/sys.ini"_s), file);
    TSysConfig back;
    LoadConfig(back); // what was saved beside it counts while the file is in the way
    QCOMPARE(back.Host, u"10.2.2.2"_s);
  }

  void unreadableFileShowsStr527AndLeavesTheRecord() {
    TestHome home;
    home.UseChinese();
    home.Write(u"ini/sys.ini/inside"_s, "a folder where the file should be");
    RecordingShell shell;
    TSysConfig c;
    LoadConfig(c);
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Text, LangText(527));
    QVERIFY(LangText(527) != u"(Null)"_s);
    QVERIFY(c.Host.isEmpty()); // nothing was read: the zero value stays
  }

  void unwritableHomeShowsStr528AndGoesOn() {
    TestHome home;
    home.UseChinese();
    home.Write(u"ini/sys.ini/inside"_s, "a folder where the file should be");
    RecordingShell shell;
    TSysConfig c;
    c.Host = u"1.2.3.4"_s;
    SaveConfig(c);
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Text, LangText(528));
    QCOMPARE(c.Host, u"1.2.3.4"_s);
  }

  void stateCodes_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("code0");
    QTest::addColumn<QString>("code40");
    QTest::newRow("missing file") << QByteArray() << u"---"_s << u"---"_s;
    QTest::newRow("partial") << QByteArray("[Statecode]\n0=Idle\n") << u"Idle"_s << u"---"_s;
    QTest::newRow("gbk, any case")
        << QByteArray("[STATECODE]\n40=\xBF\xD5\xCF\xD0\n") << u"---"_s << u"空闲"_s;
  }
  void stateCodes() {
    QFETCH(QByteArray, file);
    QFETCH(QString, code0);
    QFETCH(QString, code40);
    TestHome home;
    if (!file.isEmpty())
      home.Write(u"ini/sys_RadioB.ini"_s, file);
    LoadStateCodes(AppFile(u"ini/sys_RadioB.ini"_s));
    QCOMPARE(StateCodeText(0), code0);
    QCOMPARE(StateCodeText(40), code40);
    QCOMPARE(StateCodeText(20), u"---"_s);
    QCOMPARE(StateCodeText(41), u"---"_s);
    QCOMPARE(StateCodeText(-1), u"---"_s);
  }

  void shippedStateCodesLoad() {
    TestHome home;
    home.CopyShipped(u"ini/sys_RadioB.ini"_s);
    LoadStateCodes(AppFile(u"ini/sys_RadioB.ini"_s));
    QVERIFY(StateCodeText(0) != u"---"_s);
  }

  // --- the settings window ---

  void ringKeyAtCreateAndAtApply_data() {
    QTest::addColumn<int>("fileFlag");
    QTest::addColumn<int>("createImage");
    QTest::addColumn<int>("createKey");
    QTest::addColumn<int>("choice");
    QTest::addColumn<int>("applyImage");
    QTest::addColumn<int>("applyKey");
    QTest::newRow("ringing, then silenced") << 0 << 15 << 525 << 1 << 14 << 532;
    QTest::newRow("silent, then ringing") << 1 << 14 << 526 << 0 << 15 << 531;
    QTest::newRow("any non-zero is silent") << 5 << 14 << 526 << 1 << 14 << 532;
  }
  void ringKeyAtCreateAndAtApply() {
    QFETCH(int, fileFlag);
    QFETCH(int, createImage);
    QFETCH(int, createKey);
    QFETCH(int, choice);
    QFETCH(int, applyImage);
    QFETCH(int, applyKey);
    TestHome home;
    home.UseChinese();
    home.Write(u"ini/sys.ini"_s, "[Ring]\nFlag=" + QByteArray::number(fileFlag) + "\n");
    Tsysset_Form form;
    QSignalSpy ring(&form, &Tsysset_Form::ringToneButtonChanged);
    form.FormCreate();
    QCOMPARE(ring.size(), 1);
    QCOMPARE(ring[0][0].toInt(), createImage);
    QCOMPARE(ring[0][1].toString(), LangText(createKey));
    QCOMPARE(form.RingFlag_TeSComboBox, fileFlag == 0 ? 0 : 1);
    form.RingFlag_TeSComboBox = choice;
    form.TeEffectButton5Click();
    QCOMPARE(SysConfig().RingFlag, choice);
    QCOMPARE(ring.size(), 2);
    QCOMPARE(ring[1][0].toInt(), applyImage);
    QCOMPARE(ring[1][1].toString(), LangText(applyKey));
  }

  void logPageHiddenWhileLoggingIsOff_data() {
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("hides");
    QTest::newRow("Debug 0") << QByteArray("[System]\nDebug=0\n") << 1;
    QTest::newRow("no Debug key") << QByteArray() << 1;
    QTest::newRow("Debug 1") << QByteArray("[System]\nDebug=1\n") << 0;
  }
  void logPageHiddenWhileLoggingIsOff() {
    QFETCH(QByteArray, file);
    QFETCH(int, hides);
    TestHome home;
    home.Write(u"ini/sys.ini"_s, file);
    Tsysset_Form form;
    QSignalSpy page(&form, &Tsysset_Form::logPageVisibleChanged);
    form.FormCreate();
    QCOMPARE(page.size(), hides);
  }

  void exchangePageAppliesAndCloses() {
    TestHome home;
    Tsysset_Form form;
    form.FormCreate();
    form.Show();
    QCOMPARE(form.HostIP_LMDEdit, u"192.168.0.144"_s);
    form.HostIP_LMDEdit = u"10.0.0.2"_s;
    form.HostPort_LMDEdit = u"5004"_s;
    form.OutNo_LMDEdit = u"0"_s;
    form.LDNo_LMDEdit = u"1"_s;
    form.TeEffectButton1Click();
    QVERIFY(!form.Visible());
    QCOMPARE(SysConfig().Host, u"10.0.0.2"_s);
    QCOMPARE(SysConfig().Port, u"5004"_s);
    QCOMPARE(SysConfig().OutNo, u"0"_s);
    QCOMPARE(SysConfig().LDNo, u"1"_s);
    // What the login window changes meanwhile shows at the next opening.
    SysConfig().Host = u"10.0.0.3"_s;
    form.HostIP_LMDEdit = u"typed but cancelled"_s;
    form.FormShow();
    QCOMPARE(form.HostIP_LMDEdit, u"10.0.0.3"_s);
  }

  void databaseFileMustExist_data() {
    QTest::addColumn<QString>("name"); // below the home; empty for an empty box
    QTest::addColumn<bool>("create");
    QTest::addColumn<int>("key");
    QTest::newRow("existing file") << u"other.db"_s << true << 529;
    QTest::newRow("missing file") << u"nothere.db"_s << false << 530;
    QTest::newRow("a folder") << u"Database"_s << false << 530;
    QTest::newRow("empty") << QString() << false << 530;
  }
  void databaseFileMustExist() {
    QFETCH(QString, name);
    QFETCH(bool, create);
    QFETCH(int, key);
    TestHome home;
    home.UseChinese();
    home.Write(u"Database/keep"_s, "");
    if (create)
      home.Write(name, "db");
    RecordingShell shell;
    Tsysset_Form form;
    form.FormCreate();
    form.Show();
    const QString before = SysConfig().DBFile;
    form.DBFile_TeEdit = name.isEmpty() ? QString() : home.File(name);
    form.TeEffectButton3Click();
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Text, LangText(key));
    QCOMPARE(SysConfig().DBFile, key == 529 ? home.File(name) : before);
    QVERIFY(form.Visible()); // the window stays open either way
  }

  void browseForTheDatabase() {
    TestHome home;
    RecordingShell shell;
    Tsysset_Form form;
    form.FormCreate();
    const QString before = form.DBFile_TeEdit;
    form.TeSpeedButton1Click(); // cancelled
    QCOMPARE(form.DBFile_TeEdit, before);
    shell.FileToChoose = u"/srv/notes.db"_s;
    form.TeSpeedButton1Click();
    QCOMPARE(form.DBFile_TeEdit, u"/srv/notes.db"_s);
    QCOMPARE(shell.FileFilters.last(), u"数据库文件[*.db]|*.db"_s);
  }

  // The database page: the file, or a server named by a database or a
  // service; applied to the record for the next start, saved with [DB].
  void databasePageChoosesTheStore_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("database");
    QTest::addColumn<QString>("service");
    QTest::addColumn<QString>("driver"); // after the apply; "-" when refused
    QTest::newRow("back to the file") << 0 << u"hotel"_s << QString() << QString();
    QTest::newRow("a server") << 1 << u" hotel "_s << QString() << u"QPSQL"_s;
    QTest::newRow("a service alone") << 1 << QString() << u"front"_s << u"QPSQL"_s;
    QTest::newRow("a server without a database") << 1 << QString() << QString() << u"-"_s;
  }
  void databasePageChoosesTheStore() {
    QFETCH(int, kind);
    QFETCH(QString, database);
    QFETCH(QString, service);
    QFETCH(QString, driver);
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "[DB]\nDriver=QPSQL\nHost=db0\nDatabase=old\n");
    home.Write(u"Database/Notes_DB.db"_s, "");
    RecordingShell shell;
    Tsysset_Form form;
    form.FormCreate();
    QCOMPARE(form.DB_Kind_TeComboBox, 1);
    QCOMPARE(form.DB_Host_TeEdit, u"db0"_s);
    form.DB_Kind_TeComboBox = kind;
    form.DBFile_TeEdit = home.File(u"Database/Notes_DB.db"_s);
    form.DB_Host_TeEdit = u"10.0.0.2"_s;
    form.DB_Database_TeEdit = database;
    form.DB_Service_TeEdit = service;
    form.TeEffectButton3Click();
    QCOMPARE(shell.Messages.size(), 1);
    QCOMPARE(shell.Messages[0].Kind,
             driver == u"-"_s ? MessageKind::Warning : MessageKind::Information);
    const TSysConfig &c = SysConfig();
    QCOMPARE(c.DBDriver, driver == u"-"_s ? u"QPSQL"_s : driver);
    QCOMPARE(c.DBDatabase, driver == u"QPSQL"_s ? database.trimmed() : u"old"_s);
    SaveConfig(SysConfig());
    QCOMPARE(LoadedDriver(home), c.DBDriver);
  }

  // The test key: the probe runs on another thread with the fields as the
  // page shows them; the key is off until the answer is on the page.
  void databaseTestAnswersWithoutHoldingTheWindow() {
    TestHome home;
    Tsysset_Form form;
    form.FormCreate();
    QSemaphore answer;
    QThread *probeThread = nullptr;
    TStoreServer asked;
    form.ProbeStoreServer = [&](const TStoreServer &server) {
      probeThread = QThread::currentThread();
      asked = server;
      answer.acquire();
      return TServerProbe{false, u"找不到主机 db9"_s};
    };
    QSignalSpy changed(&form, &Tsysset_Form::dbTestChanged);
    form.DB_Host_TeEdit = u" db9 "_s;
    form.DB_Port_TeSpinEdit = 5433;
    form.TeButton_DB_TestClick();
    form.TeButton_DB_TestClick(); // ignored while the first runs
    QVERIFY(form.DB_Testing);
    QVERIFY(form.DB_TestResult_Label.startsWith(u"正在连接"_s));
    answer.release();
    QTRY_VERIFY(!form.DB_Testing);
    QCOMPARE(form.DB_TestResult_Label, u"找不到主机 db9"_s);
    QCOMPARE(changed.size(), 2);
    QVERIFY(probeThread && probeThread != QThread::currentThread());
    QCOMPARE(asked.Host, u"db9"_s);
    QCOMPARE(asked.Port, 5433);
  }

  // The API page: turned on only with a token long enough; turned off, or
  // refused, nothing else is asked of the token.
  void apiPageApplies_data() {
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QString>("token");
    QTest::addColumn<bool>("applied");
    QTest::newRow("on, long token") << true << u" 0123456789abcdef "_s << true;
    QTest::newRow("on, short token") << true << u"0123456789abcde"_s << false;
    QTest::newRow("off, no token") << false << QString() << true;
  }
  void apiPageApplies() {
    QFETCH(bool, enabled);
    QFETCH(QString, token);
    QFETCH(bool, applied);
    TestHome home;
    RecordingShell shell;
    Tsysset_Form form;
    form.FormCreate();
    QSignalSpy changed(&form, &Tsysset_Form::apiChanged);
    form.Api_Enabled_TeCheckBox = enabled;
    form.Api_Token_TeEdit = token;
    form.Api_Port_TeSpinEdit = 5011;
    form.Api_ApplyClick();
    QCOMPARE(changed.size(), applied ? 1 : 0);
    QCOMPARE(shell.Messages.size(), applied ? 0 : 1);
    QCOMPARE(SysConfig().ApiEnabled, applied && enabled);
    QCOMPARE(SysConfig().ApiPort, applied ? 5011 : 5010);
    QCOMPARE(SysConfig().ApiToken, applied ? token.trimmed() : QString());
  }

  // Types outside the list can't be changed in the window and keep the file's
  // value; a check changed but not applied is still saved, since saving takes
  // what the list shows.
  void portTypeChecksAtApplyAndAtSave() {
    TestHome home;
    home.Write(u"ini/sys.ini"_s, "[ExtsPanel]\nTypeVisible1=0\nTypeVisible2=0\nTypeVisible21=0\n");
    Tsysset_Form form;
    form.FormCreate();
    QVERIFY(!form.TeListView_ExtsPanel[0].Checked); // type 1
    QVERIFY(form.TeListView_ExtsPanel[1].Checked);  // type 4
    form.TeListView_ExtsPanel[1].Checked = false;   // type 4, applied
    form.Show();
    form.TeEffectButton7Click();
    QVERIFY(!form.Visible());
    QVERIFY(!SysConfig().TypeVisible[4]);
    form.TeListView_ExtsPanel[0].Checked = true; // type 1, not applied
    QVERIFY(!SysConfig().TypeVisible[1]);
    SaveConfig(SysConfig());
    const QByteArray text = home.Read(u"ini/sys.ini"_s);
    QVERIFY(text.contains("TypeVisible1=1\n"));
    QVERIFY(text.contains("TypeVisible2=0\n"));
    QVERIFY(text.contains("TypeVisible4=0\n"));
    QVERIFY(text.contains("TypeVisible21=0\n"));
  }

  void linkUrlAppliesAtOnceAndUnappliedTextIsSaved() {
    TestHome home;
    Tsysset_Form form;
    form.FormCreate();
    form.Show();
    form.TeSEdit_LinkURL = u"/opt/crm/show"_s;
    form.TeEffectButton8Click();
    QCOMPARE(SysConfig().LinkURL, u"/opt/crm/show"_s);
    QVERIFY(form.Visible());
    form.TeSEdit_LinkURL = u"/opt/crm/other"_s; // typed, never applied
    SaveConfig(SysConfig());
    QVERIFY(home.Read(u"ini/sys.ini"_s).contains("LinkURL=/opt/crm/other\n"));
    QCOMPARE(SysConfig().LinkURL, u"/opt/crm/show"_s);
  }
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
