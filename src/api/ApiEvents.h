#pragma once

#include <QJsonObject>
#include <QObject>

#include <memory>
#include <vector>

class QWebSocket;

// The subscribers of the event stream. Each event gets the next sequence
// number and is serialized once; every subscriber is then handed the same
// text. A subscriber whose unsent bytes pass MaxPendingBytes is cut off, so a
// client that never reads can't make the console hold its events.
class TApiEvents : public QObject {
  Q_OBJECT

public:
  explicit TApiEvents(QObject *parent = nullptr);
  ~TApiEvents() override;

  qint64 MaxPendingBytes = 1 << 20;
  int MaxSubscribers = 200;

  // Takes the socket over; it leaves the list when it closes.
  void Add(std::unique_ptr<QWebSocket> socket);
  // Adds "seq" and sends `event` to every subscriber.
  void Publish(QJsonObject event);
  int Subscribers() const { return int(m_sockets.size()); }
  quint64 LastSequence() const { return m_sequence; }

private:
  void Drop(QWebSocket *socket);

  std::vector<QWebSocket *> m_sockets;
  quint64 m_sequence = 0;
};
