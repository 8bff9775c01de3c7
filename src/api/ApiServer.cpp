#include "api/ApiServer.h"

#include "api/ApiEvents.h"
#include "api/ApiRooms.h"
#include "HttpAnswer.h"
#include "console/Main_Form.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
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
#include <QWebSocket>

using namespace Qt::StringLiterals;

class TApiServer::Http : public QAbstractHttpServer {
public:
  explicit Http(TApiServer &owner) : m_owner(owner) {}

protected:
  bool handleRequest(const QHttpServerRequest &request, QTcpSocket *socket) override {
    // The server hands an upgrade to its WebSocket side after this; an answer
    // written here would spoil the handshake. Its token is checked there.
    if (request.value("upgrade").compare("websocket", Qt::CaseInsensitive) == 0)
      return true;
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
    : QObject(parent), m_main(main), m_http(std::make_unique<Http>(*this)),
      m_events(std::make_unique<TApiEvents>()) {
  connect(m_http.get(), &QAbstractHttpServer::newWebSocketConnection, this,
          &TApiServer::AcceptWebSockets);
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
            m_events->Publish({{u"type"_s, u"wakeup.result"_s},
                               {u"id"_s, id},
                               {u"ext"_s, ext},
                               {u"room"_s, roomNo},
                               {u"time"_s, ApiTime(when)},
                               {u"answered"_s, state == 1}});
          });
  connect(&main.DeviceEvents(), &TDeviceEvents::Ext_UpdateRow, this, &TApiServer::StatusSeen);
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
  // A request past the cap (with its headers) is cut as it arrives, before
  // the server has read it whole; one under the cap with a large body still
  // gets its 413.
  m_port = HttpAnswer::Listen(*m_http, address, port, kMaxBodyBytes + 16 * 1024, error);
  return m_port;
}

bool TApiServer::Authorized(const QByteArray &authorization) const {
  // Constant time: every byte of the expected value is compared whatever the
  // length or the first difference of what came.
  unsigned diff = unsigned(authorization.size() ^ m_expected.size());
  for (qsizetype i = 0; i < m_expected.size(); ++i) {
    const char got = i < authorization.size() ? authorization.at(i) : char(0);
    diff |= unsigned(quint8(got) ^ quint8(m_expected.at(i)));
  }
  return diff == 0 && !m_expected.isEmpty();
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
  HttpAnswer::Answer answer;
  answer.Status = reply.Status;
  if (reply.Status != 204) {
    answer.ContentType = "application/json";
    answer.Body = QJsonDocument(reply.Body).toJson(QJsonDocument::Compact);
  }
  if (reply.Status == 401)
    answer.Headers.append(qMakePair(QByteArray("WWW-Authenticate"), QByteArray("Bearer")));
  HttpAnswer::Write(socket, answer, HttpAnswer::WantsClose(request));
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
    if (parts.size() == 5 && parts.at(4) == u"wakeup"_s) {
      if (method == Method::Put || method == Method::Delete)
        return WakeUp(ext, request, method == Method::Put);
      return wrongMethod();
    }
    static const QStringList later = {u"dnd"_s, u"class"_s, u"memo"_s,
                                      u"voicemail"_s, u"checkin"_s, u"checkout"_s};
    if (parts.size() == 5 && later.contains(parts.at(4)))
      return {501, Error(u"not available in this version"_s)};
  } else if (parts.size() == 3 && (what == u"calls"_s || what == u"wakeups"_s)) {
    return {501, Error(u"not available in this version"_s)};
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
  QJsonArray rooms;
  for (int slot = 0; slot < g.SlotCount(); ++slot) {
    bool ok = false;
    const int id = g.Cell(slot, TExtGridModel::ColID).toInt(&ok);
    if (const TPhoneTis *p = ok ? m_main.CallControlDev().Device(id) : nullptr)
      rooms.append(RoomJson(*p, names));
  }
  return {200, {{u"rooms"_s, rooms}}};
}

TApiServer::Reply TApiServer::Room(const QString &ext) {
  const int id = DeviceOfExt(ext);
  if (id < 0)
    return {404, Error(u"no room with that extension"_s)};
  return {200,
          RoomJson(*m_main.CallControlDev().Device(id),
                   m_main.DeviceEvents().SrvClassNames.stringList())};
}

bool TApiServer::BatchRunning() const {
  // The first room of a batch has no time-out of its own: a walk whose
  // answer never came counts as over after one step's time-out, so the API
  // isn't shut out for good.
  const QTimer &stepTimeout = m_main.BatchWalk().Timer_MultiProcess;
  return stepTimeout.isActive() ||
         (m_walkRunning && m_walkStep.isValid() && m_walkStep.elapsed() < stepTimeout.interval());
}

