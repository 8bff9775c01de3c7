#include "api/ApiEvents.h"

#include "HttpAnswer.h"
#include "api/WebSocketWire.h"
#include "support/Log.h"

#include <QHash>
#include <QJsonDocument>
#include <QMutex>
#include <QTcpSocket>
#include <QTimer>

#include <vector>

using namespace Qt::StringLiterals;

namespace {
const QByteArray kEventsPath = "/api/v1/events";
const QByteArray kEventsRequest = "GET " + kEventsPath;
constexpr int kHandshakeMs = 5000;

// The answer to a handshake that isn't one, and the connection closes.
void Refuse(QTcpSocket *s, int status, const QString &message) {
  HttpAnswer::Answer a;
  a.Status = status;
  a.ContentType = "application/json";
  a.Body = QJsonDocument(QJsonObject{{u"error"_s, message}}).toJson(QJsonDocument::Compact);
  if (status == 401)
    a.Headers.append(qMakePair(QByteArray("WWW-Authenticate"), QByteArray("Bearer")));
  HttpAnswer::Write(s, a, true);
}
} // namespace

bool TokenMatches(const QByteArray &got, const QByteArray &expected) {
  unsigned diff = unsigned(got.size() ^ expected.size());
  for (qsizetype i = 0; i < expected.size(); ++i) {
    const char g = i < got.size() ? got.at(i) : char(0);
    diff |= unsigned(quint8(g) ^ quint8(expected.at(i)));
  }
  return diff == 0 && !expected.isEmpty();
}

// The events' thread side: owns the sockets there.
class TApiEvents::Fanout : public QObject {
public:
  Fanout(TApiEvents &owner, const QByteArray &authorization)
      : m_owner(owner), m_authorization(authorization) {}
  ~Fanout() override {
    for (auto it = m_clients.begin(); it != m_clients.end(); ++it) {
      it.key()->disconnect(this);
      delete it.key();
    }
  }

  // Main thread: queues one serialized event and wakes the thread if it sleeps.
  void Queue(QByteArray text) {
    QMutexLocker lock(&m_mutex);
    if (m_queue.size() >= MaxQueued) {
      m_queue.removeFirst();
      if (!m_overflowNoted)
        WriteLog(u"API: events queue full; the oldest events are dropped"_s);
      m_overflowNoted = true;
    }
    m_queue.append(std::move(text));
    if (m_wakePending)
      return;
    m_wakePending = true;
    QMetaObject::invokeMethod(this, [this] { Drain(); }, Qt::QueuedConnection);
  }

  void Take(QTcpSocket *s) {
    m_clients.insert(s, Client{});
    connect(s, &QTcpSocket::readyRead, this, [this, s] { Read(s); });
    connect(s, &QTcpSocket::disconnected, this, [this, s] { Drop(s); });
    // A handshake that doesn't come whole soon holds nothing for long.
    QTimer::singleShot(kHandshakeMs, s, [this, s] {
      if (m_clients.contains(s) && !m_clients.value(s).Subscribed)
        Drop(s, true);
    });
    if (s->state() != QAbstractSocket::ConnectedState)
      Drop(s);
    else
      Read(s);
  }

private:
  struct Client {
    bool Subscribed = false;
    QByteArray In;
  };

  void Read(QTcpSocket *s) {
    const auto it = m_clients.find(s);
    if (it == m_clients.end())
      return;
    it->In += s->readAll();
    if (!it->Subscribed)
      Handshake(s, *it);
    else
      Frames(s, it->In);
  }

  void Handshake(QTcpSocket *s, Client &c) {
    const qsizetype end = c.In.indexOf("\r\n\r\n");
    if (end < 0) {
      if (c.In.size() > MaxHandshakeBytes)
        Close(s, 431, u"request head too large"_s);
      return;
    }
    const WebSocketWire::HandshakeAnswer answer =
        WebSocketWire::Answer(c.In.left(end), kEventsPath, m_authorization);
    c.In.remove(0, end + 4);
    if (answer.Status != 101)
      return Close(s, answer.Status, answer.Error);
    if (m_owner.m_subscribers.load() >= MaxSubscribers) {
      WriteLog(u"API: event subscriber refused, %1 already connected"_s.arg(MaxSubscribers));
      return Close(s, 503, u"too many subscribers"_s);
    }
    s->write(answer.Reply);
    c.Subscribed = true;
    ++m_owner.m_subscribers;
  }

