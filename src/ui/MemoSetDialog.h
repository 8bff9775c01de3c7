#pragma once

#include <QDialog>

class QPlainTextEdit;
class QPushButton;
class TForm_MemoSet;

// The memo dialog over TForm_MemoSet: the front desk's note on a room, for
// this room, for every checked room, or as the grid's filter. Modal over the
// console without a nested event loop.
class MemoSetDialog : public QDialog {
  Q_OBJECT

public:
  explicit MemoSetDialog(TForm_MemoSet &logic, QWidget *parent = nullptr);

  void Refresh();
  // Only the apply keys, which the exchange bars and frees while edits stand.
  void RefreshKeys();

public slots:
  void reject() override;

private:
  // The box's text to the logic, then one of its handlers.
  void Forward(void (TForm_MemoSet::*click)());

  TForm_MemoSet &m_logic;
  QPlainTextEdit *m_memo;
  QPushButton *m_apply;
  QPushButton *m_multi;
};
