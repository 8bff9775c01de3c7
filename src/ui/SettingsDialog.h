#pragma once

#include <QDialog>

class QCheckBox;
class QSpinBox;

class QComboBox;
class QLabel;
class QPushButton;
class QLineEdit;
class QListWidget;
class QTabWidget;
class Tsysset_Form;

// The settings window over Tsysset_Form: six pages, each with its own apply
// key. Every show fills the exchange page again from the settings, since the
// login dialog may have changed the address meanwhile.
class SettingsDialog : public QDialog {
  Q_OBJECT

public:
  explicit SettingsDialog(Tsysset_Form &logic, QWidget *parent = nullptr);

  void Refresh();

public slots:
  void reject() override;

private:
  void StoreEdits();
  template <typename Handler> void Run(Handler handler);
  void OnShown();

  Tsysset_Form &m_logic;
  bool m_refreshing = false;
  QTabWidget *m_pages;
  QLineEdit *m_hostIP;
  QLineEdit *m_hostPort;
  QLineEdit *m_outNo;
  QLineEdit *m_ldNo;
  QLineEdit *m_dbFile;
  // --- page 2: the database server ([DB]) ---
  QComboBox *m_dbKind;
  QWidget *m_dbFileRow;
  QWidget *m_dbServerFields;
  QLineEdit *m_dbHost;
  QSpinBox *m_dbPort;
  QLineEdit *m_dbDatabase;
  QLineEdit *m_dbUser;
  QLineEdit *m_dbPassword;
  QLineEdit *m_dbService;
  QPushButton *m_dbTest;
  QLabel *m_dbTestResult;
  void ShowDbTest();
  // --- end of the [DB] part ---
  QComboBox *m_ringFlag;
  QListWidget *m_extsPanel;
  QLineEdit *m_linkURL;
  QComboBox *m_vacantClass;
  QComboBox *m_occupiedClass;
  // --- page "前台": the wake-up follow-up's retries ---
  QCheckBox *m_wakeFollowUp;
  QCheckBox *m_wakeRetry;
  QSpinBox *m_wakeRetryMinutes;
  QSpinBox *m_wakeRetryMax;
  // --- end of the wake-up follow-up block ---
  QCheckBox *m_apiEnabled;
  QSpinBox *m_apiPort;
  QLineEdit *m_apiListen;
  QLineEdit *m_apiToken;
};
