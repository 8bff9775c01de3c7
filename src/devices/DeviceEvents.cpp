#include "devices/DeviceEvents.h"

#include "link/Public_Unit.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QCoreApplication>

#include <cstring>

using namespace Qt::StringLiterals;

namespace {
const QString kTrunkGlyph = u"Template_TrunkSpeedButton"_s;
const QString kTrunkErrorPicture = u"image/lstrunk_error.bmp"_s;

QString NameOrDots(const QString &name) {
  return name.isEmpty() ? u"..."_s : name;
}

// Which visibility flag lets a trunk branch take a device type.
bool TrunkBranch(int devType) {
  switch (devType) {
  case AnalogTrunk:
  case PriTrunk:
  case SipTrunk:
  case Ss1Trunk:
  case GsmModuleTrunk:
  case IvrPort:
    return DeviceTypeVisible(devType);
  default:
    return false;
  }
}

int MissingPanelKey(int devType) {
  if (devType == AnalogTrunk)
    return 389;
  if (devType == IvrPort)
    return 392;
  return 391;
}
} // namespace

TDeviceEvents::TDeviceEvents(TCallControlDev &table, TNetModule &net, QObject *parent)
    : QObject(parent), m_table(table), m_net(net) {
  Timer_ExcuteAction.setObjectName(u"Timer_ExcuteAction"_s);
}

TDateTime TDeviceEvents::ParseWakeUpText(const QString &text) {
  QString t = text;
  t.remove(u' ');
  if (t.isEmpty())
    return TDateTime();
  const QDateTime dt(QDate(t.mid(0, 4).toInt(), t.mid(4, 2).toInt(), t.mid(6, 2).toInt()),
                     QTime(t.mid(8, 2).toInt(), t.mid(10, 2).toInt()));
  if (!dt.isValid()) {
    WriteLog(u"Wake-up time not understood: "_s + text);
    return TDateTime();
  }
  return TDateTime::FromQDateTime(dt);
}

void TDeviceEvents::SetColour(TPhoneTis &p, int entry) {
  p.Panel.Colour = m_table.Colours[size_t(qBound(0, entry, kStatusColourCount - 1))];
}

void TDeviceEvents::ExtensionFromMix(TPhoneTis &p, quint16 mix) {
  p.NoDisturbMode = NoDisturbModeOf(mix);
  p.VoiceMail = VoiceMailOf(mix);
  p.MoringCallAnswerFlag = MoringCallAnswerFlagOf(mix);
  p.MoringCallDelayFlag = MoringCallDelayFlagOf(mix);
  p.MoringCallMode = MixData2MoringCallMode(mix);
}

