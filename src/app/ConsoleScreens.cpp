#include "app/ConsoleScreens.h"

#include "app/ConsoleProcess.h"
#include "console/Login_Form.h"
#include "console/Main_Form.h"
#include "console/UserInfo_Form.h"
#include "devices/CallControlDev.h"
#include "devices/GSM_Unit.h"
#include "directory/DirectoryPages.h"
#include "directory/PopMsg_Form.h"
#include "directory/TaskEdit_Unit.h"
#include "directory/Tasks_Unit.h"
#include "guest/ExtFind_Form.h"
#include "guest/ExtsView.h"
#include "guest/MoringCallLog_Unit.h"
#include "guest/MoringCall_Unit.h"
#include "guest/PBXRecords.h"
#include "guest/ShiftReport.h"
#include "guest/WakeUpAlarms.h"
#include "link/SysParam.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"
#include "support/Sysset_Unit.h"
#include "ui/BatchProgress.h"
#include "ui/BoardView.h"
#include "ui/EscapeCloses.h"
#include "ui/ExtFindWindow.h"
#include "ui/ExtsGridView.h"
#include "ui/ExtsPage.h"
#include "ui/FrontDeskKeys.h"
#include "ui/FrontDeskWindows.h"
#include "ui/GsmDialog.h"
#include "ui/HintDialog.h"
#include "ui/LanguageBinding.h"
#include "ui/LegendBar.h"
#include "ui/LoginDialog.h"
#include "ui/MainWindow.h"
#include "ui/MemoSetDialog.h"
#include "ui/MoringCallDialog.h"
#include "ui/MoringCallLogWindow.h"
#include "ui/Named.h"
#include "ui/NodisturbDialog.h"
#include "ui/PopMsgWindow.h"
#include "ui/SettingsDialog.h"
#include "ui/ShiftReportWindow.h"
#include "ui/TasksWindow.h"
#include "ui/UserInfoDialog.h"
#include "ui/VoiceMailDialog.h"
#include "ui/WakeUpAlarmsWindow.h"
#include "ui/WidgetShell.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QShortcut>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <QTabWidget>
#include <QToolBar>
#include <QVBoxLayout>

#include <cstdio>

using namespace Qt::StringLiterals;

ConsoleScreens::ConsoleScreens(ConsoleProcess &process, WidgetShell &shell, QObject *parent)
    : QObject(parent), m_process(process), m_shell(shell) {
  TMain_Form &main = *process.Main();
  m_window = std::make_unique<TMainWindow>(main);
  m_window->SetBoard(BuildBoardPage());
  BindLanguage(main, m_window.get());
  BuildWindows();
  BuildFrontDesk();

  m_window->CloseHandler = [&process] { return process.WindowClose(); };
  shell.SetMainWindow(m_window.get());
  shell.InWindowNotice = [this](const QString &title, const QString &text, int seconds) {
    m_window->ShowNotice(title, text, seconds);
  };
  connect(m_window.get(), &TMainWindow::languageRequested, this, [this](int id) {
    SelectLanguage(id);
    Retranslate();
  });
  // A click on a balloon brings the window back and, while a call rings, its caller.
  connect(&shell, &WidgetShell::balloonClicked, this, [this, &main] {
    RestoreWindow();
    if (SysParam().CallState == 2 && !SysParam().CallerNo.isEmpty())
      RunGuarded([&] { main.Pages().ShowIncomingDirect(SysParam().CallerNo); });
  });
  // Front desk: a click on a failed wake-up's balloon opens the alarms.
  connect(&main.Form_WakeUpAlarms(), &TForm_WakeUpAlarms::alarmRaised, this,
          [this] { m_alarmBalloon.start(); });
  connect(&shell, &WidgetShell::balloonClicked, this, [this, &main] {
    if (m_alarmBalloon.isValid() && m_alarmBalloon.elapsed() < 15000)
      main.Form_WakeUpAlarms().Show();
  });
  connect(&main.Pages(), &TDirectoryPages::restoreMainWindowRequested, this,
          &ConsoleScreens::RestoreWindow);
  WireTray();
}

