#pragma once

#include "link/ExchangeSocket.h"
#include "link/SocketBlockQueue.h"

#include <QObject>

#include <functional>
#include <memory>

class TRecvWorker;

// The TCP link to the exchange and its receive path: each read is checked for the
// magic and stored as a block in the ring; the worker hands the blocks back to
// the main thread in order, where they are walked into packets for the
// dispatcher. Sending goes straight out, on the main thread.
class TExchangeLink : public QObject {
  Q_OBJECT

public:
  // The dispatcher: one packet, its length as the header says. The bytes behind
  // the packet are readable up to 2048 and zero past the end of the block.
  using PacketHandler = std::function<void(const char *packet, int length)>;

  explicit TExchangeLink(QObject *parent = nullptr);
  ~TExchangeLink() override;

  TExchangeSocket &Winsock_TCP() { return *m_socket; }
  TSocketBlockQueue &Queue() { return *m_queue; }
  void SetPacketHandler(PacketHandler handler) { m_handler = std::move(handler); }

  // Resets the ring and starts the worker; the worker then runs to the end.
  void StartWorker();
  void StopWorker();

  // The arrival event: checks and enqueues one read.
  void Winsock_TCPDataArrival(int bytesTotal);
  // The arrival's check and store of one read (at most kMaxReadLength bytes):
  // the slot it went to, or -1 when the read was refused.
  int EnqueueRead(const char *bytes, int count);
  // Runs on the main thread for the worker: walks one slot.
  void Synchro_ProcessSocketDatas(int slot);
  // The walk: every packet of a block, in order.
  void ProcessSocketBlock(const char *bytes, int length);
  // Sends when connected; otherwise the bytes are dropped without a word.
  void SendBytes(const char *bytes, int length);

private:
  std::unique_ptr<TSocketBlockQueue> m_queue;
  TExchangeSocket *m_socket;
  std::unique_ptr<TRecvWorker> m_worker;
  PacketHandler m_handler;
};
