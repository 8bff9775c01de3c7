// The operator's own extension: its call states on the display, the ring, the
// screen pop, the call log, dialling and the call-control keys.
#include "console/CallDirectory.h"
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

void TMain_Form::processPacketFromSocket_CallState(const char *work) {
  const TCallStateRecord r = TCallStateRecord::Parse(work);
  TNetPhone_SysParam &sp = SysParam();
  showTime_Timer.stop();
  sp.CallState = r.State;
  sp.CallerNo = r.Caller;
  sp.CalledNo = r.Called;
  if (!sp.CallerNo.isEmpty())
    sp.LastCallerNo = sp.CallerNo;

  const bool muted = SysConfig().RingFlag != 0;
  switch (r.State) {
  case 0:
    ShowDisplay(u"OutService!"_s, true);
    TheShell().RingStop();
    break;
  case 1:
    showTime_Timer.start();
    TheShell().RingStop();
    break;
  case 2: {
    ShowDisplay(sp.CallerNo, true);
    if (CallDirectory)
      CallDirectory->AddIncoming(sp.CallerNo);
    if (!muted)
      TheShell().RingStart();
    const QString number = sp.CallerNo.trimmed();
    const QString cr = u"\r"_s;
    QString popText;
    if (!number.isEmpty()) {
      const QStringList row = CallDirectory ? CallDirectory->LookUp(number) : QStringList();
      popText = LangFormat(319, {number, cr}) + LangFormat(320, {row.value(0), cr}) +
                LangFormat(321, {row.value(4), cr});
    } else {
      popText = LangFormat(322, {LangText(323), cr}) + LangFormat(324, {LangText(325), cr}) +
                LangFormat(326, {LangText(327), cr});
    }
    switch (SysConfig().IncomStyle) {
    case 0:
      if (CallDirectory)
        CallDirectory->RestoreAndShowContact(number, !number.isEmpty());
      break;
    case 1: {
      // A call on no known device is never a trunk's.
      const QString trunk = AnalogTrunkName ? AnalogTrunkName(r.Line) : QString();
      const QString title = trunk.isEmpty() ? LangText(329) : LangFormat(328, {trunk});
      TheShell().Balloon(title, popText, 10, BalloonIcon::Info);
      break;
    }
    case 3:
      if (CallDirectory)
        CallDirectory->ShowPopMsg(sp.CallerNo);
      break;
    default:
      // The external program reads the call from the copy, so make it now.
      LastSysParam() = sp;
      if (CallDirectory)
        CallDirectory->ExternalCall();
      break;
    }
    break;
  }
  case 3:
    ShowDisplay(u"%1 CallBack"_s.arg(sp.CallerNo), true);
    if (CallDirectory)
      CallDirectory->AddIncoming(sp.CallerNo);
    if (!muted)
      TheShell().RingStart();
    if (CallDirectory && !CallDirectory->ContactSelected() && !sp.CallerNo.trimmed().isEmpty())
      CallDirectory->LookUp(sp.CallerNo.trimmed());
    break;
  case 4:
    ShowDisplay(u"Dial:"_s, false);
    break;
  case 5:
    ShowDisplay(u"Calling %1"_s.arg(sp.CallerNo), false);
    break;
  case 6:
    ShowDisplay(u"Please Hangup!"_s, true);
    TheShell().RingStop();
    break;
  case 7:
    ShowDisplay(u"%1 Connected"_s.arg(sp.CallerNo), false);
    TheShell().RingStop();
    break;
  default:
    WriteLog(u"CallState: unknown state %1"_s.arg(r.State));
    break;
  }
  Call_StateChanged(work);
}

