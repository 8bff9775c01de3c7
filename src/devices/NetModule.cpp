#include "devices/NetModule.h"

#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Log.h"

using namespace Qt::StringLiterals;

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
  if (SysParam().MyID == kNoSession)
    return;
  LastCommand = code;
  switch (code) {
  case MoringCallSet:
  case MoringCallCancel:
  case MoringCallQuery:
    SendMoringCall(code);
    break;
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

// The 40-byte wake-up packet. Only a query is cleared first; the set and the
// cancel start from a cleared record too, which the exchange doesn't mind,
// since it reads nothing past the fields of their sub-code.
void TNetModule::SendMoringCall(int code) {
  char record[40] = {};
  PutU16(record, 6, quint16(PacketType::MoringCall));
  PutU16(record, 16, quint16(DstID));
  int sub = 0;
  if (code == MoringCallSet) {
    if (MoringMode == 0 || MoringMode == 1) {
      sub = 1;
    } else if (MoringMode == 2 || MoringMode == 3) {
      sub = 4;
      record[38] = char(MoringMode);
    } else {
      WriteLog(u"Wake-up not sent: mode %1 unknown (dstID:%2)"_s.arg(MoringMode).arg(DstID));
      return;
    }
    PutText(record, 18, 20, CallTime);
  } else {
    sub = code == MoringCallCancel ? 3 : 2;
  }
  PutU16(record, 12, quint16(sub));
  SendPacket40(record);
  if (sub == 1)
    WriteLog(u"NETMODULE_CODE_MORINGCALL_SET dstID:%1 CallTime:%2 moringCall_Mode:%3"_s.arg(DstID)
                 .arg(CallTime)
                 .arg(quint8(record[38])));
  else if (sub == 4)
    WriteLog(u"NETMODULE_CODE_MORINGCALL_SET2,3 dstID:%1 CallTime:%2 moringCall_Mode:%3"_s
                 .arg(DstID)
                 .arg(CallTime)
                 .arg(quint8(record[38])));
}

void TNetModule::Send_NodisturbCtrl(int id, int command) {
  if (SysParam().MyID == kNoSession)
    return;
  LastCommand = command;
  SendDeviceControl(152, 20, quint16(id), quint16(command));
}

void TNetModule::Send_VoiceMailClear(int id) {
  if (SysParam().MyID == kNoSession)
    return;
  SendRecord(int(PacketType::VoiceMailClear), quint16(id), 0, false);
}

void SendDeviceControl(quint16 subCode, int length, quint16 at16, quint16 at18) {
  if (SysParam().MyID == kNoSession)
    return;
  char record[20] = {};
  PutU16(record, 6, quint16(PacketType::DeviceControl));
  PutU16(record, 12, subCode);
  PutU16(record, 16, at16);
  if (length == 16) {
    SendPacket16(record);
  } else {
    PutU16(record, 18, at18);
    SendPacket20(record);
  }
}

int NoDisturbCommandOf(int mode) {
  switch (mode) {
  case 1:
    return 1;
  case 2:
    return 2;
  case 3:
    return 4;
  default:
    return 0;
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
  const int masked = mixData & 0x1800;
  if (LogEnabled())
    WriteLog(u"MixData2MoringCallMode: vMixData:0x%1 0xmyValue:0x%2 "_s.arg(
        QString::number(mixData, 16), QString::number(masked, 16)));
  switch (masked) {
  case 0x0800:
    return 2;
  case 0x1000:
    return 3;
  default:
    return 1; // 0, and both bits together, are the plain mode
  }
}
