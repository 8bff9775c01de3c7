#include "api/ApiServer.h"

#include "api/ApiEvents.h"
#include "api/ApiLogs.h"
#include "api/ApiRooms.h"
#include "api/JsonText.h"
#include "HttpAnswer.h"
#include "console/Main_Form.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "devices/UDPServerMain.h"
#include "directory/StoreError.h"
#include "guest/BatchWalk.h"
#include "guest/ExtsView.h"
#include "guest/FrontDesk.h"
#include "guest/MoringCall_Unit.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QAbstractHttpServer>
#include <QHttpServerRequest>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpSocket>
#include <QUrlQuery>

using namespace Qt::StringLiterals;

class TApiServer::Http : public QAbstractHttpServer {
public:
  explicit Http(TApiServer &owner) : m_owner(owner) {}

protected:
  bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override {
    m_owner.Serve(request, socket);
    return true;
  }
  void missingHandler(const QHttpServerRequest &request, QTcpSocket *socket) override {
    m_owner.Serve(request, socket);
  }

private:
  TApiServer &m_owner;
};

namespace {
QJsonObject Error(const QString &message) {
  return {{u"error"_s, message}};
}
} // namespace

TApiServer::TApiServer(TMain_Form &main, QObject *parent)
    : QObject(parent), m_main(main), m_http(std::make_unique<Http>(*this)) {
  // A batch is under way from its first send until the walk ends or times out.
  connect(&main.MoringCall_Form(), &TMoringCall_Form::batchStarted, this, [this] {
    m_walkRunning = SysParam().MyID != kNoSession;
    m_walkStep.start();
  });
  connect(&main.BatchWalk(), &TBatchWalk::stepSent, this, [this] {
    m_walkRunning = true;
    m_walkStep.start();
  });
  connect(&main.BatchWalk(), &TBatchWalk::finished, this, [this] { m_walkRunning = false; });
  connect(&main.BatchWalk(), &TBatchWalk::timedOut, this, [this] { m_walkRunning = false; });

  connect(&main.ExtsView(), &TExtsView::moringResultLogged, this,
          [this](int id, const QString &ext, const QString &roomNo, TDateTime when, int state) {
            Publish({{u"type"_s, u"wakeup.result"_s},
                               {u"id"_s, id},
                               {u"ext"_s, ext},
                               {u"room"_s, roomNo},
                               {u"time"_s, ApiTime(when)},
                               {u"answered"_s, state == 1}});
          });
  connect(&main.DeviceEvents(), &TDeviceEvents::Ext_UpdateRow, this, &TApiServer::StatusSeen);
  connect(&main.FrontDesk(), &TFrontDesk::roomFinished, this, &TApiServer::SequenceEnded);
}

void TApiServer::WatchCallRecords(TUDPMainForm &udp) {
  connect(&udp, &TUDPMainForm::conRecordReceived, this, [this](const TPBXConRecord &r) {
    Publish({{u"type"_s, u"call.record"_s},
                       {u"caller"_s, r.Caller},
                       {u"called"_s, r.Called},
                       {u"start"_s, ApiTime(r.startTime)},
                       {u"recType"_s, r.RecType},
                       {u"direction"_s, r.IOFlag}});
  });
}

TApiServer::~TApiServer() = default;

QString TApiServer::Refusal(const TSysConfig &c) {
  if (const QString token = ApiTokenRefusal(c.ApiToken); !token.isEmpty())
    return token;
  if (QHostAddress(c.ApiListen).isNull())
    return u"[Api] Listen is not an address: %1"_s.arg(c.ApiListen);
  return {};
}

