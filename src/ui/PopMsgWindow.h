#pragma once

#include <QWidget>

class QLabel;
class TForm_PopMsg;

// The pop-up of a ringing call: a small frameless window in the lower right
// corner of the screen, above the task bar, on top of every window (a minimised
// console included). It shows without taking the focus from whatever the
// operator is typing in, and stays until closed.
class PopMsgWindow : public QWidget {
  Q_OBJECT

public:
  explicit PopMsgWindow(TForm_PopMsg &logic, QWidget *parent = nullptr);

  void Refresh();
  // Puts the window in the lower right corner of the screen's free area.
  void PlaceInCorner();

protected:
  void closeEvent(QCloseEvent *event) override;

private:
  TForm_PopMsg &m_logic;
  QLabel *m_caption;
  QLabel *m_incoming;
  QLabel *m_time;
};
