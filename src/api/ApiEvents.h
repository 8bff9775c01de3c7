#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QObject>
#include <QThread>

#include <atomic>

class QTcpSocket;

// The subscribers of the event stream, a WebSocket at /api/v1/events.
//
// An event gets the next sequence number and is serialized once, on the
// caller's (main) thread. Everything else runs on a thread of its own that
// owns the subscribers' sockets: the handshake, and the sending, where a
// batch of waiting events is framed once and the same bytes go to every
// subscriber (a server's frames are not masked). So a hundred subscribers
// cost the main thread no more than one. The stream only goes one way; of
// what a subscriber sends, close and ping are answered and the rest ignored.
//
// A subscriber whose unsent bytes pass MaxPendingBytes is cut off, so a client
// that never reads can't make the console hold its events; past MaxQueued
// waiting events the oldest are dropped (the sequence numbers show the gap).
class TApiEvents : public QObject {
  Q_OBJECT

public:
  // `authorization` is the whole header value a subscriber must send.
  explicit TApiEvents(const QByteArray &authorization, QObject *parent = nullptr);
  ~TApiEvents() override;

  static constexpr qint64 MaxPendingBytes = 1 << 20;
  static constexpr int MaxSubscribers = 200;
  static constexpr int MaxQueued = 50000;
  static constexpr int MaxHandshakeBytes = 8192;

  // A connection whose first bytes ask for the events path: it has no parent
  // and is taken over (it moves to the events' thread), handshake and all.
  void Add(QTcpSocket *socket);
  // Whether a connection's first bytes ask for the events path.
  static bool AsksForEvents(const QByteArray &firstBytes);
  // Adds "seq" and queues `event` for every subscriber.
  void Publish(QJsonObject event);
  int Subscribers() const { return m_subscribers.load(); }
  quint64 LastSequence() const { return m_sequence; }
  // Events written to a subscriber's socket so far, all subscribers counted.
  quint64 Delivered() const { return m_delivered.load(); }

private:
  class Fanout;
  QThread m_thread;
  Fanout *m_fanout = nullptr; // lives on m_thread
  quint64 m_sequence = 0;
  std::atomic<int> m_subscribers{0};
  std::atomic<quint64> m_delivered{0};
};

// True when `got` equals `expected`, compared in constant time: every byte of
// `expected` is looked at whatever the length or the first difference.
bool TokenMatches(const QByteArray &got, const QByteArray &expected);
