// The exchange's devices: the console's requests about them and the status
// events it pushes.
#include "ExchangeSim.h"
#include "SimDevicePackets.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {
// The result code of a service class change for a device the exchange does
// not have, or one that has no service class.
const QString kNoSuchExtension = u"000001"_s;
constexpr quint16 kMailboxUnreachable = 65535;
constexpr quint16 kNoChannel = 65535;
// The live stream sends at most this many events in one turn of the event
// loop, so a catch-up after a stall never floods the console's socket.
constexpr qint64 kLiveBurst = 64;

// Statuses a device of each kind moves through, the common ones repeated so
// that they come up more often.
constexpr std::array<quint8, 12> kExtensionStatuses{1, 1, 1, 2, 3, 4, 5, 6, 7, 7, 8, 0};
constexpr std::array<quint8, 9> kTrunkStatuses{1, 1, 5, 7, 12, 13, 14, 15, 17};
constexpr std::array<quint8, 8> kModuleStatuses{0, 1, 1, 7, 18, 19, 20, 21};
constexpr qint16 kMaxSignal = 31;

template <size_t N> quint8 Pick(QRandomGenerator &random, const std::array<quint8, N> &statuses) {
  return statuses[random.bounded(static_cast<quint32>(N))];
}
} // namespace

bool ExchangeSim::AddDevice(int id, qint16 type, const QString &number, quint8 status) {
  return DeviceSet.Add(MakeDevice(id, type, number, status));
}

int ExchangeSim::AddDevices(int fromId, int count, qint16 type, const QString &firstNumber) {
  return DeviceSet.AddRange(fromId, count, type, firstNumber);
}

bool ExchangeSim::SetDeviceStatus(int id, quint8 status) {
  SimDevice *d = DeviceSet.Find(id);
  if (!d)
    return false;
  d->Status = status;
  return true;
}

bool ExchangeSim::SetDeviceMixData(int id, quint16 mixData) {
  SimDevice *d = DeviceSet.Find(id);
  if (!d)
    return false;
  d->MixData = mixData;
  return true;
}

std::optional<SimDevice> ExchangeSim::Device(int id) const {
  if (const SimDevice *d = DeviceSet.Find(id))
    return *d;
  return std::nullopt;
}

bool ExchangeSim::PushStatus(int id) {
  const SimDevice *d = DeviceSet.Find(id);
  return d && Udp.Send(SimPackets::StatusDatagram(*d));
}

void ExchangeSim::SendCallRecord(const QString &extension, const QString &associated,
                                 qint16 assType, qint16 direction, qint16 recordType) {
  const SimDevice *d = DeviceSet.ByNumber(extension);
  const quint16 id = d ? static_cast<quint16>(d->ID) : 0;
  Udp.Send(
      SimPackets::CallRecordDatagram(id, extension, assType, associated, direction, recordType));
}

void ExchangeSim::StartLiveStatus(double perSecond) {
  if (!(perSecond > 0)) {
    StopLiveStatus();
    return;
  }
  LiveRate = perSecond;
  LiveDueSent = 0;
  LiveClock.start();
  // Often enough that the events spread over the second instead of coming in
  // clumps, and never less than every 10 ms.
  LiveTimer.start(std::clamp(static_cast<int>(1000 / perSecond), 1, 10));
}

void ExchangeSim::StopLiveStatus() {
  LiveTimer.stop();
}

void ExchangeSim::SendLiveStatus() {
  const qint64 due = static_cast<qint64>(LiveClock.elapsed() * LiveRate / 1000.0) - LiveDueSent;
  if (due <= 0 || DeviceSet.IsEmpty())
    return;
  const QList<int> ids = DeviceSet.Ids();
  const qint64 now = std::min(due, kLiveBurst);
  for (qint64 i = 0; i < now; ++i) {
    SimDevice *d = DeviceSet.Find(ids.at(Random.bounded(static_cast<int>(ids.size()))));
    // A room with a wake-up to come is left alone too: a random fall from
    // status 3 to idle would read at the console as a wake-up not answered.
    if (WakeUpCalls.contains(d->ID) || !d->WakeUp.isEmpty())
      continue;
    if (SimDeviceTypes::IsExtension(d->Type)) {
      d->Status = Pick(Random, kExtensionStatuses);
    } else if (d->Type == SimDeviceTypes::GsmModule) {
      d->Status = Pick(Random, kModuleStatuses);
      d->Signal = static_cast<qint16>(Random.bounded(kMaxSignal + 1));
    } else {
      d->Status = Pick(Random, kTrunkStatuses);
    }
    if (Udp.Send(SimPackets::StatusDatagram(*d)))
      ++LiveSent;
  }
  // What could not go out in this turn is given up rather than owed.
  LiveDueSent += due;
}

