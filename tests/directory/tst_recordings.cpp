// The recordings page against the reference recording server on loopback, and
// against a scripted server for what a broken one sends; the player window's
// logic over a stand-in player.
#include "RecordServer.h"
#include "common/RecordingShell.h"
#include "common/TestHome.h"
#include "directory/AudioPlay_Form.h"
#include "directory/RecordServerPage.h"
#include "support/LanguagePack.h"
#include "support/Paths.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
// A page wired to a server on this machine, its ports as the server picked them.
struct Desk {
  TestHome home;
  RecordingShell shell;
  TRecordServerPage page;
  Desk(quint16 queryPort, quint16 filePort = 0) {
    home.CopyShipped(u"ini/lang_English.lan"_s);
    LanguagePack().LoadLanguageFile(AppFile(u"ini/lang_English.lan"_s));
    page.TeSEdit_RecordIP = u"127.0.0.1"_s;
    page.QueryPort = queryPort;
    page.FilePort = filePort;
    page.HTTPChannel.TimeoutMs = 1500;
  }
  // Runs the page's action and waits for its answer to show.
  bool Act(void (TRecordServerPage::*action)()) {
    QSignalSpy changed(&page, &TRecordServerPage::changed);
    (page.*action)();
    return changed.wait(5000) || changed.size() > 1;
  }
};

// Answers every request on a port with one canned HTTP answer, or never.
struct ScriptedServer {
  QTcpServer server;
  QByteArray answer;
  explicit ScriptedServer(QByteArray canned) : answer(std::move(canned)) {
    server.listen(QHostAddress::LocalHost);
    QObject::connect(&server, &QTcpServer::newConnection, &server, [this] {
      QTcpSocket *s = server.nextPendingConnection();
      QObject::connect(s, &QTcpSocket::readyRead, s, [this, s] {
        s->readAll();
        if (!answer.isEmpty())
          s->write(answer);
      });
    });
  }
};

QByteArray Http(const QByteArray &status, const QByteArray &body,
                const QByteArray &type = "application/json") {
  return "HTTP/1.1 " + status + "\r\nContent-Type: " + type +
         "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
}

class FakeOutput : public TMediaOutput {
public:
  QList<QString> Calls;
  QUrl Source;
  qint64 At = 0, Length = 0;
  void SetSource(const QUrl &s) override { Source = s, Calls << u"source"_s; }
  void Play() override { Calls << u"play"_s; }
  void Pause() override { Calls << u"pause"_s; }
  void Stop() override { Calls << u"stop"_s; }
  void SetPosition(qint64 ms) override { At = ms; }
  void SetVolume(int percent) override { Calls << u"volume %1"_s.arg(percent); }
  qint64 Position() const override { return At; }
  qint64 Duration() const override { return Length; }
  bool Playing() const override { return false; }
};
} // namespace

class RecordingsTest : public QObject {
  Q_OBJECT

  RecordServer m_server;
  QTemporaryDir m_root;

private slots:
  void initTestCase() {
    QVERIFY(m_server.OpenStore(m_root.filePath(u"recordings.db"_s)));
    m_server.SetFileRoot(m_root.path());
    QVERIFY(m_server.Listen(QHostAddress::LocalHost, 0, 0));
    const struct {
      const char16_t *Start, *End, *Caller, *Called, *Dir, *File;
    } kRows[] = {
        {u"2026-11-20 09:00:00", u"2026-11-20 09:01:10", u"8001", u"13800000001", u"20261120", u"a b 前台.wav"},
        {u"2026-11-21 10:00:00", u"2026-11-21 10:00:30", u"13900000002", u"8001", u"20261121", u"2.wav"},
        {u"2026-11-22 11:00:00", u"2026-11-22 11:02:00", u"8002", u"8003", u"", u""},
        {u"2026-11-22 12:00:00", u"2026-11-22 12:00:05", u"8\"'1", u"8003", u"", u"/tmp/x.wav"},
    };
    for (const auto &r : kRows)
      QVERIFY(m_server.AddRecording(QString::fromUtf16(r.Start), QString::fromUtf16(r.End),
                                    QString::fromUtf16(r.Caller), QString::fromUtf16(r.Called),
                                    QString::fromUtf16(r.Dir), QString::fromUtf16(r.File)) > 0);
    QDir(m_root.path()).mkpath(u"20261120"_s);
    QFile wav(m_root.filePath(u"20261120/a b 前台.wav"_s));
    QVERIFY(wav.open(QIODevice::WriteOnly));
    wav.write(QByteArray(4000, 'w'));
  }

