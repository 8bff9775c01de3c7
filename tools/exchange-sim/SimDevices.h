// The exchange's devices as it reports them: extensions, trunks, GSM modules
// and IVR ports, each under a device ID from 0 to 3071. The set only holds
// state; the exchange answers enumerations and pushes status events from it.
#pragma once

#include <QList>
#include <QMap>
#include <QString>

#include <optional>

struct SimDevice {
  int ID = 0;
  qint16 Type = 1;
  QString Number;
  QString Name;
  quint8 Status = 1;
  qint8 SrvClass = 0; // 0-based
  quint16 MixData = 0;
  QString WakeUp; // "YYYYMMDDHHNN" or empty
  // GSM modules only.
  qint16 Signal = 0;
  quint16 ModuleFlags = 0;
  quint16 ModuleState = 0;
  QString ModuleType;
};

namespace SimDeviceTypes {
enum : qint16 {
  AnalogueExtension = 1,
  DigitalExtension = 4,
  AnalogueTrunk = 5,
  Ivr = 6,
  PriTrunk = 9,
  GsmModule = 12,
  Ss1Trunk = 14,
  OtherExtension = 21,
  SipTrunk = 22,
};
bool IsExtension(qint16 type);
bool IsTrunk(qint16 type); // modules and IVR ports count as trunks here
bool IsKnown(qint16 type);
} // namespace SimDeviceTypes

// MixData bits the exchange keeps for an extension.
namespace SimMix {
inline constexpr quint16 LoggedOn = 0x0001;
inline constexpr quint16 NoDisturbMask = 0x0604;
inline constexpr quint16 VoiceMail = 0x0040;
inline constexpr quint16 WakeUpDelayed = 0x0080;
inline constexpr quint16 WakeUpAnswered = 0x0100;
inline constexpr quint16 WakeUpModeMask = 0x1800;
// The do-not-disturb command of the wire (0, 1, 2, 4) as status bits; other
// commands leave the extension undisturbed.
quint16 NoDisturbBits(quint16 command);
// Wake-up mode 1..3 as status bits, and back (mode 1 for anything else).
quint16 WakeUpModeBits(int mode);
int WakeUpMode(quint16 mixData);
} // namespace SimMix

// A device of `type` with what a fresh one of its kind reports: an extension
// logged on, a module with a good signal, a SIM, no PIN lock and GSM service.
SimDevice MakeDevice(int id, qint16 type, const QString &number, quint8 status = 1);

// The number `steps` further on: the last run of digits counts up and keeps its
// width ("0899" gives "0900"); a number without digits gains a count.
QString NumberAfter(const QString &number, int steps);

class SimDeviceSet {
public:
  static constexpr int kMaxDevices = 3072;
  static bool ValidId(int id) { return id >= 0 && id < kMaxDevices; }

  // False for an ID outside the table; a device already there is replaced.
  bool Add(const SimDevice &device);
  // `count` devices from `fromId` on, numbered up from `firstNumber`; those that
  // would fall outside the table are left out. Returns how many were added.
  int AddRange(int fromId, int count, qint16 type, const QString &firstNumber);
  bool Remove(int id);
  void Clear() { Devices.clear(); }

  SimDevice *Find(int id);
  const SimDevice *Find(int id) const;
  // The first device whose ID is `id` or above: the next one to report.
  const SimDevice *AtOrAfter(int id) const;
  const SimDevice *ByNumber(const QString &number) const;
  QList<int> Ids() const { return Devices.keys(); }
  int Count() const { return static_cast<int>(Devices.size()); }
  bool IsEmpty() const { return Devices.isEmpty(); }
  // One past the highest ID in use, 0 for an empty set.
  int NextFreeId() const;

private:
  QMap<int, SimDevice> Devices;
};

// Reads a device list, one device or run of devices a line:
//
//   # id[-last]  type  number  [status [name]]
//   0            1     8001
//   1-99         1     8002            ninety-nine extensions 8002..8100
//   100          12    13800000000 1 GSM-1
//
// Blank lines and "#" comments are skipped. On any bad line nothing is added:
// the result is false and *error names the bad lines.
bool ParseDeviceList(const QString &text, SimDeviceSet *set, QString *error);
