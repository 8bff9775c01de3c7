// What the servers on Qt HttpServer share (the recording server's two ports
// and the console's automation API): a whole HTTP/1.1 answer written on the socket,
// and listening with a cap on how much one request may send.
//
// Answers are written straight on the socket rather than through a responder,
// because a slow answer goes out after the handler has returned, when the
// request object the responder refers to is gone.
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QPair>
#include <QString>

#include <functional>

class QAbstractHttpServer;
class QHttpServerRequest;
class QTcpSocket;

namespace HttpAnswer {

struct Answer {
  int Status = 200;
  QByteArray ContentType;
  QByteArray Body;
  QList<QPair<QByteArray, QByteArray>> Headers;
  bool HeadOnly = false; // a HEAD request: the headers of the body, no body
};

QByteArray ReasonPhrase(int status);

// Writes `answer` whole; closes the connection afterwards when the client
// asked for that.
void Write(QTcpSocket *socket, const Answer &answer, bool close);
bool WantsClose(const QHttpServerRequest &request);

// What one server lets its clients hold.
struct Limits {
  Limits(qint64 maxRequestBytes) : MaxRequestBytes(maxRequestBytes) {} // NOLINT: a cap alone is the usual case
  // A connection whose one request grows beyond this is cut, so a client
  // can't make the server hold an endless body.
  qint64 MaxRequestBytes;
  // Connections past this many are closed as they come.
  int MaxConnections = 512;
  // A connection that neither sends nor takes a byte for this long is
  // closed; 0 keeps idle connections. A connection that became a WebSocket
  // is left to its own side.
  int IdleMs = 0;
  // A connection whose first bytes `Claims` wants is cut from the HTTP server
  // before it reads them and handed to `Take`, without a parent: the
  // automation API's event stream does its own upgrade.
  std::function<bool(const QByteArray &firstBytes)> Claims;
  std::function<void(QTcpSocket *socket)> Take;
};

// Listens on address:port and binds `server` to it, with `limits`. Returns the
// port, or 0 with *error set.
quint16 Listen(QAbstractHttpServer &server, const QHostAddress &address, quint16 port,
               const Limits &limits, QString *error);

} // namespace HttpAnswer
