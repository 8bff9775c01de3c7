#include "link/ExchangeSocket.h"

#include "link/Public_Unit.h"
#include "support/Log.h"

#include <QTcpSocket>

using namespace Qt::StringLiterals;

TExchangeSocket::TExchangeSocket(QObject *parent)
    : QObject(parent), m_socket(new QTcpSocket(this)) {
  m_partialTimer.setSingleShot(true);
  m_partialTimer.setInterval(kPartialWaitMs);
  connect(&m_partialTimer, &QTimer::timeout, this, [this] {
    m_partialExpired = true;
    Announce();
  });
  m_connectTimer.setSingleShot(true);
  connect(&m_connectTimer, &QTimer::timeout, this, [this] {
    if (m_socket->state() == QAbstractSocket::ConnectedState)
      return;
    m_closingByUs = true;
    m_socket->abort();
    m_closingByUs = false;
    emit OnConnectFailed(u"no answer within %1 s"_s.arg(ConnectTimeoutMs / 1000.0));
  });
  connect(m_socket, &QTcpSocket::connected, this, [this] {
    m_connectTimer.stop();
    m_wasConnected = true;
    emit OnConnect();
  });
  connect(m_socket, &QTcpSocket::errorOccurred, this, [this](QAbstractSocket::SocketError) {
    if (m_wasConnected || m_closingByUs || !m_connectTimer.isActive())
      return;
    m_connectTimer.stop();
    emit OnConnectFailed(m_socket->errorString());
  });
  // What the exchange sent before it closed is still handed out.
  connect(m_socket, &QTcpSocket::disconnected, this, [this] {
    if (!m_closingByUs)
      emit OnClose();
  });
  connect(m_socket, &QTcpSocket::readyRead, this, &TExchangeSocket::TakeIncoming);
  connect(m_socket, &QTcpSocket::bytesWritten, this, [this](qint64 written) {
    const qint64 remaining = m_socket->bytesToWrite();
    emit OnSendProgress(int(written), int(remaining));
    if (remaining == 0)
      emit OnSendComplete();
  });
}

TExchangeSocket::~TExchangeSocket() {
  m_closingByUs = true;
  m_socket->abort();
}

int TExchangeSocket::State() const {
  switch (m_socket->state()) {
  case QAbstractSocket::ConnectedState:
    return Connected;
  case QAbstractSocket::HostLookupState:
  case QAbstractSocket::ConnectingState:
    return Connecting;
  case QAbstractSocket::ClosingState:
    return Closing;
  default:
    return Closed;
  }
}

void TExchangeSocket::Close() {
  m_closingByUs = true;
  m_socket->abort();
  m_closingByUs = false;
  m_connectTimer.stop();
  m_pending.clear();
  m_partialTimer.stop();
  m_partialExpired = false;
}

void TExchangeSocket::Connect() {
  m_closingByUs = false;
  m_wasConnected = false;
  m_connectTimer.start(ConnectTimeoutMs);
  m_socket->connectToHost(RemoteHost, RemotePort);
}

void TExchangeSocket::SendData(const QByteArray &bytes) {
  m_socket->write(bytes);
}

QByteArray TExchangeSocket::GetData() {
  m_taken = true;
  // A copy of exactly this read, not a view into the larger pending buffer, so
  // that a read past its end is a read past an allocation (which the sanitizer
  // build reports) rather than into stale bytes of earlier reads.
  return QByteArray(m_pending.constData(), m_offered);
}

void TExchangeSocket::TakeIncoming() {
  m_pending += m_socket->readAll();
  Announce();
}

// The length of the next read: the longest run of whole packets from the start
// that fits in a block the walk accepts (10230 bytes). Where the data don't look like packets (a
// bad magic, a length below 12 or beyond a read), everything goes, and the receive path's rules
// decide. *partialOnly is set when the data start with an incomplete packet.
qsizetype TExchangeSocket::NextReadLength(bool *partialOnly) const {
  *partialOnly = false;
  const qsizetype size = m_pending.size();
  qsizetype end = 0;
  while (end < size) {
    if (size - end < kPacketHeaderSize) {
      *partialOnly = end == 0;
      return end;
    }
    const PacketHeader h = PacketHeader::Read(m_pending.constData() + end);
    int len = h.Len;
    // The one packet sent without a length goes by its record's size.
    if (len == 0 && h.TypeCode == qint16(PacketType::RecordServerQuery))
      len = 20;
    if (h.Magic != kPacketMagic || len < kPacketHeaderSize || len > kMaxReadLength)
      return end > 0 ? end : size;
    if (end + len > size) {
      *partialOnly = end == 0;
      return end;
    }
    // Blocks stay within what the walk accepts; a single packet beyond that goes
    // alone, and the walk's own limit turns it away.
    if (end + len > kMaxBlockLength)
      return end > 0 ? end : len;
    end += len;
  }
  return end;
}

// Hands out one read. More waiting data get their own turn of the event loop, so
// the walks the worker asks for run in between and a burst can't lap the ring.
void TExchangeSocket::Announce() {
  if (m_announcing || m_pending.isEmpty())
    return;
  bool partialOnly = false;
  qsizetype length = NextReadLength(&partialOnly);
  if (partialOnly) {
    if (!m_partialExpired) {
      if (!m_partialTimer.isActive())
        m_partialTimer.start();
      return;
    }
    // The rest never came: the fragment goes as it is.
    length = m_pending.size();
  }
  m_partialExpired = false;
  m_partialTimer.stop();
  if (length == 0)
    return;

  m_announcing = true;
  m_offered = length;
  m_taken = false;
  emit OnDataArrival(int(length));
  if (!m_taken)
    WriteLog(u"Dropped %1 bytes the receive path refused"_s.arg(m_offered));
  m_pending.remove(0, m_offered);
  m_offered = 0;
  m_announcing = false;

  if (!m_pending.isEmpty())
    QMetaObject::invokeMethod(this, &TExchangeSocket::Announce, Qt::QueuedConnection);
}
