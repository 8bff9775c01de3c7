#include "core/link/ExchangeSocket.h"

#include "core/link/Public_Unit.h"
#include "support/Log.h"

#include <QScopeGuard>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

TExchangeSocket::TExchangeSocket(QObject *parent) : QObject(parent), m_socket(new QTcpSocket(this)) {
  m_partialTimer.setSingleShot(true);
  m_partialTimer.setInterval(kPartialWaitMs);
  connect(&m_partialTimer, &QTimer::timeout, this, &TExchangeSocket::Announce);
  connect(m_socket, &QTcpSocket::connected, this, &TExchangeSocket::OnConnect);
  connect(m_socket, &QTcpSocket::disconnected, this, [this] {
    m_pending.clear();
    m_partialTimer.stop();
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
  case QAbstractSocket::ConnectedState: return Connected;
  case QAbstractSocket::HostLookupState:
  case QAbstractSocket::ConnectingState: return Connecting;
  case QAbstractSocket::ClosingState: return Closing;
  default: return Closed;
  }
}

void TExchangeSocket::Close() {
  m_closingByUs = true;
  m_socket->abort();
  m_closingByUs = false;
  m_pending.clear();
  m_partialTimer.stop();
}

void TExchangeSocket::Connect() {
  m_closingByUs = false;
  m_socket->connectToHost(RemoteHost, RemotePort);
}

void TExchangeSocket::SendData(const QByteArray &bytes) { m_socket->write(bytes); }

QByteArray TExchangeSocket::GetData() {
  m_taken = true;
  return m_pending.left(m_offered);
}

void TExchangeSocket::TakeIncoming() {
  m_pending += m_socket->readAll();
  Announce();
}

// The length of the next read: the longest run of whole packets from the start
// that fits in 10240 bytes. Where the data don't look like packets (a bad magic,
// a length below 12 or beyond a read), everything goes, and the receive path's
// rules decide. *partialOnly is set when the data start with an incomplete packet.
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
    if (len == 0 && h.TypeCode == RecordServerQuery)
      len = 20;
    if (h.Magic != kPacketMagic || len < kPacketHeaderSize || len > kMaxReadLength)
      return end > 0 ? end : size;
    if (end + len > size) {
      *partialOnly = end == 0;
      return end;
    }
    if (end + len > kMaxReadLength)
      return end;
    end += len;
  }
  return end;
}

void TExchangeSocket::Announce() {
  if (m_announcing)
    return;
  m_announcing = true;
  const auto done = qScopeGuard([this] { m_announcing = false; });
  while (!m_pending.isEmpty()) {
    bool partialOnly = false;
    qsizetype length = NextReadLength(&partialOnly);
    if (partialOnly) {
      // Wait for the rest; if it doesn't come, the fragment goes as it is.
      if (!m_partialTimer.isActive() && sender() != &m_partialTimer) {
        m_partialTimer.start();
        return;
      }
      if (m_partialTimer.isActive())
        return;
      length = m_pending.size();
    }
    if (length == 0)
      return;
    m_partialTimer.stop();
    m_offered = length;
    m_taken = false;
    emit OnDataArrival(int(length));
    if (!m_taken)
      WriteLog(u"Dropped %1 bytes the receive path refused"_s.arg(m_offered));
    m_pending.remove(0, m_offered);
    m_offered = 0;
  }
}
