#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QTimer>

class QTcpSocket;

// The console's event-driven TCP client: the operations and events the receive
// path and the login are written against (State 7 is connected).
//
// TCP is a stream: on a busy link one read may hold many packets and end inside
// one. The exchange writes whole packets, and the receive path treats each read
// as a block that starts with a packet, so this socket hands out reads that end
// on a packet boundary, at most 10230 bytes each (the longest block the walk takes). A packet still
// incomplete is held for the rest (for a moment; then it goes as it is, and the receive path's own
// checks judge it). Bytes that an arrival handler leaves untaken are dropped with a log line, so a
// hostile stream can't stall the link.
class TExchangeSocket : public QObject {
  Q_OBJECT

public:
  enum SocketState { Closed = 0, Connecting = 6, Connected = 7, Closing = 8, Error = 9 };
  static constexpr int kPartialWaitMs = 200;
  // An exchange that doesn't answer a connect within this time counts as away;
  // without it an address nobody holds keeps the connect pending for minutes.
  int ConnectTimeoutMs = 10000;

  explicit TExchangeSocket(QObject *parent = nullptr);
  ~TExchangeSocket() override;

  QString RemoteHost;
  quint16 RemotePort = 5003;

  int State() const;
  void Close();   // ends any connection; idle is fine
  void Connect(); // asynchronous; the result comes as OnConnect, or nothing
  void SendData(const QByteArray &bytes);
  // All bytes of the read being announced.
  QByteArray GetData();

signals:
  void OnConnect();
  // A connect of ours that did not come through: refused, no route, no such
  // host, or no answer in time. The text says which, for the log and the operator.
  void OnConnectFailed(const QString &error);
  void OnClose(); // closed by the exchange, not by Close()
  void OnDataArrival(int bytesTotal);
  void OnSendProgress(int bytesSent, int bytesRemaining);
  void OnSendComplete();

private:
  void TakeIncoming();
  void Announce();
  qsizetype NextReadLength(bool *partialOnly) const;

  QTcpSocket *m_socket;
  QByteArray m_pending;
  qsizetype m_offered = 0; // bytes of the read being announced
  bool m_taken = false;
  bool m_closingByUs = false;
  bool m_wasConnected = false; // since the last Connect()
  QTimer m_connectTimer;
  bool m_announcing = false; // an arrival handler that lets events run must not re-enter
  bool m_partialExpired = false;
  QTimer m_partialTimer;
};
