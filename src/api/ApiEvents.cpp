#include "api/ApiEvents.h"

#include "support/Log.h"

#include <QJsonDocument>
#include <QWebSocket>

#include <algorithm>

using namespace Qt::StringLiterals;

TApiEvents::TApiEvents(QObject *parent) : QObject(parent) {}

TApiEvents::~TApiEvents() {
  for (QWebSocket *s : m_sockets) {
    s->disconnect(this);
    delete s;
  }
}

void TApiEvents::Add(std::unique_ptr<QWebSocket> socket) {
  if (int(m_sockets.size()) >= MaxSubscribers) {
    WriteLog(u"API: event subscriber refused, %1 already connected"_s.arg(m_sockets.size()));
    socket->close(QWebSocketProtocol::CloseCodeTooMuchData, u"too many subscribers"_s);
    socket.release()->deleteLater();
    return;
  }
  QWebSocket *s = socket.release();
  s->setParent(this);
  // Subscribers only listen; what they send is small or cut off.
  s->setMaxAllowedIncomingMessageSize(4096);
  s->setMaxAllowedIncomingFrameSize(4096);
  connect(s, &QWebSocket::disconnected, this, [this, s] { Drop(s); });
  m_sockets.push_back(s);
}

void TApiEvents::Publish(QJsonObject event) {
  event.insert(u"seq"_s, double(++m_sequence));
  if (m_sockets.empty())
    return;
  const QString text = QString::fromUtf8(QJsonDocument(event).toJson(QJsonDocument::Compact));
  // Copied, since dropping a slow subscriber changes the list.
  const std::vector<QWebSocket *> sockets = m_sockets;
  for (QWebSocket *s : sockets) {
    if (s->bytesToWrite() > MaxPendingBytes) {
      WriteLog(u"API: event subscriber %1 cut off: it does not read"_s.arg(
          s->peerAddress().toString()));
      Drop(s);
      s->abort();
      continue;
    }
    s->sendTextMessage(text);
  }
}

void TApiEvents::Drop(QWebSocket *socket) {
  const auto it = std::find(m_sockets.begin(), m_sockets.end(), socket);
  if (it == m_sockets.end())
    return;
  m_sockets.erase(it);
  socket->disconnect(this);
  socket->deleteLater();
}