void TDeviceEvents::processPacketFromSocket_OtherTIS(const char *w) {
  if (quint8(w[12]) != 1)
    return;
  const int id = GetI16(w, 16);
  if (id == -1) {
    WriteLog(u"processPacketFromSocket_OtherTIS->获取完成!"_s);
    m_table.PrunePanels();
    RefrshPhones_tefxButton_Enabled = true;
    m_net.SrvClassIndex = 0;
    m_net.Send(TNetModule::QuerySrvClassName);
    Timer_ExcuteAction.setInterval(30000);
    Timer_ExcuteAction.start();
    emit enumerationFinished();
    return;
  }
  const int devType = GetI16(w, 18);
  const int status = quint8(w[20]);
  const QString number = GetText(w, 21, 21);
  const QString name = GetText(w, 42, 21);
  const int srvClass = qint8(w[63]);
  const quint16 mix = GetU16(w, 64);
  if (LogEnabled())
    WriteLog(u"processPacketFromSocket_OtherTIS->myAnotherID:%1 myTelNos:%2 Usertype:%3 "_s.arg(id)
                 .arg(number)
                 .arg(devType));

  if (!ValidDeviceId(id)) {
    // An ID the table has no place for is no device of ours. Ask on while the
    // next one could still be; otherwise the enumeration is over.
    WriteLog(u"Device report dropped: ID %1 outside the table"_s.arg(id));
    if (id + 1 < kDeviceCount && id + 1 > 0) {
      m_net.NextID = id + 1;
      m_net.Send(TNetModule::QueryDevice);
    }
    return;
  }

  TPhoneTis &p = *m_table.Device(id);
  const bool extension =
      (devType == AnalogExtension || devType == DigitalExtension || devType == OtherExtension) &&
      DeviceTypeVisible(devType);
  if (extension) {
    m_table.AddPanel(id);
    if (!p.HasPanel) {
      TheShell().Message(MessageKind::Warning, LangText(388));
      return;
    }
    p.DevType = devType;
    p.Panel.TelNosLabel = u"["_s + number + u']';
    p.Panel.StatusLabel = u"["_s + ExtensionStatusText(status) + u']';
    p.Panel.NameLabel = NameOrDots(name);
    p.TelNos = number;
    p.Status = status;
    p.SrvClass = srvClass;
    SetColour(p, status);
    m_table.AddPortID(id);
    refreshMixShow(id, mix);
    p.ID = id;
    p.MoringCallTime = ParseWakeUpText(GetText(w, 82, kWorkBufferSize - 82));
    ExtensionFromMix(p, mix);
    emit Ext_AddRow(id);
  } else if (TrunkBranch(devType)) {
    m_table.AddPanel(id);
    if (!p.HasPanel) {
      TheShell().Message(MessageKind::Warning, LangText(MissingPanelKey(devType)));
      return;
    }
    p.ID = id;
    p.DevType = devType;
    p.Panel.TelNosLabel = NameLine(devType, number);
    p.Panel.NameLabel = name;
    p.TelNos = number;
    p.Status = status;
    p.Panel.StatusLabel = DeviceStatusText(status);
    if (devType == GsmModuleTrunk && status == 0) {
      // A module at rest tells its line state instead, and keeps its glyph.
      p.Panel.StatusLabel = StateCodeText(GetU16(w, 70) >> 8);
      SetColour(p, 9);
    } else if (status == 1) {
      SetColour(p, 1);
      p.Panel.PhoneButtonGlyph = kTrunkGlyph;
    } else if (status == 12) {
      SetColour(p, 1);
      p.Panel.PhoneButtonGlyph = kTrunkErrorPicture;
    } else {
      SetColour(p, 9);
      p.Panel.PhoneButtonGlyph = kTrunkGlyph;
    }
    m_table.AddPortID(id);
    if (devType == GsmModuleTrunk) {
      p.Panel.PhoneButtonVisible = false;
      p.Panel.TelNosVisible = false;
      ShowModule(id, GetI16(w, 66), GetU16(w, 68), GetU16(w, 70), GetText(w, 72, 10));
    }
  }
  emit panelChanged(id);

  // One request for each report: the next one, after letting the console breathe.
  m_net.NextID = id + 1;
  QCoreApplication::processEvents();
  m_net.Send(TNetModule::QueryDevice);
}

void TDeviceEvents::ShowModule(int id, qint16 signal, quint16 flags, quint16 state,
                               const QString &moduleType) {
  TPhoneTis *p = m_table.Device(id);
  if (!p)
    return;
  const int level = qBound(0, (signal + 1) / 5, 5);
  p->Panel.SignalIcon = u"SpeedButton_Signal%1"_s.arg(level);
  static const char16_t *const kNetIcons[] = {
      u"SpeedButton_NetType_GSM", u"SpeedButton_NetType_CDMA", u"SpeedButton_NetType_TDMA",
      u"SpeedButton_NetType_WCDMA"};
  static const char16_t *const kNetNames[] = {u"GSM", u"CDMA", u"TDMA", u"WCDMA"};
  const int net = (state >> 4) & 0x0F;
  const bool knownNet = net >= 1 && net <= 4;
  p->Panel.NetTypeIcon =
      knownNet ? QString::fromUtf16(kNetIcons[net - 1]) : u"SpeedButton_Unknown"_s;
  const int sim = flags & 1;
  p->Panel.SimIcon = sim ? u"SpeedButton_SimCard"_s : u"SpeedButton_NoSimCard"_s;
  // Without a known lock state the icon goes, and the state counts as unlocked.
  int lock = 1;
  if (flags & 2) {
    lock = (flags >> 3) & 1;
    p->Panel.PinLockIcon = lock ? u"SpeedButton_Pin_unLock"_s : u"SpeedButton_Pin_Lock"_s;
  } else {
    p->Panel.PinLockIcon.clear();
  }
  p->Panel.ModuleIconsVisible = true;
  p->ModuleType = moduleType;
  p->Panel.Hint =
      QStringList{u"ID      :%1"_s.arg(id),
                  u"信号强度:%1"_s.arg(signal),
                  u"网络类型:%1"_s.arg(knownNet ? QString::fromUtf16(kNetNames[net - 1]) : u"?"_s),
                  u"SIM卡   :%1"_s.arg(sim ? u"正常"_s : u"错误"_s),
                  u"锁PIN码 :%1"_s.arg(lock ? u"未锁"_s : u"已锁卡"_s),
                  u"模块类型:%1"_s.arg(moduleType)}
          .join(u'\n');
}

