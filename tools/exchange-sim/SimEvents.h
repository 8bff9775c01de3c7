// The exchange's UDP pushes to the console's event port. The datagrams go out
// from the address the system picks, or from one given on purpose: a console
// only takes events from its exchange's address, and sending from another
// loopback address (127.0.0.2) shows that it drops them.
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QUdpSocket>

class SimEventChannel : public QObject {
  Q_OBJECT
public:
  static constexpr quint16 kDefaultPort = 5009;

  explicit SimEventChannel(QObject *parent = nullptr);

  void SetTarget(const QHostAddress &address, quint16 port);
  QHostAddress TargetAddress() const { return Target; }
  quint16 TargetPort() const { return Port; }

  // A null address lets the system choose. False, with the old sender kept,
  // when the address cannot be bound here.
  bool SetSenderAddress(const QHostAddress &address);
  QHostAddress SenderAddress() const { return Sender; }
  QString LastError() const { return Error; }

  // False when the datagram did not go out whole.
  bool Send(const QByteArray &datagram);
  int Sent() const { return Count; }

private:
  QUdpSocket Socket;
  QHostAddress Target = QHostAddress::LocalHost;
  quint16 Port = kDefaultPort;
  QHostAddress Sender;
  QString Error;
  int Count = 0;
};
