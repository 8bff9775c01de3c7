// The frame's part of the main window's logic: creation, first show, closing.
#include "console/Main_Form.h"

#include "console/DeviceTestPanel.h"
#include "console/DirectoryCalls.h"
#include "console/Login_Form.h"
#include "link/SysParam.h"
#include "devices/CallControlDev.h"
#include "devices/DeviceEvents.h"
#include "devices/PhoneBoard.h"
#include "directory/DirectoryPages.h"
#include "directory/RecordServerPage.h"
#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"
#include "guest/BatchWalk.h"
#include "guest/CheckIn_Form.h"
#include "guest/FrontDesk.h"
#include "guest/RoomHistory_Unit.h"
#include "guest/ExtFind_Form.h"
#include "guest/ExtsView.h"
#include "guest/Hint_Form.h"
#include "guest/MemoSet.h"
#include "guest/MoringCall_Unit.h"
#include "guest/Nodisturb.h"
#include "guest/Nodisturb_Form.h"
#include "guest/VoiceMail_Set.h"
#include "guest/WakeUpAlarms.h"
#include "guest/MoringCallLog_Unit.h"
#include "guest/MoringCall_Unit.h"
#include "guest/PBXRecords.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

TMain_Form::TMain_Form(QObject *parent)
    : TFormLogic("TMain_Form", parent), m_pages(std::make_unique<TDirectoryPages>()),
      m_directoryCalls(std::make_unique<TDirectoryCalls>(*m_pages)),
      m_devices(std::make_unique<TCallControlDev>()), m_netModule(std::make_unique<TNetModule>()),
      m_deviceEvents(std::make_unique<TDeviceEvents>(*m_devices, *m_netModule)),
      m_board(std::make_unique<TPhoneBoard>(*m_devices, *m_netModule)),
      m_deviceTestPanel(std::make_unique<TDeviceTestPanel>(m_display)) {
  connect(m_deviceEvents.get(), &TDeviceEvents::deviceNotice, this, &TMain_Form::DeviceNotice);
  WireGuest();
  WireRecords();
  // Another desk on the shared store wrote: the contact grid and the rooms'
  // texts read again; this desk's own call lists and devices stay as they are.
  TStoreLink &store = Sys_DM().Link();
  connect(&store, &TStoreLink::tablesChanged, this, [this](const QStringList &tables) {
    if (tables.contains(u"maininfo"_s))
      RunGuarded([this] { m_pages->ContactsChangedElsewhere(); });
    if (tables.contains(u"exts"_s))
      RunGuarded([this] { m_extsView->Exts_SharedChanged(); });
  });
  connect(&store, &TStoreLink::ownWriteOverwritten, this, [this](const QString &table, qint64 id) {
    if (table == u"maininfo"_s)
      RunGuarded([this, id] { m_pages->ContactOverwritten(qint32(id)); });
  });
  // A ringing call on an analogue trunk is titled with the trunk's name.
  AnalogTrunkName = [this](int line) {
    const TPhoneTis *p = m_devices->Device(line);
    return p && p->InList && p->DevType == AnalogTrunk ? p->Panel.NameLabel : QString();
  };
  CallDirectory = m_directoryCalls.get();
  m_pages->DialNumber = [this](const QString &number) { DialNumber(number); };
  m_pages->CallStillRinging = [] { return SysParam().CallState == 2; };
  m_pages->OwnExtension = [] { return SysParam().MyTelNo; };

  PulseCheck_Timer.setObjectName(u"PulseCheck_Timer"_s);
  PulseCheck_Timer.setInterval(15000);
  connect(&PulseCheck_Timer, &QTimer::timeout, this, &TMain_Form::PulseCheck_TimerTimer);
  Relogin_Timer.setObjectName(u"Relogin_Timer"_s);
  Relogin_Timer.setSingleShot(true);
  connect(&Relogin_Timer, &QTimer::timeout, this, &TMain_Form::Relogin_TimerTimer);

  Msg_Timer.setObjectName(u"Msg_Timer"_s);
  Msg_Timer.setInterval(1000);
  connect(&Msg_Timer, &QTimer::timeout, this, &TMain_Form::Msg_TimerTimer);
  incTime_Timer.setObjectName(u"incTime_Timer"_s);
  incTime_Timer.setInterval(1000);
  connect(&incTime_Timer, &QTimer::timeout, this, &TMain_Form::incTime_TimerTimer);
  showTime_Timer.setObjectName(u"showTime_Timer"_s);
  showTime_Timer.setInterval(500);
  connect(&showTime_Timer, &QTimer::timeout, this, &TMain_Form::showTime_TimerTimer);
  // Whatever goes on the display takes the place of the idle clock.
  connect(&m_display, &TDisplay::aboutToShow, this, [this] {
    showTime_Timer.stop();
    userText_LMDEdit.clear();
  });
  CtrlMode_Caption = LangText(424);

  m_link.SetPacketHandler(
      [this](const char *packet, int length) { processPacketFromSocket(packet, length); });
  connect(&m_link.Winsock_TCP(), &TExchangeSocket::OnConnect, this,
          &TMain_Form::Winsock_TCPConnect);
  connect(&m_link.Winsock_TCP(), &TExchangeSocket::OnClose, this, &TMain_Form::Winsock_TCPClose);
  connect(&m_link.Winsock_TCP(), &TExchangeSocket::OnConnectFailed, this,
          &TMain_Form::Winsock_TCPConnectFailed);
}

