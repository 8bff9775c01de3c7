#include "api/ApiEvents.h"

#include "HttpAnswer.h"
#include "support/Log.h"

#include <QCryptographicHash>
#include <QHash>
#include <QJsonDocument>
#include <QMutex>
#include <QTcpSocket>
#include <QTimer>

#include <vector>

using namespace Qt::StringLiterals;

namespace {
const QByteArray kEventsRequest = "GET /api/v1/events";
constexpr int kHandshakeMs = 5000;

enum Opcode : quint8 { TextFrame = 0x1, CloseFrame = 0x8, PingFrame = 0x9, PongFrame = 0xA };

QByteArray Frame(Opcode opcode, const QByteArray &payload) {
  QByteArray f;
  f.reserve(payload.size() + 10);
  f.append(char(0x80 | opcode));
  const qsizetype n = payload.size();
  if (n < 126) {
    f.append(char(n));
  } else if (n < 65536) {
    f.append(char(126)).append(char(n >> 8)).append(char(n & 0xFF));
  } else {
    f.append(char(127));
    for (int shift = 56; shift >= 0; shift -= 8)
      f.append(char((quint64(n) >> shift) & 0xFF));
  }
  return f.append(payload);
}

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
    QList<QByteArray> lines = c.In.left(end).split('\n');
    const QList<QByteArray> request = lines.takeFirst().trimmed().split(' ');
    QHash<QByteArray, QByteArray> headers;
    for (const QByteArray &line : std::as_const(lines)) {
      const qsizetype colon = line.indexOf(':');
      if (colon > 0)
        headers.insert(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
    }
    c.In.clear();
    if (request.size() != 3 || request.at(1) != "/api/v1/events")
      return Close(s, 404, u"no such resource"_s);
    if (!TokenMatches(headers.value("authorization"), m_authorization))
      return Close(s, 401, u"missing or wrong bearer token"_s);
    const QByteArray key = headers.value("sec-websocket-key");
    if (headers.value("upgrade").toLower() != "websocket" || key.isEmpty() ||
        headers.value("sec-websocket-version") != "13")
      return Close(s, 400, u"events are a WebSocket: connect with an upgrade"_s);
    if (m_owner.m_subscribers.load() >= MaxSubscribers) {
      WriteLog(u"API: event subscriber refused, %1 already connected"_s.arg(MaxSubscribers));
      return Close(s, 503, u"too many subscribers"_s);
    }
    const QByteArray accept =
        QCryptographicHash::hash(QByteArray(key).append("258EAFA5-E914-47DA-95CA-C5AB0DC85B11"),
                                 QCryptographicHash::Sha1)
            .toBase64();
    s->write("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
             "Sec-WebSocket-Accept: " +
             accept + "\r\n\r\n");
    c.Subscribed = true;
    ++m_owner.m_subscribers;
  }

  // What a subscriber sends: close and ping are answered, the rest ignored.
  void Frames(QTcpSocket *s, QByteArray &in) {
    while (in.size() >= 2) {
      const quint8 opcode = quint8(in.at(0)) & 0x0F;
      const bool masked = quint8(in.at(1)) & 0x80;
      quint64 length = quint8(in.at(1)) & 0x7F;
      qsizetype at = 2;
      if (length == 126 || length == 127) {
        const int bytes = length == 126 ? 2 : 8;
        if (in.size() < at + bytes)
          return;
        length = 0;
        for (int i = 0; i < bytes; ++i)
          length = (length << 8) | quint8(in.at(at + i));
        at += bytes;
      }
      // Subscribers only listen: a frame larger than this is no subscriber's.
      if (!masked || length > 4096)
        return Drop(s, true);
      if (in.size() < at + 4 + qsizetype(length))
        return;
      QByteArray payload = in.mid(at + 4, qsizetype(length));
      for (qsizetype i = 0; i < payload.size(); ++i)
        payload[i] = char(payload.at(i) ^ in.at(at + (i % 4)));
      in.remove(0, at + 4 + qsizetype(length));
      if (opcode == CloseFrame) {
        s->write(Frame(CloseFrame, payload.left(2)));
        s->disconnectFromHost();
        return;
      }
      if (opcode == PingFrame)
        s->write(Frame(PongFrame, payload));
    }
    if (in.size() > 8192)
      Drop(s, true);
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
      frames += Frame(TextFrame, text);
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
