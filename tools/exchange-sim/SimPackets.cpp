#include "SimPackets.h"

#include <QStringDecoder>
#include <QStringEncoder>

#include <cstring>

using namespace Qt::StringLiterals;

namespace SimPackets {

namespace {

// Field offsets of the records the exchange reads or writes.
constexpr int kLoginSize = 64;
constexpr int kLoginTelNo = 12, kLoginPassword = 33, kLoginVersion = 54;
constexpr int kLoginTextSize = 21, kLoginVersionSize = 10;
constexpr int kDialCount = 12, kDialDigits = 13, kDialDigitsSize = 23;
constexpr int kCallStateSize = 66;
constexpr int kCallStateState = 12, kCallStateLine = 14, kCallStateCaller = 17,
              kCallStateCalled = 38, kCallStateLogAsDialOut = 59, kCallStateRights = 64;
constexpr int kMissedCallSize = 54;
constexpr int kNumberSize = 21;
constexpr int kMoringCallTime = 18, kMoringCallTimeSize = 20, kMoringCallMode = 38;
constexpr int kSmsText = 18;
constexpr quint16 kOwnNoDisturbCode = 149, kResetTrunkCode = 150, kNoDisturbCode = 152;
constexpr int kUserNumber = 12, kUserName = 33, kUserPort = 74, kUserDescription = 76,
              kUserAdmin = 118, kUserFeatures = 120;

// Reads beyond the data give zeros, as if the packet were padded.
quint8 U8(const QByteArray &bytes, int offset) {
  return offset >= 0 && offset < bytes.size() ? static_cast<quint8>(bytes.at(offset)) : 0;
}
quint16 U16(const QByteArray &bytes, int offset) {
  return static_cast<quint16>(U8(bytes, offset) | (U8(bytes, offset + 1) << 8));
}
qint16 I16(const QByteArray &bytes, int offset) {
  return static_cast<qint16>(U16(bytes, offset));
}

void PutU16(QByteArray &bytes, int offset, quint16 value) {
  bytes[offset] = static_cast<char>(value & 0xFF);
  bytes[offset + 1] = static_cast<char>(value >> 8);
}

void PutField(QByteArray &bytes, int offset, const QByteArray &field) {
  std::memcpy(bytes.data() + offset, field.constData(), static_cast<size_t>(field.size()));
}

bool HasMagic(const QByteArray &bytes) {
  const qsizetype n = std::min<qsizetype>(bytes.size(), 4);
  return std::memcmp(bytes.constData(), kMagic, static_cast<size_t>(n)) == 0;
}

QByteArray EncodeGbk(QStringView text) {
  QStringEncoder encoder("GBK");
  return encoder.encode(text);
}

QString HexOf(const QByteArray &bytes, int limit) {
  QString hex = QString::fromLatin1(bytes.left(limit).toHex(' '));
  if (bytes.size() > limit)
    hex += u" …"_s;
  return hex;
}

} // namespace

quint8 ChecksumByte(const QByteArray &packet) {
  quint8 sum = 0;
  for (qsizetype i = 6; i < packet.size(); ++i)
    sum = static_cast<quint8>(sum + static_cast<quint8>(packet.at(i)));
  return static_cast<quint8>(-sum);
}

bool ChecksumMatches(const QByteArray &packet) {
  return packet.size() >= kHeaderSize && U8(packet, 4) == ChecksumByte(packet) &&
         U8(packet, 5) == 0;
}

QByteArray BuildPacket(qint16 typeCode, quint16 id, const QByteArray &payload, int len) {
  QByteArray packet(kHeaderSize, '\0');
  packet.append(payload);
  std::memcpy(packet.data(), kMagic, 4);
  PutU16(packet, 6, static_cast<quint16>(typeCode));
  PutU16(packet, 8, id);
  PutU16(packet, 10, static_cast<quint16>(len < 0 ? packet.size() : len));
  PutU16(packet, 4, ChecksumByte(packet));
  return packet;
}

QByteArray TextField(const QString &text, int size) {
  QByteArray field(size, '\0');
  if (size <= 0)
    return field;
  QByteArray encoded = EncodeGbk(text);
  if (encoded.size() > size - 1) {
    // Too long: keep whole characters only, so no half of a double-byte one is left.
    encoded.clear();
    for (qsizetype i = 0; i < text.size();) {
      const qsizetype units = text.at(i).isHighSurrogate() && i + 1 < text.size() ? 2 : 1;
      const QByteArray one = EncodeGbk(QStringView(text).mid(i, units));
      if (encoded.size() + one.size() > size - 1)
        break;
      encoded += one;
      i += units;
    }
  }
  PutField(field, 0, encoded);
  return field;
}

QString ReadText(const QByteArray &bytes, int offset, int size) {
  if (offset < 0 || offset >= bytes.size() || size <= 0)
    return {};
  QByteArray field = bytes.mid(offset, size);
  const qsizetype nul = field.indexOf('\0');
  if (nul >= 0)
    field.truncate(nul);
  QStringDecoder decoder("GBK");
  return decoder.decode(field);
}

QByteArray PulsePacket(quint16 id) {
  return BuildPacket(Pulse, id, {});
}

QByteArray LoginAnswer(quint16 id, const QString &result) {
  return BuildPacket(Login, id, TextField(result, kLoginSize - kHeaderSize));
}

QByteArray CallStatePacket(quint16 id, quint8 state, qint16 line, const QString &caller,
                           const QString &called, bool logAsDialOut, quint16 rights) {
  QByteArray payload(kCallStateSize - kHeaderSize, '\0');
  auto at = [](int offset) { return offset - kHeaderSize; };
  payload[at(kCallStateState)] = static_cast<char>(state);
  PutU16(payload, at(kCallStateLine), static_cast<quint16>(line));
  PutField(payload, at(kCallStateCaller), TextField(caller, kNumberSize));
  PutField(payload, at(kCallStateCalled), TextField(called, kNumberSize));
  payload[at(kCallStateLogAsDialOut)] = logAsDialOut ? 1 : 0;
  PutU16(payload, at(kCallStateRights), rights);
  return BuildPacket(CallState, id, payload);
}

QByteArray MissedCallPacket(quint16 id, const QString &caller) {
  QByteArray payload(kMissedCallSize - kHeaderSize, '\0');
  PutField(payload, 0, TextField(caller, kNumberSize));
  return BuildPacket(MissedCall, id, payload);
}

QByteArray UserInfoPacket(quint16 id, const QString &number, const QString &name, quint16 port,
                          const QString &description, qint16 admin, const QString &features) {
  QByteArray payload(kUserFeatures - kHeaderSize, '\0');
  auto at = [](int offset) { return offset - kHeaderSize; };
  PutField(payload, at(kUserNumber), TextField(number, kUserName - kUserNumber));
  PutField(payload, at(kUserName), TextField(name, kUserPort - kUserName));
  PutU16(payload, at(kUserPort), port);
  PutField(payload, at(kUserDescription), TextField(description, kUserAdmin - kUserDescription));
  PutU16(payload, at(kUserAdmin), static_cast<quint16>(admin));
  // The list runs to its NUL; only Len's own limit cuts it.
  constexpr qsizetype kLongestPacket = 32767;
  const qsizetype size = std::min(EncodeGbk(features).size() + 1, kLongestPacket - kUserFeatures);
  payload += TextField(features, static_cast<int>(size));
  return BuildPacket(UserInfo, id, payload);
}

QString DigitsText(const QByteArray &codes) {
  QString text;
  for (char c : codes) {
    const int code = static_cast<quint8>(c);
    if (code >= 1 && code <= 9)
      text += QChar(u'0' + code);
    else if (code == 10)
      text += u'0';
    else if (code == 11)
      text += u'*';
    else if (code == 12)
      text += u'#';
    else
      text += u'?';
  }
  return text;
}

QByteArray DigitCodes(const QString &text) {
  QByteArray codes;
  for (QChar c : text) {
    if (c >= u'1' && c <= u'9')
      codes += static_cast<char>(c.unicode() - u'0');
    else if (c == u'0')
      codes += char(10);
    else if (c == u'*')
      codes += char(11);
    else if (c == u'#')
      codes += char(12);
  }
  return codes;
}

SimPacket Decode(const QByteArray &bytes) {
  SimPacket p;
  p.Bytes = bytes;
  p.MagicOk = bytes.size() >= 4 && HasMagic(bytes);
  if (bytes.size() < kHeaderSize) {
    p.Malformed = true;
    return p;
  }
  p.TypeCode = I16(bytes, 6);
  p.ID = U16(bytes, 8);
  p.Len = I16(bytes, 10);
  p.ChecksumOk = ChecksumMatches(bytes);
  if (!p.MagicOk)
    p.Malformed = true;

  switch (p.TypeCode) {
  case Login:
    p.Fields[u"TelNo"_s] = ReadText(bytes, kLoginTelNo, kLoginTextSize);
    p.Fields[u"Password"_s] = ReadText(bytes, kLoginPassword, kLoginTextSize);
    p.Fields[u"Version"_s] = ReadText(bytes, kLoginVersion, kLoginVersionSize);
    break;
  case DialDigits: {
    const int count = U8(bytes, kDialCount);
    p.Fields[u"Count"_s] = count;
    p.Fields[u"Digits"_s] = DigitsText(bytes.mid(kDialDigits, std::min(count, kDialDigitsSize)));
    break;
  }
  case PhoneCommand:
    p.Fields[u"Code"_s] = U16(bytes, 12);
    break;
  case RecordServerQuery:
    p.Fields[u"Sub"_s] = U16(bytes, 12);
    break;
  case SrvClassSet:
    p.Fields[u"Sub"_s] = U8(bytes, 12);
    p.Fields[u"DstID"_s] = U16(bytes, 16);
    p.Fields[u"SrvClass"_s] = U16(bytes, 18);
    break;
  case DeviceControl: {
    const quint16 code = U16(bytes, 12);
    p.Fields[u"Sub"_s] = U8(bytes, 12);
    p.Fields[u"Code"_s] = code;
    if (code == kOwnNoDisturbCode) {
      p.Fields[u"Command"_s] = U16(bytes, 16);
    } else if (code == kResetTrunkCode) {
      p.Fields[u"DstID"_s] = U16(bytes, 16);
    } else if (code == kNoDisturbCode) {
      p.Fields[u"DstID"_s] = U16(bytes, 16);
      p.Fields[u"Command"_s] = U16(bytes, 18);
    }
    break;
  }
  case GsmModule: {
    const int sub = U8(bytes, 12);
    p.Fields[u"Sub"_s] = sub;
    if (sub == 2) {
      const int textLen = U16(bytes, 16);
      p.Fields[u"Channel"_s] = U16(bytes, 14);
      p.Fields[u"TextLen"_s] = textLen;
      p.Fields[u"Text"_s] = ReadText(bytes, kSmsText, textLen);
    }
    break;
  }
  case ExtensionQuery:
    p.Fields[u"Sub"_s] = U8(bytes, 12);
    p.Fields[u"NextID"_s] = U16(bytes, 16);
    break;
  case MoringCall:
    p.Fields[u"Sub"_s] = U8(bytes, 12);
    p.Fields[u"DstID"_s] = U16(bytes, 16);
    p.Fields[u"CallTime"_s] = ReadText(bytes, kMoringCallTime, kMoringCallTimeSize);
    p.Fields[u"Mode"_s] = U8(bytes, kMoringCallMode);
    break;
  case SrvClassName:
    p.Fields[u"Sub"_s] = U8(bytes, 12);
    p.Fields[u"Index"_s] = U16(bytes, 16);
    break;
  case VoiceMailClear:
    p.Fields[u"Sub"_s] = U8(bytes, 12);
    p.Fields[u"DstID"_s] = U16(bytes, 16);
    break;
  default:
    if (bytes.size() > kHeaderSize)
      p.Fields[u"Sub"_s] = U8(bytes, 12);
    break;
  }
  return p;
}

QString TypeName(qint16 typeCode) {
  switch (typeCode) {
  case Pulse:
    return u"Pulse"_s;
  case Login:
    return u"Login"_s;
  case CallState:
    return u"CallState"_s;
  case DialDigits:
    return u"DialDigits"_s;
  case UserInfo:
    return u"UserInfo"_s;
  case PhoneCommand:
    return u"PhoneCommand"_s;
  case MissedCall:
    return u"MissedCall"_s;
  case SrvClassSet:
    return u"SrvClassSet"_s;
  case DeviceControl:
    return u"DeviceControl"_s;
  case GsmModule:
    return u"GsmModule"_s;
  case ExtensionQuery:
    return u"ExtensionQuery"_s;
  case MoringCall:
    return u"MoringCall"_s;
  case SrvClassName:
    return u"SrvClassName"_s;
  case RecordServerQuery:
    return u"RecordServerQuery"_s;
  case VoiceMailClear:
    return u"VoiceMailClear"_s;
  default:
    return u"type %1"_s.arg(typeCode);
  }
}

QString Describe(const SimPacket &packet) {
  if (packet.Malformed)
    return u"malformed, %1 bytes: %2"_s.arg(packet.Bytes.size()).arg(HexOf(packet.Bytes, 32));
  QString line = u"%1 id=%2 len=%3"_s.arg(TypeName(packet.TypeCode)).arg(packet.ID).arg(packet.Len);
  // Fields in the order they stand in their records.
  static const QStringList order{
      u"TelNo"_s,    u"Password"_s, u"Version"_s, u"Count"_s,   u"Digits"_s,   u"Code"_s,
      u"Sub"_s,      u"NextID"_s,   u"Index"_s,   u"DstID"_s,   u"SrvClass"_s, u"Command"_s,
      u"CallTime"_s, u"Mode"_s,     u"Channel"_s, u"TextLen"_s, u"Text"_s};
  for (const QString &key : order) {
    if (packet.Fields.contains(key))
      line += u" %1=%2"_s.arg(
          key,
          packet.Fields.value(key).toString().replace(u'\n', u"\\n"_s).replace(u'\r', u"\\r"_s));
  }
  const bool onlySub =
      packet.Fields.isEmpty() || (packet.Fields.size() == 1 && packet.Fields.contains(u"Sub"_s));
  if (onlySub && packet.Bytes.size() > kHeaderSize)
    line += u" payload: "_s + HexOf(packet.Bytes.mid(kHeaderSize), 48);
  if (!packet.ChecksumOk)
    line += u" [checksum wrong]"_s;
  return line;
}

QList<SimPacket> StreamCutter::Feed(const QByteArray &bytes) {
  Pending += bytes;
  QList<SimPacket> packets;
  while (!Pending.isEmpty()) {
    // A stream that lost its place cannot be trusted up to the next write:
    // hand back what is there as one malformed piece and start afresh.
    if (!HasMagic(Pending)) {
      packets << Decode(Pending);
      packets.last().Malformed = true;
      Pending.clear();
      break;
    }
    if (Pending.size() < kHeaderSize)
      break;
    const qint16 type = I16(Pending, 6);
    const qint16 len = I16(Pending, 10);
    int size = len;
    if (type == RecordServerQuery && len == 0) {
      size = kRecordServerQuerySize;
    } else if (len < kHeaderSize) {
      packets << Decode(Pending);
      packets.last().Malformed = true;
      Pending.clear();
      break;
    }
    if (Pending.size() < size)
      break;
    packets << Decode(Pending.left(size));
    Pending.remove(0, size);
  }
  return packets;
}

} // namespace SimPackets
