#include "devices/UDPServerMain.h"

#include "link/Public_Unit.h"
#include "devices/DeviceTypes.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QNetworkDatagram>

#include <algorithm>
#include <array>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {
// Copies a datagram into a zero-filled record: at most `count` bytes, never
// more than the record holds or the datagram brings.
template <std::size_t N>
void CopyRecord(std::array<char, N> &record, const QByteArray &datagram, int count) {
  record.fill(0);
  const qsizetype n = std::min<qsizetype>({qsizetype(count), qsizetype(N), datagram.size()});
  if (n > 0)
    std::memcpy(record.data(), datagram.constData(), size_t(n));
}
} // namespace

TUDPMainForm::TUDPMainForm(quint16 port, QObject *parent)
    : TFormLogic("TUDPMainForm", parent), m_port(port) {
  connect(&UDPServer, &QUdpSocket::readyRead, this, &TUDPMainForm::UDPServerDataReceived);
}

bool TUDPMainForm::FormCreate() {
  // Address reuse lets a console that just ended leave the port to the next
  // start at once; it does not let two listeners share a port held without it.
  if (UDPServer.bind(QHostAddress::Any, m_port,
                     QAbstractSocket::ShareAddress | QAbstractSocket::ReuseAddressHint)) {
    UDPServer.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, kReceiveBufferBytes);
    m_receiveBuffer =
        UDPServer.socketOption(QAbstractSocket::ReceiveBufferSizeSocketOption).toInt();
    // The system may grant less (on Linux net.core.rmem_max caps it); a short
    // buffer is where bursts get lost, so the log says what we have.
    WriteLog(u"UDP port %1: receive buffer %2 bytes (asked %3)"_s.arg(LocalPort())
                 .arg(m_receiveBuffer)
                 .arg(kReceiveBufferBytes));
    return true;
  }
  const QString text = u"警告:无法启动UDP网络服务,请检查您的网络配置!"_s;
  WriteLog(u"UDP bind %1: %2"_s.arg(m_port).arg(UDPServer.errorString()));
  TheShell().Message(MessageKind::Error, text);
  emit fatalBindError(text);
  return false;
}

QString TUDPMainForm::SenderText(const QHostAddress &address) {
  bool isV4 = false;
  const quint32 v4 = address.toIPv4Address(&isV4);
  return isV4 ? QHostAddress(v4).toString() : address.toString();
}

void TUDPMainForm::UDPServerDataReceived() {
  // Everything waiting is taken in this one turn, and its log lines reach the
  // file in one write: a burst must leave the kernel's buffer faster than it fills.
  TLogBatch logBatch;
  while (UDPServer.hasPendingDatagrams()) {
    const QNetworkDatagram datagram = UDPServer.receiveDatagram();
    if (!datagram.isValid())
      break;
    // One datagram's fault ends that datagram only; the next is read as usual.
    RunGuarded([&] { HandleDatagram(datagram.data(), SenderText(datagram.senderAddress())); });
  }
}

void TUDPMainForm::HandleDatagram(const QByteArray &datagram, const QString &sender) {
  // Anyone on the network can send here; only the exchange we log in to counts.
  // Strangers are not logged, so they can't fill the log either.
  if (sender != SysConfig().Host)
    return;
  if (datagram.size() > kMaxDatagramSize) {
    WriteLog(u"UDP datagram of %1 bytes dropped"_s.arg(datagram.size()));
    return;
  }

  std::array<char, kHeaderSize> header{};
  CopyRecord(header, datagram, kHeaderSize);
  const quint16 type = GetU16(header.data(), 6);
  const qint16 id = GetI16(header.data(), 8);
  const quint16 subCode = GetU16(header.data(), 12);
  if (LogEnabled())
    WriteLog(u"收到UDP!UdpServerDataReceived,Id:%1 长度:%2"_s.arg(id).arg(datagram.size()));

  if (type == kTypeDeviceStatus && subCode == kSubDeviceStatus) {
    DeviceStatusDatagram(header.data(), datagram);
  } else if (type == kTypeConRecord && subCode == kSubConRecord) {
    std::array<char, kConRecordSize> record;
    CopyRecord(record, datagram, GetU16(header.data(), 10));
    Event_PBX_ConRecord(record.data());
  }
}

void TUDPMainForm::DeviceStatusDatagram(const char *header, const QByteArray &datagram) {
  const int id = GetI16(header, 8);
  if (!ValidDeviceId(id)) {
    WriteLog(u"UDP: device ID %1 outside the table, status dropped"_s.arg(id));
    return;
  }
  // The length field counts the header too. The exchange never sends one longer
  // than the record; if it did, the record still ends at its own size.
  std::array<char, kStatusRecordSize> record;
  CopyRecord(record, datagram, GetU16(header, 10));
  if (DeviceStatusHandler)
    DeviceStatusHandler(record.data(), kStatusRecordSize);

  const quint16 mixData = GetU16(record.data(), 22);
  if (LogEnabled())
    WriteLog(u"UDP:ID:%1 Status:%2 moringCall:%3  mixData:$%4 "_s.arg(id)
                 .arg(GetI16(record.data(), 16))
                 .arg(GetText(record.data(), 42, kStatusRecordSize - 42))
                 .arg(QString::number(mixData, 16).toUpper()));
  // Whatever the device type, the small icon is asked again: refreshMixShow
  // itself passes over devices that have none.
  if (RefreshMixShow)
    RefreshMixShow(id, mixData);
}

void TUDPMainForm::Event_PBX_ConRecord(const char *record) {
  // The texts run to their NUL but never past the record.
  TPBXConRecord r;
  r.Caller = GetText(record, 16, kConRecordSize - 16);
  r.assType = GetI16(record, 38);
  r.Called = GetText(record, 40, kConRecordSize - 40);
  r.IOFlag = GetI16(record, 60);
  r.RecType = GetI16(record, 62);
  r.startTime = Now(); // the exchange sends no time: the record is stamped on arrival
  Sys_DM().AddPBXConRecord(r);
  emit conRecordReceived(r);
  // The log calls the number at 40 "assPhone", though it goes to Called and
  // assPhone stays empty.
  WriteLog(u"Event_PBX_ConRecord->ID:%1 Extnum:%2 assPhone:%3 "_s.arg(GetI16(record, 8))
               .arg(r.Caller, r.Called));
  if (SpeedButton_FindClick)
    SpeedButton_FindClick();
}
