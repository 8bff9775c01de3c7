#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QPushButton;
class THint_Form;

// The service class dialog over THint_Form. From the grid it stands in the
// middle of the screen and leaves the console usable; from the board's phone
// icon it is modal to the main window and stands by the panel. Neither runs a
// nested event loop: the exchange's answer must come in while it is up.
class HintDialog : public QDialog {
  Q_OBJECT

public:
  explicit HintDialog(THint_Form &logic, QWidget *parent = nullptr);

  void Refresh();
  // Only the apply keys, which the exchange bars and frees while edits stand.
  void RefreshKeys();
  // Where the board wants it: beside the panel, at a point of the screen. The
  // window is kept on that screen.
  void PlaceAt(QPoint global);

public slots:
  void reject() override;

private:
  void OnShown();

  THint_Form &m_logic;
  QLabel *m_telNos;
  QComboBox *m_class;
  QPushButton *m_apply;
  QPushButton *m_multi;
};
