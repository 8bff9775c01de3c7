#pragma once

#include <QElapsedTimer>
#include <QObject>

#include <memory>

class ConsoleProcess;
class LoginDialog;
class PopMsgWindow;
class QWidget;
class TasksWindow;
class TBoardView;
class TExtsPage;
class TLegendBar;
class TMainWindow;
class TShiftReport_Form;
class WidgetShell;

// The screens of a started console: the main window with its board page, the
// dialogs and windows over their logics, the language binding of each, and the
// tray. Built once the process has started; `Show` makes the first show.
class ConsoleScreens : public QObject {
  Q_OBJECT

public:
  ConsoleScreens(ConsoleProcess &process, WidgetShell &shell, QObject *parent = nullptr);
  ~ConsoleScreens() override;

  // Shows the main window and makes its first show: the language of the
  // settings, the worker, and the login dialog when the link was never up.
  void Show();

  // Pictures for the screenshots: `file` shows the main window as it stands;
  // beside it, "<file>-<page>.png" for each working page and each of the
  // other windows. False when one could not be written (named on stderr).
  bool WritePictures(const QString &file);

  TMainWindow &Window() const { return *m_window; }
  LoginDialog &Login() const { return *m_login; }
  TasksWindow &Tasks() const { return *m_tasks; }

private:
  QWidget *BuildBoardPage();
  void BuildWindows();
  void BuildGuestDialogs();
  // The shift report, the front desk's keys and their help window.
  void BuildFrontDesk();
  void BuildWakeUpAlarms();
  void WireTray();
  void RestoreWindow();
  // After a language switch: what measures or paints its own texts.
  void Retranslate();

  ConsoleProcess &m_process;
  WidgetShell &m_shell;
  // Before the window, whose report window reads it until it goes.
  std::unique_ptr<TShiftReport_Form> m_shiftReport;
  std::unique_ptr<TMainWindow> m_window;
  // No parent: the pop-up stays up while the main window is minimised.
  std::unique_ptr<PopMsgWindow> m_popMsg;
  TLegendBar *m_legend = nullptr;
  TBoardView *m_board = nullptr;
  TExtsPage *m_extsPage = nullptr;
  LoginDialog *m_login = nullptr;
  TasksWindow *m_tasks = nullptr;
  QElapsedTimer m_alarmBalloon; // since the last failed wake-up's balloon
};
