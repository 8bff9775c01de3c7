#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTabWidget;
class TLogin_Form;

// The login dialog over TLogin_Form: number, password, host and port on three
// pages. It opens when the logic shows (modal to the application, never through
// exec(), so a signal can still end the program) and hides when it closes.
// Leaving it by its own close box is the same as pressing the leave key.
class LoginDialog : public QDialog {
  Q_OBJECT

public:
  explicit LoginDialog(TLogin_Form &logic, QWidget *parent = nullptr);

  // Shows what the logic holds.
  void Refresh();

public slots:
  void reject() override;

private:
  // The operator's edits into the logic, ahead of any handler.
  void StoreEdits();
  template <typename Handler> void Run(Handler handler);
  void OnShown();

  TLogin_Form &m_logic;
  QTabWidget *m_pages;
  QComboBox *m_telNo;
  QLineEdit *m_pwd;
  QCheckBox *m_recPwd;
  QLineEdit *m_hostIP;
  QLineEdit *m_hostPort;
  QLabel *m_info;
  QProgressBar *m_progress;
  QPushButton *m_login;
  QPushButton *m_leave;
};
