// What the operator does from a panel of the board and from the transfer and
// do-not-disturb keys, and the exchange's notices about this console's calls.
#include "console/Main_Form.h"
#include "link/Public_Unit.h"
#include "link/SysParam.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "devices/NetModule.h"
#include "directory/DirectoryPages.h"
#include "guest/ExtsView.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QCoreApplication>
#include <QDeadlineTimer>

using namespace Qt::StringLiterals;

namespace {
// The transfer steps wait and let the exchange's answers in between.
void WaitWithEvents(int ms) {
  const QDeadlineTimer deadline(ms);
  while (!deadline.hasExpired())
    QCoreApplication::processEvents(QEventLoop::AllEvents,
                                    int(qMax<qint64>(1, deadline.remainingTime())));
}

} // namespace

void TMain_Form::PhonePanel_PopupMenuPopup(int id) {
  const TPhoneTis *p = m_devices->Device(id);
  if (!p)
    return;
  MenuDeviceID = id;
  TPanelMenu &m = PhonePanel_PopupMenu;
  switch (p->DevType) {
  case AnalogExtension:
  case DigitalExtension:
    m = {LangText(421), true, true, true, false};
    break;
  case AnalogTrunk:
    m = {LangText(422), true, false, false, true};
    break;
  case PriTrunk:
  case GsmModuleTrunk:
  case Ss1Trunk:
    m = {LangText(423), true, false, false, true};
    break;
  case IvrPort:
    m = {m.test1_Caption, false, false, false, true};
    break;
  default:
    break; // 21, 22 and others keep what the last opening set
  }
}

void TMain_Form::test1Click() {
  const TPhoneTis *p = m_devices->Device(MenuDeviceID);
  if (!p)
    return;
  if (p->Status == 1)
    DialNumber(p->TelNos);
  else
    TheShell().Balloon(LangText(364), LangText(365), 10, BalloonIcon::Warning);
}

void TMain_Form::N15Click() {
  TransferToIdle(m_devices->Device(MenuDeviceID), 300, 200, false);
}

void TMain_Form::N21Click() {
  const TPhoneTis *p = m_devices->Device(m_extsView->Ext_CurrentID());
  if (!p)
    return;
  if (p->Status == 1)
    DialNumber(p->TelNos);
  else
    TheShell().Balloon(LangText(364), LangText(365), 10, BalloonIcon::Warning);
}

void TMain_Form::N22Click() {
  TransferToIdle(m_devices->Device(m_extsView->Ext_CurrentID()), 100, 100, true);
}

// A transfer goes only to an idle extension; the operator hears why otherwise.
void TMain_Form::TransferToIdle(const TPhoneTis *p, int holdWaitMs, int releaseWaitMs,
                                bool yieldAfterRelease) {
  if (!p)
    return;
  if (p->Status != 1) {
    TheShell().Balloon(LangText(418), LangText(419), 10, BalloonIcon::Warning);
    return;
  }
  // Events run between the steps and may move the board or the grid: keep the
  // number, not the record.
  TransferSteps(p->TelNos, holdWaitMs, releaseWaitMs, yieldAfterRelease, false);
}

// By the console's own call: talking (7) puts the call on hold, releases and
// dials; a call on hold (4) releases and dials; any other state does nothing.
// The menus wait as they always did (the board's transfer longer than the
// list's); only the list lets events in after a lone release.
void TMain_Form::TransferSteps(const QString &number, int holdWaitMs, int releaseWaitMs,
                               bool yieldAfterRelease, bool divert) {
  const quint8 state = SysParam().CallState;
  if (state == 7) {
    SendPhoneCommand(131);
    WaitWithEvents(holdWaitMs);
    SendPhoneCommand(130);
    WaitWithEvents(releaseWaitMs);
    if (divert)
      DivertNumber(number);
    else
      DialNumber(number);
  } else if (state == 4) {
    SendPhoneCommand(130);
    if (yieldAfterRelease)
      QCoreApplication::processEvents();
    DialNumber(number);
  }
}

void TMain_Form::tefxSpeedButton2Click() {
  const QString number = dial_TeSComboBox_Text.trimmed();
  if (!number.isEmpty())
    TransferSteps(number, 100, 100, false, true);
}

void TMain_Form::PopMenu_ResetTrunkClick() {
  if (!ServiceAllowed || !m_devices->Device(MenuDeviceID))
    return;
  SendDeviceControl(150, 20, quint16(MenuDeviceID));
}

void TMain_Form::tefxButton5Click() {
  SendDeviceControl(149, 20, 1);
}
void TMain_Form::tefxButton6Click() {
  SendDeviceControl(149, 20, 0);
}

