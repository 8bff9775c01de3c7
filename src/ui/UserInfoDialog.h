#pragma once

#include <QDialog>

class QLabel;
class QPlainTextEdit;
class TUserInfo_Form;

// The logged-in extension's data and its feature codes, as the exchange last
// sent them. Read-only; it opens when the logic shows and closes with it.
class UserInfoDialog : public QDialog {
  Q_OBJECT

public:
  explicit UserInfoDialog(TUserInfo_Form &logic, QWidget *parent = nullptr);

  void Refresh();

public slots:
  void reject() override;

private:
  TUserInfo_Form &m_logic;
  QPlainTextEdit *m_memo1;
  QLabel *m_memo2Title;
  QPlainTextEdit *m_memo2;
};
