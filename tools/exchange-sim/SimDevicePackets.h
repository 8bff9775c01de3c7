// Packets and datagrams about devices that the exchange sends: the reports of
// an enumeration, the answers to the guest-room and SMS requests, and the UDP
// status and call-record events. Built on SimPackets' header and text fields.
#pragma once

#include "SimDevices.h"

#include <QByteArray>
#include <QString>

namespace SimPackets {

// Sizes of what the exchange sends here.
inline constexpr int kDeviceReportSize = 102;
inline constexpr int kStatusDatagramSize = 108;
inline constexpr int kCallRecordSize = 64;
inline constexpr int kSrvClassNameSize = 40;
inline constexpr int kSrvClassSetAnswerSize = 28;
inline constexpr int kDeviceControlAnswerSize = 20;
inline constexpr int kVoiceMailAnswerSize = 24;
inline constexpr int kMoringCallSize = 40;
inline constexpr int kGsmAnswerSize = 16;

// DeviceControl sub-codes.
inline constexpr quint16 kStatusEvent = 136;
inline constexpr quint16 kOwnNoDisturb = 149;
inline constexpr quint16 kResetTrunk = 150;
inline constexpr quint16 kNoDisturb = 152;
// GsmModule sub-codes.
inline constexpr quint8 kGsmChoose = 1, kGsmSend = 2, kGsmChosen = 3, kGsmSent = 4, kGsmFailed = 5,
                        kGsmNoModule = 6;
// The index that ends the list of service class names.
inline constexpr quint16 kEndOfNames = 65535;
// The datagram type of a finished call's record.
inline constexpr qint16 kCallRecordType = 41;
// The sub-code of the recording server's query and answer.
inline constexpr quint16 kRecordServerSub = 16;

// ExtensionQuery answer: one device, or the end of the list (ID -1).
QByteArray DeviceReport(quint16 session, const SimDevice &device);
QByteArray EndOfDevices(quint16 session);
QByteArray SrvClassNameAnswer(quint16 session, quint16 index, const QString &name);
QByteArray SrvClassSetAnswer(quint16 session, quint16 dstId, const QString &result);
QByteArray NoDisturbAnswer(quint16 session, quint16 dstId, quint16 command);
QByteArray VoiceMailAnswer(quint16 session, quint16 dstId, quint16 serverResult);
QByteArray MoringCallAnswer(quint16 session, quint16 subCode, quint16 dstId,
                            const QString &callTime, quint8 mode);
QByteArray GsmAnswer(quint16 session, quint8 subCode, quint16 channel);
// RecordServerQuery answer: "1000" with the recording server's address, or
// another code for an exchange without one.
QByteArray RecordServerAnswer(quint16 session, const QString &code, const QString &address);

// UDP datagrams. The status event carries the device ID in the header's ID.
QByteArray StatusDatagram(const SimDevice &device);
QByteArray CallRecordDatagram(quint16 id, const QString &extension, qint16 assType,
                              const QString &associated, qint16 direction, qint16 recordType);

} // namespace SimPackets
