#include "HttpAnswer.h"

#include <QAbstractHttpServer>
#include <QHttpServerRequest>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <memory>

using namespace Qt::StringLiterals;

namespace HttpAnswer {

namespace {

// Bytes a connection has sent since its last answer.
constexpr char kPendingBytes[] = "trunkdeskPendingBytes";
// Set once a connection's first bytes were looked at.
constexpr char kSeen[] = "trunkdeskSeen";

// Hands out sockets that count what their request sends and are cut past the
// cap, up to a number of them at once, each closed when idle too long.
class CappedTcpServer : public QTcpServer {
public:
  CappedTcpServer(const Limits &limits, QObject *parent) : QTcpServer(parent), m_limits(limits) {}

protected:
  void incomingConnection(qintptr descriptor) override {
    auto *socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
      delete socket;
      return;
    }
    if (m_open >= m_limits.MaxConnections) {
      if (!m_fullNoted)
        qWarning().noquote() << u"%1 connections open; more are closed as they come"_s.arg(m_open);
      m_fullNoted = true;
      socket->abort();
      socket->deleteLater();
      return;
    }
    ++m_open;
    connect(socket, &QObject::destroyed, this, [this] {
      --m_open;
      m_fullNoted = false;
    });
    // Connected before the HTTP server's own reader, so this runs first and
    // sees each arrival before it is read. The server drops every connection
    // of a socket it hands to its WebSocket side, this one with them.
    const auto reading = std::make_shared<QMetaObject::Connection>();
    *reading = connect(socket, &QTcpSocket::readyRead, socket, [this, socket, cap = m_limits.MaxRequestBytes] {
      if (m_limits.Claims && !socket->property(kSeen).toBool()) {
        socket->setProperty(kSeen, true);
        if (m_limits.Claims(socket->peek(64))) {
          // Every connection of the socket goes now, the HTTP server's
          // reader after this one with them, so it never reads these bytes.
          // The socket changes hands once its signal is over.
          socket->disconnect();
          QMetaObject::invokeMethod(this, [this, socket] { HandOver(socket); },
                                    Qt::QueuedConnection);
          return;
        }
      }
      const qint64 pending =
          socket->property(kPendingBytes).toLongLong() + socket->bytesAvailable();
      socket->setProperty(kPendingBytes, pending);
      if (pending > cap && socket->state() == QAbstractSocket::ConnectedState) {
        qWarning().noquote() << u"%1: a request of more than %2 bytes, connection cut"_s
                                    .arg(socket->peerAddress().toString())
                                    .arg(cap);
        QMetaObject::invokeMethod(socket, &QTcpSocket::abort, Qt::QueuedConnection);
      }
    });
    if (m_limits.IdleMs > 0)
      WatchIdle(socket, reading);
    addPendingConnection(socket);
  }

private:
  void HandOver(QTcpSocket *socket) {
    qDeleteAll(socket->findChildren<QTimer *>(Qt::FindDirectChildrenOnly));
    --m_open;
    m_fullNoted = false;
    socket->setParent(nullptr);
    m_limits.Take(socket);
  }

  void WatchIdle(QTcpSocket *socket, const std::shared_ptr<QMetaObject::Connection> &reading) {
    auto *idle = new QTimer(socket);
    idle->setSingleShot(true);
    idle->setInterval(m_limits.IdleMs);
    const auto busy = [idle] { idle->start(); };
    connect(socket, &QTcpSocket::readyRead, idle, busy);
    connect(socket, &QTcpSocket::bytesWritten, idle, busy);
    connect(idle, &QTimer::timeout, socket, [socket, idle, reading] {
      // A WebSocket now: its own side decides when it ends.
      if (!*reading) {
        idle->deleteLater();
        return;
      }
      socket->abort();
    });
    idle->start();
  }

  Limits m_limits;
  int m_open = 0;
  bool m_fullNoted = false;
};

} // namespace

QByteArray ReasonPhrase(int status) {
  switch (status) {
  case 200:
    return "OK";
  case 204:
    return "No Content";
  case 206:
    return "Partial Content";
  case 400:
    return "Bad Request";
  case 401:
    return "Unauthorized";
  case 403:
    return "Forbidden";
  case 404:
    return "Not Found";
  case 405:
    return "Method Not Allowed";
  case 413:
    return "Payload Too Large";
  case 409:
    return "Conflict";
  case 416:
    return "Range Not Satisfiable";
  case 501:
    return "Not Implemented";
  case 503:
    return "Service Unavailable";
  default:
    return status >= 500 ? "Internal Server Error" : "Unknown";
  }
}

void Write(QTcpSocket *socket, const Answer &answer, bool close) {
  if (!socket || socket->state() != QAbstractSocket::ConnectedState)
    return;
  socket->setProperty(kPendingBytes, 0);
  QByteArray head =
      "HTTP/1.1 " + QByteArray::number(answer.Status) + ' ' + ReasonPhrase(answer.Status) + "\r\n";
  if (!answer.ContentType.isEmpty())
    head += "Content-Type: " + answer.ContentType + "\r\n";
  head += "Content-Length: " + QByteArray::number(answer.Body.size()) + "\r\n";
  for (const auto &[name, value] : answer.Headers)
    head += name + ": " + value + "\r\n";
  if (close)
    head += "Connection: close\r\n";
  head += "\r\n";
  socket->write(head);
  if (!answer.HeadOnly)
    socket->write(answer.Body);
  if (close)
    socket->disconnectFromHost();
}

bool WantsClose(const QHttpServerRequest &request) {
  return request.value("connection").trimmed().compare("close", Qt::CaseInsensitive) == 0;
}

quint16 Listen(QAbstractHttpServer &server, const QHostAddress &address, quint16 port,
               const Limits &limits, QString *error) {
  auto *tcp = new CappedTcpServer(limits, &server);
  if (!tcp->listen(address, port)) {
    if (error)
      *error =
          u"cannot listen on %1:%2: %3"_s.arg(address.toString()).arg(port).arg(tcp->errorString());
    delete tcp;
    return 0;
  }
  server.bind(tcp);
  return tcp->serverPort();
}

} // namespace HttpAnswer
