// The reference recording server on real loopback sockets with a real SQLite
// file: what a console may ask, what it may not, and the sound files.
#include "RecordServer.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int kWait = 10000;

struct Reply {
  int Status = 0;
  QByteArray ContentType;
  QByteArray ContentRange;
  QByteArray Body;
  QJsonObject Json() const { return QJsonDocument::fromJson(Body).object(); }
};

QByteArray Request(const QString &statement, const QJsonObject &params = {}, int version = 1) {
  return QJsonDocument(QJsonObject{{u"version"_s, version},
                                   {u"statement"_s, statement},
                                   {u"params"_s, params}})
      .toJson(QJsonDocument::Compact);
}

// The console's full search, every box set.
const QString kConsoleSearch =
    u"select *,time(strftime('%s',connectTime)-strftime('%s',startTime),'unixepoch') as 通话时长 "
    "from Record_Table where 1=1 and (connectTime>=:from) and (startTime<=:to) "
    "and ((caller=:number) or (called=:number)) "
    "and ((called like :pattern) or (caller like :pattern)) order by connectTime desc"_s;

QList<qint64> IdsOf(const QJsonObject &answer) {
  QList<qint64> ids;
  const int id = int(answer.value(u"columns"_s).toArray().toVariantList().indexOf(u"ID"_s));
  for (const QJsonValue &row : answer.value(u"rows"_s).toArray())
    ids << row.toArray().at(id).toInteger();
  return ids;
}

} // namespace

class RecordServerTest : public QObject {
  Q_OBJECT

  std::unique_ptr<QTemporaryDir> Dir;
  std::unique_ptr<RecordServer> Server;
  QNetworkAccessManager Net;
  QByteArray Wav; // the file with blanks and Chinese characters in its path

  Reply Await(QNetworkReply *reply) {
    [&] { QTRY_VERIFY_WITH_TIMEOUT(reply->isFinished(), kWait); }();
    Reply r{reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(),
            reply->rawHeader("Content-Type"), reply->rawHeader("Content-Range"), reply->readAll()};
    reply->deleteLater();
    return r;
  }
  Reply Post(const QByteArray &body) {
    QNetworkRequest request(QUrl(u"http://127.0.0.1:%1/bin"_s.arg(Server->QueryPort())));
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    return Await(Net.post(request, body));
  }

  // Exactly these bytes as the request target, so no client tidies the path first.
  Reply RawGet(const QByteArray &target, const QByteArray &range = {}) {
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, Server->FilePort());
    QByteArray got;
    QObject::connect(&socket, &QTcpSocket::readyRead, [&] { got += socket.readAll(); });
    socket.write("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" +
                 (range.isEmpty() ? QByteArray() : "Range: " + range + "\r\n") + "\r\n");
    [&] { QTRY_COMPARE_WITH_TIMEOUT(socket.state(), QAbstractSocket::UnconnectedState, kWait); }();
    Reply r;
    const qsizetype end = got.indexOf("\r\n\r\n");
    if (end < 0)
      return r;
    const QList<QByteArray> lines = got.left(end).split('\n');
    r.Status = lines.first().split(' ').value(1).toInt();
    for (const QByteArray &line : lines) {
      const qsizetype colon = line.indexOf(':');
      const QByteArray name = line.left(colon).trimmed().toLower();
      if (name == "content-type")
        r.ContentType = line.mid(colon + 1).trimmed();
      else if (name == "content-range")
        r.ContentRange = line.mid(colon + 1).trimmed();
    }
    r.Body = got.mid(end + 4);
    return r;
  }