  // The boxes in the order the statement takes them; values only as parameters.
  void search_data() {
    QTest::addColumn<QString>("own"); // the own-extension box; ticked unless 8001
    QTest::addColumn<QString>("number");
    QTest::addColumn<bool>("exact");
    QTest::addColumn<bool>("like");
    QTest::addColumn<bool>("dates");
    QTest::addColumn<QStringList>("callers"); // found, newest first; empty: nothing asked
    QTest::newRow("blank own extension asks nothing")
        << u" "_s << u"8001"_s << true << true << true << QStringList();
    QTest::newRow("part of a number") << u"8001"_s << u"800"_s << false << true << false
                                      << QStringList{u"8\"'1"_s, u"8002"_s, u"13900000002"_s, u"8001"_s};
    QTest::newRow("exact number") << u"8001"_s << u"8001"_s << true << false << false
                                  << QStringList{u"13900000002"_s, u"8001"_s};
    QTest::newRow("dates cut both ends") << u"8001"_s << u"800"_s << false << true << true
                                         << QStringList{u"8002"_s, u"13900000002"_s};
    QTest::newRow("quotes are searched for") << u"8001"_s << u"\"'"_s << false << true << false
                                             << QStringList{u"8\"'1"_s};
    QTest::newRow("own extension only") << u"8003"_s << QString() << false << false << false
                                        << QStringList{u"8\"'1"_s, u"8002"_s};
  }
  void search() {
    QFETCH(QString, own);
    QFETCH(QString, number);
    QFETCH(bool, exact);
    QFETCH(bool, like);
    QFETCH(bool, dates);
    QFETCH(QStringList, callers);
    Desk d(m_server.QueryPort());
    d.page.Edit_Caller = own;
    d.page.CheckBox_Caller = own != u"8001"_s;
    d.page.CheckBox_ExactNo = exact;
    d.page.Edit_ExactNo = number;
    d.page.CheckBox_LikeNo = like;
    d.page.Edit_LikeNo = number;
    d.page.CheckBox_RecordStart = d.page.CheckBox_RecordEnd = dates;
    TryStrToDateTime(u"2026-11-21"_s, &d.page.DateTimePicker_RecordStart_Date);
    d.page.DateTimePicker_RecordStart_Time = {};
    TryStrToDateTime(u"2026-11-22"_s, &d.page.DateTimePicker_RecordEnd_Date);
    TryStrToDateTime(u"11:30:00"_s, &d.page.DateTimePicker_RecordEnd_Time);
    if (callers.isEmpty()) {
      d.page.TeButton_RecordSearchClick();
      QCOMPARE(d.page.RecordResultTag, 0);
      QVERIFY(!d.page.HTTPChannel.Busy());
      return;
    }
    QVERIFY(d.Act(&TRecordServerPage::TeButton_RecordSearchClick));
    QCOMPARE(d.page.RecordResultTag, 1);
    QStringList found;
    for (int row = 0; row < d.page.DBGridEh_Record.RowCount(); ++row)
      found << d.page.DBGridEh_Record.Value(row, u"caller"_s);
    QCOMPARE(found, callers);
    if (callers.first() == u"8002"_s)
      QCOMPARE(d.page.DBGridEh_Record.Value(0, u"通话时长"_s), u"00:02:00"_s);
  }

