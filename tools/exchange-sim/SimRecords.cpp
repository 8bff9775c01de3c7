// The stream of call records a busy exchange sends: one finished call after
// another, of random extensions, at a steady rate.
#include "ExchangeSim.h"
#include "SimDevicePackets.h"

#include <algorithm>

using namespace Qt::StringLiterals;

void ExchangeSim::StartCallRecords(double perSecond) {
  if (!(perSecond > 0)) {
    StopCallRecords();
    return;
  }
  RecordTimer.start(std::clamp(static_cast<int>(1000 / perSecond + 0.5), 1, 3600000));
}

void ExchangeSim::SendStreamRecord() {
  QList<const SimDevice *> extensions;
  for (int id : DeviceSet.Ids()) {
    const SimDevice *d = DeviceSet.Find(id);
    if (SimDeviceTypes::IsExtension(d->Type))
      extensions << d;
  }
  if (extensions.isEmpty())
    return;
  const SimDevice *room = extensions.at(Random.bounded(static_cast<int>(extensions.size())));
  // Mostly calls to the city, now and then to another room.
  const bool internal = Random.bounded(4) == 0;
  const QString other =
      internal ? extensions.at(Random.bounded(static_cast<int>(extensions.size())))->Number
               : u"02155%1"_s.arg(Random.bounded(1000000), 6, 10, QChar(u'0'));
  const auto direction = static_cast<qint16>(Random.bounded(2));
  const auto type = static_cast<qint16>(Random.bounded(9));
  if (Udp.Send(SimPackets::CallRecordDatagram(static_cast<quint16>(room->ID), room->Number, 0,
                                              other, direction, type)))
    ++RecordsSent;
}