void TMain_Form::Call_StateChanged(const char *work) {
  TNetPhone_SysParam &sp = SysParam();
  const TNetPhone_SysParam &last = LastSysParam();
  const TCallStateRecord r = TCallStateRecord::Parse(work);
  sp.CallState = r.State;
  sp.LogAsDialOut = r.LogAsDialOut;

  if (r.State == 4)
    DialNumber(sp.DialBuffer);
  else
    sp.DialBuffer.clear();

  const bool allowed = (r.Rights & 16) == 0;
  if (allowed != ServiceAllowed) {
    ServiceAllowed = allowed;
    emit serviceAllowedChanged(allowed);
  }

  if (last.CallState == 4 && r.State != 4)
    tefxSpeedButton1_Enabled = true;

  // What kind of call just ended, told by where it came from.
  int kind = 0;
  QString number = sp.CallerNo;
  if (last.CallState == 2 && r.State == 1) {
    kind = 1;
    number = last.CallerNo; // the exchange may already have cleared it
  } else if (last.CallState == 2 && r.State == 7) {
    kind = 2;
  } else if (last.CallState == 4 && r.State == 7) {
    kind = sp.LogAsDialOut ? 3 : 2;
  } else if (last.CallState == 5 && r.State == 7) {
    kind = 3;
  } else if (last.CallState == 5 && r.State == 1) {
    kind = 3;
    number = last.CallerNo;
  }
  if (kind && CallDirectory)
    CallDirectory->LogCall(kind, number);

  if ((last.CallState == 2 || last.CallState == 3) && CallDirectory)
    CallDirectory->RemoveIncoming(r.Caller);
  emit callControlChanged();
}

QString TMain_Form::FilterDialString(const QString &text) {
  QString out;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c.isDigit() && c.unicode() < 128) {
      out += c;
    } else if (c == u'*' || c == u'#') {
      out += c;
    } else if (i + 1 >= 8) {
      // Past the first seven places a stray character ends the number.
      break;
    }
  }
  return out;
}

QByteArray TMain_Form::DigitCodes(const QString &number) {
  QByteArray codes;
  for (const QChar c : number) {
    if (c == u'0')
      codes += char(10);
    else if (c >= u'1' && c <= u'9')
      codes += char(c.unicode() - u'0');
    else if (c == u'*')
      codes += char(11);
    else if (c == u'#')
      codes += char(12);
  }
  return codes;
}

void TMain_Form::DialNumber(const QString &text) {
  QString number = FilterDialString(text);
  if (number.isEmpty())
    return;
  TNetPhone_SysParam &sp = SysParam();
  if (sp.MyID == kNoSession)
    return;
  if (sp.CallState == 4) {
    // An outside number needs the outside line; one with a leading 0 already
    // says where it goes. The long-distance digits take no part here.
    if (number.size() > 6 && !number.startsWith(u'0'))
      number = SysConfig().OutNo + number;
    ShowDisplay(u"calling "_s + number, false);
    Msg_Timer.stop();
    Msg_Panel_Visible = false;
  } else if (sp.CallState == 1) {
    // The number waits for the handset to go off hook, five seconds at most.
    sp.DialBuffer = number;
    Msg_Timer_Tag = 5;
    Msg_Timer.start();
    Msg_Panel_Visible = true;
    Msg_Panel_Caption = LangFormat(260, {number});
    Msg_TeLabel = LangFormat(261, {5});
    emit callControlChanged();
    return;
  }
  SendDialDigits(DigitCodes(number));
  tefxSpeedButton1_Enabled = false;
  emit callControlChanged();
}

void TMain_Form::DivertNumber(const QString &text) {
  QString number = FilterDialString(text);
  if (number.isEmpty() || SysParam().MyID == kNoSession)
    return;
  if (number.size() > 6 && !number.startsWith(u'0'))
    number = SysConfig().OutNo + number;
  ShowDisplay(u"Divert To: "_s + number, false);
  Msg_Timer.stop();
  Msg_Panel_Visible = false;
  SendDialDigits(DigitCodes(number));
  emit callControlChanged();
}

void TMain_Form::DialOneDigit(int code) {
  TNetPhone_SysParam &sp = SysParam();
  if (sp.MyID >= kNoSession || code < 1 || code > 12)
    return;
  SendDialDigits(QByteArray(1, char(code)));
  if (sp.CallState == 4) {
    static const char16_t kCharacters[] = u"1234567890*#";
    sp.DialBuffer += QChar(kCharacters[code - 1]);
    ShowDisplay(u"Dial:"_s + sp.DialBuffer, false);
  }
}