  void connectAndRefuse() {
    Desk d(m_server.QueryPort());
    QVERIFY(d.Act(&TRecordServerPage::TeButton_Connect2RecServerClick));
    QCOMPARE(d.page.StaticText_RecordMsg, u"录音服务器连接成功!"_s);
    QCOMPARE(d.page.LMDSimpleLabel_status, u"连接成功！"_s);
    QCOMPARE(d.page.TeButton_Connect2RecServer_Caption, u"中断连接"_s);
    QVERIFY(d.page.TeButton_RecordSearch_Enabled);
    // A statement that writes is the server's to refuse; the rows shown stay.
    d.page.Edit_Caller = u"8001"_s;
    QVERIFY(d.Act(&TRecordServerPage::TeButton_RecordSearchClick));
    const int rows = d.page.DBGridEh_Record.RowCount();
    QSignalSpy changed(&d.page, &TRecordServerPage::changed);
    d.page.RecordServerQuery({u"delete from Record_Table"_s, {}});
    QVERIFY(changed.wait(5000));
    QVERIFY(!d.page.StaticText_RecordMsg.isEmpty());
    QVERIFY(d.page.StaticText_RecordMsg != u"录音服务器连接成功!"_s);
    QCOMPARE(d.page.DBGridEh_Record.RowCount(), rows);
    QVERIFY(d.page.Connected);
    d.page.TeButton_Connect2RecServerClick();
    QCOMPARE(d.page.TeButton_Connect2RecServer_Caption, u"连接"_s);
    QCOMPARE(d.page.LMDSimpleLabel_status, u"连接中断"_s);
  }

  // Where a row plays from, and a name with blanks and Chinese characters
  // arriving from the server's file port.
  void play() {
    Desk d(m_server.QueryPort(), m_server.FilePort());
    d.page.Edit_Caller = u"8001"_s;
    QVERIFY(d.Act(&TRecordServerPage::TeButton_RecordSearchClick));
    QSignalSpy play(&d.page, &TRecordServerPage::playRequested);
    const auto rowOf = [&](const QString &caller) {
      for (int row = 0; row < d.page.DBGridEh_Record.RowCount(); ++row)
        if (d.page.DBGridEh_Record.Value(row, u"caller"_s) == caller)
          return row;
      return -1;
    };
    d.page.DBGridEh_RecordDblClick(rowOf(u"8\"'1"_s));
    QCOMPARE(play.takeFirst().at(0).toUrl(), QUrl::fromLocalFile(u"/tmp/x.wav"_s));
    d.page.DBGridEh_RecordDblClick(rowOf(u"8002"_s)); // no file at all
    QVERIFY(play.isEmpty());
    QCOMPARE(d.shell.Messages.size(), 1);
    QVERIFY(d.shell.Messages.first().Text.contains(u"Invalid recording path"_s));
    d.page.DBGridEh_RecordDblClick(rowOf(u"8001"_s));
    const QList<QVariant> args = play.takeFirst();
    QCOMPARE(args.at(1).toString(), u"8001-->>13800000001"_s);
    QNetworkAccessManager net;
    QNetworkReply *reply = net.get(QNetworkRequest(args.at(0).toUrl()));
    QSignalSpy done(reply, &QNetworkReply::finished);
    QVERIFY(done.wait(5000));
    QCOMPARE(reply->readAll().size(), 4000);
    delete reply;
  }

  void sourceText() {
    using namespace RecordProtocol;
    QCOMPARE(SourceText(u"192.168.0.50"_s, u"20240101"_s, u"a.wav"_s),
             u"http://192.168.0.50:8097/20240101/a.wav"_s);
    QCOMPARE(SourceText(u"h"_s, {}, u"d:\\rec\\1.wav"_s), u"d:\\rec\\1.wav"_s);
    QCOMPARE(SourceUrl(u"h"_s, {}, u"d:\\rec\\1.wav"_s), QUrl::fromLocalFile(u"d:\\rec\\1.wav"_s));
    QCOMPARE(SourceUrl(u"h"_s, {}, u"http://x/1.wav"_s), QUrl(u"http://x/1.wav"_s));
    QCOMPARE(SourceUrl(u"h"_s, u"d"_s, u"#1 前.wav"_s).toEncoded(),
             QByteArray("http://h:8097/d/%231%20%E5%89%8D.wav"));
  }

