#pragma once

#include "link/Public_Unit.h"

#include <QByteArray>
#include <QList>

// What the console hands to the link, caught before the socket: install with
// SetPacketOutlet(&CapturePacket, nullptr) and read CapturedPackets.
inline QList<QByteArray> CapturedPackets;

inline void CapturePacket(void *, const char *bytes, int length) {
  CapturedPackets.append(QByteArray(bytes, length));
}