void TDeviceEvents::refreshMixShow(int id, quint16 mixData) {
  if (LogEnabled())
    WriteLog(u"refreshMixShow:vID:%1 vMixData:%2! "_s.arg(id).arg(QString::number(mixData, 16)));
  TPhoneTis *p = m_table.Device(id);
  if (!p || (p->DevType != AnalogExtension && p->DevType != DigitalExtension))
    return;
  const int mode = NoDisturbModeOf(mixData);
  if (LogEnabled())
    WriteLog(u"刷新小图标:myNoDisturbMode:%1 vMixData:%2! "_s.arg(mode).arg(
        QString::number(mixData, 16)));
  static const char16_t *const kOn[] = {u"LoginOn_SpeedButton", u"LoginOnNodisturb_SpeedButton",
                                        u"LoginOnNodisturb_In_SpeedButton",
                                        u"LoginOnNodisturb_Out_SpeedButton"};
  static const char16_t *const kOff[] = {u"LoginOff_SpeedButton", u"LoginOffNodisturb_SpeedButton",
                                         u"LoginOffNodisturb_In_SpeedButton",
                                         u"LoginOffNodisturb_Out_SpeedButton"};
  p->Panel.PhoneButtonGlyph = QString::fromUtf16(LoggedOnOf(mixData) ? kOn[mode] : kOff[mode]);
  emit panelChanged(id);
}

void TDeviceEvents::Device_UpdateStatus(const char *record, int length) {
  char r[108] = {};
  std::memcpy(r, record, size_t(qBound(0, length, int(sizeof r))));
  const int id = GetU16(r, 8);
  const int devType = GetI16(r, 14);
  const int status = GetI16(r, 16);
  const quint16 mix = GetU16(r, 22);
  TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Status dropped: device ID %1 outside the table"_s.arg(id));
    return;
  }
  // A device without a panel is not updated at all, its grid row included.
  if (p->InList) {
    if (devType == AnalogExtension || devType == DigitalExtension || devType == OtherExtension) {
      p->Panel.StatusLabel = u"["_s + ExtensionStatusText(status) + u']';
      p->Status = status;
      SetColour(*p, status);
      refreshMixShow(id, mix);
      p->SrvClass = GetI16(r, 40);
      p->MoringCallTime = ParseWakeUpText(GetText(r, 42, 20));
      ExtensionFromMix(*p, mix);
      p->Panel.NameLabel = NameOrDots(GetText(r, 62, 108 - 62));
      p->LiveUpdate = true;
      emit Ext_UpdateRow(id);
    } else if (devType == AnalogTrunk || devType == IvrPort || devType == PriTrunk ||
               devType == Ss1Trunk || devType == SipTrunk || devType == GsmModuleTrunk) {
      const bool module = devType == GsmModuleTrunk;
      p->Panel.StatusLabel = DeviceStatusText(status);
      // Unlike a report, a live status 5 keeps the glyph with its own colour,
      // and 17 has a colour of its own. The trunk's Status is not stored.
      if (module && status == 0) {
        SetColour(*p, 9);
        p->Panel.StatusLabel = StateCodeText(GetU16(r, 28) >> 8);
      } else if (status == 1) {
        SetColour(*p, 1);
        p->Panel.PhoneButtonGlyph = kTrunkGlyph;
      } else if (status == 5) {
        SetColour(*p, 5);
      } else if (status == 12) {
        SetColour(*p, 1);
        p->Panel.PhoneButtonGlyph = kTrunkErrorPicture;
      } else if (status == 17) {
        p->Panel.Colour = kStatus17Colour;
      } else {
        SetColour(*p, 9);
        p->Panel.PhoneButtonGlyph = kTrunkGlyph;
      }
      if (module)
        ShowModule(id, GetI16(r, 24), GetU16(r, 26), GetU16(r, 28), GetText(r, 30, 10));
    }
    emit panelChanged(id);
  }
  refreshMixShow(id, mix);
}

