#pragma once

#include <QWidget>

class QComboBox;
class QPushButton;
class QTabWidget;
class TBoardView;
class TExtsGridView;
class TExtsView;

// The extensions page: the find box over the page control TeSPageControl_ExtView,
// whose board tab holds the panel board and whose list tab holds the
// extension grid. Which tab is up decides whether a find looks for a panel or
// a row, so the logic always knows the active tab.
class TExtsPage : public QWidget {
  Q_OBJECT

public:
  TExtsPage(TExtsView &exts, TExtsGridView *grid, QWidget *board, TBoardView *boardView,
            QWidget *parent = nullptr);

  // Shows what the logic holds: the active tab, the find history, the filter key.
  void SyncFromLogic();
  // The find key (Ctrl+F): the cursor in the find box, its text selected.
  void FocusFind();

private:
  void Find();

  TExtsView &m_exts;
  TBoardView *m_boardView;
  QTabWidget *m_tabs;
  QComboBox *m_find;
  QPushButton *m_cancelFilter;
};
