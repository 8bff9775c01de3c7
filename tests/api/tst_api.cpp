// The automation API on loopback: a logged-in console with the simulated
// exchange behind it, asked over HTTP as a hotel's system would ask it.
#include "guest/GuestDesk.h"
#include "guest/RingingDesk.h"

#include "api/ApiEvents.h"
#include "api/ApiServer.h"
#include "guest/MoringCall_Unit.h"

#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QWebSocket>

using namespace Qt::StringLiterals;

namespace {
const QDate kDay(2027, 1, 3);
const QByteArray kToken = "0123456789abcdef-test";

struct ApiDesk : RingingDesk {
  TApiServer api{main};
  QNetworkAccessManager http;

  ApiDesk() : RingingDesk(2, QDateTime(kDay, QTime(6, 50))) {}
  bool Begin() {
    return api.Start(QHostAddress::LocalHost, 0, kToken, nullptr) != 0 && RingingDesk::Begin();
  }
  QUrl Url(const QString &path) const {
    return QUrl(u"http://127.0.0.1:%1%2"_s.arg(api.Port()).arg(path));
  }
  // One request; the status and the JSON body.
  int Ask(const QByteArray &method, const QString &path, const QByteArray &body = {},
          const QByteArray &token = kToken, QJsonObject *answer = nullptr) {
    QNetworkRequest request(Url(path));
    if (!token.isEmpty())
      request.setRawHeader("Authorization", "Bearer " + token);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    std::unique_ptr<QNetworkReply> reply(http.sendCustomRequest(request, method, body));
    if (!QTest::qWaitFor([&] { return reply->isFinished(); }, 10000))
      return -1;
    if (answer)
      *answer = QJsonDocument::fromJson(reply->readAll()).object();
    return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
  }
  QList<SimPacket> WakeUpPackets() const {
    QList<SimPacket> sent;
    for (const SimPacket &p : sim.Received()) {
      if (p.TypeCode == 35 && p.Fields.value(u"Sub"_s).toInt() != 2)
        sent << p;
    }
    return sent;
  }
};
} // namespace

class ApiTest : public QObject {
  Q_OBJECT

private slots:
  void init() { SetClock(nullptr); }

  // What a caller gets wrong is refused with its status and a message, and
  // nothing goes to the exchange.
  void refusals_data() {
    QTest::addColumn<QByteArray>("token");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<int>("status");
    const QByteArray ok = R"({"time":"2027-01-03T07:00","mode":1})";
    QTest::newRow("no token") << QByteArray() << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << ok << 401;
    QTest::newRow("wrong token") << QByteArray("0123456789abcdef-tesT") << QByteArray("GET") << u"/api/v1/rooms"_s << QByteArray() << 401;
    QTest::newRow("token prefix") << QByteArray("0123456789abcdef") << QByteArray("GET") << u"/api/v1/rooms"_s << QByteArray() << 401;
    QTest::newRow("unknown room") << kToken << QByteArray("PUT") << u"/api/v1/rooms/9999/wakeup"_s << ok << 404;
    QTest::newRow("dot segments") << kToken << QByteArray("GET") << u"/api/v1/rooms/%2E%2E/8002"_s << QByteArray() << 404;
    QTest::newRow("broken JSON") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << QByteArray(R"({"time":)") << 400;
    QTest::newRow("time of wrong type") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << QByteArray(R"({"time":700})") << 400;
    QTest::newRow("time in the past") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << QByteArray(R"({"time":"2027-01-03T06:00"})") << 400;
    QTest::newRow("mode unknown") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << QByteArray(R"({"time":"2027-01-03T07:00","mode":4})") << 400;
    QTest::newRow("unknown field") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << QByteArray(R"({"time":"2027-01-03T07:00","x":1})") << 400;
    QTest::newRow("body too large") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << QByteArray(70000, ' ') << 413;
    QTest::newRow("request cut on arrival") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/wakeup"_s << QByteArray(1 << 20, ' ') << 0;
    QTest::newRow("not yet built") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/dnd"_s << QByteArray("{}") << 501;
  }
  void refusals() {
    QFETCH(QByteArray, token);
    QFETCH(QByteArray, method);
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    QFETCH(int, status);
    ApiDesk d;
    QVERIFY(d.Begin());
    QJsonObject answer;
    QCOMPARE(d.Ask(method, path, body, token, &answer), status);
    QCOMPARE(answer.value(u"error"_s).toString().isEmpty(), status == 0);
    QVERIFY(d.WakeUpPackets().isEmpty());
  }