ConsoleScreens::~ConsoleScreens() {
  m_shell.SetMainWindow(nullptr);
  m_shell.InWindowNotice = nullptr;
}

QWidget *ConsoleScreens::BuildBoardPage() {
  TMain_Form &main = *m_process.Main();
  auto *page = new QWidget(m_window.get());
  auto *layout = new QVBoxLayout(page);
  layout->setContentsMargins(4, 4, 4, 4);
  m_legend = new TLegendBar(main.CallControlDev(), main.Board(), page);
  m_board = new TBoardView(main.CallControlDev(), main.Board(), &main, page);
  // The layout keys: each changes the table, then the board shows it.
  auto *keys = new QHBoxLayout;
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    void (TMain_Form::*Click)();
  } kBoardKeys[] = {
      {u"RefrshPhones_tefxButton", u"刷新状态", &TMain_Form::RefrshPhones_tefxButtonClick},
      {u"LoadPhones_tefxButton", u"载入布局", &TMain_Form::LoadPhones_tefxButtonClick},
      {u"savePhones_tefxButton", u"保存布局", &TMain_Form::savePhones_tefxButtonClick}};
  for (const auto &k : kBoardKeys) {
    auto *b = NamedButton(QString::fromUtf16(k.Name), QString::fromUtf16(k.Text), page);
    const auto click = k.Click;
    connect(b, &QPushButton::clicked, this, [this, &main, click] {
      RunGuarded([&] { (main.*click)(); });
      m_board->SyncFromTable();
    });
    keys->addWidget(b);
  }
  keys->addStretch(1);
  // The legend, and the reminder that its colours can be changed.
  auto *legendRow = new QHBoxLayout;
  legendRow->addWidget(m_legend);
  legendRow->addStretch(1);
  auto *legendHint = NamedLabel(u"TeLabel13"_s, u"双击色块可修改颜色"_s, page);
  legendHint->setStyleSheet(u"color: palette(mid);"_s);
  legendRow->addWidget(legendHint);
  layout->addLayout(legendRow);
  layout->addLayout(keys);
  layout->addWidget(m_board, 1);
  // The board and the extension list are two tabs of one page.
  m_extsPage = new TExtsPage(main.ExtsView(), new TExtsGridView(main), page, m_board,
                             m_window.get());
  return m_extsPage;
}

// Each window binds its own language texts as it is built.
void ConsoleScreens::BuildWindows() {
  ConsoleProcess &p = m_process;
  TMainWindow *w = m_window.get();
  // The main window owns them; each shows and hides as its logic says.
  m_login = new LoginDialog(*p.Login(), w);
  new SettingsDialog(*p.Sysset(), w);
  new UserInfoDialog(*p.UserInfo(), w);
  new GsmDialog(*p.Gsm(), w);
  m_tasks = new TasksWindow(*p.Tasks(), w);
  new MoringCallLogWindow(p.Main()->Form_MoringCallLog(), w);
  new TaskEditWindow(p.Tasks()->EditForm(), w);
  m_popMsg = std::make_unique<PopMsgWindow>(*p.PopMsg());
  TMain_Form &main = *p.Main();
  new MoringCallDialog(main.MoringCall_Form(), main.DeviceEvents(), w);
  new ExtFindWindow(main.Form_ExtFind(), m_board, w);
  connect(m_board, &TBoardView::wakeUpRequested, this,
          [&main](int id) { RunGuarded([&] { main.OpenMoringCall(id); }); });
  BuildGuestDialogs();
  BuildWakeUpAlarms();
  if (auto *tools = w->findChild<QMenu *>(u"N1"_s)) {
    QAction *find = new QAction(u"分机管理..."_s, tools);
    find->setObjectName(u"ExtFind_MenuItem"_s);
    tools->insertAction(tools->actions().value(0), find);
    connect(find, &QAction::triggered, this, [&main] { main.Form_ExtFind().Show(); });
    ApplyControlText(find, TextProperty::Caption, 0, main.ControlText(u"ExtFind_MenuItem"_s));
  }

  connect(w, &TMainWindow::settingsRequested, this, [&p] { p.Sysset()->Show(); });
  connect(p.Main(), &TMain_Form::settingsRequested, this,
          [&p](const QString &host) { p.Sysset()->ShowExchangePage(host); });
  connect(w, &TMainWindow::smsRequested, this, [&p] { p.Gsm()->Show(); });
  connect(w, &TMainWindow::tasksRequested, m_tasks, &TasksWindow::Toggle);
}

