#include "api/WebSocketWire.h"

#include "api/ApiEvents.h"

#include <QCryptographicHash>
#include <QHash>

using namespace Qt::StringLiterals;

namespace WebSocketWire {

QByteArray Frame(Opcode opcode, const QByteArray &payload) {
  QByteArray f;
  f.reserve(payload.size() + 10);
  f.append(char(0x80 | opcode));
  const qsizetype n = payload.size();
  if (n < 126) {
    f.append(char(n));
  } else if (n < 65536) {
    f.append(char(126)).append(char(n >> 8)).append(char(n & 0xFF));
  } else {
    f.append(char(127));
    for (int shift = 56; shift >= 0; shift -= 8)
      f.append(char((quint64(n) >> shift) & 0xFF));
  }
  return f.append(payload);
}

bool ReadClientFrames(QByteArray &in, QList<ClientFrame> &out, qsizetype maxPayload) {
  while (in.size() >= 2) {
    const bool masked = quint8(in.at(1)) & 0x80;
    quint64 length = quint8(in.at(1)) & 0x7F;
    qsizetype at = 2;
    if (length == 126 || length == 127) {
      const int bytes = length == 126 ? 2 : 8;
      if (in.size() < at + bytes)
        return true;
      length = 0;
      for (int i = 0; i < bytes; ++i)
        length = (length << 8) | quint8(in.at(at + i));
      at += bytes;
    }
    if (!masked || length > quint64(maxPayload))
      return false;
    const qsizetype end = at + 4 + qsizetype(length);
    if (in.size() < end)
      return true;
    ClientFrame frame;
    frame.Opcode = quint8(in.at(0)) & 0x0F;
    frame.Payload = in.mid(at + 4, qsizetype(length));
    for (qsizetype i = 0; i < frame.Payload.size(); ++i)
      frame.Payload[i] = char(frame.Payload.at(i) ^ in.at(at + (i % 4)));
    in.remove(0, end);
    out.append(frame);
  }
  return true;
}

HandshakeAnswer Answer(const QByteArray &head, const QByteArray &path,
                       const QByteArray &authorization) {
  QList<QByteArray> lines = head.split('\n');
  const QList<QByteArray> request = lines.takeFirst().trimmed().split(' ');
  QHash<QByteArray, QByteArray> headers;
  for (const QByteArray &line : std::as_const(lines)) {
    const qsizetype colon = line.indexOf(':');
    if (colon > 0)
      headers.insert(line.left(colon).trimmed().toLower(), line.mid(colon + 1).trimmed());
  }
  if (request.size() != 3 || request.at(0) != "GET" || request.at(1) != path)
    return {404, u"no such resource"_s, {}};
  if (!TokenMatches(headers.value("authorization"), authorization))
    return {401, u"missing or wrong bearer token"_s, {}};
  const QByteArray key = headers.value("sec-websocket-key");
  if (headers.value("upgrade").toLower() != "websocket" || key.isEmpty() ||
      headers.value("sec-websocket-version") != "13")
    return {400, u"events are a WebSocket: connect with an upgrade"_s, {}};
  const QByteArray accept =
      QCryptographicHash::hash(QByteArray(key).append("258EAFA5-E914-47DA-95CA-C5AB0DC85B11"),
                               QCryptographicHash::Sha1)
          .toBase64();
  return {101, {},
          "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
          "Sec-WebSocket-Accept: " +
              accept + "\r\n\r\n"};
}

} // namespace WebSocketWire