  // A PUT is the dialog's apply: the exchange gets the wake-up, the store the
  // room's settings; the DELETE is its cancel. The room reads back both.
  void wakeUpSetAndCancel() {
    ApiDesk d;
    QVERIFY(d.Begin());
    QJsonObject room;
    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/wakeup"_s,
                   R"({"time":"2027-01-03T07:15","mode":3,"daily":true})", kToken, &room),
             200);
    QTRY_COMPARE(d.WakeUpPackets().size(), 1);
    const SimPacket set = d.WakeUpPackets().at(0);
    QCOMPARE(set.Fields.value(u"DstID"_s).toInt(), 1);
    QVERIFY(set.Fields.value(u"CallTime"_s).toString().startsWith(u"202701030715"_s));
    QCOMPARE(GuestDesk::Column(u"select MoringCall_Mode from Exts where portID = 1"_s),
             QStringList{u"3"_s});
    QCOMPARE(d.Ask("GET", u"/api/v1/rooms/8002"_s, {}, kToken, &room), 200);
    QCOMPARE(room.value(u"wakeup"_s)[u"time"_s].toString(), u"2027-01-03T07:15:00"_s);
    QCOMPARE(room.value(u"wakeup"_s)[u"dailyTime"_s].toString(), u"07:15"_s);

    QCOMPARE(d.Ask("DELETE", u"/api/v1/rooms/8002/wakeup"_s), 204);
    QTRY_COMPARE(d.WakeUpPackets().size(), 2);
    QCOMPARE(d.WakeUpPackets().at(1).Fields.value(u"Sub"_s).toInt(), 3);
    QCOMPARE(d.Ask("GET", u"/api/v1/rooms"_s, {}, kToken, &room), 200);
    QCOMPARE(room.value(u"rooms"_s).toArray().size(), 2);
    QVERIFY(room.value(u"rooms"_s)[1][u"wakeup"_s][u"time"_s].isNull());
  }

  // With the link down an API caller must know nothing happened.
  void linkDownSendsNothing() {
    ApiDesk d;
    QVERIFY(d.Begin());
    d.sim.SetAccepting(false);
    d.sim.DropConnection();
    QTRY_COMPARE(int(SysParam().Connected), 0);
    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/wakeup"_s, R"({"time":"2027-01-03T07:00"})"), 503);
    QTest::qWait(50);
    QVERIFY(d.WakeUpPackets().isEmpty());
  }

  // While the batch key walks the checked rooms, the API keeps out of its way:
  // the exchange's answer to an API wake-up would step the walk.
  void batchRunningAnswers409() {
    ApiDesk d;
    QVERIFY(d.Begin());
    d.Check(0);
    d.Check(1);
    d.sim.HoldAnswers(35);
    TMoringCall_Form &f = d.main.MoringCall_Form();
    f.MoCall_Flag_TeSComboBox_ItemIndex = 1;
    f.MoCallDate_TeDateTimePicker = TDateTime::FromDate(kDay);
    f.MoCall_Hour_TeSpinEdit = 7;
    f.MoCall_Minute_TeSpinEdit = 0;
    f.TeButton_MoringCallSet_MultiClick();
    QTRY_COMPARE(d.WakeUpPackets().size(), 1);
    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/wakeup"_s, R"({"time":"2027-01-03T07:30"})"), 409);
    QCOMPARE(d.Ask("DELETE", u"/api/v1/rooms/8001/wakeup"_s), 409);
    QTest::qWait(50);
    QCOMPARE(d.WakeUpPackets().size(), 1);
  }

  // A subscriber with the token sees the room's wake-up result when the
  // exchange rings it; one without is closed.
  void eventsCarryWakeUpResults() {
    ApiDesk d;
    QVERIFY(d.Begin());
    QWebSocket intruder;
    QSignalSpy intruderClosed(&intruder, &QWebSocket::disconnected);
    QWebSocket client;
    QStringList messages;
    connect(&client, &QWebSocket::textMessageReceived, &client,
            [&messages](const QString &m) { messages << m; });
    QNetworkRequest request(QUrl(u"ws://127.0.0.1:%1/api/v1/events"_s.arg(d.api.Port())));
    request.setRawHeader("Authorization", "Bearer " + kToken);
    client.open(request);
    QTRY_COMPARE(client.state(), QAbstractSocket::ConnectedState);
    QCOMPARE(d.api.Events().Subscribers(), 1);
    intruder.open(QNetworkRequest(QUrl(u"ws://127.0.0.1:%1/api/v1/events"_s.arg(d.api.Port()))));
    QTRY_COMPARE(intruderClosed.size(), 1);
    QCOMPARE(d.api.Events().Subscribers(), 1);

    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/wakeup"_s, R"({"time":"2027-01-03T07:00"})"), 200);
    d.sim.SetWakeUpResult(1, ExchangeSim::WakeUpResult::NoAnswer, 10);
    d.at = QDateTime(kDay, QTime(7, 0, 30));
    const auto result = [&] {
      for (const QString &m : messages) {
        const QJsonObject e = QJsonDocument::fromJson(m.toUtf8()).object();
        if (e.value(u"type"_s) == u"wakeup.result"_s)
          return e;
      }
      return QJsonObject();
    };
    QTRY_VERIFY_WITH_TIMEOUT(!result().isEmpty(), 15000);
    QCOMPARE(result().value(u"ext"_s).toString(), u"8002"_s);
    QCOMPARE(result().value(u"answered"_s).toBool(), false);
    QVERIFY(result().value(u"seq"_s).toInt() >= 1);
  }

  // Enabled with a token too short to guard the house: not started, and the
  // operator is told why.
  void shortTokenRefusesToStart_data() {
    QTest::addColumn<QString>("token");
    QTest::addColumn<bool>("started");
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("15 characters") << u"123456789012345"_s << false;
    QTest::newRow("16 characters") << u"1234567890123456"_s << true;
  }
  void shortTokenRefusesToStart() {
    QFETCH(QString, token);
    QFETCH(bool, started);
    LinkedDesk d(1);
    SysConfig().ApiEnabled = true;
    SysConfig().ApiPort = 0;
    SysConfig().ApiToken = token;
    const std::unique_ptr<TApiServer> api = StartConfiguredApi(d.main);
    QCOMPARE(bool(api), started);
    QCOMPARE(d.shell.Balloons.size(), started ? 0 : 1);
  }
};

QTEST_MAIN(ApiTest)
#include "tst_api.moc"
