#include "ui/ExtsGridView.h"

#include "console/Main_Form.h"
#include "guest/ExtGridModel.h"
#include "guest/ExtsView.h"
#include "support/IniFile.h"
#include "support/Settings.h"
#include "support/Shell.h"
#include "ui/StatusColours.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeySequence>
#include <QMenu>
#include <QStyledItemDelegate>

using namespace Qt::StringLiterals;

namespace {

// The wake-up cell's colour comes from the model as the console's colour word.
class ExtCellDelegate : public QStyledItemDelegate {
public:
  using QStyledItemDelegate::QStyledItemDelegate;

protected:
  void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    // Column 0 is the grid's fixed row header.
    if (index.column() == TExtGridModel::ColHeader) {
      option->backgroundBrush = option->palette.button();
      return;
    }
    const QVariant colour = index.data(TExtGridModel::ColourRole);
    if (colour.isValid() && colour.toUInt() != TExtGridModel::kWhite) {
      option->backgroundBrush = ToQColor(TColor(colour.toUInt()));
      // A coloured cell keeps dark text, whatever the desktop's theme.
      option->palette.setColor(QPalette::Text, Qt::black);
    }
  }
};

} // namespace

TExtsGridView::TExtsGridView(TMain_Form &main, QWidget *parent)
    : QTableView(parent), m_main(main), m_exts(main.ExtsView()), m_widths(DesignWidths()) {
  setObjectName(u"AdvStringGrid_Exts"_s);
  TExtGridModel &grid = m_exts.AdvStringGrid_Exts;
  setModel(&grid);
  setItemDelegate(new ExtCellDelegate(this));
  setSelectionBehavior(SelectRows);
  setSelectionMode(SingleSelection);
  setEditTriggers(EditKeyPressed | SelectedClicked | AnyKeyPressed);
  setWordWrap(false);
  setAlternatingRowColors(true);
  setCornerButtonEnabled(false);
  // One height for every row: the view then never measures rows one by one.
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 8);
  QHeaderView *titles = horizontalHeader();
  titles->setSectionsClickable(true);
  titles->setHighlightSections(false);
  // The memo, the last column shown, takes what the page has left.
  titles->setStretchLastSection(true);
  titles->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  titles->setMinimumSectionSize(16);
  for (int c = 0; c < m_widths.size(); ++c)
    setColumnWidth(c, m_widths.at(c));
  for (int c = 0; c < TExtGridModel::kColumnCount; ++c)
    setColumnHidden(c, grid.ColumnHidden(c));
  connect(&grid, &TExtGridModel::columnHiddenChanged, this,
          [this](int column, bool hidden) { setColumnHidden(column, hidden); });
  connect(titles, &QHeaderView::sectionResized, this, [this](int column, int, int width) {
    if (column < m_widths.size() && width > 0)
      m_widths[column] = width;
  });
  connect(titles, &QHeaderView::sectionClicked, this, &TExtsGridView::HeaderClicked);

  // The current row belongs to the logic: the batch walk moves it, and the
  // operator's cursor moves it back.
  connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this,
          [this](const QModelIndex &now) {
            if (!m_following && now.isValid())
              m_exts.AdvStringGrid_Exts.SetCurrentRow(now.row());
          });
  connect(&grid, &TExtGridModel::currentRowChanged, this, &TExtsGridView::FollowCurrentRow);
  const auto resync = [this] {
    FollowCurrentRow(m_exts.AdvStringGrid_Exts.CurrentRow());
    ShowSortIndicator();
  };
  connect(&grid, &QAbstractItemModel::layoutChanged, this, resync);
  connect(&grid, &QAbstractItemModel::modelReset, this, resync);
  connect(this, &QTableView::doubleClicked, this, [this](const QModelIndex &index) {
    RunGuarded([&] { m_exts.AdvStringGrid_ExtsDblClickCell(index.row(), index.column()); });
  });

  m_menu = new QMenu(this);
  m_menu->setObjectName(u"PopupMenu_Ext"_s);
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    std::function<void()> Click;
    QKeySequence Keys = {};
  } kItems[] = {
      {u"N27", u"全选", [this] { m_exts.N27Click(); }},
      {u"N28", u"反选", [this] { m_exts.N28Click(); }},
      {u"N29", u"全不选", [this] { m_exts.N29Click(); }},
      {nullptr, nullptr, {}},
      {u"N21", u"呼叫分机", [this] { m_main.N21Click(); }},
      {u"N22", u"转移", [this] { m_main.N22Click(); }},
      {nullptr, nullptr, {}},
      {u"N25", u"叫醒记录", [this] { m_exts.N25Click(); }},
      {nullptr, nullptr, {}},
      // The front desk's own items.
      {u"N_CheckIn", u"入住...", [this] { OpenCheckInOnCurrent(); },
       QKeySequence(Qt::CTRL | Qt::Key_I)},
      {u"N_CheckOut", u"退房...", [this] { m_main.CheckOut(false); },
       QKeySequence(Qt::CTRL | Qt::Key_O)},
      {u"N_CheckOutMulti", u"选中房间退房...", [this] { m_main.CheckOut(true); }},
      {u"N_RoomHistory", u"入住退房记录", [this] { OpenRoomHistoryOnCurrent(); }},
  };
  for (const auto &item : kItems) {
    if (!item.Name) {
      m_menu->addSeparator();
      continue;
    }
    QAction *a = m_menu->addAction(QString::fromUtf16(item.Text));
    a->setObjectName(QString::fromUtf16(item.Name));
    connect(a, &QAction::triggered, this, [click = item.Click] { RunGuarded(click); });
    if (!item.Keys.isEmpty()) {
      // The keys work wherever the list has the focus, menu open or not.
      a->setShortcut(item.Keys);
      a->setShortcutContext(Qt::WidgetWithChildrenShortcut);
      addAction(a);
    }
  }

  TSettingsBindings &b = SettingsBindings();
  b.ExtsGridColumnWidths = [this] { return ColumnWidths(); };
  b.SetExtsGridColumnWidth = [this](int column, int width) { SetColumnWidthKept(column, width); };
  // The settings were read before any window stood: the kept widths come from
  // the file as it was read then.
  for (int c = 0; c < m_widths.size(); ++c)
    SetColumnWidthKept(c, SettingsIni().ReadInteger(u"AdvStringGrid_Exts"_s,
                                                    u"ColWidths%1"_s.arg(c), m_widths.at(c)));
}

