#include "link/ExchangeLink.h"

#include "link/Public_Unit.h"
#include "link/RecvWorker.h"
#include "support/Log.h"

#include <cstring>
#include <exception>

using namespace Qt::StringLiterals;

namespace {
constexpr int kWalkCopySize = sizeof(SocketBlock::Data) + kWorkBufferSize;

void SendThroughLink(void *context, const char *bytes, int length) {
  static_cast<TExchangeLink *>(context)->SendBytes(bytes, length);
}
} // namespace

TExchangeLink::TExchangeLink(QObject *parent)
    : QObject(parent), m_queue(std::make_unique<TSocketBlockQueue>()),
      m_socket(new TExchangeSocket(this)) {
  connect(m_socket, &TExchangeSocket::OnDataArrival, this, &TExchangeLink::Winsock_TCPDataArrival);
  connect(m_socket, &TExchangeSocket::OnSendProgress, this, [](int sent, int remaining) {
    if (LogEnabled())
      WriteLog(
          u"Winsock_TCPSendProgress bytesSent:%1 bytesRemaining:%2"_s.arg(sent).arg(remaining));
  });
  connect(m_socket, &TExchangeSocket::OnSendComplete, this,
          [] { WriteLog(u"Winsock_TCPSendComplete"_s); });
  SetPacketOutlet(&SendThroughLink, this);
}

TExchangeLink::~TExchangeLink() {
  SetPacketOutlet(nullptr, nullptr);
  StopWorker();
}

void TExchangeLink::StartWorker() {
  if (m_worker)
    return;
  m_queue->Reset();
  m_worker = std::make_unique<TRecvWorker>(this);
  m_worker->start();
}

void TExchangeLink::StopWorker() {
  if (m_worker) {
    m_worker->Stop();
    m_worker.reset();
  }
}

void TExchangeLink::Winsock_TCPDataArrival(int bytesTotal) {
  if (bytesTotal > kMaxReadLength) {
    WriteLog(u"数据包超长!!! %1 字节"_s.arg(bytesTotal));
    return;
  }
  const QByteArray data = m_socket->GetData();
  EnqueueRead(data.constData(), int(qMin<qsizetype>(data.size(), kMaxReadLength)));
}

int TExchangeLink::EnqueueRead(const char *bytes, int count) {

  if (LogEnabled()) {
    QString trace = u":"_s;
    trace.reserve(count * 4 + 1);
    for (int i = 0; i < count; ++i)
      trace += QString::number(quint8(bytes[i])) + u' ';
    WriteLog(u"Begin----------------------------------------------"_s);
    WriteLog(u"Length:[%1] %2"_s.arg(count).arg(trace));
  }

  // A read of 4 to 11 bytes (the tail of a packet that never finished) has a
  // magic but no whole header: only the four bytes that are there are looked at.
  if (count >= 4 && GetU32(bytes, 0) != kPacketMagic) {
    WriteLog(u"数据包异常，数据被篡改，忽略处理!"_s);
    WriteLog(u"End!!!----------------------------------------------"_s);
    return -1;
  }

  const int write = m_queue->WriteIndex.load();
  SocketBlock &slot = m_queue->Slots[write];
  slot.Length = count;
  std::memcpy(slot.Data, bytes, size_t(count));
  m_queue->WriteIndex.store((write + 1) % TSocketBlockQueue::kSlots);
  if (m_worker)
    m_worker->Wake();
  WriteLog(u"End----------------------------------------------"_s);
  return write;
}

void TExchangeLink::Synchro_ProcessSocketDatas(int slot) {
  const SocketBlock &block = m_queue->Slots[slot];
  ProcessSocketBlock(block.Data, block.Length);
  if (LogEnabled())
    WriteLog(u"Index:%1"_s.arg(slot));
}

void TExchangeLink::ProcessSocketBlock(const char *bytes, int length) {
  if (length <= 0)
    return;
  if (LogEnabled()) {
    WriteLog(u"--------------------------------------------------"_s);
    WriteLog(u"<-DataLen:%1"_s.arg(length));
  }
  if (length < kMinBlockLength || length > kMaxBlockLength)
    return;

  // The copy keeps the block whole even if a handler lets events run and a new
  // read lands in this very slot; the zeros behind it mean a packet whose length
  // runs past the block reads zeros, never foreign memory.
  char copy[kWalkCopySize];
  std::memcpy(copy, bytes, size_t(length));
  std::memset(copy + length, 0, size_t(kWalkCopySize - length));

  int offset = 0;
  while (length - offset >= kPacketHeaderSize) {
    const int len = GetI16(copy, offset + 10);
    // A length below a header's can't move the walk forward: the block ends here.
    if (len < kPacketHeaderSize)
      break;
    try {
      if (m_handler)
        m_handler(copy + offset, len);
    } catch (const std::exception &e) {
      WriteLog(u"Packet handler failed: "_s + QString::fromLocal8Bit(e.what()));
    } catch (...) {
      WriteLog(u"Packet handler failed"_s);
    }
    offset += len;
  }
}

void TExchangeLink::SendBytes(const char *bytes, int length) {
  if (m_socket->State() != TExchangeSocket::Connected)
    return;
  m_socket->SendData(QByteArray(bytes, length));
}
