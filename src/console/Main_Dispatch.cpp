// The dispatcher: every packet from the exchange reaches its handler here, and
// the state record is copied after it so that the next handler can see what
// changed.
#include "console/CallDirectory.h"
#include "console/Main_Form.h"
#include "console/UserInfo_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/DeviceEvents.h"
#include "directory/RecordServerPage.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <cstring>

using namespace Qt::StringLiterals;

void TMain_Form::processPacketFromSocket(const char *packet, int length) {
  if (length < kPacketHeaderSize || length > kMaxDispatchLength)
    return;
  char work[kWorkBufferSize];
  std::memset(work, 0, sizeof work);
  std::memcpy(work, packet, size_t(length));
  const PacketHeader h = PacketHeader::Read(work);
  if (LogEnabled())
    WriteLog(u"ID:%1 Len:%2 typeCode:0x%3 "_s.arg(qint16(h.ID))
                 .arg(h.Len)
                 .arg(QString::number(quint32(qint32(h.TypeCode)), 16).toUpper()));

  bool copyState = true;
  switch (PacketType(h.TypeCode)) {
  case PacketType::Pulse:
    SysParam().PulseSeen = 1;
    break;
  case PacketType::Login:
    processPacketFromSocket_Login(work, GetText(work, 12, kWorkBufferSize - 12));
    break;
  case PacketType::CallState:
    processPacketFromSocket_CallState(work);
    break;
  case PacketType::UserInfo:
    processPacketFromSocket_UserInfo(work);
    break;
  case PacketType::MissedCall:
    processPacketFromSocket_MissedCall(work);
    break;
  // The device table's answers, and no state copy after them.
  case PacketType::SrvClassSet:
    m_deviceEvents->processPacketFromSocket_SrvClass(work);
    copyState = false;
    break;
  case PacketType::DeviceControl:
    m_deviceEvents->processPacketFromSocket_Other(work);
    copyState = false;
    break;
  case PacketType::ExtensionQuery:
    m_deviceEvents->processPacketFromSocket_OtherTIS(work);
    copyState = false;
    break;
  case PacketType::MoringCall:
    m_deviceEvents->processPacketFromSocket_MoringCall(work);
    copyState = false;
    break;
  case PacketType::SrvClassName:
    m_deviceEvents->processPacketFromSocket_SrvClassName(work);
    copyState = false;
    break;
  case PacketType::GsmModule:
    processPacketFromSocket_Gsm(work);
    break;
  case PacketType::RecordServerQuery:
    processPacketFromSocket_RecordServer(work);
    break;
  case PacketType::VoiceMailClear:
    m_deviceEvents->processPacketFromSocket_VoiceMail(work); // never acts
    break;
  default:
    break;
  }
  if (copyState)
    LastSysParam() = SysParam();
}

void TMain_Form::processPacketFromSocket_UserInfo(const char *work) {
  if (!UserInfo_Form)
    return;
  UserInfo_Form->Fill(TUserInfoRecord::Parse(work));
  UserInfo_Form->Show();
}

void TMain_Form::processPacketFromSocket_MissedCall(const char *work) {
  const QString number = GetText(work, 12, 21);
  QStringList row;
  if (CallDirectory)
    row = CallDirectory->LogCall(1, number);
  const QString cr = u"\r"_s;
  const QString text = LangFormat(290, {number, cr}) + LangFormat(291, {row.value(0), cr}) +
                       LangFormat(292, {row.value(4), cr});
  TheShell().Balloon(LangText(293), text, 10, BalloonIcon::Info);
}

void TMain_Form::processPacketFromSocket_Gsm(const char *work) {
  TNetPhone_SysParam &sp = SysParam();
  const quint8 sub = quint8(work[12]);
  switch (sub) {
  case 3:
    sp.GsmModule = GetU16(work, 14);
    emit gsmSendRequested();
    break;
  case 4:
  case 5:
    TheShell().Balloon(LangFormat(sub == 4 ? 298 : 300, {sp.GsmNumber}),
                       LangText(sub == 4 ? 299 : 301), 10,
                       sub == 4 ? BalloonIcon::Info : BalloonIcon::Warning);
    sp.GsmModule = GetU16(work, 14);
    sp.GsmBusy = 0;
    emit gsmTimerStopRequested();
    break;
  case 6:
    TheShell().Balloon(LangFormat(296, {sp.GsmNumber}), LangText(297), 10, BalloonIcon::Warning);
    sp.GsmModule = 65535;
    sp.GsmBusy = 0;
    break;
  default:
    break;
  }
}

void TMain_Form::processPacketFromSocket_RecordServer(const char *work) {
  if (quint8(work[12]) != 16)
    return;
  const QString code = GetText(work, 16, 7);
  SysParam().RecordRetCode = code;
  m_recordServer->ProcessRecordInfo(
      code, code == u"1000"_s ? GetText(work, 23, kWorkBufferSize - 23) : QString());
}