void TExtsGridView::OpenCheckInOnCurrent() {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    m_main.OpenCheckIn(id);
}

void TExtsGridView::OpenRoomHistoryOnCurrent() {
  const int slot = m_exts.AdvStringGrid_Exts.CurrentSlot();
  m_main.OpenRoomHistory(slot < 0 ? QString()
                                  : m_exts.AdvStringGrid_Exts.Cell(slot, TExtGridModel::ColTelNos));
}

TExtsGridView::~TExtsGridView() {
  TSettingsBindings &b = SettingsBindings();
  b.ExtsGridColumnWidths = nullptr;
  b.SetExtsGridColumnWidth = nullptr;
}

QList<int> TExtsGridView::DesignWidths() {
  // The grid's classic widths, except where a whole text of today's fonts
  // would not fit: the wake-up time with its daily bracket, and the
  // do-not-disturb mode with its timed mark.
  return {20, 25, 39, 76, 102, 127, 190, 64, 110, 64, 64, 64};
}

QList<int> TExtsGridView::ColumnWidths() const {
  return m_widths;
}

void TExtsGridView::SetColumnWidthKept(int column, int width) {
  // A width from a hand-edited file that would make a column vanish or swamp
  // the page is left at what it was.
  if (column < 0 || column >= m_widths.size() || width < 8 || width > 2000)
    return;
  m_widths[column] = width;
  setColumnWidth(column, width);
}

void TExtsGridView::contextMenuEvent(QContextMenuEvent *event) {
  // The menu acts on the row under the pointer, as the grid's cursor goes there first.
  const QModelIndex at = indexAt(event->pos());
  if (at.isValid())
    setCurrentIndex(at);
  m_menu->popup(event->globalPos());
}

void TExtsGridView::HeaderClicked(int column) {
  TExtGridModel &grid = m_exts.AdvStringGrid_Exts;
  const Qt::SortOrder order = grid.SortColumn() == column && grid.SortOrder() == Qt::AscendingOrder
                                  ? Qt::DescendingOrder
                                  : Qt::AscendingOrder;
  RunGuarded([&] { grid.sort(column, order); });
  ShowSortIndicator();
}

void TExtsGridView::ShowSortIndicator() {
  const TExtGridModel &grid = m_exts.AdvStringGrid_Exts;
  horizontalHeader()->setSortIndicatorShown(grid.SortColumn() >= 0);
  if (grid.SortColumn() >= 0)
    horizontalHeader()->setSortIndicator(grid.SortColumn(), grid.SortOrder());
}

void TExtsGridView::FollowCurrentRow(int shownRow) {
  m_following = true;
  const QModelIndex now = model()->index(shownRow, qMax(currentIndex().column(), 2));
  if (now.isValid()) {
    setCurrentIndex(now);
    scrollTo(now);
  } else {
    clearSelection();
  }
  m_following = false;
}
