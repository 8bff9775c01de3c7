#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// The little of the WebSocket wire the event stream needs, as pure functions:
// the handshake's answer, the server's frames, and reading what a subscriber
// sends. Kept apart from the sockets so that the parsing of outside bytes is
// tested and fuzzed on its own.
namespace WebSocketWire {

enum Opcode : quint8 { TextFrame = 0x1, CloseFrame = 0x8, PingFrame = 0x9, PongFrame = 0xA };

// A final, unmasked frame: what a server sends.
QByteArray Frame(Opcode opcode, const QByteArray &payload);

struct ClientFrame {
  quint8 Opcode = 0;
  QByteArray Payload; // unmasked
};
// Takes the whole frames off the front of `in` into `out`; an unfinished one
// stays for the next read. False when `in` can't be a subscriber's: an
// unmasked frame, or one whose payload passes `maxPayload`.
bool ReadClientFrames(QByteArray &in, QList<ClientFrame> &out, qsizetype maxPayload);

// The answer to a request head (everything before the blank line) asking for
// `path`: 101 with the whole switching answer in Reply, or the status and
// the message of a refusal. `authorization` is the header value required.
struct HandshakeAnswer {
  int Status = 400;
  QString Error;
  QByteArray Reply;
};
HandshakeAnswer Answer(const QByteArray &head, const QByteArray &path,
                       const QByteArray &authorization);

} // namespace WebSocketWire
