#include "SimDevicePackets.h"

#include "SimPackets.h"

#include <cstring>

namespace SimPackets {

namespace {

constexpr int kNumberSize = 21;
constexpr int kModuleTypeSize = 10;
constexpr int kWakeUpSize = 20;
constexpr int kRecordCodeSize = 7;
constexpr int kRecordAddressSize = 64;

// A record of `size` bytes whose offsets count from the packet's start; the
// header is left for BuildPacket.
class Body {
public:
  explicit Body(int size) : Bytes(size - kHeaderSize, '\0') {}
  Body &U8(int offset, quint8 v) {
    Bytes[offset - kHeaderSize] = static_cast<char>(v);
    return *this;
  }
  Body &U16(int offset, quint16 v) {
    U8(offset, static_cast<quint8>(v & 0xFF));
    return U8(offset + 1, static_cast<quint8>(v >> 8));
  }
  Body &Text(int offset, const QString &text, int size) {
    const QByteArray field = TextField(text, size);
    std::memcpy(Bytes.data() + offset - kHeaderSize, field.constData(),
                static_cast<size_t>(field.size()));
    return *this;
  }
  QByteArray Bytes;
};

} // namespace

QByteArray DeviceReport(quint16 session, const SimDevice &d) {
  Body b(kDeviceReportSize);
  b.U16(12, 1)
      .U16(16, static_cast<quint16>(d.ID))
      .U16(18, static_cast<quint16>(d.Type))
      .U8(20, d.Status)
      .Text(21, d.Number, kNumberSize)
      .Text(42, d.Name, kNumberSize)
      .U8(63, static_cast<quint8>(d.SrvClass))
      .U16(64, d.MixData)
      .U16(66, static_cast<quint16>(d.Signal))
      .U16(68, d.ModuleFlags)
      .U16(70, d.ModuleState)
      .Text(72, d.ModuleType, kModuleTypeSize)
      .Text(82, d.WakeUp, kWakeUpSize);
  return BuildPacket(ExtensionQuery, session, b.Bytes);
}

QByteArray EndOfDevices(quint16 session) {
  Body b(kDeviceReportSize);
  b.U16(12, 1).U16(16, 0xFFFF);
  return BuildPacket(ExtensionQuery, session, b.Bytes);
}

QByteArray SrvClassNameAnswer(quint16 session, quint16 index, const QString &name) {
  Body b(kSrvClassNameSize);
  b.U16(12, 1).U16(16, index).Text(18, name, kSrvClassNameSize - 18);
  return BuildPacket(SrvClassName, session, b.Bytes);
}

QByteArray SrvClassSetAnswer(quint16 session, quint16 dstId, const QString &result) {
  Body b(kSrvClassSetAnswerSize);
  b.U16(12, 1).U16(16, dstId).Text(18, result, kSrvClassSetAnswerSize - 18);
  return BuildPacket(SrvClassSet, session, b.Bytes);
}

QByteArray NoDisturbAnswer(quint16 session, quint16 dstId, quint16 command) {
  Body b(kDeviceControlAnswerSize);
  b.U16(12, kNoDisturb).U16(16, dstId).U16(18, command);
  return BuildPacket(DeviceControl, session, b.Bytes);
}

QByteArray VoiceMailAnswer(quint16 session, quint16 dstId, quint16 serverResult) {
  Body b(kVoiceMailAnswerSize);
  b.U16(12, 1).U16(16, dstId).U16(20, serverResult);
  return BuildPacket(VoiceMailClear, session, b.Bytes);
}

QByteArray MoringCallAnswer(quint16 session, quint16 subCode, quint16 dstId,
                            const QString &callTime, quint8 mode) {
  Body b(kMoringCallSize);
  b.U16(12, subCode).U16(16, dstId).Text(18, callTime, kWakeUpSize).U8(38, mode);
  return BuildPacket(MoringCall, session, b.Bytes);
}

QByteArray GsmAnswer(quint16 session, quint8 subCode, quint16 channel) {
  Body b(kGsmAnswerSize);
  b.U8(12, subCode).U16(14, channel);
  return BuildPacket(GsmModule, session, b.Bytes);
}

QByteArray StatusDatagram(const SimDevice &d) {
  Body b(kStatusDatagramSize);
  b.U16(12, kStatusEvent)
      .U16(14, static_cast<quint16>(d.Type))
      .U16(16, d.Status)
      .U16(22, d.MixData)
      .U16(24, static_cast<quint16>(d.Signal))
      .U16(26, d.ModuleFlags)
      .U16(28, d.ModuleState)
      .Text(30, d.ModuleType, kModuleTypeSize)
      .U16(40, static_cast<quint16>(static_cast<qint16>(d.SrvClass)))
      .Text(42, d.WakeUp, kWakeUpSize)
      .Text(62, d.Name, kStatusDatagramSize - 62);
  return BuildPacket(DeviceControl, static_cast<quint16>(d.ID), b.Bytes);
}

QByteArray CallRecordDatagram(quint16 id, const QString &extension, qint16 assType,
                              const QString &associated, qint16 direction, qint16 recordType) {
  Body b(kCallRecordSize);
  b.U16(12, 1)
      .Text(16, extension, 38 - 16)
      .U16(38, static_cast<quint16>(assType))
      .Text(40, associated, 60 - 40)
      .U16(60, static_cast<quint16>(direction))
      .U16(62, static_cast<quint16>(recordType));
  return BuildPacket(kCallRecordType, id, b.Bytes);
}

QByteArray RecordServerAnswer(quint16 session, const QString &code, const QString &address) {
  Body b(23 + kRecordAddressSize);
  b.U16(12, kRecordServerSub)
      .Text(16, code, kRecordCodeSize)
      .Text(23, address, kRecordAddressSize);
  return BuildPacket(RecordServerQuery, session, b.Bytes);
}

} // namespace SimPackets