void TMain_Form::dial_TeButtonClick() {
  const QString number =
      dial_TeSComboBox_SelText.isEmpty() ? dial_TeSComboBox_Text : dial_TeSComboBox_SelText;
  if (dial_TeSComboBox_Items.isEmpty() || dial_TeSComboBox_Items.first() != number)
    dial_TeSComboBox_Items.prepend(number);
  DialNumber(number);
}

void TMain_Form::dial_TeSComboBoxKeyPress(QChar key) {
  if (key == u'\r' || key == u'\n') {
    dial_TeButtonClick();
    return;
  }
  // With keying dials on, each key goes to the exchange as it is typed.
  if (SysConfig().isAGMode)
    DialNumber(QString(key));
}

void TMain_Form::Msg_TimerTimer() {
  --Msg_Timer_Tag;
  if (Msg_Timer_Tag <= 0) {
    Msg_Timer.stop();
    Msg_Panel_Visible = false;
    SysParam().DialBuffer.clear();
  }
  Msg_TeLabel = LangFormat(347, {Msg_Timer_Tag});
  emit callControlChanged();
}

void TMain_Form::Msg_TeButton1Click() {
  Msg_Timer.stop();
  Msg_Panel_Visible = false;
  SysParam().DialBuffer.clear();
  emit callControlChanged();
}

void TMain_Form::HoldClick() {
  if (SysParam().CallState != 1)
    SendPhoneCommand(131);
}

void TMain_Form::ConferenceClick() {
  if (SysParam().CallState != 1)
    SendPhoneCommand(129);
}

void TMain_Form::LMDButton21Click() {
  const quint8 state = SysParam().CallState;
  if (state != 1 && state != 2 && state != 3)
    SendPhoneCommand(132);
}

void TMain_Form::tefxButton3Click() {
  if (SysParam().CallState != 1)
    SendPhoneCommand(132);
}

void TMain_Form::TransferClick() {
  const quint8 state = SysParam().CallState;
  if (state == 7) {
    // Hold the party first, then hand it over.
    SendPhoneCommand(131);
    SendPhoneCommand(130);
  } else if (state == 4) {
    SendPhoneCommand(130);
  }
}

void TMain_Form::QueryClick() {
  SendPhoneCommand(128);
}

namespace {
void SendDeviceControl(quint16 code) {
  if (SysParam().MyID == kNoSession)
    return;
  char record[16] = {};
  PutU16(record, 6, quint16(PacketType::DeviceControl));
  PutU16(record, 12, code);
  SendPacket16(record);
}
} // namespace

void TMain_Form::Offhook_tefxButtonClick() {
  SendDeviceControl(134);
}
void TMain_Form::Onhook_tefxButtonClick() {
  SendDeviceControl(135);
}

void TMain_Form::CtrlMode_tefxButtonClick() {
  CtrlMode_Tag = CtrlMode_Tag == 0 ? 1 : 0;
  CtrlMode_Caption = LangText(CtrlMode_Tag == 0 ? 424 : 425);
  HookKeys_Enabled = CtrlMode_Tag == 1;
  emit callControlChanged();
}

void TMain_Form::SetRingToneButton(int imageIndex, const QString &caption) {
  RingTone_ImageIndex = imageIndex;
  RingTone_Caption = caption;
  emit callControlChanged();
}

void TMain_Form::RingTone_TeSpeedButtonClick() {
  TSysConfig &c = SysConfig();
  if (c.RingFlag != 0) {
    c.RingFlag = 0;
    SetRingToneButton(15, LangText(428));
  } else {
    c.RingFlag = 1;
    SetRingToneButton(14, LangText(426));
    TheShell().RingStop();
  }
}

void TMain_Form::incTime_TimerTimer() {
  CurrentTime = CurrentDateTime();
}

void TMain_Form::showTime_TimerTimer() {
  const QDateTime t = CurrentTime.isValid() ? CurrentTime : CurrentDateTime();
  userText_LMDEdit = FormatText(u"%.2d-%.2d-%.2d %.2d:%.2d:%.2d"_s,
                                {t.date().year(), t.date().month(), t.date().day(), t.time().hour(),
                                 t.time().minute(), t.time().second()});
  ShowDisplay(userText_LMDEdit, false); // stops this timer ...
  showTime_Timer.start();               // ... so it starts itself again
}
