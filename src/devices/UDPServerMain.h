#pragma once

#include "directory/SysDM_Unit.h"
#include "support/FormLogic.h"

#include <QByteArray>
#include <QString>
#include <QUdpSocket>
#include <QtGlobal>

#include <functional>



// The exchange's pushed events: a device's status change and a finished call's
// record, each one UDP datagram with the usual header (type at 6, ID at 8, the
// usable length at 10, sub-code at 12). There is no acknowledgement: a lost
// datagram leaves the old state until the next change or refresh.
class TUDPMainForm : public TFormLogic {
  Q_OBJECT

public:
  static constexpr quint16 kDefaultPort = 5009;
  static constexpr int kMaxDatagramSize = 200; // longer ones are not ours
  static constexpr int kHeaderSize = 16;
  static constexpr int kStatusRecordSize = 108; // type 24 sub-code 136
  static constexpr int kConRecordSize = 64;     // type 41 sub-code 1
  static constexpr quint16 kTypeDeviceStatus = 24;
  static constexpr quint16 kSubDeviceStatus = 136;
  static constexpr quint16 kTypeConRecord = 41;
  static constexpr quint16 kSubConRecord = 1;
  // The receive buffer asked of the kernel: an exchange's restart pushes
  // thousands of status datagrams at once, far more than the default holds
  // while one turn of the event loop handles them.
  static constexpr int kReceiveBufferBytes = 4 * 1024 * 1024;

  // The port is fixed in the field; tests give a free one (0 takes any).
  explicit TUDPMainForm(quint16 port = kDefaultPort, QObject *parent = nullptr);

  // Starts the listener. A port that can't be bound is told to the operator and
  // then fatalBindError asks the program to end; the result is false then.
  bool FormCreate();
  // Reads every datagram waiting on the listener.
  void UDPServerDataReceived();
  // One datagram as it came, with its sender's address.
  void HandleDatagram(const QByteArray &datagram, const QString &sender);
  // Stores a call record (the 64-byte zero-filled copy) and refreshes its view.
  void Event_PBX_ConRecord(const char *record);

  // The session's state as the main form reports it. The channel works the same
  // either way: before the first login the table is empty, so status events
  // find no device to change.
  void SetLoggedIn(bool loggedIn) { m_loggedIn = loggedIn; }
  bool LoggedIn() const { return m_loggedIn; }

  quint16 Port() const { return m_port; }
  // The port actually bound (differs from Port() only when that was 0).
  quint16 LocalPort() const { return UDPServer.localPort(); }
  bool Listening() const { return UDPServer.state() == QAbstractSocket::BoundState; }
  // What the kernel granted of kReceiveBufferBytes (it may cap it), once bound.
  int ReceiveBufferBytes() const { return m_receiveBuffer; }

  // The sender's address as the comparison with the setting Host sees it: an
  // IPv4 sender on the dual-stack listener reads as dotted IPv4.
  static QString SenderText(const QHostAddress &address);

  // Filled in by the main form. The status record is always kStatusRecordSize
  // bytes, zeros past what the datagram carried.
  std::function<void(const char *record, int length)> DeviceStatusHandler;
  // The panel's small icon, asked again after every status event.
  std::function<void(int id, quint16 mixData)> RefreshMixShow;
  // The call-record view's search, as if its button were clicked.
  std::function<void()> SpeedButton_FindClick;

  QUdpSocket UDPServer;

signals:
  // The listener could not start; the operator has seen the warning.
  void fatalBindError(const QString &text);
  // A call record of the exchange arrived and went to the store's appends.
  void conRecordReceived(const TPBXConRecord &record);

private:
  void DeviceStatusDatagram(const char *header, const QByteArray &datagram);

  quint16 m_port;
  bool m_loggedIn = false;
  int m_receiveBuffer = 0;
};