void TDeviceEvents::processPacketFromSocket_SrvClass(const char *w) {
  if (quint8(w[12]) != 1)
    return;
  if (FrontDeskAnswer && FrontDeskAnswer(int(PacketType::SrvClassSet), w))
    return;
  const QString reply = GetText(w, 18, 21);
  if (reply != u"000000"_s) {
    // A refused class halts a running batch where it stands: no step follows.
    TheShell().Message(MessageKind::Error, LangText(394) + reply);
    return;
  }
  if (SrvClassBatchRunning && SrvClassBatchRunning()) {
    if (StepSrvClassBatch)
      StepSrvClassBatch();
    return;
  }
  TheShell().Message(MessageKind::Information, LangText(393));
  if (TPhoneTis *p = m_table.Device(GetU16(w, 16))) {
    p->SrvClass = m_net.SrvClass;
    p->LiveUpdate = false;
    emit Ext_UpdateRow(GetU16(w, 16));
  }
}

void TDeviceEvents::processPacketFromSocket_SrvClassName(const char *w) {
  if (quint8(w[12]) != 1)
    return;
  const int index = GetU16(w, 16);
  if (index == 65535) {
    // The names are all in: now the recording server.
    emit srvClassNamesLoaded();
    SendRecordServerQuery();
    return;
  }
  // One row more per answer; copying the whole list for each would grow with
  // the square of the names over a session of refreshes.
  if (index == 0)
    SrvClassNames.setStringList({});
  const int row = SrvClassNames.rowCount();
  SrvClassNames.insertRows(row, 1);
  SrvClassNames.setData(SrvClassNames.index(row),
                        u"%1:%2"_s.arg(index + 1).arg(GetText(w, 18, kWorkBufferSize - 18)));
  m_net.SrvClassIndex = index + 1;
  m_net.Send(TNetModule::QuerySrvClassName);
}

void TDeviceEvents::processPacketFromSocket_MoringCall(const char *w) {
  const int sub = quint8(w[12]);
  if (sub == 2) {
    const QString text = GetText(w, 18, 20);
    int mode = quint8(w[38]);
    if (mode < 1 || mode > 3)
      mode = 1;
    // The answer is for the wake-up dialog only: the sender's CallTime stays
    // what this console last sent, which a batch may still repeat.
    emit moringCallAnswered(text, mode);
  } else if ((sub == 1 || sub == 3 || sub == 4) && FrontDeskAnswer &&
             FrontDeskAnswer(int(PacketType::MoringCall), w)) {
    return;
  } else if ((sub == 1 || sub == 3 || sub == 4) && MoringCallBatchRunning &&
             MoringCallBatchRunning()) {
    if (StepMoringCallBatch)
      StepMoringCallBatch(m_net.LastCommand);
  }
}

void TDeviceEvents::processPacketFromSocket_VoiceMail(const char *w) {
  // Only a check-in or check-out reads this answer: it waits for it before the
  // room's next request.
  if (FrontDeskAnswer && FrontDeskAnswer(int(PacketType::VoiceMailClear), w))
    return;
  // Otherwise the voice-mail answer is tested for its sub-code before the handler holds
  // the packet, so the test never passes and the answer never acts: a batch
  // clear stops after its first room and ends in the time-out, as operators
  // know it. The cleared state reaches the grid by the status event, and the
  // dispatcher's own log line records the answer.
}

void TDeviceEvents::processPacketFromSocket_Other(const char *w) {
  const int sub = quint8(w[12]);
  switch (sub) {
  case 137:
  case 144:
  case 145:
    emit deviceNotice(sub, QByteArray(w, kWorkBufferSize));
    break;
  case 152:
    if (FrontDeskAnswer && FrontDeskAnswer(int(PacketType::DeviceControl), w))
      break;
    if (m_net.MultiTask && StepNoDisturbBatch)
      StepNoDisturbBatch();
    break;
  default:
    break; // 148 and unknown notices are ignored
  }
}
