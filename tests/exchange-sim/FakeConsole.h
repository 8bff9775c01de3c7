// The console's end of the link for the simulator's tests: packets built by
// hand, independently of the simulator's own builder, and a plain socket that
// keeps what arrives.
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QTcpSocket>

namespace sim_test {

inline QByteArray Hex(const char *hex) {
  return QByteArray::fromHex(hex);
}

// A packet as the console would write it, built independently of the simulator.
inline QByteArray ConsolePacket(qint16 type, quint16 id, const QByteArray &payload, int len = -1) {
  QByteArray p = Hex("12191039 0000 0000 0000 0000") + payload;
  const int length = len < 0 ? int(p.size()) : len;
  p[6] = char(type & 0xFF), p[7] = char((type >> 8) & 0xFF);
  p[8] = char(id & 0xFF), p[9] = char(id >> 8);
  p[10] = char(length & 0xFF), p[11] = char((length >> 8) & 0xFF);
  int sum = 0;
  for (qsizetype i = 6; i < p.size(); ++i)
    sum += quint8(p.at(i));
  p[4] = char((256 - sum % 256) % 256);
  return p;
}

inline QByteArray Field(const QByteArray &text, int size) {
  return text + QByteArray(size - text.size(), '\0');
}

inline QByteArray LoginPacket(const QByteArray &telNo, const QByteArray &password) {
  return ConsolePacket(16, 0, Field(telNo, 21) + Field(password, 21) + Field("02", 10));
}

struct Header {
  qint16 Type;
  quint16 Id;
  qint16 Len;
};
inline Header HeaderOf(const QByteArray &p) {
  auto u16 = [&p](int at) { return quint16(quint8(p.at(at)) | quint8(p.at(at + 1)) << 8); };
  return {qint16(u16(6)), u16(8), qint16(u16(10))};
}

// The console's end of the link: connects and keeps what arrives.
struct FakeConsole {
  QTcpSocket Socket;
  QByteArray Got;
  bool Closed = false;

  explicit FakeConsole(quint16 port) {
    QObject::connect(&Socket, &QTcpSocket::readyRead, [this] { Got += Socket.readAll(); });
    QObject::connect(&Socket, &QTcpSocket::disconnected, [this] { Closed = true; });
    Socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    Socket.connectToHost(QHostAddress::LocalHost, port);
  }
  void Send(const QByteArray &bytes) {
    Socket.write(bytes);
    Socket.flush();
  }
  // Cuts what arrived into packets by their Len; a broken Len ends the walk.
  QList<QByteArray> Packets() const {
    QList<QByteArray> out;
    for (qsizetype at = 0; Got.size() - at >= 12;) {
      const int len = HeaderOf(Got.mid(at, 12)).Len;
      if (len < 12 || Got.size() - at < len)
        break;
      out << Got.mid(at, len);
      at += len;
    }
    return out;
  }
  QList<qint16> Types() const {
    QList<qint16> types;
    for (const QByteArray &p : Packets())
      types << HeaderOf(p).Type;
    return types;
  }
};

constexpr int kWait = 10000;

} // namespace sim_test
