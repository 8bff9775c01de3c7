// The exchange's side of the wire: building the packets the exchange sends and
// decoding the ones the console sends. It shares no code with the console's own
// packet layer on purpose: two separate readings of the wire format catch each
// other's mistakes.
#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

// One packet the console sent, decoded.
struct SimPacket {
  qint16 TypeCode = 0;
  quint16 ID = 0;
  qint16 Len = 0; // as the header says, not the length of Bytes
  bool ChecksumOk = false;
  bool MagicOk = false;
  bool Malformed = false; // bad magic or a Len below 12: Bytes is what was left of the stream
  QByteArray Bytes;       // the whole packet
  QVariantMap Fields;     // decoded fields of the records we know
};
Q_DECLARE_METATYPE(SimPacket)

namespace SimPackets {

inline constexpr int kHeaderSize = 12;
inline constexpr char kMagic[4] = {0x12, 0x19, 0x10, 0x39};

// Type codes the exchange and the console trade.
enum TypeCode : qint16 {
  Pulse = 1,
  Login = 16,
  CallState = 17,
  DialDigits = 18,
  UserInfo = 19,
  PhoneCommand = 20,
  MissedCall = 21,
  SrvClassSet = 22,
  DeviceControl = 24,
  GsmModule = 32,
  ExtensionQuery = 34,
  MoringCall = 35,
  SrvClassName = 36,
  RecordServerQuery = 37,
  VoiceMailClear = 40,
};

// Size the console's RecordServerQuery really has; it leaves Len at 0.
inline constexpr int kRecordServerQuerySize = 20;

// The byte that makes bytes 6..end of `packet` add up to 0 modulo 256.
quint8 ChecksumByte(const QByteArray &packet);
bool ChecksumMatches(const QByteArray &packet);

// A whole packet: magic, checksum, header, payload. `len` < 0 writes the true
// length into Len; any other value is written as given (to send lying headers).
QByteArray BuildPacket(qint16 typeCode, quint16 id, const QByteArray &payload, int len = -1);

// GBK text in a fixed field of `size` bytes: at most size-1 bytes of text, cut
// on a character boundary, NUL-terminated and zero-padded.
QByteArray TextField(const QString &text, int size);
// GBK text from a fixed field; stops at the first NUL, the field's end or the data's end.
QString ReadText(const QByteArray &bytes, int offset, int size);

// Packets the exchange sends.
QByteArray PulsePacket(quint16 id);
QByteArray LoginAnswer(quint16 id, const QString &result);
QByteArray CallStatePacket(quint16 id, quint8 state, qint16 line, const QString &caller,
                           const QString &called = {}, bool logAsDialOut = false,
                           quint16 rights = 0);
QByteArray MissedCallPacket(quint16 id, const QString &caller);
// The logged-in extension's data; the feature code list runs to the packet's end.
QByteArray UserInfoPacket(quint16 id, const QString &number, const QString &name, quint16 port,
                          const QString &description, qint16 admin, const QString &features);

// "123*#0" from the one-code-a-byte digits of DialDigits, and back.
QString DigitsText(const QByteArray &codes);
QByteArray DigitCodes(const QString &text);

// Decodes one whole packet, already cut from the stream.
SimPacket Decode(const QByteArray &bytes);

QString TypeName(qint16 typeCode);
// One line for a person reading the exchange's output.
QString Describe(const SimPacket &packet);

// Cuts the console's byte stream into packets: several packets in one read, or
// one packet over several reads, come out the same.
class StreamCutter {
public:
  QList<SimPacket> Feed(const QByteArray &bytes);
  void Clear() { Pending.clear(); }
  qsizetype PendingBytes() const { return Pending.size(); }

private:
  QByteArray Pending;
};

} // namespace SimPackets
