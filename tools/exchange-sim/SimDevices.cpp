#include "SimDevices.h"

#include <QRegularExpression>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace SimDeviceTypes {

bool IsExtension(qint16 type) {
  return type == AnalogueExtension || type == DigitalExtension || type == OtherExtension;
}

bool IsTrunk(qint16 type) {
  return type == AnalogueTrunk || type == PriTrunk || type == SipTrunk || type == Ss1Trunk ||
         type == GsmModule || type == Ivr;
}

bool IsKnown(qint16 type) {
  return IsExtension(type) || IsTrunk(type);
}

} // namespace SimDeviceTypes

namespace SimMix {

quint16 NoDisturbBits(quint16 command) {
  switch (command) {
  case 1:
    return 0x0004;
  case 2:
    return 0x0200;
  case 4:
    return 0x0400;
  default:
    return 0;
  }
}

quint16 WakeUpModeBits(int mode) {
  return mode == 2 ? 0x0800 : mode == 3 ? 0x1000 : 0;
}

int WakeUpMode(quint16 mixData) {
  switch (mixData & WakeUpModeMask) {
  case 0x0800:
    return 2;
  case 0x1000:
    return 3;
  default:
    return 1;
  }
}

} // namespace SimMix

namespace {
// A module as it is when all is well: signal 20 of 31, SIM present, lock
// state known and unlocked, GSM service, module state text 0.
constexpr qint16 kModuleSignal = 20;
constexpr quint16 kModuleFlags = 0x0001 | 0x0002 | 0x0008;
constexpr quint16 kModuleState = 1 << 4;
} // namespace

SimDevice MakeDevice(int id, qint16 type, const QString &number, quint8 status) {
  SimDevice d;
  d.ID = id;
  d.Type = type;
  d.Number = number;
  d.Status = status;
  if (SimDeviceTypes::IsExtension(type))
    d.MixData = SimMix::LoggedOn;
  if (type == SimDeviceTypes::GsmModule) {
    d.Signal = kModuleSignal;
    d.ModuleFlags = kModuleFlags;
    d.ModuleState = kModuleState;
    d.ModuleType = u"GSM"_s;
  }
  return d;
}

QString NumberAfter(const QString &number, int steps) {
  if (steps == 0)
    return number;
  qsizetype end = number.size();
  while (end > 0 && !number.at(end - 1).isDigit())
    --end;
  qsizetype start = end;
  while (start > 0 && number.at(start - 1).isDigit())
    --start;
  if (start == end)
    return number + QString::number(steps);
  const QString digits = number.mid(start, end - start);
  // Count in text, so a run longer than any integer still counts.
  QString next = digits;
  for (int s = 0; s < steps; ++s) {
    qsizetype i = next.size() - 1;
    while (i >= 0 && next.at(i) == u'9')
      next[i--] = u'0';
    if (i < 0)
      next.prepend(u'1');
    else
      next[i] = QChar(next.at(i).unicode() + 1);
  }
  return number.left(start) + next + number.mid(end);
}

bool SimDeviceSet::Add(const SimDevice &device) {
  if (!ValidId(device.ID))
    return false;
  Devices.insert(device.ID, device);
  return true;
}

int SimDeviceSet::AddRange(int fromId, int count, qint16 type, const QString &firstNumber) {
  int added = 0;
  for (int i = 0; i < count; ++i) {
    if (Add(MakeDevice(fromId + i, type, NumberAfter(firstNumber, i))))
      ++added;
  }
  return added;
}

bool SimDeviceSet::Remove(int id) {
  return Devices.remove(id) > 0;
}

SimDevice *SimDeviceSet::Find(int id) {
  auto it = Devices.find(id);
  return it == Devices.end() ? nullptr : &it.value();
}

const SimDevice *SimDeviceSet::Find(int id) const {
  auto it = Devices.constFind(id);
  return it == Devices.cend() ? nullptr : &it.value();
}

const SimDevice *SimDeviceSet::AtOrAfter(int id) const {
  auto it = Devices.lowerBound(id);
  return it == Devices.cend() ? nullptr : &it.value();
}

const SimDevice *SimDeviceSet::ByNumber(const QString &number) const {
  for (const SimDevice &d : Devices) {
    if (d.Number == number)
      return &d;
  }
  return nullptr;
}

int SimDeviceSet::NextFreeId() const {
  return Devices.isEmpty() ? 0 : Devices.lastKey() + 1;
}

namespace {

QString ParseDeviceLine(const QStringList &tokens, SimDeviceSet *set) {
  if (tokens.size() < 3)
    return u"expected \"id[-last] type number [status [name]]\""_s;
  static const QRegularExpression ids(u"^(\\d+)(?:-(\\d+))?$"_s);
  const QRegularExpressionMatch m = ids.match(tokens.at(0));
  if (!m.hasMatch())
    return u"\"%1\" is not an id or a run of ids"_s.arg(tokens.at(0));
  const int first = m.captured(1).toInt();
  const int last = m.captured(2).isEmpty() ? first : m.captured(2).toInt();
  if (!SimDeviceSet::ValidId(first) || !SimDeviceSet::ValidId(last) || last < first)
    return u"ids run from 0 to %1, first to last"_s.arg(SimDeviceSet::kMaxDevices - 1);
  bool ok = false;
  const qint16 type = tokens.at(1).toShort(&ok);
  if (!ok || !SimDeviceTypes::IsKnown(type))
    return u"\"%1\" is not a device type (1, 4, 21, 5, 9, 22, 14, 12, 6)"_s.arg(tokens.at(1));
  quint8 status = 1;
  if (tokens.size() > 3) {
    const uint value = tokens.at(3).toUInt(&ok);
    if (!ok || value > 255)
      return u"\"%1\" is not a status"_s.arg(tokens.at(3));
    status = static_cast<quint8>(value);
  }
  const QString name = tokens.mid(4).join(u' ');
  for (int id = first; id <= last; ++id) {
    SimDevice d = MakeDevice(id, type, NumberAfter(tokens.at(2), id - first), status);
    d.Name = name;
    set->Add(d);
  }
  return {};
}

} // namespace

bool ParseDeviceList(const QString &text, SimDeviceSet *set, QString *error) {
  static const QRegularExpression comment(u"(^|\\s)#.*$"_s);
  static const QRegularExpression blanks(u"\\s+"_s);
  SimDeviceSet parsed = *set;
  QStringList problems;
  const QStringList lines = text.split(u'\n');
  for (qsizetype i = 0; i < lines.size(); ++i) {
    QString line = lines.at(i);
    line.remove(comment);
    const QStringList tokens = line.split(blanks, Qt::SkipEmptyParts);
    if (tokens.isEmpty())
      continue;
    if (const QString problem = ParseDeviceLine(tokens, &parsed); !problem.isEmpty())
      problems << u"line %1: %2"_s.arg(i + 1).arg(problem);
  }
  if (!problems.isEmpty()) {
    if (error)
      *error = problems.join(u'\n');
    return false;
  }
  *set = parsed;
  return true;
}