void ExchangeSim::ActOnDevicePacket(const SimPacket &packet) {
  const QVariantMap &f = packet.Fields;
  const int sub = f.value(u"Sub"_s).toInt();
  const int dstId = f.value(u"DstID"_s).toInt();
  switch (packet.TypeCode) {
  case SimPackets::ExtensionQuery:
    if (sub == 1)
      ReportDeviceFrom(f.value(u"NextID"_s).toInt());
    break;
  case SimPackets::SrvClassName:
    if (sub == 1)
      AnswerSrvClassName(f.value(u"Index"_s).toInt());
    break;
  case SimPackets::SrvClassSet:
    if (sub == 1)
      SetSrvClass(dstId, f.value(u"SrvClass"_s).toInt());
    break;
  case SimPackets::DeviceControl: {
    const quint16 command = static_cast<quint16>(f.value(u"Command"_s).toUInt());
    const int code = f.value(u"Code"_s).toInt();
    if (code == SimPackets::kNoDisturb) {
      SetNoDisturb(dstId, command, true);
    } else if (code == SimPackets::kOwnNoDisturb) {
      // The console's own extension takes only "on" or "off".
      if (const SimDevice *own = DeviceSet.ByNumber(SessionTelNo))
        SetNoDisturb(own->ID, command ? 1 : 0, false);
    }
    break;
  }
  case SimPackets::VoiceMailClear:
    if (sub == 1)
      ClearVoiceMail(dstId);
    break;
  case SimPackets::MoringCall:
    AnswerMoringCall(packet);
    break;
  case SimPackets::GsmModule:
    AnswerGsm(packet);
    break;
  case SimPackets::RecordServerQuery:
    if (sub == SimPackets::kRecordServerSub)
      WriteAnswer(SimPackets::RecordServerQuery,
                  SimPackets::RecordServerAnswer(Session, RecordCode, RecordAddress));
    break;
  default:
    break;
  }
}

void ExchangeSim::ReportDeviceFrom(int id) {
  const SimDevice *d = DeviceSet.AtOrAfter(id);
  Write(d ? SimPackets::DeviceReport(Session, *d) : SimPackets::EndOfDevices(Session));
}

void ExchangeSim::AnswerSrvClassName(int index) {
  if (index < ClassNames.size())
    Write(
        SimPackets::SrvClassNameAnswer(Session, static_cast<quint16>(index), ClassNames.at(index)));
  else
    Write(SimPackets::SrvClassNameAnswer(Session, SimPackets::kEndOfNames, {}));
}

void ExchangeSim::SetSrvClass(int id, int srvClass) {
  SimDevice *d = DeviceSet.Find(id);
  QString result = SrvClassResult;
  if (!d || !SimDeviceTypes::IsExtension(d->Type))
    result = kNoSuchExtension;
  if (result == u"000000"_s) {
    d->SrvClass = static_cast<qint8>(srvClass);
    Changed(id);
  }
  WriteAnswer(SimPackets::SrvClassSet,
              SimPackets::SrvClassSetAnswer(Session, static_cast<quint16>(id), result));
}

void ExchangeSim::SetNoDisturb(int id, quint16 command, bool answer) {
  if (ChangeMixData(id, static_cast<quint16>(~SimMix::NoDisturbMask),
                    SimMix::NoDisturbBits(command)))
    Changed(id);
  if (answer)
    WriteAnswer(SimPackets::DeviceControl,
                SimPackets::NoDisturbAnswer(Session, static_cast<quint16>(id), command));
}

void ExchangeSim::ClearVoiceMail(int id) {
  if (MailboxReachable && ChangeMixData(id, static_cast<quint16>(~SimMix::VoiceMail), 0))
    Changed(id);
  WriteAnswer(SimPackets::VoiceMailClear,
              SimPackets::VoiceMailAnswer(Session, static_cast<quint16>(id),
                                          MailboxReachable ? 0 : kMailboxUnreachable));
}

