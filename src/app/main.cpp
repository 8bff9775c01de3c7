#include "app/CommandLine.h"
#include "app/ConsoleProcess.h"
#include "app/DemoExchange.h"
#include "app/TerminationSignals.h"

#include "core/console/Login_Form.h"
#include "core/console/Main_Form.h"
#include "core/console/UserInfo_Form.h"
#include "core/link/SysParam.h"
#include "devices/GSM_Unit.h"
#include "directory/DirectoryPages.h"
#include "directory/PopMsg_Form.h"
#include "directory/Tasks_Unit.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"
#include "support/Sysset_Unit.h"
#include "ui/BoardView.h"
#include "ui/GsmDialog.h"
#include "ui/LanguageBinding.h"
#include "ui/LegendBar.h"
#include "ui/LoginDialog.h"
#include "ui/MainWindow.h"
#include "ui/PopMsgWindow.h"
#include "ui/SettingsDialog.h"
#include "ui/TasksWindow.h"
#include "ui/UserInfoDialog.h"
#include "ui/WidgetShell.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

int main(int argc, char **argv) {
  const TCommandLine cl = ParseCommandLine(argc, argv);
  if (!cl.Error.isEmpty()) {
    std::fprintf(stderr, "trunkdesk: %s\n\n%s", qUtf8Printable(cl.Error),
                 qUtf8Printable(UsageText()));
    return 2;
  }
  if (cl.Help) {
    std::fputs(qUtf8Printable(UsageText()), stdout);
    return 0;
  }
  if (cl.Version) {
    std::printf("%s\n", qUtf8Printable(VersionText()));
    return 0;
  }

  TerminationSignals::Install();
  QApplication app(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trunkdesk"));
  QApplication::setApplicationVersion(QStringLiteral("5.2"));
  // The hint pause the screens apply to their tool tips.
  app.setProperty("hintPause", 10000);

  // Without a screen (offscreen) nobody can answer a dialog: the shell says so on
  // standard error instead.
  const QString platform = QGuiApplication::platformName();
  WidgetShell shell(platform == QLatin1StringView("offscreen") ||
                    platform == QLatin1StringView("minimal"));
  SetShell(&shell);

  ConsoleProcess process;
  TerminationSignals signalsWatch;
  QObject::connect(&signalsWatch, &TerminationSignals::terminationRequested, &process,
                   &ConsoleProcess::SilentClose);
  // The desktop session's end closes like a signal does.
  QObject::connect(&app, &QGuiApplication::commitDataRequest, &process,
                   [&process](QSessionManager &) { process.SilentClose(); });

  DemoExchange demo;
  const bool demoUp = cl.Demo && demo.Start();
  if (cl.Demo && !demoUp)
    std::fprintf(stderr, "trunkdesk: the demo exchange could not start\n");
  const QString home = demoUp ? demo.Home() : cl.Home;
  const quint16 udpPort = demoUp ? demo.EventPort() : cl.UdpPort;
  if (!process.Start(home, cl.Login || demoUp, udpPort)) {
    SetShell(nullptr);
    return 1;
  }

  // The program ends by its own close path, not when a dialog is the last window.
  QApplication::setQuitOnLastWindowClosed(false);
  TMain_Form &main = *process.Main();
  TMainWindow window(main);
  // The board page: the legend, the layout buttons and the find box over the board.
  auto *boardPage = new QWidget(&window);
  auto *boardLayout = new QVBoxLayout(boardPage);
  boardLayout->setContentsMargins(4, 4, 4, 4);
  auto *legend = new TLegendBar(main.CallControlDev(), main.Board(), boardPage);
  auto *board = new TBoardView(main.CallControlDev(), main.Board(), &main, boardPage);
  auto *buttons = new QHBoxLayout;
  const struct {
    const char *Name;
    const char16_t *Text;
    void (TMain_Form::*Click)();
  } kBoardKeys[] = {
      {"RefrshPhones_tefxButton", u"刷新状态", &TMain_Form::RefrshPhones_tefxButtonClick},
      {"LoadPhones_tefxButton", u"载入布局", &TMain_Form::LoadPhones_tefxButtonClick},
      {"savePhones_tefxButton", u"保存布局", &TMain_Form::savePhones_tefxButtonClick}};
  for (const auto &k : kBoardKeys) {
    auto *b = new QPushButton(QString::fromUtf16(k.Text), boardPage);
    b->setObjectName(QLatin1StringView(k.Name));
    const auto click = k.Click;
    QObject::connect(b, &QPushButton::clicked, &main, [&main, board, click] {
      RunGuarded([&] { (main.*click)(); });
      board->SyncFromTable();
    });
    buttons->addWidget(b);
  }
  buttons->addStretch(1);
  auto *find = new QLineEdit(boardPage);
  find->setObjectName(QStringLiteral("FindExt_TeEdit"));
  find->setPlaceholderText(QStringLiteral("查找分机"));
  find->setMaximumWidth(160);
  QObject::connect(find, &QLineEdit::returnPressed, &main, [&main, board, find] {
    main.FindExtension(find->text().trimmed());
    board->SyncFromTable();
  });
  buttons->addWidget(find);
  boardLayout->addWidget(legend);
  boardLayout->addLayout(buttons);
  boardLayout->addWidget(board, 1);
  window.SetBoard(boardPage);
  BindLanguage(main, &window);
  auto *login = new LoginDialog(*process.Login(), &window);
  auto *settings = new SettingsDialog(*process.Sysset(), &window);
  auto *userInfo = new UserInfoDialog(*process.UserInfo(), &window);
  auto *gsm = new GsmDialog(*process.Gsm(), &window);
  PopMsgWindow popMsg(*process.PopMsg()); // no parent: it stays up when the window is minimised
  BindLanguage(*process.Login(), login);
  BindLanguage(*process.Sysset(), settings);
  BindLanguage(*process.UserInfo(), userInfo);
  BindLanguage(*process.Gsm(), gsm);
  QObject::connect(&window, &TMainWindow::settingsRequested, &window,
                   [&process] { process.Sysset()->Show(); });
  QObject::connect(&main, &TMain_Form::settingsRequested, &window,
                   [&process] { process.Sysset()->Show(); });
  QObject::connect(&window, &TMainWindow::smsRequested, &window,
                   [&process] { process.Gsm()->Show(); });
  window.CloseHandler = [&process] { return process.WindowClose(); };
  shell.SetMainWindow(&window);
  shell.InWindowNotice = [&window](const QString &title, const QString &text, int seconds) {
    window.ShowNotice(title, text, seconds);
  };
  // The texts change first; then what measures or paints them follows.
  const auto retranslate = [legend, board] {
    legend->Retranslate();
    board->viewport()->update();
  };
  QObject::connect(&window, &TMainWindow::languageRequested, &window, [retranslate](int id) {
    SelectLanguage(id);
    retranslate();
  });
  // A click on a balloon brings the window back and, while a call rings, its caller.
  QObject::connect(&shell, &WidgetShell::balloonClicked, &window, [&window, &main] {
    window.showNormal();
    window.activateWindow();
    if (SysParam().CallState == 2 && !SysParam().CallerNo.isEmpty())
      main.Pages().ShowIncomingDirect(SysParam().CallerNo);
  });
  if (QSystemTrayIcon *tray = shell.Tray()) {
    // The tray's menu, and its single click: the tasks due today, overdue and later.
    auto *trayMenu = new QMenu(&window);
    trayMenu
        ->addAction(QStringLiteral("显示主界面"), &window,
                    [&window] {
                      window.showNormal();
                      window.activateWindow();
                    })
        ->setObjectName(QStringLiteral("N7"));
    trayMenu->addAction(QStringLiteral("退出"), &window, &QWidget::close)
        ->setObjectName(QStringLiteral("N9"));
    tray->setContextMenu(trayMenu);
    QObject::connect(tray, &QSystemTrayIcon::activated, &window,
                     [&process](QSystemTrayIcon::ActivationReason r) {
                       if (r == QSystemTrayIcon::Trigger)
                         RunGuarded([&process] { process.Tasks()->TrayIconClick(); });
                     });
    QObject::connect(tray, &QSystemTrayIcon::activated, &window,
                     [&window](QSystemTrayIcon::ActivationReason r) {
                       if (r == QSystemTrayIcon::DoubleClick) {
                         window.showNormal();
                         window.activateWindow();
                       }
                     });
  }
  window.show();
  process.FirstShow(); // loads the language of the settings
  retranslate();
  if (!cl.Screenshot.isEmpty()) {
    // The picture, then the silent close: a script waits for the program to end.
    QTimer::singleShot(4000, &window, [&window, &process, file = cl.Screenshot] {
      if (!window.grab().save(file))
        std::fprintf(stderr, "trunkdesk: could not write %s\n", qUtf8Printable(file));
      process.SilentClose();
    });
  }

  const int rc = app.exec();
  SetShell(nullptr);
  return rc;
}
