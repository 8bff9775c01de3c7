#include "app/ConsoleProcess.h"

#include "console/Login_Form.h"
#include "api/ApiServer.h"
#include "console/Main_Form.h"
#include "console/UserInfo_Form.h"
#include "devices/DeviceEvents.h"
#include "devices/GSM_Unit.h"
#include "devices/UDPServerMain.h"
#include "directory/DirectoryPages.h"
#include "directory/PopMsg_Form.h"
#include "directory/StoreServerLink.h"
#include "directory/SysDM_Unit.h"
#include "directory/TaskEdit_Unit.h"
#include "directory/Tasks_Unit.h"
#include "guest/ExtsView.h"
#include "guest/PBXRecords.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/Shell.h"
#include "support/Sysset_Unit.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

using namespace Qt::StringLiterals;

ConsoleProcess::ConsoleProcess(QObject *parent) : QObject(parent) {}

ConsoleProcess::~ConsoleProcess() = default;

bool ConsoleProcess::Start(const QString &home, bool autoLogin, quint16 udpPort) {
  SetAppPath(home.isEmpty() ? QCoreApplication::applicationDirPath() : home);
  SetShippedRoot(QString::fromUtf16(kShippedRoot));

  // A folder that can't be made or written is no reason to stop: the console
  // runs on its defaults and says so.
  QStringList failed;
  if (!QDir().mkpath(AppPath()))
    failed << AppPath();
  else
    SeedHome(QString::fromUtf16(kShippedRoot), AppPath(), &failed);
  if (!failed.isEmpty())
    std::fprintf(stderr, "trunkdesk: could not write into %s: %s\n", qUtf8Printable(AppPath()),
                 qUtf8Printable(failed.join(u", "_s)));

  // The language comes first, ahead of any window; then the windows in their
  // order, the main window first.
  LanguageStart();

  m_main = std::make_unique<TMain_Form>();
  m_main->FormCreate();
  m_popMsg = std::make_unique<TForm_PopMsg>();
  m_main->Pages().Form_PopMsg = m_popMsg.get();
  m_sysset = std::make_unique<Tsysset_Form>();
  connect(m_sysset.get(), &Tsysset_Form::ringToneButtonChanged, m_main.get(),
          &TMain_Form::SetRingToneButton);
  // The front-desk page offers the exchange's classes; its apply shows or
  // hides the grid's guest column.
  m_sysset->SrvClassNames = [this] {
    return m_main->DeviceEvents().SrvClassNames.stringList();
  };
  // The database page's test: a few seconds at most for a server that doesn't answer.
  m_sysset->ProbeStoreServer = [](const TStoreServer &server) {
    return ProbeStoreServer(server, 5);
  };
  connect(m_sysset.get(), &Tsysset_Form::frontDeskChanged, m_main.get(), [this] {
    m_main->ExtsView().ShowGuestColumn(SysConfig().FrontDeskInUse());
  });
  m_sysset->FormCreate();
  // The store opens after the settings, which name its file. A file that can't
  // be used is reported and the console goes on without it.
  RunGuarded([] { Sys_DM().DataModuleCreate(); });
  m_login = std::make_unique<TLogin_Form>(m_main.get());
  m_login->AutoLogin = autoLogin;
  m_userInfo = std::make_unique<TUserInfo_Form>();
  m_main->UserInfo_Form = m_userInfo.get();
  m_tasks = std::make_unique<TTasks_Form>();
  RunGuarded([this] { m_tasks->FormCreate(); }); // loads the task list from the store
  m_tasks->EditForm().FindByName = [this](const QString &name) {
    m_main->Pages().FindByName(name);
  };
  connect(&m_main->Pages(), &TDirectoryPages::taskContactChosen, m_tasks.get(),
          &TTasks_Form::LinkContact);
  m_gsm = std::make_unique<TGSM_Form>();
  connect(m_main.get(), &TMain_Form::gsmSendRequested, m_gsm.get(),
          &TGSM_Form::sendSms_TeButtonClick);
  connect(m_main.get(), &TMain_Form::gsmTimerStopRequested, m_gsm.get(),
          &TGSM_Form::GSM_SendSMS_TimerStop);
  connect(&m_main->Pages(), &TDirectoryPages::smsRequested, m_gsm.get(), &TGSM_Form::SendSMSTo);

  // The exchange's pushes: status changes into the device table, call records
  // into the store.
  m_udp = std::make_unique<TUDPMainForm>(udpPort);
  TDeviceEvents &events = m_main->DeviceEvents();
  m_udp->DeviceStatusHandler = [&events](const char *record, int length) {
    events.Device_UpdateStatus(record, length);
  };
  m_udp->RefreshMixShow = [&events](int id, quint16 mixData) {
    events.refreshMixShow(id, mixData);
  };
  connect(m_main.get(), &TMain_Form::udpLoggedInChanged, m_udp.get(), &TUDPMainForm::SetLoggedIn);
  // A stored call record shows on the call-record page within a moment. The
  // search runs once for all records of a burst: one search per record would
  // hold the main thread long enough at a busy exchange's rate for the kernel
  // to drop datagrams, and each search would write the waiting records one by one.
  m_recordsRefresh.setSingleShot(true);
  m_recordsRefresh.setInterval(kRecordsRefreshMs);
  connect(&m_recordsRefresh, &QTimer::timeout, this,
          [this] { m_main->PBXRecords().SpeedButton_FindClick(); });
  m_udp->SpeedButton_FindClick = [this] {
    if (!m_recordsRefresh.isActive())
      m_recordsRefresh.start();
  };
  if (!m_udp->FormCreate())
    return false;

  // Another desk on the shared store wrote tasks or call records: the task
  // list and the record view read again (the main form follows contacts and
  // rooms itself).
  connect(&Sys_DM().Link(), &TStoreLink::tablesChanged, this, [this](const QStringList &tables) {
    if (tables.contains(u"task_table"_s))
      RunGuarded([this] { m_tasks->init_TeSpeedButtonClick(); });
    if (tables.contains(u"pbxconrecords"_s) && !m_recordsRefresh.isActive())
      m_recordsRefresh.start();
  });

  connect(m_login.get(), &TLogin_Form::quitRequested, this, &ConsoleProcess::SilentClose);
  connect(m_main.get(), &TMain_Form::closeRequested, this, &ConsoleProcess::SilentClose);

  WriteLog(u"Application Start: "_s + AppPath());
  if (!failed.isEmpty())
    WriteLog(u"Could not seed: "_s + failed.join(u", "_s));
  // Off unless [Api] enables it; a refusal is logged and shown, the console runs on.
  m_api = StartConfiguredApi(*m_main, m_udp.get());
  connect(m_sysset.get(), &Tsysset_Form::apiChanged, this, [this] {
    m_api.reset();
    m_api = StartConfiguredApi(*m_main, m_udp.get());
  });

  return true;
}

void ConsoleProcess::FirstShow() {
  m_main->FormShow();
  // One line for whoever started the console from a shell or a service manager.
  std::printf("trunkdesk: running, home %s\n", qUtf8Printable(AppPath()));
  std::fflush(stdout);
}

bool ConsoleProcess::WindowClose() {
  if (m_closed)
    return true;
  if (!m_main->FormCloseQuery())
    return false;
  m_closed = true;
  m_main->FormClose();
  m_main->Link().StopWorker();
  QCoreApplication::quit();
  return true;
}

void ConsoleProcess::SilentClose() {
  if (m_closed)
    return;
  m_closed = true;
  if (m_main) {
    m_main->SilentExit = 1;
    if (m_main->FormCloseQuery())
      m_main->FormClose();
    m_main->Link().StopWorker();
  } else {
    SaveConfig(SysConfig());
    WriteLog(u"Application Close!"_s);
  }
  QCoreApplication::quit();
}