void TMain_Form::Template_PhoneSpeedButtonClick(int id) {
  const TPhoneTis *p = m_devices->Device(id);
  if (!p)
    return;
  switch (p->DevType) {
  case AnalogTrunk:
  case IvrPort:
  case PriTrunk:
  case GsmModuleTrunk:
  case Ss1Trunk:
    return; // trunks have no service class; a SIP trunk (22) does open it
  default:
    break;
  }
  CurrentDeviceID = id;
  OpenSrvClass(id, true);
  const TBoardGeometry &g = BoardGeometry;
  emit srvClassDialogRequested(id, g.PageLeft + p->Left + 20, g.PageTop + p->Top - 35);
}

void TMain_Form::HostIP_tefxButtonClick() {
  emit settingsRequested(HostText);
}

int TMain_Form::FindExtension(const QString &number) {
  int found = -1;
  for (int id : m_devices->Ordered()) {
    if (m_devices->Record(id).TelNos == number) {
      found = id;
      break;
    }
  }
  const TBoardGeometry &g = BoardGeometry;
  if (found < 0) {
    TheShell().HintAt(u"查找分机"_s, u"没找到:%1，请重试！"_s.arg(number), 5000, g.MouseX,
                      g.MouseY);
    return -1;
  }
  TCallControlDev &t = *m_devices;
  // Bring a panel that stands out of view back into it.
  const int top = t.ScreenTop(found);
  if (top > g.BoardHeight - 20)
    t.ScrollY = top + t.ScrollY - g.BoardHeight + 80;
  else if (top < 0)
    t.ScrollY = qMax(0, top + t.ScrollY - 20);
  TheShell().HintAt(u"查找分机"_s, u"找到分机:%1 ID:%2"_s.arg(number).arg(found), 5000,
                    g.WindowLeft + 40 + g.PageLeft + g.BoardLeft + t.ScreenLeft(found),
                    g.WindowTop + 270 + g.PageTop + g.BoardTop + t.ScreenTop(found));
  return found;
}

void TMain_Form::DeviceNotice(int subCode, const QByteArray &work) {
  const char *w = work.constData();
  TDirectoryPages &pages = *m_pages;
  const QString cr = u"\r"_s;
  if (subCode == 137) {
    const QString number = GetText(w, 20, 21);
    if (number == SysParam().MyTelNo)
      return;
    const int state = GetU16(w, 18);
    if (state == 1) {
      TCallListModel &list = pages.Incomings_LMDListBox;
      pages.InsertCallItem(u"Phone1"_s, number, -1, list);
      // A notice whose end never came would stay for good; the list keeps what a
      // screen shows, the newest first, and says what went.
      int dropped = 0;
      while (list.Count() > kMaxRingingNotices) {
        list.Delete(list.Count() - 1);
        ++dropped;
      }
      if (dropped > 0) {
        m_droppedRingingNotices += dropped;
        StatusLine = u"%1 older ringing notices dropped"_s.arg(m_droppedRingingNotices);
        WriteLog(u"Incoming list full (%1): %2 older notices dropped, %3 in all"_s
                     .arg(kMaxRingingNotices)
                     .arg(dropped)
                     .arg(m_droppedRingingNotices));
      }
    } else if (state == 2)
      pages.RemoveIncomingItem(number);
    return;
  }
  if (subCode != 144 && subCode != 145)
    return;
  const bool lost = subCode == 144;
  const QString number = GetText(w, lost ? 18 : 20, 21);
  TCallListModel &list = lost ? pages.lostIncom_LMDListBox : pages.Incomed_LMDListBox;
  // The row is the call list's own, with the caller's contact looked up.
  RunGuarded([&] { pages.InsertCallItem(u"Phone1"_s, number, -1, list); });
  QString text;
  QString title;
  if (!number.trimmed().isEmpty()) {
    const int base = lost ? 395 : 406;
    const TLmdlistItemRam row = list.Count() ? list.Item(0) : TLmdlistItemRam{};
    text = LangFormat(base, {number, cr}) + LangFormat(base + 1, {row.Name, cr}) +
           LangFormat(base + 2, {row.Company, cr});
    title = LangText(lost ? 398 : 409);
    if (!lost)
      StatusLine = u"%1 Connected"_s.arg(number);
  } else {
    const int base = lost ? 399 : 410;
    text = LangFormat(base, {LangText(base + 1), cr}) +
           LangFormat(base + 2, {LangText(base + 3), cr}) +
           LangFormat(base + 4, {LangText(base + 5), cr});
    title = LangText(base + 6);
    if (!lost)
      StatusLine = LangText(417);
  }
  TheShell().Balloon(title, text, 10, BalloonIcon::Info);
}