// The room dialogs of the extension list, and the status bar's word on a batch.
void ConsoleScreens::BuildGuestDialogs() {
  TMain_Form &main = *m_process.Main();
  TMainWindow *w = m_window.get();
  auto *hint = new HintDialog(main.Hint_Form(), w);
  auto *nodisturb = new NodisturbDialog(main.Form_Nodisturb(), w);
  auto *voiceMail = new VoiceMailDialog(main.Form_VoiceMail_Set(), w);
  auto *memo = new MemoSetDialog(main.Form_MemoSet(), w);
  auto *checkIn = new CheckInDialog(main.Form_CheckIn(), w);
  new RoomHistoryWindow(main.Form_RoomHistory(), w);
  // The board's phone icon: the place is the panel's on the scrolled board.
  connect(&main, &TMain_Form::srvClassDialogRequested, hint, [this, hint, &main](int, int l, int t) {
    const TCallControlDev &table = main.CallControlDev();
    hint->PlaceAt(m_board->viewport()->mapToGlobal(QPoint(l - table.ScrollX, t - table.ScrollY)));
  });
  // The logic took the exchange's bar first; an open dialog shows it at once.
  connect(&main, &TMain_Form::serviceAllowedChanged, this, [=] {
    hint->RefreshKeys();
    nodisturb->RefreshKeys();
    voiceMail->RefreshKeys();
    memo->RefreshKeys();
    checkIn->RefreshKeys();
  });
  auto *progress = new BatchProgress(main.BatchWalk(), main.CallControlDev(), w);
  w->statusBar()->addWidget(progress);
  BindLanguage(main, progress);
}