TMain_Form::~TMain_Form() {
  m_link.StopWorker();
}

void TMain_Form::FormCreate() {
  TSysConfig &c = SysConfig();
  LoadConfig(c);
  AppTitle = c.CompanyCaption + u"Trunkdesk ver5.2"_s;
  m_pages->ImLinkHost = c.IMHost;
  m_recordServer->TeSEdit_RecordIP = c.RecordIP;
  SetCaption(AppTitle);
}

void TMain_Form::FormShow() {
  if (Tag >= 1)
    return;
  LanguageFirstShow();
  m_extsView->ExtsView_Init();
  m_link.StartWorker();
  m_display.Timer2.start();
  incTime_Timer.start();
  showTime_Timer.start();
  Tag = 1;
  if (!EverConnected) {
    SysParam().MyID = 65535;
    if (Login_Form)
      Login_Form->ShowModal();
  }
}

bool TMain_Form::FormCloseQuery() {
  if (SilentExit != 1 && !TheShell().Question(LangText(333)))
    return false;
  StopRelogin();
  if (Login_Form)
    Login_Form->disConnectTeButtonClick();
  config_Save();
  return true;
}

void TMain_Form::config_Save() {
  // The contact grid writes its column widths into the settings record as they
  // change, so saving the record saves them too.
  SaveConfig(SysConfig());
  savePhones_tefxButtonClick();
}

void TMain_Form::FormClose() {
  config_Save();
  WriteLog(u"Application Close!"_s);
  m_display.Timer2.stop();
}

void TMain_Form::SetCaption(const QString &caption) {
  Caption = caption;
  emit captionChanged(caption);
}

void TMain_Form::SetFront(FrontPanel panel) {
  Front = panel;
  emit frontChanged();
}

void TMain_Form::LoadConRecords() {
  // After every login the missed, answered and dialled lists start again from
  // the latest hundred logged calls. A store that failed at start, or fails now,
  // leaves them as they are (or partly filled) and says so in the log.
  if (m_pages && Sys_DM().Connected()) {
    try {
      m_pages->LoadConRecords();
    } catch (const EDatabaseError &e) {
      WriteLog(u"The call lists were not rebuilt: "_s + e.Message());
    }
  }
  emit callListsReloadRequested();
}
void TMain_Form::LoadPhones_tefxButtonClick() {
  m_board->LoadPhones_tefxButtonClick();
  emit phonesLoadRequested();
}
void TMain_Form::RefrshPhones_tefxButtonClick() {
  m_board->RefreshPhones_tefxButtonClick();
  emit phonesRefreshRequested();
}
void TMain_Form::savePhones_tefxButtonClick() {
  m_board->savePhones_tefxButtonClick();
  emit phonesSaveRequested();
}
void TMain_Form::SetUdpLoggedIn(bool loggedIn) {
  emit udpLoggedInChanged(loggedIn);
}