private slots:
  void init() {
    Dir = std::make_unique<QTemporaryDir>();
    QVERIFY(Dir->isValid());
    Server = std::make_unique<RecordServer>();
    QVERIFY2(Server->OpenStore(Dir->filePath(u"records.db"_s)), qPrintable(Server->Error()));
    QDir(Dir->path()).mkpath(u"root/前台 录音"_s);
    Server->SetFileRoot(Dir->filePath(u"root"_s));
    QVERIFY2(Server->Listen(QHostAddress::LocalHost, 0, 0), qPrintable(Server->Error()));
    QCOMPARE(Server->AddRecording(u"2026-11-23 08:01:00"_s, u"2026-11-23 08:02:10"_s, u"8001"_s,
                                  u"13800000001"_s, u"20261123"_s, u"1.wav"_s),
             1);
    QCOMPARE(Server->AddRecording(u"2026-11-23 09:00:00"_s, u"2026-11-23 09:00:05"_s,
                                  u"13900000002"_s, u"8001"_s, u"20261123"_s, u"2.wav"_s),
             2);
    QCOMPARE(Server->AddRecording(u"2026-11-24 10:00:00"_s, u"2026-11-24 10:03:00"_s, u"8002"_s,
                                  u"13800000003"_s, QString(), u"/var/rec/3.wav"_s),
             3);

    Wav = "RIFF" + QByteArray(60, 'x') + "end";
    QFile wav(Dir->filePath(u"root/前台 录音/客房 8003.wav"_s));
    QVERIFY(wav.open(QIODevice::WriteOnly) && wav.write(Wav) == Wav.size());
    QFile secret(Dir->filePath(u"secret.txt"_s));
    QVERIFY(secret.open(QIODevice::WriteOnly) && secret.write("secret") == 6);
  }
  void cleanup() {
    Server.reset();
    Dir.reset();
  }

  void selectAnswersRows_data() {
    QTest::addColumn<QString>("statement");
    QTest::addColumn<QJsonObject>("params");
    QTest::addColumn<QList<qint64>>("ids");
    QTest::newRow("whole table") << u"select * from Record_Table order by ID"_s << QJsonObject()
                                 << QList<qint64>{1, 2, 3};
    QTest::newRow("console's search, the number used twice")
        << kConsoleSearch
        << QJsonObject{{u"from"_s, u"2026-11-23 00:00:00"_s},
                       {u"to"_s, u"2026-11-23 23:59:59"_s},
                       {u"number"_s, u"8001"_s},
                       {u"pattern"_s, u"%800%"_s}}
        << QList<qint64>{2, 1};
    QTest::newRow("pattern finds part of a number")
        << u"select * from Record_Table where caller like :p or called like :p order by ID"_s
        << QJsonObject{{u"p"_s, u"%0003%"_s}} << QList<qint64>{3};
    QTest::newRow("number and null parameters")
        << u"select * from Record_Table where ID >= :n and :none is null order by ID"_s
        << QJsonObject{{u"n"_s, 2}, {u"none"_s, QJsonValue::Null}} << QList<qint64>{2, 3};
  }
  void selectAnswersRows() {
    QFETCH(QString, statement);
    QFETCH(QJsonObject, params);
    QFETCH(QList<qint64>, ids);
    const Reply reply = Post(Request(statement, params));
    QCOMPARE(reply.Status, 200);
    QVERIFY(reply.ContentType.startsWith("application/json"));
    const QJsonObject answer = reply.Json();
    QCOMPARE(answer.value(u"error"_s).toString(), QString());
    QCOMPARE(answer.value(u"version"_s).toInt(), 1);
    QCOMPARE(IdsOf(answer), ids);
  }

  void answerCarriesColumnsAndCells() {
    const Reply reply = Post(Request(kConsoleSearch, {{u"from"_s, u"2026-11-23 08:02:10"_s},
                                                      {u"to"_s, u"2026-11-23 08:01:00"_s},
                                                      {u"number"_s, u"13800000001"_s},
                                                      {u"pattern"_s, u"%%"_s}}));
    const QJsonObject answer = reply.Json();
    QCOMPARE(answer.value(u"columns"_s).toArray().toVariantList(),
             QVariantList({u"ID"_s, u"startTime"_s, u"connectTime"_s, u"caller"_s, u"called"_s,
                           u"shortDir"_s, u"VoiceFileName"_s, u"channel"_s, u"通话时长"_s}));
    QCOMPARE(answer.value(u"rows"_s).toArray(),
             QJsonArray({QJsonArray({1, u"2026-11-23 08:01:00"_s, u"2026-11-23 08:02:10"_s,
                                     u"8001"_s, u"13800000001"_s, u"20261123"_s, u"1.wav"_s,
                                     QJsonValue::Null, u"00:01:10"_s})}));
  }

  // Texts come back as stored, whatever they hold, and numbers as numbers.
  void cellsComeBackIntact_data() {
    QTest::addColumn<QString>("text");
    QTest::newRow("quotes and backslashes") << u"a\"b\\c'd"_s;
    QTest::newRow("control characters") << u"line\nnext\ttab\x01\x1f"_s;
    QTest::newRow("Chinese") << u"前台 8001 张三"_s;
    QTest::newRow("empty") << QString();
  }
  void cellsComeBackIntact() {
    QFETCH(QString, text);
    const qint64 id = Server->AddRecording(u"2026-11-25 10:00:00"_s, u"2026-11-25 10:00:01"_s, text,
                                           u"8001"_s, QString(), u"x.wav"_s);
    const QJsonObject answer =
        Post(Request(u"select caller, ID * 0.5, ID from Record_Table where ID = :id"_s,
                     {{u"id"_s, id}}))
            .Json();
    QCOMPARE(answer.value(u"rows"_s).toArray(), QJsonArray({QJsonArray({text, id * 0.5, id})}));
  }

  void refusals_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const auto row = [](const char *name, const QString &statement, int status = 403) {
      QTest::newRow(name) << Request(statement) << status;
    };
    row("insert", u"insert into Record_Table (caller) values ('x')"_s);
    row("update", u"update Record_Table set caller = 'x'"_s);
    row("delete", u"delete from Record_Table"_s);
    row("drop", u"drop table Record_Table"_s);
    row("attach", u"attach database '/tmp/other.db' as other"_s);
    row("pragma", u"pragma journal_mode=delete"_s);
    row("another table", u"select * from sqlite_master"_s);
    row("a subquery of another table",
        u"select * from Record_Table where caller in (select name from sqlite_master)"_s);
    row("two statements", u"select * from Record_Table; delete from Record_Table"_s);
    row("two selects", u"select * from Record_Table; select * from Record_Table"_s);
    row("loading an extension", u"select load_extension('/tmp/x.so')"_s);
    row("an endless recursion",
        u"with recursive c(x) as (select 1 union all select x + 1 from c) select x from c"_s);
    row("explain", u"explain select * from Record_Table"_s);
    row("a table that doesn't exist", u"select * from Calls"_s, 400);
    row("not SQL", u"give me everything"_s, 400);
    row("empty statement", u" ; "_s, 400);
    row("missing parameter", u"select * from Record_Table where caller = :number"_s, 400);
    row("nameless parameter", u"select * from Record_Table where caller = ?"_s, 400);
    QTest::newRow("1 MB body") << Request(u"select * from Record_Table"_s,
                                          {{u"pad"_s, QString(1024 * 1024, u'x')}})
                               << 413;
    QTest::newRow("not JSON") << QByteArray("select * from Record_Table") << 400;
    QTest::newRow("no statement") << QByteArray(R"({"version": 1, "params": {}})") << 400;
    QTest::newRow("no version") << QByteArray(R"({"statement": "select * from Record_Table"})")
                                << 400;
    QTest::newRow("a later version") << Request(u"select * from Record_Table"_s, {}, 2) << 400;
    QTest::newRow("parameter of a kind not carried")
        << Request(u"select * from Record_Table where ID = :n"_s, {{u"n"_s, true}}) << 400;
  }
  void refusals() {
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    const Reply reply = Post(body);
    QCOMPARE(reply.Status, status);
    QVERIFY(reply.ContentType.startsWith("application/json"));
    const QJsonObject answer = reply.Json();
    QVERIFY(!answer.value(u"error"_s).toString().isEmpty());
    QCOMPARE(answer.value(u"rows"_s).toArray(), QJsonArray());
    // Nothing was changed on the way.
    QCOMPARE(IdsOf(Post(Request(u"select ID from Record_Table order by ID"_s)).Json()),
             QList<qint64>({1, 2, 3}));
  }

  void getAnswersWhoIsThere() {
    Server->SetAnswerDelay(50); // a slow server still answers in full
    const Reply reply = Await(
        Net.get(QNetworkRequest(QUrl(u"http://127.0.0.1:%1/bin"_s.arg(Server->QueryPort())))));
    QCOMPARE(reply.Status, 200);
    QCOMPARE(reply.Json().value(u"version"_s).toInt(), 1);
    QVERIFY(reply.Json().value(u"server"_s).toString().startsWith(u"trunkdesk-recordserver"_s));
  }

  void files_data() {
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<QByteArray>("range");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("contentRange");
    const QByteArray wav = "RIFF" + QByteArray(60, 'x') + "end";
    const QByteArray name = '/' + QUrl::toPercentEncoding(u"前台 录音"_s) + '/' +
                            QUrl::toPercentEncoding(u"客房 8003.wav"_s);
    QTest::newRow("blanks and Chinese") << name << QByteArray() << 200 << wav << QByteArray();
    QTest::newRow("range") << name << QByteArray("bytes=2-5") << 206 << QByteArray("FFxx")
                           << QByteArray("bytes 2-5/67");
    QTest::newRow("open range") << name << QByteArray("bytes=60-") << 206 << QByteArray("xxxxend")
                                << QByteArray("bytes 60-66/67");
    QTest::newRow("last bytes") << name << QByteArray("bytes=-3") << 206 << QByteArray("end")
                                << QByteArray("bytes 64-66/67");
    QTest::newRow("range past the end")
        << name << QByteArray("bytes=67-") << 416 << QByteArray() << QByteArray("bytes */67");
    const auto refused = [](const char *rowName, const QByteArray &target) {
      QTest::newRow(rowName) << target << QByteArray() << 404 << QByteArray() << QByteArray();
    };
    refused("dot dot", "/../secret.txt");
    refused("encoded dot dot", "/%2e%2e/secret.txt");
    refused("dot dot after a folder",
            "/" + QUrl::toPercentEncoding(u"前台 录音"_s) + "/%2E%2E/%2e%2e/secret.txt");
    refused("encoded slashes", "/..%2f..%2fsecret.txt");
    refused("backslash", "/..%5csecret.txt");
    refused("NUL", "/secret.txt%00.wav");
    refused("not UTF-8", "/%ff%fe.wav");
    refused("a folder", "/" + QUrl::toPercentEncoding(u"前台 录音"_s));
    refused("missing", "/nothing.wav");
  }
  void files() {
    QFETCH(QByteArray, target);
    QFETCH(QByteArray, range);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, contentRange);
    QCOMPARE(Wav.size(), 67);
    const Reply reply = RawGet(target, range);
    QCOMPARE(reply.Status, status);
    QCOMPARE(reply.ContentRange, contentRange);
    if (status == 404)
      QVERIFY(!reply.Body.contains("secret"));
    else
      QCOMPARE(reply.Body, body);
    if (status == 200)
      QCOMPARE(reply.ContentType, QByteArray("audio/wav"));
  }

  // A path that names the secret file by its absolute path, or reaches it
  // through a link inside the root, is not served either.
  void filesOutsideTheRoot() {
    const QByteArray absolute = QUrl::toPercentEncoding(Dir->filePath(u"secret.txt"_s), "/");
    QCOMPARE(RawGet(absolute).Status, 404);
    QCOMPARE(RawGet("/" + QUrl::toPercentEncoding(Dir->filePath(u"secret.txt"_s))).Status, 404);
    if (!QFile::link(Dir->filePath(u"secret.txt"_s), Dir->filePath(u"root/link.wav"_s)))
      QSKIP("no symbolic links here");
    QCOMPARE(RawGet("/link.wav").Status, 404);
  }

  // Each demo row's talk time is its file's length, and each file is there.
  void demoRowsMatchTheirFiles() {
    QVERIFY2(Server->FillDemo(60), qPrintable(Server->Error()));
    const Reply reply = Post(Request(
        u"select shortDir, VoiceFileName, strftime('%s', connectTime) - strftime('%s', startTime) "
        "from Record_Table where ID > 3"_s));
    const QJsonArray rows = reply.Json().value(u"rows"_s).toArray();
    QCOMPARE(rows.size(), 60);
    QSet<QString> names;
    for (const QJsonValue &value : rows) {
      const QJsonArray row = value.toArray();
      const QString path = row.at(0).toString() + u'/' + row.at(1).toString();
      names << row.at(1).toString();
      const QFileInfo file(Dir->filePath(u"root/"_s + path));
      QVERIFY2(file.isFile(), qPrintable(path));
      QCOMPARE((file.size() - 44) / 16000, row.at(2).toInteger());
    }
    QVERIFY(names.size() > 1);
    // One of them through the file port, as a player fetches it.
    const QString some =
        rows.at(0).toArray().at(0).toString() + u'/' + rows.at(0).toArray().at(1).toString();
    QCOMPARE(RawGet("/" + QUrl::toPercentEncoding(some, "/")).Status, 200);
  }

  void storeThatIsNotADatabase() {
    QFile junk(Dir->filePath(u"junk.db"_s));
    QVERIFY(junk.open(QIODevice::WriteOnly) && junk.write(QByteArray(4096, 'j')) == 4096);
    junk.close();
    RecordServer other;
    QVERIFY(!other.OpenStore(junk.fileName()));
    QVERIFY(!other.Error().isEmpty());
  }
};

QTEST_GUILESS_MAIN(RecordServerTest)
#include "tst_record_server.moc"