  // What a subscriber sends: close and ping are answered, the rest ignored.
  void Frames(QTcpSocket *s, QByteArray &in) {
    using namespace WebSocketWire;
    QList<ClientFrame> frames;
    // Subscribers only listen: a frame larger than this is no subscriber's.
    if (!ReadClientFrames(in, frames, 4096) || in.size() > 8192)
      return Drop(s, true);
    for (const ClientFrame &f : std::as_const(frames)) {
      if (f.Opcode == CloseFrame) {
        s->write(Frame(CloseFrame, f.Payload.left(2)));
        s->disconnectFromHost();
        return;
      }
      if (f.Opcode == PingFrame)
        s->write(Frame(PongFrame, f.Payload));
    }
  }

  void Close(QTcpSocket *s, int status, const QString &message) {
    Refuse(s, status, message);
    m_clients.remove(s);
    s->disconnect(this);
    connect(s, &QTcpSocket::disconnected, s, &QObject::deleteLater);
    if (s->state() == QAbstractSocket::UnconnectedState)
      s->deleteLater();
  }

  void Drain() {
    QList<QByteArray> texts;
    {
      QMutexLocker lock(&m_mutex);
      texts.swap(m_queue);
      m_wakePending = false;
      m_overflowNoted = false;
    }
    // Framed once; the same bytes go to every subscriber.
    QByteArray frames;
    for (const QByteArray &text : std::as_const(texts))
      frames += WebSocketWire::Frame(WebSocketWire::TextFrame, text);
    const QList<QTcpSocket *> sockets = m_clients.keys();
    for (QTcpSocket *s : sockets) {
      if (!m_clients.value(s).Subscribed)
        continue;
      if (s->bytesToWrite() > MaxPendingBytes) {
        WriteLog(u"API: event subscriber %1 cut off: it does not read"_s.arg(
            s->peerAddress().toString()));
        Drop(s, true);
        continue;
      }
      s->write(frames);
      m_owner.m_delivered += texts.size();
    }
  }

  void Drop(QTcpSocket *s, bool abort = false) {
    const auto it = m_clients.find(s);
    if (it == m_clients.end())
      return;
    if (it->Subscribed)
      --m_owner.m_subscribers;
    m_clients.erase(it);
    s->disconnect(this);
    if (abort)
      s->abort();
    s->deleteLater();
  }

  TApiEvents &m_owner;
  const QByteArray m_authorization;
  QHash<QTcpSocket *, Client> m_clients;
  QMutex m_mutex;
  QList<QByteArray> m_queue;
  bool m_wakePending = false;
  bool m_overflowNoted = false;
};

TApiEvents::TApiEvents(const QByteArray &authorization, QObject *parent) : QObject(parent) {
  m_thread.setObjectName(u"ApiEvents"_s);
  m_fanout = new Fanout(*this, authorization);
  m_fanout->moveToThread(&m_thread);
  m_thread.start();
}

TApiEvents::~TApiEvents() {
  // The sockets close on their own thread, before it ends.
  QMetaObject::invokeMethod(
      m_fanout, [f = m_fanout] { delete f; }, Qt::BlockingQueuedConnection);
  m_thread.quit();
  m_thread.wait();
}

bool TApiEvents::AsksForEvents(const QByteArray &firstBytes) {
  // A client whose first segment is shorter than this line is left to the
  // HTTP server, which refuses the upgrade.
  return firstBytes.startsWith(kEventsRequest);
}

void TApiEvents::Add(QTcpSocket *socket) {
  socket->moveToThread(&m_thread);
  QMetaObject::invokeMethod(
      m_fanout, [f = m_fanout, socket] { f->Take(socket); }, Qt::QueuedConnection);
}

void TApiEvents::Publish(QJsonObject event) {
  event.insert(u"seq"_s, double(++m_sequence));
  if (m_subscribers.load() == 0)
    return;
  m_fanout->Queue(QJsonDocument(event).toJson(QJsonDocument::Compact));
}
