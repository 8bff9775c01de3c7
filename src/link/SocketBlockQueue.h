#pragma once

#include <atomic>

// The ring of received blocks between the socket's arrival event (main thread)
// and the worker. Only the arrival event moves WriteIndex, only the worker side
// moves ReadIndex; equal indices mean empty. There is no test for a full ring: a
// writer that laps the reader overwrites the oldest block, and at equality the
// ring looks empty. Two hundred slots are the whole provision for bursts.
struct SocketBlock {
  int Length = 0;
  char Data[10244];
};

struct TSocketBlockQueue {
  static constexpr int kSlots = 200;

  SocketBlock Slots[kSlots];
  std::atomic<int> ReadIndex{0};
  std::atomic<int> WriteIndex{0};

  // Set once, before the worker starts.
  void Reset() {
    ReadIndex.store(0);
    WriteIndex.store(0);
  }
  bool IsEmpty() const { return ReadIndex.load() == WriteIndex.load(); }
};