void ExchangeSim::AnswerMoringCall(const SimPacket &packet) {
  const int sub = packet.Fields.value(u"Sub"_s).toInt();
  const int id = packet.Fields.value(u"DstID"_s).toInt();
  SimDevice *d = DeviceSet.Find(id);
  const bool extension = d && SimDeviceTypes::IsExtension(d->Type);
  // A set takes the time and mode, a cancel clears both; the mode byte of a
  // plain set is not filled in by the console, so it means mode 1.
  QString wakeUp;
  int mode = 1;
  switch (sub) {
  case 1:
  case 3:
    wakeUp = sub == 1 ? packet.Fields.value(u"CallTime"_s).toString() : QString();
    break;
  case 4:
    wakeUp = packet.Fields.value(u"CallTime"_s).toString();
    mode = packet.Fields.value(u"Mode"_s).toInt();
    break;
  case 2: // a query only reads
    break;
  default:
    return;
  }
  if (extension && sub != 2) {
    const bool timeChanged = d->WakeUp != wakeUp;
    d->WakeUp = wakeUp;
    const bool modeChanged = ChangeMixData(id, static_cast<quint16>(~SimMix::WakeUpModeMask),
                                           SimMix::WakeUpModeBits(mode));
    if (timeChanged || modeChanged)
      Changed(id);
  }
  WriteAnswer(SimPackets::MoringCall,
              SimPackets::MoringCallAnswer(
                  Session, static_cast<quint16>(sub), static_cast<quint16>(id),
                  extension ? d->WakeUp : QString(),
                  static_cast<quint8>(extension ? SimMix::WakeUpMode(d->MixData) : 1)));
}

void ExchangeSim::HoldAnswers(qint16 typeCode, int count) {
  AnswerPlans[typeCode].Hold = std::max(count, 0);
}

void ExchangeSim::DelayAnswers(qint16 typeCode, int ms, int count) {
  AnswerPlan &plan = AnswerPlans[typeCode];
  plan.DelayMs = std::max(ms, 0);
  plan.DelayCount = count;
}

void ExchangeSim::WriteAnswer(qint16 typeCode, const QByteArray &bytes) {
  AnswerPlan &plan = AnswerPlans[typeCode];
  if (plan.Hold > 0) {
    --plan.Hold;
    return;
  }
  if (plan.DelayCount == 0) {
    Write(bytes);
    return;
  }
  if (plan.DelayCount > 0)
    --plan.DelayCount;
  // A late answer goes to whichever console is connected by then, if any.
  QTimer::singleShot(plan.DelayMs, this, [this, bytes] { Write(bytes); });
}

void ExchangeSim::AnswerGsm(const SimPacket &packet) {
  const int sub = packet.Fields.value(u"Sub"_s).toInt();
  if (sub != SimPackets::kGsmChoose && sub != SimPackets::kGsmSend)
    return;
  const QList<int> ids = DeviceSet.Ids();
  const auto module = std::find_if(ids.cbegin(), ids.cend(), [this](int id) {
    return DeviceSet.Find(id)->Type == SimDeviceTypes::GsmModule;
  });
  if (sub == SimPackets::kGsmSend)
    Sms << packet.Fields.value(u"Text"_s).toString();
  if (SmsOutcome == GsmOutcome::NoModule || module == ids.cend()) {
    Write(SimPackets::GsmAnswer(Session, SimPackets::kGsmNoModule, kNoChannel));
    return;
  }
  if (sub == SimPackets::kGsmChoose) {
    Write(SimPackets::GsmAnswer(Session, SimPackets::kGsmChosen, static_cast<quint16>(*module)));
    return;
  }
  const quint16 channel = static_cast<quint16>(packet.Fields.value(u"Channel"_s).toUInt());
  Write(SimPackets::GsmAnswer(
      Session, SmsOutcome == GsmOutcome::Sent ? SimPackets::kGsmSent : SimPackets::kGsmFailed,
      channel));
}

// Only extensions keep these bits; a request about anything else changes
// nothing. True when the word changed.
bool ExchangeSim::ChangeMixData(int id, quint16 keepMask, quint16 bits) {
  SimDevice *d = DeviceSet.Find(id);
  if (!d || !SimDeviceTypes::IsExtension(d->Type))
    return false;
  const quint16 mix = static_cast<quint16>((d->MixData & keepMask) | bits);
  if (mix == d->MixData)
    return false;
  d->MixData = mix;
  return true;
}

void ExchangeSim::Changed(int id) {
  if (PushOnChange)
    PushStatus(id);
}