quint16 TApiServer::Start(const QHostAddress &address, quint16 port, const QByteArray &token,
                          QString *error) {
  if (const QString refusal = ApiTokenRefusal(QString::fromUtf8(token)); !refusal.isEmpty()) {
    if (error)
      *error = refusal;
    return 0;
  }
  m_expected = "Bearer " + token;
  m_events = std::make_unique<TApiEvents>(m_expected);
  // A request past the cap (with its headers) is cut as it arrives, before
  // the server has read it whole; one under the cap with a large body still
  // gets its 413.
  HttpAnswer::Limits limits(kMaxBodyBytes + 16 * 1024);
  limits.MaxConnections = kMaxConnections;
  limits.IdleMs = IdleMs;
  limits.Claims = &TApiEvents::AsksForEvents;
  limits.Take = [this](QTcpSocket *socket) { m_events->Add(socket); };
  m_port = HttpAnswer::Listen(*m_http, address, port, limits, error);
  return m_port;
}

bool TApiServer::Authorized(const QByteArray &authorization) const {
  return TokenMatches(authorization, m_expected);
}

void TApiServer::Serve(const QHttpServerRequest &request, QTcpSocket *socket) {
  Reply reply;
  if (!Authorized(request.value("authorization"))) {
    reply = {401, Error(u"missing or wrong bearer token"_s)};
  } else if (request.body().size() > kMaxBodyBytes) {
    reply = {413, Error(u"body larger than %1 bytes"_s.arg(kMaxBodyBytes))};
  } else {
    try {
      reply = Route(request);
    } catch (const std::exception &e) {
      WriteLog(u"API: %1 failed: %2"_s.arg(request.url().path(), QString::fromUtf8(e.what())));
      reply = {500, Error(u"internal error; see the console's log"_s)};
    }
  }
  if (reply.Deferred) {
    m_waiting.Socket = socket;
    m_waiting.Close = HttpAnswer::WantsClose(request);
    return;
  }
  Write(socket, reply, HttpAnswer::WantsClose(request));
}

void TApiServer::Write(QTcpSocket *socket, const Reply &reply, bool close) {
  HttpAnswer::Answer answer;
  answer.Status = reply.Status;
  if (reply.Status != 204) {
    answer.ContentType = "application/json";
    answer.Body = reply.Text.isEmpty() ? QJsonDocument(reply.Body).toJson(QJsonDocument::Compact)
                                       : reply.Text;
  }
  if (reply.Status == 401)
    answer.Headers.append(qMakePair(QByteArray("WWW-Authenticate"), QByteArray("Bearer")));
  HttpAnswer::Write(socket, answer, close);
}

TApiServer::Reply TApiServer::Route(const QHttpServerRequest &request) {
  using Method = QHttpServerRequest::Method;
  // The encoded path: a percent trick never turns into a separator or a dot.
  QStringList parts = request.url().path(QUrl::FullyEncoded).split(u'/');
  if (!parts.isEmpty() && parts.first().isEmpty())
    parts.removeFirst();
  if (!parts.isEmpty() && parts.last().isEmpty())
    parts.removeLast();
  if (parts.size() < 3 || parts.at(0) != u"api"_s || parts.at(1) != u"v1"_s)
    return {404, Error(u"no such resource"_s)};
  const Method method = request.method();
  const QString &what = parts.at(2);
  const auto wrongMethod = [] { return Reply{405, Error(u"method not allowed here"_s)}; };
  if (what == u"rooms"_s) {
    if (parts.size() == 3)
      return method == Method::Get ? Rooms() : wrongMethod();
    const QString &ext = parts.at(3);
    if (parts.size() == 4)
      return method == Method::Get ? Room(ext) : wrongMethod();
    if (parts.size() == 5) {
      const int id = DeviceOfExt(ext);
      if (id < 0)
        return {404, Error(u"no room with that extension"_s)};
      return RoomWrite(id, parts.at(4), method, request.body());
    }
  } else if (parts.size() == 3 && (what == u"calls"_s || what == u"wakeups"_s)) {
    if (method != Method::Get)
      return wrongMethod();
    QString error;
    const QUrlQuery query(request.url());
    const QJsonObject page = what == u"calls"_s ? CallsPage(query, &error) : WakeUpsPage(query, &error);
    if (!error.isEmpty())
      return {400, Error(error)};
    return {200, page};
  } else if (parts.size() == 3 && what == u"classes"_s) {
    return method == Method::Get ? Classes() : wrongMethod();
  } else if (parts.size() == 3 && what == u"events"_s) {
    return {400, Error(u"events are a WebSocket: connect with an upgrade"_s)};
  }
  return {404, Error(u"no such resource"_s)};
}

