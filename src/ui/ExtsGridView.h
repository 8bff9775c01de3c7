#pragma once

#include <QList>
#include <QTableView>

class QMenu;
class TExtsView;
class TMain_Form;

// AdvStringGrid_Exts: the extension list over the logic's grid model. The
// logic owns the order, the filter, the checks and the current row; the view
// shows them and forwards the operator's clicks, edits and menu picks. Rows are
// all one height and drawn by one delegate, so 3072 rooms scroll as smoothly
// as ten.
class TExtsGridView : public QTableView {
  Q_OBJECT

public:
  TExtsGridView(TMain_Form &main, QWidget *parent = nullptr);
  ~TExtsGridView() override;

  // Widths of a fresh install, by column; column 11 is hidden.
  static QList<int> DesignWidths();
  // The widths as sys.ini keeps them: a hidden column keeps the width it had.
  QList<int> ColumnWidths() const;
  void SetColumnWidthKept(int column, int width);

protected:
  void contextMenuEvent(QContextMenuEvent *event) override;

private:
  void HeaderClicked(int column);
  void ShowSortIndicator();
  void FollowCurrentRow(int shownRow);
  void OpenCheckInOnCurrent();
  void OpenRoomHistoryOnCurrent();

  TMain_Form &m_main;
  TExtsView &m_exts;
  QMenu *m_menu = nullptr;
  QList<int> m_widths;
  bool m_following = false;
};
