#include "ui/ExtsPage.h"

#include "guest/ExtsView.h"
#include "support/Shell.h"
#include "ui/BoardView.h"
#include "ui/ExtsGridView.h"
#include "ui/Named.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

TExtsPage::TExtsPage(TExtsView &exts, TExtsGridView *grid, QWidget *board, TBoardView *boardView,
                     QWidget *parent)
    : QWidget(parent), m_exts(exts), m_boardView(boardView) {
  setObjectName(u"ExtsPage"_s);
  auto *layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);

  m_tabs = Named<QTabWidget>(u"TeSPageControl_ExtView"_s, this);
  board->setObjectName(u"TeSTabsheet_Panel"_s);
  m_tabs->addTab(board, u"分机面板"_s);
  auto *list = new QWidget(m_tabs);
  list->setObjectName(u"TeSTabsheet_Listview"_s);
  auto *listLayout = new QVBoxLayout(list);
  listLayout->setContentsMargins(4, 4, 4, 4);
  auto *listKeys = new QHBoxLayout;
  m_cancelFilter = NamedButton(u"tefxButton_Ext_CancelFilter"_s, u"取消过滤"_s, list);
  listKeys->addWidget(m_cancelFilter);
  listKeys->addStretch(1);
  listLayout->addLayout(listKeys);
  grid->setParent(list);
  listLayout->addWidget(grid, 1);
  m_tabs->addTab(list, u"分机列表"_s);
  layout->addWidget(m_tabs, 1);

  // The find box serves both tabs, so it stands beside them; its history is
  // the logic's, newest first.
  auto *findBox = new QWidget(m_tabs);
  auto *findRow = new QHBoxLayout(findBox);
  findRow->setContentsMargins(0, 0, 0, 2);
  m_find = Named<QComboBox>(u"TeSComboBox_Ext"_s, findBox);
  m_find->setEditable(true);
  m_find->setInsertPolicy(QComboBox::NoInsert);
  m_find->setMinimumWidth(160);
  m_find->lineEdit()->setClearButtonEnabled(true);
  auto *findKey = NamedButton(u"tefxButton_ExtFind"_s, u"查找"_s, findBox);
  findRow->addWidget(m_find);
  findRow->addWidget(findKey);
  m_tabs->setCornerWidget(findBox, Qt::TopRightCorner);
  connect(m_find->lineEdit(), &QLineEdit::returnPressed, findKey, &QPushButton::click);
  connect(findKey, &QPushButton::clicked, this, &TExtsPage::Find);

  connect(m_tabs, &QTabWidget::currentChanged, this, [this](int index) {
    if (index >= 0)
      m_exts.TeSPageControl_ExtView_ActivePage = index;
  });
  connect(m_cancelFilter, &QPushButton::clicked, this,
          [this] { RunGuarded([this] { m_exts.tefxButton_Ext_CancelFilterClick(); }); });
  connect(&m_exts.AdvStringGrid_Exts, &TExtGridModel::filterChanged, this,
          [this] { m_cancelFilter->setEnabled(m_exts.AdvStringGrid_Exts.Filtered()); });
  SyncFromLogic();
}

void TExtsPage::SyncFromLogic() {
  m_tabs->setCurrentIndex(m_exts.TeSPageControl_ExtView_ActivePage);
  const QString typed = m_find->currentText();
  m_find->clear();
  m_find->addItems(m_exts.TeSComboBox_Ext_Items);
  m_find->setEditText(typed);
  m_cancelFilter->setEnabled(m_exts.AdvStringGrid_Exts.Filtered());
}

void TExtsPage::FocusFind() {
  m_find->setFocus(Qt::ShortcutFocusReason);
  m_find->lineEdit()->selectAll();
}

void TExtsPage::Find() {
  m_exts.TeSComboBox_Ext_Text = m_find->currentText();
  RunGuarded([this] { m_exts.tefxButton_ExtFindClick(); });
  // A panel found on the board is scrolled into view by the board's own state.
  if (m_boardView)
    m_boardView->SyncFromTable();
  SyncFromLogic();
}
