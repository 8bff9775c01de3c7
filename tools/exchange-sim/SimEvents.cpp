#include "SimEvents.h"

SimEventChannel::SimEventChannel(QObject *parent) : QObject(parent), Socket(this) {}

void SimEventChannel::SetTarget(const QHostAddress &address, quint16 port) {
  Target = address;
  Port = port;
}

bool SimEventChannel::SetSenderAddress(const QHostAddress &address) {
  if (address.isNull()) {
    Socket.abort();
    Sender = QHostAddress();
    return true;
  }
  QUdpSocket probe;
  if (!probe.bind(address, 0)) {
    Error = probe.errorString();
    return false;
  }
  probe.close();
  Socket.abort();
  if (!Socket.bind(address, 0)) {
    Error = Socket.errorString();
    return false;
  }
  Sender = address;
  return true;
}

bool SimEventChannel::Send(const QByteArray &datagram) {
  // An unbound socket binds itself to any address on its first datagram.
  const qint64 written = Socket.writeDatagram(datagram, Target, Port);
  if (written != datagram.size()) {
    Error = Socket.errorString();
    return false;
  }
  ++Count;
  return true;
}