void ConsoleScreens::BuildFrontDesk() {
  TMain_Form &main = *m_process.Main();
  TMainWindow *w = m_window.get();
  m_shiftReport = std::make_unique<TShiftReport_Form>(main.CallControlDev(),
                                                      main.ExtsView().AdvStringGrid_Exts);
  new ShiftReportWindow(*m_shiftReport, w);
  auto *keysWindow = new FrontDeskKeysWindow(w);

  auto *pages = w->findChild<QTabWidget *>(u"UserMain_TePageControl"_s);
  const auto toPage = [pages](const QString &name) {
    if (QWidget *page = pages ? pages->findChild<QWidget *>(name) : nullptr)
      pages->setCurrentWidget(page);
  };
  // The room keys act on the extension list's current row, as its menu does.
  const auto onCurrentRoom = [&main](void (TMain_Form::*open)(int)) {
    return [&main, open] {
      const int id = main.ExtsView().Ext_CurrentID();
      if (id >= 0)
        RunGuarded([&] { (main.*open)(id); });
    };
  };
  const auto recordsPage = [&main, toPage](void (TFrame_DataPage::*move)()) {
    return [&main, toPage, move] {
      toPage(u"TeTabSheet2"_s);
      RunGuarded([&] { (main.PBXRecords().Frame_DataPage.*move)(); });
    };
  };
  const QHash<FrontDeskKey, QAction *> made = InstallFrontDeskKeys(
      w, {{FrontDeskKey::FindBox,
           [this, toPage] {
             toPage(u"Branchs_TeTabSheet"_s);
             m_extsPage->FocusFind();
           }},
          {FrontDeskKey::WakeUp, onCurrentRoom(&TMain_Form::OpenMoringCall)},
          {FrontDeskKey::NoDisturb, onCurrentRoom(&TMain_Form::OpenNodisturb)},
          {FrontDeskKey::Memo, onCurrentRoom(&TMain_Form::OpenMemoSet)},
          {FrontDeskKey::NextPage, recordsPage(&TFrame_DataPage::Label6Click)},
          {FrontDeskKey::PreviousPage, recordsPage(&TFrame_DataPage::Label5Click)},
          {FrontDeskKey::ShiftReport,
           [this] { RunGuarded([this] { m_shiftReport->ShiftReportClick(); }); }},
          {FrontDeskKey::Refresh,
           [this, &main] {
             RunGuarded([&] { main.RefrshPhones_tefxButtonClick(); });
             m_board->SyncFromTable();
           }},
          {FrontDeskKey::Help, [keysWindow] { keysWindow->open(); }}});
  // The wake-up log is a window of its own: there the page keys page it.
  if (auto *log = w->findChild<QWidget *>(u"TForm_MoringCallLog"_s)) {
    TFrame_DataPage &bar = main.Form_MoringCallLog().Frame_DataPage;
    InstallFrontDeskKeys(log, {{FrontDeskKey::NextPage, [&bar] { RunGuarded([&] { bar.Label6Click(); }); }},
                               {FrontDeskKey::PreviousPage,
                                [&bar] { RunGuarded([&] { bar.Label5Click(); }); }}});
    EscapeCloses(log);
  }

  QAction *report = made.value(FrontDeskKey::ShiftReport);
  QAction *help = made.value(FrontDeskKey::Help);
  help->setText(u"快捷键"_s);
  if (auto *tools = w->findChild<QMenu *>(u"N1"_s)) {
    QAction *quit = w->findChild<QAction *>(u"N5"_s);
    tools->insertAction(quit, report);
    tools->insertAction(quit, help);
    tools->insertSeparator(quit);
  }
  if (auto *bar = w->findChild<QToolBar *>(u"TeToolBar1"_s)) {
    const QList<QAction *> keys = bar->actions();
    const qsizetype log = keys.indexOf(w->findChild<QAction *>(u"tefxButton_MCallRecord"_s));
    bar->insertAction(keys.value(log + 1), report);
  }
}

// Front desk: the failed wake-ups' window, its key on the toolbar and in the
// tools menu, and their count on the status bar while any is open.
void ConsoleScreens::BuildWakeUpAlarms() {
  TForm_WakeUpAlarms &alarms = m_process.Main()->Form_WakeUpAlarms();
  TMainWindow *w = m_window.get();
  new WakeUpAlarmsWindow(alarms, w);
  const auto open = [&alarms] { alarms.Show(); };
  if (auto *bar = w->findChild<QToolBar *>(u"TeToolBar1"_s))
    bar->addAction(u"叫醒告警"_s, this, open)->setObjectName(u"WakeUpAlarms_TeSpeedButton"_s);
  if (auto *tools = w->findChild<QMenu *>(u"N1"_s)) {
    auto *item = new QAction(u"叫醒失败告警..."_s, tools);
    item->setObjectName(u"WakeUpAlarms_MenuItem"_s);
    tools->insertAction(tools->actions().value(1), item);
    connect(item, &QAction::triggered, this, open);
  }
  auto *count = new QPushButton(w);
  count->setObjectName(u"WakeUpAlarms_StatusButton"_s);
  count->setFlat(true);
  count->setStyleSheet(u"QPushButton { color: white; background: #c0392b; border: none; padding: 1px 8px; }"_s);
  connect(count, &QPushButton::clicked, this, open);
  w->statusBar()->addPermanentWidget(count);
  const auto refresh = [count, &alarms] {
    count->setText(alarms.StatusText());
    count->setVisible(alarms.Count() > 0);
  };
  connect(&alarms, &TForm_WakeUpAlarms::alarmsChanged, count, refresh);
  refresh();
}

