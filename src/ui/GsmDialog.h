#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QStatusBar;
class TGSM_Form;

// The SMS window over TGSM_Form: destination, reply number, company and text,
// with the words left counted live in the status bar as the operator types.
class GsmDialog : public QDialog {
  Q_OBJECT

public:
  explicit GsmDialog(TGSM_Form &logic, QWidget *parent = nullptr);

  void Refresh();

public slots:
  void reject() override;

private:
  void StoreEdits();
  template <typename Handler> void Run(Handler handler);
  void InputChanged();

  TGSM_Form &m_logic;
  bool m_refreshing = false;
  QLineEdit *m_dest;
  QLineEdit *m_callTelNo;
  QLineEdit *m_company;
  QPlainTextEdit *m_body;
  QLabel *m_status[2];
};
