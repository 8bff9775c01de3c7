#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

// The packets between the console and the exchange: one 12-byte header, then a
// record. Numbers are little-endian; text is GBK, NUL-terminated in its field.

inline constexpr quint32 kPacketMagic = 0x39101912; // bytes 12 19 10 39
inline constexpr int kPacketHeaderSize = 12;
inline constexpr int kMaxDispatchLength = 1023; // a Len of 1024 or more is not processed
inline constexpr int kSendBufferSize = 1024;
inline constexpr int kMinBlockLength = 12;
inline constexpr int kMaxBlockLength = 10230; // longest block the walk accepts
inline constexpr int kMaxReadLength = 10240;  // longest read the arrival event takes
inline constexpr int kWorkBufferSize = 2048;  // the dispatcher's zero-filled copy
inline constexpr quint16 kNoSession = 65535;

// Type codes of the packets.
enum class PacketType : qint16 {
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

// The name the log and the code use for a type code; empty for codes without one.
QString PacketTypeName(int typeCode);

struct PacketHeader {
  quint32 Magic = 0;
  quint16 Checksum = 0;
  qint16 TypeCode = 0;
  quint16 ID = 0;
  qint16 Len = 0;

  static PacketHeader Read(const char *packet); // needs 12 readable bytes
};

// Little-endian field access inside a packet buffer.
quint16 GetU16(const char *packet, int offset);
qint16 GetI16(const char *packet, int offset);
quint32 GetU32(const char *packet, int offset);
void PutU16(char *packet, int offset, quint16 value);
void PutU32(char *packet, int offset, quint32 value);
// A NUL-terminated GBK text field of `size` bytes.
QString GetText(const char *packet, int offset, int size);
void PutText(char *packet, int offset, int size, const QString &text);

// The checksum byte of a whole packet: the negated sum of bytes 6..length-1.
quint8 PacketChecksum(const char *packet, int length);

// Puts the magic and the checksum on a filled packet and hands it to the link.
// The only way out to the exchange. `flag` is kept for its callers; it changes nothing.
void sendPacket2Socket(const char *packet, int length, int flag = 0);

// Where sendPacket2Socket delivers: the TCP link's SendBytes. Unset, packets vanish.
using PacketOutlet = void (*)(void *context, const char *bytes, int length);
void SetPacketOutlet(PacketOutlet outlet, void *context);

// --- Records the console core builds ------------------------------------------

// Login, 64 bytes: the only packets sent without a session (ID 0).
QByteArray BuildLoginPacket(const QString &telNo, const QString &password);
void SendLogin(const QString &telNo, const QString &password);

// PhoneCommand, 16 bytes: one call-control code (128 query ... 133 state request).
void SendPhoneCommand(quint16 code);

// DialDigits, 36 bytes: up to 23 digit codes (1..9, 10 for 0, 11 '*', 12 '#').
void SendDialDigits(const QByteArray &codes);

// RecordServerQuery, 20 bytes; its Len stays 0, the other side goes by the block.
void SendRecordServerQuery();

// Pass-through senders for records a caller filled in (type and payload): each
// sets ID and Len and sends. Nothing goes without a session.
void SendPacket16(char *record);
void SendPacket20(char *record);
void SendPacket40(char *record);
void SendPacket220(char *record);

// --- Records the console core reads --------------------------------------------

struct TCallStateRecord {
  quint8 State = 0;
  qint16 Line = 0;
  QString Caller;
  QString Called;
  quint8 LogAsDialOut = 0;
  quint16 Rights = 0;
  static TCallStateRecord Parse(const char *work); // from the 2048-byte copy
};

struct TUserInfoRecord {
  QString TelNo;       // offset 12
  QString UserName;    // offset 33
  quint16 Port = 0;    // offset 74
  QString Description; // offset 76
  qint16 Admin = 0;    // offset 118
  QString Features;    // offset 120, the feature code list
  static TUserInfoRecord Parse(const char *work);
};