  // What a broken or slow server sends: the page says the link broke, logs
  // it, keeps its rows, and the desk's event loop never stops.
  void faults_data() {
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("rows"); // true: rows shown anyway
    const QByteArray good = R"({"version":1,"error":"","columns":["caller","called","x"],)"
                            R"("rows":[["1"],["2","3","4","5"],null,[7,null,true]]})";
    QTest::newRow("500") << Http("500 Internal Server Error", "oops", "text/plain") << false;
    QTest::newRow("not JSON") << Http("200 OK", "{\"version\":1,\"rows\":[") << false;
    QTest::newRow("never answers") << QByteArray() << false;
    QTest::newRow("cut short") << Http("200 OK", good).chopped(20) << false;
    QTest::newRow("50 MB") << Http("200 OK", QByteArray(50 << 20, ' ')) << false;
    QTest::newRow("missing and extra cells") << Http("200 OK", good) << true;
  }
  void faults() {
    QFETCH(QByteArray, answer);
    QFETCH(bool, rows);
    ScriptedServer scripted(answer);
    Desk d(scripted.server.serverPort());
    d.page.HTTPChannel.TimeoutMs = 400;
    d.page.Edit_Caller = u"8001"_s;
    int ticks = 0;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] { ++ticks; });
    tick.start(20);
    QVERIFY(d.Act(&TRecordServerPage::TeButton_RecordSearchClick));
    if (answer.isEmpty())
      QVERIFY(ticks > 5); // the desk's loop ran on while the server said nothing
    if (rows) {
      QCOMPARE(d.page.DBGridEh_Record.RowCount(), 4);
      QCOMPARE(d.page.DBGridEh_Record.Value(1, u"x"_s), u"4"_s);
      QCOMPARE(d.page.DBGridEh_Record.Value(3, u"caller"_s), u"7"_s);
      return;
    }
    QCOMPARE(d.page.StaticText_RecordMsg, u"录音服务器连接异常!!!"_s);
    QCOMPARE(d.page.LMDSimpleLabel_status, u"连接中断"_s);
    QCOMPARE(d.page.TeButton_Connect2RecServer_Caption, u"连接"_s);
    QCOMPARE(d.page.DBGridEh_Record.RowCount(), 0);
  }

  void serverDown() {
    quint16 closed;
    {
      QTcpServer probe;
      probe.listen(QHostAddress::LocalHost);
      closed = probe.serverPort();
    }
    Desk d(closed);
    QVERIFY(d.Act(&TRecordServerPage::TeButton_Connect2RecServerClick));
    QCOMPARE(d.page.StaticText_RecordMsg, u"录音服务器连接异常!!!"_s);
    QCOMPARE(d.page.TeButton_Connect2RecServer_Caption, u"连接"_s);
  }

  void player() {
    FakeOutput out;
    TAudioPlay_Form form(out);
    out.Length = 70'000;
    form.Play(QUrl(u"http://h:8097/d/a.wav"_s), u"8001-->>8002"_s);
    QCOMPARE(out.Source, QUrl(u"http://h:8097/d/a.wav"_s));
    QVERIFY(out.Calls.contains(u"play"_s));
    QVERIFY(form.Timer.isActive());
    QCOMPARE(form.Caption, u"8001-->>8002"_s);
    form.SeekTo(95'000); // past the end: held at the end
    QCOMPARE(out.At, 70'000);
    form.SeekTo(12'500);
    QCOMPARE(form.StaticText_StartTime, u"00:00:12"_s);
    QCOMPARE(form.StaticText_TimeLong, u" 00:01:10"_s);
    form.PauseClick();
    QCOMPARE(out.Calls.last(), u"pause"_s);
    form.PauseClick();
    QCOMPARE(out.Calls.last(), u"play"_s);
    form.FormClose();
    QVERIFY(!form.Timer.isActive());
    QCOMPARE(out.Source, QUrl());
    QVERIFY(out.Calls.contains(u"stop"_s));
  }
};

QTEST_GUILESS_MAIN(RecordingsTest)
#include "tst_recordings.moc"
