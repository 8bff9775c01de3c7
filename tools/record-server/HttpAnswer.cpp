#include "HttpAnswer.h"

#include <QAbstractHttpServer>
#include <QHttpServerRequest>
#include <QTcpServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace HttpAnswer {

namespace {

// Bytes a connection has sent since its last answer.
constexpr char kPendingBytes[] = "trunkdeskPendingBytes";

// Hands out sockets that count what their request sends and are cut past the cap.
class CappedTcpServer : public QTcpServer {
public:
  CappedTcpServer(qint64 cap, QObject *parent) : QTcpServer(parent), Cap(cap) {}

protected:
  void incomingConnection(qintptr descriptor) override {
    auto *socket = new QTcpSocket(this);
    if (!socket->setSocketDescriptor(descriptor)) {
      delete socket;
      return;
    }
    // Connected before the HTTP server's own reader, so this runs first and
    // sees each arrival before it is read.
    connect(socket, &QTcpSocket::readyRead, socket, [socket, cap = Cap] {
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
    addPendingConnection(socket);
  }

private:
  qint64 Cap;
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
               qint64 maxRequestBytes, QString *error) {
  auto *tcp = new CappedTcpServer(maxRequestBytes, &server);
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
