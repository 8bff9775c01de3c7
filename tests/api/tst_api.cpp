// The automation API on loopback: a logged-in console with the simulated
// exchange behind it, asked over HTTP as a hotel's system would ask it.
#include "guest/GuestDesk.h"
#include "guest/RingingDesk.h"

#include "api/ApiEvents.h"
#include "api/ApiServer.h"
#include "guest/BatchWalk.h"
#include "guest/MoringCall_Unit.h"
#include "devices/CallControlDev.h"

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
  int Sent(qint16 typeCode) const {
    const QList<SimPacket> received = sim.Received();
    return int(std::count_if(received.begin(), received.end(),
                             [typeCode](const SimPacket &p) { return p.TypeCode == typeCode; }));
  }
  // A subscriber of the events, with what it has seen so far.
  struct Subscriber {
    QWebSocket socket;
    QList<QJsonObject> events;
    QJsonObject First(const QString &type) const {
      for (const QJsonObject &e : events) {
        if (e.value(u"type"_s) == type)
          return e;
      }
      return {};
    }
  };
  bool Subscribe(Subscriber &s) {
    QObject::connect(&s.socket, &QWebSocket::textMessageReceived, &s.socket,
            [&s](const QString &m) { s.events << QJsonDocument::fromJson(m.toUtf8()).object(); });
    QNetworkRequest request(QUrl(u"ws://127.0.0.1:%1/api/v1/events"_s.arg(api.Port())));
    request.setRawHeader("Authorization", "Bearer " + kToken);
    const int before = api.Events().Subscribers();
    s.socket.open(request);
    return QTest::qWaitFor([&] { return api.Events().Subscribers() == before + 1; }, 5000);
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
    QTest::newRow("dnd mode unknown") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/dnd"_s << QByteArray(R"({"mode":4})") << 400;
    QTest::newRow("dnd window not a time") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/dnd"_s << QByteArray(R"({"mode":1,"windows":[{"start":"25:00","end":"06:00","on":true}]})") << 400;
    QTest::newRow("dnd four windows") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/dnd"_s << QByteArray(R"({"mode":1,"windows":[{},{},{},{}]})") << 400;
    QTest::newRow("class out of range") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/class"_s << QByteArray(R"({"class":9})") << 400;
    QTest::newRow("class a fraction") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/class"_s << QByteArray(R"({"class":1.5})") << 400;
    QTest::newRow("memo too long") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/memo"_s << QByteArray(R"({"memo":")" + QByteArray(2001, 'x') + R"("})") << 400;
    QTest::newRow("check-in without guest") << kToken << QByteArray("POST") << u"/api/v1/rooms/8002/checkin"_s << QByteArray(R"({"class":1})") << 400;
    QTest::newRow("voice mail with a body") << kToken << QByteArray("DELETE") << u"/api/v1/rooms/8002/voicemail"_s << QByteArray(R"({"x":1})") << 400;
    QTest::newRow("check-out by GET") << kToken << QByteArray("GET") << u"/api/v1/rooms/8002/checkout"_s << QByteArray() << 405;
    QTest::newRow("unknown room part") << kToken << QByteArray("PUT") << u"/api/v1/rooms/8002/minibar"_s << QByteArray("{}") << 404;
    QTest::newRow("calls page zero") << kToken << QByteArray("GET") << u"/api/v1/calls?page=0"_s << QByteArray() << 400;
    QTest::newRow("calls number with a quote") << kToken << QByteArray("GET") << u"/api/v1/calls?number=1%27%20OR%20%271%27=%271"_s << QByteArray() << 400;
    QTest::newRow("wake-ups bad time") << kToken << QByteArray("GET") << u"/api/v1/wakeups?from=yesterday"_s << QByteArray() << 400;
    QTest::newRow("wake-ups bad state") << kToken << QByteArray("GET") << u"/api/v1/wakeups?state=maybe"_s << QByteArray() << 400;
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
    QTRY_COMPARE(d.api.Events().Subscribers(), 1);
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

  // Each room write goes through its dialog's logic: the exchange gets the
  // packet, the store the room's columns, and an answer the exchange gives
  // is waited for. Check-in and check-out are events as well.
  void roomWrites() {
    ApiDesk d;
    d.sim.SetServiceClassNames({u"无限制"_s, u"客房"_s, u"空房"_s});
    QVERIFY(d.Begin());
    ApiDesk::Subscriber events;
    QVERIFY(d.Subscribe(events));
    QJsonObject room;
    QCOMPARE(d.Ask("GET", u"/api/v1/classes"_s, {}, kToken, &room), 200);
    QCOMPARE(room.value(u"classes"_s)[2][u"name"_s].toString(), u"空房"_s);

    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/dnd"_s,
                   R"({"mode":2,"windows":[{"start":"22:00","end":"23:30","on":true}]})", kToken,
                   &room),
             200);
    QTRY_COMPARE(d.Sent(24), 1);
    QCOMPARE(GuestDesk::Column(u"select NoDisturb_Time1_Checked + 2 * NoDisturb_Time2_Checked "
                               u"from Exts where portID = 1"_s),
             QStringList{u"1"_s});
    QCOMPARE(room.value(u"dnd"_s)[u"windows"_s][0][u"start"_s].toString(), u"22:00"_s);

    const QString memo = u"晚到; it's \"late\"\nsecond line"_s;
    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/memo"_s,
                   QJsonDocument(QJsonObject{{u"memo"_s, memo}}).toJson(), kToken, &room),
             200);
    QCOMPARE(GuestDesk::Column(u"select Memo from Exts where portID = 1"_s),
             QStringList{u"晚到; it's \"late\"\r\nsecond line\r\n"_s});

    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/class"_s, R"({"class":1})", kToken, &room), 200);
    QCOMPARE(d.Sent(22), 1);
    QCOMPARE(room.value(u"class"_s)[u"name"_s].toString(), u"客房"_s);
    d.sim.SetSrvClassResult(u"000001"_s);
    QCOMPARE(d.Ask("PUT", u"/api/v1/rooms/8002/class"_s, R"({"class":0})", kToken, &room), 502);
    QCOMPARE(d.main.CallControlDev().Device(1)->SrvClass, 1);
    d.sim.SetSrvClassResult(u"000000"_s);

    QCOMPARE(d.Ask("DELETE", u"/api/v1/rooms/8002/voicemail"_s), 204);
    QCOMPARE(d.Sent(40), 1);

    QCOMPARE(d.Ask("POST", u"/api/v1/rooms/8002/checkin"_s, R"({"guest":"Ann Lee","class":1})",
                   kToken, &room),
             200);
    QCOMPARE(room.value(u"guest"_s).toString(), u"Ann Lee"_s);
    QVERIFY(room.value(u"occupied"_s).toBool());
    // Check-out takes the vacant class of the settings; without one it is refused.
    SysConfig().VacantClass = -1;
    QCOMPARE(d.Ask("POST", u"/api/v1/rooms/8002/checkout"_s), 409);
    SysConfig().VacantClass = 2;
    QCOMPARE(d.Ask("POST", u"/api/v1/rooms/8002/checkout"_s, {}, kToken, &room), 200);
    QCOMPARE(room.value(u"occupied"_s).toBool(), false);
    QCOMPARE(room.value(u"memo"_s).toString(), QString());
    QCOMPARE(GuestDesk::Column(u"select Action from RoomHistory order by ID"_s),
             (QStringList{u"入住"_s, u"退房"_s}));
    QTRY_VERIFY(!events.First(u"room.checkout"_s).isEmpty());
    QCOMPARE(events.First(u"room.checkin"_s).value(u"guest"_s).toString(), u"Ann Lee"_s);
    QVERIFY(events.First(u"room.checkout"_s).value(u"done"_s).toBool());
    // Nothing of this asked or told the operator anything.
    QVERIFY(d.shell.Messages.isEmpty());
  }

  // A silent exchange: the check-in's answer is a 504 after the step's
  // time-out, and the room stays as it was.
  void silentExchangeAnswers504() {
    ApiDesk d;
    d.sim.SetServiceClassNames({u"无限制"_s, u"客房"_s});
    QVERIFY(d.Begin());
    d.main.BatchWalk().Timer_MultiProcess.setInterval(200);
    d.sim.HoldAnswers(22);
    QCOMPARE(d.Ask("POST", u"/api/v1/rooms/8002/checkin"_s, R"({"guest":"B","class":1})"), 504);
    QCOMPARE(GuestDesk::Column(u"select Occupied from Exts where portID = 1"_s),
             QStringList{u"0"_s});
  }

  // The record reads page newest first with their count; the values of the
  // query only ever go to the store bound.
  void callsAndWakeUpsArePaged() {
    ApiDesk d;
    QVERIFY(d.Begin());
    for (int i = 0; i < 120; ++i) {
      TPBXConRecord r;
      r.Caller = i % 2 ? u"8001"_s : u"13900%1"_s.arg(i, 3, 10, QChar(u'0'));
      r.Called = u"8002"_s;
      r.startTime = TDateTime::FromQDateTime(QDateTime(kDay, QTime(8, 0)).addSecs(60 * i));
      r.RecType = 1;
      Sys_DM().AddPBXConRecord(r);
    }
    TMoringCallLog w;
    w.RoomNo = u"302"_s;
    w.Ext = u"8002"_s;
    w.MoringCallTime = TDateTime::FromQDateTime(QDateTime(kDay, QTime(7, 0)));
    w.State = 2;
    Sys_DM().AddMoringCallLog(w);
    QJsonObject page;
    QCOMPARE(d.Ask("GET", u"/api/v1/calls?page=3"_s, {}, kToken, &page), 200);
    QCOMPARE(page.value(u"count"_s).toInt(), 120);
    QCOMPARE(page.value(u"calls"_s).toArray().size(), 20);
    QCOMPARE(page.value(u"calls"_s)[0][u"start"_s].toString(), u"2027-01-03T08:19:00"_s);
    QCOMPARE(d.Ask("GET", u"/api/v1/calls?number=13900&from=2027-01-03T09:00&to=2027-01-03"_s,
                   {}, kToken, &page),
             200);
    QCOMPARE(page.value(u"count"_s).toInt(), 30);
    QCOMPARE(d.Ask("GET", u"/api/v1/wakeups?room=302&state=failed"_s, {}, kToken, &page), 200);
    QCOMPARE(page.value(u"wakeups"_s).toArray().size(), 1);
    QCOMPARE(page.value(u"wakeups"_s)[0][u"answered"_s].toBool(), false);
    QCOMPARE(d.Ask("GET", u"/api/v1/wakeups?room=8002%27--&state=failed"_s, {}, kToken, &page), 200);
    QCOMPARE(page.value(u"count"_s).toInt(), 0);
  }

  // A received call record is an event.
  void callRecordsAreEvents() {
    ApiDesk d;
    QVERIFY(d.Begin());
    d.api.WatchCallRecords(d.udp);
    d.udp.SetLoggedIn(true);
    ApiDesk::Subscriber events;
    QVERIFY(d.Subscribe(events));
    d.sim.SendCallRecord(u"8002"_s, u"13912345678"_s);
    QTRY_VERIFY(!events.First(u"call.record"_s).isEmpty());
    QCOMPARE(events.First(u"call.record"_s).value(u"called"_s).toString(), u"13912345678"_s);
  }

  // Connections that hold the API without asking anything are closed, and
  // past the limit new ones are closed at once; the API still answers.
  void idleAndExcessConnections() {
    ApiDesk d;
    d.api.IdleMs = 300;
    QVERIFY(d.Begin());
    QTcpSocket silent;
    silent.connectToHost(QHostAddress::LocalHost, d.api.Port());
    QTRY_COMPARE(silent.state(), QAbstractSocket::ConnectedState);
    QTRY_COMPARE_WITH_TIMEOUT(silent.state(), QAbstractSocket::UnconnectedState, 5000);
    std::vector<std::unique_ptr<QTcpSocket>> held;
    for (int i = 0; i < TApiServer::kMaxConnections + 5; ++i) {
      held.push_back(std::make_unique<QTcpSocket>());
      held.back()->connectToHost(QHostAddress::LocalHost, d.api.Port());
    }
    QTRY_VERIFY(std::count_if(held.begin(), held.end(), [](const auto &s) {
                  return s->state() == QAbstractSocket::UnconnectedState;
                }) >= 5);
    held.clear();
    QCOMPARE(d.Ask("GET", u"/api/v1/rooms"_s), 200);
  }

  // A subscriber that never reads is cut off once a megabyte waits for it;
  // one that reads gets every event, and the queue between stays bounded.
  void subscriberThatNeverReadsIsCutOff() {
    ApiDesk d;
    QVERIFY(d.Begin());
    ApiDesk::Subscriber reader;
    QVERIFY(d.Subscribe(reader));
    QTcpSocket deaf;
    deaf.setReadBufferSize(1);
    deaf.connectToHost(QHostAddress::LocalHost, d.api.Port());
    QVERIFY(deaf.waitForConnected(5000));
    deaf.write("GET /api/v1/events HTTP/1.1\r\nHost: x\r\nUpgrade: websocket\r\n"
               "Connection: Upgrade\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n"
               "Sec-WebSocket-Version: 13\r\nAuthorization: Bearer " + kToken + "\r\n\r\n");
    QTRY_COMPARE(d.api.Events().Subscribers(), 2);
    const QString pad(2000, u'x');
    for (int round = 0; round < 40 && d.api.Events().Subscribers() == 2; ++round) {
      for (int i = 0; i < 500; ++i)
        d.api.Events().Publish({{u"type"_s, u"test"_s}, {u"pad"_s, pad}});
      QTest::qWait(20);
    }
    QTRY_COMPARE(d.api.Events().Subscribers(), 1);
    const quint64 last = d.api.Events().LastSequence();
    QTRY_VERIFY_WITH_TIMEOUT(!reader.events.isEmpty() &&
                                 reader.events.last().value(u"seq"_s).toInteger() == qint64(last),
                             20000);
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
