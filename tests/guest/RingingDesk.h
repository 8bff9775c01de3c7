#pragma once

#include "LinkedDesk.h"

#include "devices/UDPServerMain.h"

#include <QDateTime>
#include <QHostAddress>

// The console logged in to the exchange, which rings wake-ups by the same
// clock as the console's (`at`, moved by the test) and sends each change as a
// status datagram.
struct RingingDesk : LinkedDesk {
  TUDPMainForm udp{0};
  QDateTime at;

  RingingDesk(int rooms, const QDateTime &start) : LinkedDesk(rooms), at(start) {
    SetClock([this] { return at; });
    sim.SetClock([this] { return at; });
    sim.SetWakeUpCheckPeriod(10);
    sim.SetWakeUpTalkTime(10);
    TDeviceEvents &events = main.DeviceEvents();
    udp.DeviceStatusHandler = [&events](const char *r, int n) { events.Device_UpdateStatus(r, n); };
  }
  bool Begin() {
    if (!udp.FormCreate())
      return false;
    sim.SetEventTarget(QHostAddress::LocalHost, udp.LocalPort());
    return Start();
  }
};
