#include "devices/NetModule.h"

#include "link/Public_Unit.h"

namespace {
void SendRecord(int type, quint16 at16, qint16 at18, bool with18) {
  char record[20] = {};
  PutU16(record, 6, quint16(type));
  record[12] = 1;
  PutU16(record, 16, at16);
  if (with18)
    PutU16(record, 18, quint16(at18));
  SendPacket20(record);
}
} // namespace

void TNetModule::Send(int code) {
  LastCommand = code;
  switch (code) {
  case QueryDevice:
    SendRecord(int(PacketType::ExtensionQuery), quint16(NextID), 0, false);
    break;
  case SetSrvClass:
    SendRecord(int(PacketType::SrvClassSet), quint16(SrvDstID), qint16(SrvClass), true);
    break;
  case QuerySrvClassName:
    SendRecord(int(PacketType::SrvClassName), quint16(SrvClassIndex), 0, false);
    break;
  default:
    break;
  }
}

int NoDisturbModeOf(quint16 mixData) {
  switch (mixData & 0x0604) {
  case 0x0004:
    return 1;
  case 0x0200:
    return 2;
  case 0x0400:
    return 3;
  default:
    return 0; // none, or a combination that means nothing
  }
}

int VoiceMailOf(quint16 mixData) {
  return (mixData & 0x0040) ? 1 : 0;
}
int MoringCallDelayFlagOf(quint16 mixData) {
  return (mixData & 0x0080) ? 1 : 0;
}
int MoringCallAnswerFlagOf(quint16 mixData) {
  return (mixData & 0x0100) ? 1 : 0;
}
bool LoggedOnOf(quint16 mixData) {
  return (mixData & 0x0001) != 0;
}

int MixData2MoringCallMode(quint16 mixData) {
  switch (mixData & 0x1800) {
  case 0x0800:
    return 2;
  case 0x1000:
    return 3;
  default:
    return 1; // 0, and both bits together, are the plain mode
  }
}
