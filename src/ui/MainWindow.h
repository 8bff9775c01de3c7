#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QTimer>

#include <functional>

class QComboBox;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;
class QTabWidget;
class QTableView;
class TMain_Form;

// The main window: what the front desk looks at all shift. It shows the main
// form's logic and forwards every key to it.
class TMainWindow : public QMainWindow {
  Q_OBJECT

public:
  explicit TMainWindow(TMain_Form &main, QWidget *parent = nullptr);

  // The board page's content (the panel board with its legend and buttons).
  void SetBoard(QWidget *board);
  // The first show's part of the window: the company address, the window over
  // the screen's work area.
  void FirstShow();
  // A notification inside the window, for desktops without a tray.
  void ShowNotice(const QString &title, const QString &text, int seconds);
  // Asked when the operator closes the window: true lets it close.
  std::function<bool()> CloseHandler;
  // With a tray to come back from, minimising hides the window into it.
  bool MinimiseToTray = false;

signals:
  void settingsRequested();
  void smsRequested();
  void tasksRequested();
  void languageRequested(int langId);

protected:
  void closeEvent(QCloseEvent *event) override;
  void changeEvent(QEvent *event) override;

private:
  QWidget *BuildPhoneColumn();
  QWidget *BuildCallLists();
  QWidget *BuildCompanyPanel();
  void BuildMenuAndToolbar();
  void RefreshCallControl();
  void RefreshStatus();

  TMain_Form &m_main;
  QStackedWidget *m_front = nullptr; // the phone, or the company's panel
  QLabel *m_display = nullptr;
  QComboBox *m_dialBox = nullptr;
  QWidget *m_msgPanel = nullptr;
  QLabel *m_msgText = nullptr;
  QPushButton *m_ctrlMode = nullptr;
  QPushButton *m_offhook = nullptr;
  QPushButton *m_onhook = nullptr;
  QAction *m_ringTone = nullptr;
  QTabWidget *m_pages = nullptr;
  QWidget *m_boardPage = nullptr;
  QPlainTextEdit *m_log = nullptr;
  QLabel *m_notice = nullptr;
  QTimer m_noticeTimer;
  QLabel *m_statusExt = nullptr;
  QLabel *m_statusSession = nullptr;
  QLabel *m_statusClock = nullptr;
};
