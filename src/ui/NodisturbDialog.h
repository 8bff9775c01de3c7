#pragma once

#include <QDialog>

#include <array>

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTimeEdit;
class TForm_Nodisturb;

// The do-not-disturb dialog over TForm_Nodisturb: the room's mode and its
// three daily windows. Modal over the console, but without a nested event
// loop: the exchange's datagrams go on painting the grid behind it.
class NodisturbDialog : public QDialog {
  Q_OBJECT

public:
  explicit NodisturbDialog(TForm_Nodisturb &logic, QWidget *parent = nullptr);

  // The controls show the logic again (opened, or the apply keys barred).
  void Refresh();
  // Only the apply keys, which the exchange bars and frees while edits stand.
  void RefreshKeys();

public slots:
  void reject() override;

private:
  struct Window {
    QCheckBox *Checked;
    QTimeEdit *Start;
    QTimeEdit *End;
  };
  void StoreEdits();

  TForm_Nodisturb &m_logic;
  QComboBox *m_mode;
  std::array<Window, 3> m_windows;
  QPushButton *m_apply;
  QPushButton *m_multi;
};
