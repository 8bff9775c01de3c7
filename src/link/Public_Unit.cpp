#include "link/Public_Unit.h"

#include "link/SysParam.h"
#include "support/TextCodec.h"

#include <cstring>

using namespace Qt::StringLiterals;

QString PacketTypeName(int typeCode) {
  switch (PacketType(typeCode)) {
  case PacketType::Pulse:
    return u"Pulse"_s;
  case PacketType::Login:
    return u"Login"_s;
  case PacketType::CallState:
    return u"CallState"_s;
  case PacketType::DialDigits:
    return u"DialDigits"_s;
  case PacketType::UserInfo:
    return u"UserInfo"_s;
  case PacketType::PhoneCommand:
    return u"PhoneCommand"_s;
  case PacketType::MissedCall:
    return u"MissedCall"_s;
  case PacketType::SrvClassSet:
    return u"SrvClassSet"_s;
  case PacketType::DeviceControl:
    return u"DeviceControl"_s;
  case PacketType::GsmModule:
    return u"GsmModule"_s;
  case PacketType::ExtensionQuery:
    return u"ExtensionQuery"_s;
  case PacketType::MoringCall:
    return u"NETMODULE_CODE_MORINGCALL_SET"_s;
  case PacketType::SrvClassName:
    return u"SrvClassName"_s;
  case PacketType::RecordServerQuery:
    return u"RecordServerQuery"_s;
  case PacketType::VoiceMailClear:
    return u"VoiceMailClear"_s;
  default:
    return QString();
  }
}

quint16 GetU16(const char *p, int offset) {
  return quint16(quint8(p[offset]) | (quint16(quint8(p[offset + 1])) << 8));
}

qint16 GetI16(const char *p, int offset) {
  return qint16(GetU16(p, offset));
}

quint32 GetU32(const char *p, int offset) {
  return quint32(GetU16(p, offset)) | (quint32(GetU16(p, offset + 2)) << 16);
}

void PutU16(char *p, int offset, quint16 value) {
  p[offset] = char(value & 0xFF);
  p[offset + 1] = char(value >> 8);
}

void PutU32(char *p, int offset, quint32 value) {
  PutU16(p, offset, quint16(value & 0xFFFF));
  PutU16(p, offset + 2, quint16(value >> 16));
}

QString GetText(const char *p, int offset, int size) {
  return ReadFixedText(p + offset, size);
}

void PutText(char *p, int offset, int size, const QString &text) {
  WriteFixedText(p + offset, size, text);
}

PacketHeader PacketHeader::Read(const char *p) {
  PacketHeader h;
  h.Magic = GetU32(p, 0);
  h.Checksum = GetU16(p, 4);
  h.TypeCode = GetI16(p, 6);
  h.ID = GetU16(p, 8);
  h.Len = GetI16(p, 10);
  return h;
}

quint8 PacketChecksum(const char *packet, int length) {
  quint8 sum = 0;
  for (int i = 6; i < length; ++i)
    sum = quint8(sum + quint8(packet[i]));
  return quint8(-sum);
}

namespace {
PacketOutlet g_outlet = nullptr;
void *g_outletContext = nullptr;

bool HasSession() {
  return SysParam().MyID != kNoSession;
}

// Zeroes a record and fills its header's type, session id and length.
void StartRecord(char *record, int size, PacketType type) {
  std::memset(record, 0, size_t(size));
  PutU16(record, 6, quint16(type));
  PutU16(record, 8, SysParam().MyID);
  PutU16(record, 10, quint16(size));
}
} // namespace

void SetPacketOutlet(PacketOutlet outlet, void *context) {
  g_outlet = outlet;
  g_outletContext = context;
}

void sendPacket2Socket(const char *packet, int length, int /*flag*/) {
  if (length < kPacketHeaderSize || length > kSendBufferSize)
    return;
  char buffer[kSendBufferSize];
  std::memcpy(buffer, packet, size_t(length));
  PutU32(buffer, 0, kPacketMagic);
  PutU16(buffer, 4, PacketChecksum(buffer, length));
  if (g_outlet)
    g_outlet(g_outletContext, buffer, length);
}

QByteArray BuildLoginPacket(const QString &telNo, const QString &password) {
  QByteArray packet(64, '\0');
  char *p = packet.data();
  PutU16(p, 6, quint16(PacketType::Login));
  PutU16(p, 8, 0);
  PutU16(p, 10, 64);
  PutText(p, 12, 21, telNo);
  PutText(p, 33, 21, password);
  PutText(p, 54, 10, u"02"_s);
  return packet;
}

void SendLogin(const QString &telNo, const QString &password) {
  const QByteArray packet = BuildLoginPacket(telNo, password);
  sendPacket2Socket(packet.constData(), int(packet.size()), 1);
}

void SendPhoneCommand(quint16 code) {
  if (!HasSession())
    return;
  char record[16];
  StartRecord(record, 16, PacketType::PhoneCommand);
  PutU16(record, 12, code);
  sendPacket2Socket(record, 16, 1);
}

void SendDialDigits(const QByteArray &codes) {
  if (!HasSession())
    return;
  char record[36];
  StartRecord(record, 36, PacketType::DialDigits);
  const int count = int(qMin<qsizetype>(codes.size(), 23));
  record[12] = char(count);
  std::memcpy(record + 13, codes.constData(), size_t(count));
  sendPacket2Socket(record, 36, 1);
}

void SendRecordServerQuery() {
  if (!HasSession())
    return;
  char record[20];
  StartRecord(record, 20, PacketType::RecordServerQuery);
  PutU16(record, 10, 0); // deliberately no length on this one packet
  PutU16(record, 12, 16);
  PutU32(record, 16, 0);
  sendPacket2Socket(record, 20, 1);
}

namespace {
void PassThrough(char *record, int size) {
  if (!HasSession())
    return;
  PutU16(record, 8, SysParam().MyID);
  PutU16(record, 10, quint16(size));
  sendPacket2Socket(record, size, 1);
}
} // namespace

void SendPacket16(char *record) {
  PassThrough(record, 16);
}
void SendPacket20(char *record) {
  PassThrough(record, 20);
}
void SendPacket40(char *record) {
  PassThrough(record, 40);
}
void SendPacket220(char *record) {
  PassThrough(record, 220);
}

TCallStateRecord TCallStateRecord::Parse(const char *w) {
  TCallStateRecord r;
  r.State = quint8(w[12]);
  r.Line = GetI16(w, 14);
  r.Caller = GetText(w, 17, 21);
  r.Called = GetText(w, 38, 21);
  r.LogAsDialOut = quint8(w[59]);
  r.Rights = GetU16(w, 64);
  return r;
}

TUserInfoRecord TUserInfoRecord::Parse(const char *w) {
  // Each text runs to its NUL; the zero-filled working copy guarantees one.
  TUserInfoRecord r;
  r.TelNo = GetText(w, 12, kWorkBufferSize - 12);
  r.UserName = GetText(w, 33, kWorkBufferSize - 33);
  r.Port = GetU16(w, 74);
  r.Description = GetText(w, 76, kWorkBufferSize - 76);
  r.Admin = GetI16(w, 118);
  r.Features = GetText(w, 120, kWorkBufferSize - 120);
  return r;
}
