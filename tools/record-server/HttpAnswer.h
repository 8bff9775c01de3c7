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

// Listens on address:port and binds `server` to it. A connection whose one
// request grows beyond `maxRequestBytes` is cut, so a client can't make the
// server hold an endless body. Returns the port, or 0 with *error set.
quint16 Listen(QAbstractHttpServer &server, const QHostAddress &address, quint16 port,
               qint64 maxRequestBytes, QString *error);

} // namespace HttpAnswer