TApiServer::Reply TApiServer::WakeUp(const QString &ext, const QHttpServerRequest &request,
                                     bool set) {
  const int id = DeviceOfExt(ext);
  if (id < 0)
    return {404, Error(u"no room with that extension"_s)};
  TPhoneTis &p = *m_main.CallControlDev().Device(id);
  TMoringCall_Form::TWakeUpChange change;
  change.ID = id;
  change.Mode = qBound(1, p.LastExt.MoringCall_Mode, 3);
  change.DailyTime = p.LastExt.MoringCall_EveryDay_Time;
  if (set) {
    TWakeUpBody body;
    const QString why = ParseWakeUpBody(request.body(), Now(), &body);
    if (!why.isEmpty())
      return {400, Error(why)};
    change.On = true;
    change.When = body.When;
    change.Mode = body.Mode;
    change.Daily = body.Daily;
    if (body.Daily)
      change.DailyTime = body.When.TimePart();
  }
  // Nothing goes and nothing is stored unless the exchange can take it now.
  if (SysParam().Connected == 0 || SysParam().MyID == kNoSession)
    return {503, Error(u"the exchange link is down; nothing was sent"_s)};
  if (!m_main.ServiceAllowed)
    return {403, Error(u"the exchange bars guest-room actions at this console"_s)};
  if (BatchRunning() || (m_main.ExtsView().RoomInSequence && m_main.ExtsView().RoomInSequence(id)))
    return {409, Error(u"a batch or a check-in/out is running; try again when it is over"_s)};
  // As the dialog opened afresh: an earlier batch's mark must not make the
  // exchange's answer walk the checked rows again.
  m_main.MoringCall_Form().MultiApply = false;
  WriteLog(u"API: wake-up of %1 %2"_s.arg(ext, set ? DateTimeToStr(change.When) : u"off"_s));
  try {
    m_main.MoringCall_Form().ApplyWakeUp(change);
  } catch (const EDatabaseError &e) {
    WriteLog(u"API: wake-up of %1 sent but not stored: %2"_s.arg(ext, e.Message()));
    return {500, Error(u"sent to the exchange, but the room's settings were not stored"_s)};
  }
  if (!set)
    return {204, {}};
  return {200, RoomJson(p, m_main.DeviceEvents().SrvClassNames.stringList())};
}

void TApiServer::AcceptWebSockets() {
  while (m_http->hasPendingWebSocketConnections()) {
    std::unique_ptr<QWebSocket> socket = m_http->nextPendingWebSocketConnection();
    const QNetworkRequest handshake = socket->request();
    if (!Authorized(handshake.rawHeader("Authorization"))) {
      socket->close(QWebSocketProtocol::CloseCodePolicyViolated, u"missing or wrong bearer token"_s);
      socket.release()->deleteLater();
      continue;
    }
    if (handshake.url().path(QUrl::FullyEncoded) != u"/api/v1/events"_s) {
      socket->close(QWebSocketProtocol::CloseCodePolicyViolated, u"no such resource"_s);
      socket.release()->deleteLater();
      continue;
    }
    m_events->Add(std::move(socket));
  }
}

void TApiServer::StatusSeen(int id) {
  const TPhoneTis *p = m_main.CallControlDev().Device(id);
  if (!p)
    return;
  const auto it = m_lastStatus.find(id);
  if (it != m_lastStatus.end() && it.value() == p->Status)
    return;
  m_lastStatus.insert(id, p->Status);
  m_events->Publish(
      {{u"type"_s, u"device.status"_s}, {u"id"_s, id}, {u"ext"_s, p->TelNos}, {u"status"_s, p->Status}});
}

std::unique_ptr<TApiServer> StartConfiguredApi(TMain_Form &main) {
  const TSysConfig &c = SysConfig();
  if (!c.ApiEnabled)
    return nullptr;
  QString why = TApiServer::Refusal(c);
  auto api = std::make_unique<TApiServer>(main);
  if (why.isEmpty() &&
      api->Start(QHostAddress(c.ApiListen), quint16(c.ApiPort), c.ApiToken.toUtf8(), &why) != 0) {
    WriteLog(u"API: listening on %1:%2"_s.arg(c.ApiListen).arg(api->Port()));
    return api;
  }
  WriteLog(u"API not started: "_s + why);
  TheShell().Balloon(u"自动化接口未启动"_s, why, 10, BalloonIcon::Warning);
  return nullptr;
}