void ConsoleScreens::WireTray() {
  QSystemTrayIcon *tray = m_shell.Tray();
  if (!tray)
    return;
  // The tray's menu; its single click tells the tasks due, its double click
  // brings the window back.
  auto *menu = new QMenu(m_window.get());
  menu->setObjectName(u"TrayIcon_PopupMenu"_s);
  menu->addAction(u"显示主界面"_s, this, &ConsoleScreens::RestoreWindow)->setObjectName(u"N7"_s);
  menu->addAction(u"退出"_s, m_window.get(), &QWidget::close)->setObjectName(u"N9"_s);
  tray->setContextMenu(menu);
  m_window->MinimiseToTray = true;
  connect(tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason r) {
    if (r == QSystemTrayIcon::Trigger)
      RunGuarded([this] { m_process.Tasks()->TrayIconClick(); });
    else if (r == QSystemTrayIcon::DoubleClick)
      RestoreWindow();
  });
}

void ConsoleScreens::RestoreWindow() {
  m_window->showNormal();
  m_window->raise();
  m_window->activateWindow();
}

void ConsoleScreens::Retranslate() {
  m_process.Main()->Pages().RetranslateCaptions();
  m_legend->Retranslate();
  m_board->viewport()->update();
}

void ConsoleScreens::Show() {
  m_window->FirstShow();
  m_window->show();
  m_process.FirstShow(); // loads the language of the settings
  m_extsPage->SyncFromLogic();
  Retranslate();
}

bool ConsoleScreens::WritePictures(const QString &file) {
  bool ok = true;
  const auto save = [&ok](QWidget *widget, const QString &path) {
    if (!widget->grab().save(path)) {
      std::fprintf(stderr, "trunkdesk: could not write %s\n", qUtf8Printable(path));
      ok = false;
    }
  };
  save(m_window.get(), file);
  const QString stem = file.endsWith(u".png"_s, Qt::CaseInsensitive) ? file.chopped(4) : file;
  if (auto *pages = m_window->findChild<QTabWidget *>(u"UserMain_TePageControl"_s)) {
    const int current = pages->currentIndex();
    for (int i = 0; i < pages->count(); ++i) {
      pages->setCurrentIndex(i);
      save(m_window.get(), stem + u'-' + pages->widget(i)->objectName() + u".png"_s);
    }
    pages->setCurrentIndex(current);
    // The extension list stands behind the board on the same page.
    if (auto *exts = m_window->findChild<QTabWidget *>(u"TeSPageControl_ExtView"_s)) {
      const int board = pages->indexOf(m_window->findChild<QWidget *>(u"Branchs_TeTabSheet"_s));
      pages->setCurrentIndex(board);
      const int shown = exts->currentIndex();
      for (int i = 1; i < exts->count(); ++i) {
        exts->setCurrentIndex(i);
        save(m_window.get(), stem + u'-' + exts->widget(i)->objectName() + u".png"_s);
      }
      exts->setCurrentIndex(shown);
      pages->setCurrentIndex(current);
    }
  }
  // The room dialogs show the list's current room, as its double click opens them.
  TMain_Form &main = *m_process.Main();
  if (const int room = main.ExtsView().Ext_CurrentID(); room >= 0) {
    RunGuarded([&] {
      main.OpenSrvClass(room, false);
      main.OpenNodisturb(room);
      main.OpenVoiceMail(room);
      main.OpenMemoSet(room);
    });
  }
  for (QWidget *window : m_window->findChildren<QWidget *>()) {
    if (!window->isWindow() || qobject_cast<QMenu *>(window) || window->objectName().isEmpty())
      continue;
    // A window is laid out only once shown; it goes back to how it was.
    const bool wasVisible = window->isVisible();
    window->show();
    QCoreApplication::processEvents();
    save(window, stem + u'-' + window->objectName() + u".png"_s);
    window->setVisible(wasVisible);
  }
  return ok;
}
