#pragma once

#include <QWidget>

class QComboBox;
class TBoardView;
class TForm_ExtFind;

// Form_ExtFind: a small window that finds an extension's panel on the board,
// whichever tab of the extensions page is up.
class ExtFindWindow : public QWidget {
  Q_OBJECT

public:
  ExtFindWindow(TForm_ExtFind &logic, TBoardView *board, QWidget *parent = nullptr);

private:
  TForm_ExtFind &m_logic;
  TBoardView *m_board;
  QComboBox *m_number;
};