int TApiServer::DeviceOfExt(const QString &ext) const {
  const TExtGridModel &g = m_main.ExtsView().AdvStringGrid_Exts;
  for (int slot = 0; slot < g.SlotCount(); ++slot) {
    bool ok = false;
    const int id = g.Cell(slot, TExtGridModel::ColID).toInt(&ok);
    const TPhoneTis *p = ok ? m_main.CallControlDev().Device(id) : nullptr;
    if (p && p->TelNos == ext)
      return id;
  }
  return -1;
}

TApiServer::Reply TApiServer::Rooms() {
  const QStringList names = m_main.DeviceEvents().SrvClassNames.stringList();
  const TExtGridModel &g = m_main.ExtsView().AdvStringGrid_Exts;
  TJsonText out(512 * qsizetype(g.SlotCount()));
  out.BeginObject().Key("rooms").BeginArray();
  for (int slot = 0; slot < g.SlotCount(); ++slot) {
    bool ok = false;
    const int id = g.Cell(slot, TExtGridModel::ColID).toInt(&ok);
    if (const TPhoneTis *p = ok ? m_main.CallControlDev().Device(id) : nullptr)
      WriteRoom(out, *p, names);
  }
  out.EndArray().EndObject();
  return {200, {}, false, out.Text()};
}

TApiServer::Reply TApiServer::Room(const QString &ext) {
  const int id = DeviceOfExt(ext);
  if (id < 0)
    return {404, Error(u"no room with that extension"_s)};
  return RoomJsonOf(id);
}

TApiServer::Reply TApiServer::RoomJsonOf(int id) const {
  TJsonText out;
  WriteRoom(out, *m_main.CallControlDev().Device(id),
            m_main.DeviceEvents().SrvClassNames.stringList());
  return {200, {}, false, out.Text()};
}

TApiServer::Reply TApiServer::Classes() {
  QJsonArray classes;
  const QStringList items = m_main.DeviceEvents().SrvClassNames.stringList();
  for (int number = 0; number < items.size(); ++number)
    classes.append(QJsonObject{{u"number"_s, number}, {u"name"_s, ClassName(items.at(number))}});
  return {200, {{u"classes"_s, classes}}};
}

void TApiServer::Publish(QJsonObject event) {
  if (m_events)
    m_events->Publish(std::move(event));
}

void TApiServer::StatusSeen(int id) {
  const TPhoneTis *p = m_main.CallControlDev().Device(id);
  if (!p)
    return;
  const auto it = m_lastStatus.find(id);
  if (it != m_lastStatus.end() && it.value() == p->Status)
    return;
  m_lastStatus.insert(id, p->Status);
  Publish(
      {{u"type"_s, u"device.status"_s}, {u"id"_s, id}, {u"ext"_s, p->TelNos}, {u"status"_s, p->Status}});
}

std::unique_ptr<TApiServer> StartConfiguredApi(TMain_Form &main, TUDPMainForm *udp) {
  const TSysConfig &c = SysConfig();
  if (!c.ApiEnabled)
    return nullptr;
  QString why = TApiServer::Refusal(c);
  auto api = std::make_unique<TApiServer>(main);
  if (why.isEmpty() &&
      api->Start(QHostAddress(c.ApiListen), quint16(c.ApiPort), c.ApiToken.toUtf8(), &why) != 0) {
    WriteLog(u"API: listening on %1:%2"_s.arg(c.ApiListen).arg(api->Port()));
    if (udp)
      api->WatchCallRecords(*udp);
    return api;
  }
  WriteLog(u"API not started: "_s + why);
  TheShell().Balloon(u"自动化接口未启动"_s, why, 10, BalloonIcon::Warning);
  return nullptr;
}
