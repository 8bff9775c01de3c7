#include "ui/DirectoryView.h"

#include "directory/DirectoryPages.h"
#include "support/Settings.h"
#include "support/Shell.h"
#include "ui/DirectoryBinding.h"
#include "ui/DirectoryCards.h"
#include "ui/Named.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;

namespace {
using P = TDirectoryPages;

// The three quick searches: a box and its key. Name and extension search again
// at every change of their box; the group only on its key.
QHBoxLayout *QuickSearches(TDirectoryPages &pages, QWidget *page) {
  const struct {
    const char16_t *Box;
    PagesText Value;
    PagesList Items;
    int HintKey; // what the box is for, shown while it is empty
    const char16_t *Key;
    const char16_t *KeyText;
    PagesHandler Search;
    PagesHandler Change;
  } kSearches[] = {{u"Find_Name_TeSComboBox", &P::Find_Name_TeSComboBox, nullptr, 353,
                    u"FindName_TeButton", u"查 找", &P::FindName_TeButtonClick,
                    &P::Find_Name_TeSComboBoxChange},
                   {u"Find_BranchTel_TeSComboBox", &P::Find_BranchTel_TeSComboBox, nullptr, 354,
                    u"find_BranchTel_TeButton", u"按分机查找", &P::find_BranchTel_TeButtonClick,
                    &P::Find_BranchTel_TeSComboBoxChange},
                   {u"Find_GrpName_TeSComboBox", &P::Find_GrpName_TeSComboBox,
                    &P::Find_GrpName_TeSComboBox_Items, 61, u"findGrpname_TeButton", u"按组查找",
                    &P::findGrpname_TeButtonClick, nullptr}};
  auto *row = new QHBoxLayout;
  for (const auto &s : kSearches) {
    auto *box = Named<QComboBox>(Utf16(s.Box), page);
    std::function<void()> changed;
    if (s.Change)
      changed = [&pages, change = s.Change] { (pages.*change)(); };
    BindComboBox(box, pages, s.Value, s.Items, changed);
    box->setMinimumContentsLength(10);
    FollowLanguageText(box, s.HintKey, [box](const QString &text) {
      box->lineEdit()->setPlaceholderText(CaptionOfLabelText(text));
    });
    auto *key = NamedButton(Utf16(s.Key), Utf16(s.KeyText), page);
    OnClick(key, pages, s.Search);
    // Enter in the box searches as the key does.
    QObject::connect(box->lineEdit(), &QLineEdit::returnPressed, key, &QPushButton::click);
    row->addWidget(box, 1);
    row->addWidget(key);
    row->addSpacing(12);
  }
  return row;
}

// The combined search: a tick and a text for each field, "与查询" for all ticked
// fields, "或查询" for any of them.
QFrame *CombinedSearch(TDirectoryPages &pages, QWidget *page) {
  const struct {
    const char16_t *Check;
    bool P::*Checked;
    int CaptionKey;
    const char16_t *Box;
    PagesText Value;
    bool Combo;
  } kBoxes[] = {{u"Find_Name_Check", &P::Find_Name_Check, 353, u"Find_Name_ComboBox",
                 &P::Find_Name_ComboBox, true},
                {u"Find_Phone1_Check", &P::Find_Phone1_Check, 357, u"Find_Phone1_ComboBox",
                 &P::Find_Phone1_ComboBox, true},
                {u"Find_Company_Check", &P::Find_Company_Check, 355, u"Find_Company_ComboBox",
                 &P::Find_Company_ComboBox, true},
                {u"Find_Address_Check", &P::Find_Address_Check, 69, u"Find_Address_ComboBox",
                 &P::Find_Address_ComboBox, true},
                {u"Find_MobilePhone_Check", &P::Find_MobilePhone_Check, 84,
                 u"Find_MobilePhone_ComboBox", &P::Find_MobilePhone_ComboBox, true},
                {u"Find_Fax_Check", &P::Find_Fax_Check, 70, u"Find_Fax_ComboBox",
                 &P::Find_Fax_ComboBox, true},
                {u"Find_Duty_Check", &P::Find_Duty_Check, 356, u"Find_Duty_ComboBox",
                 &P::Find_Duty_ComboBox, true},
                {u"Find_Email_Check", &P::Find_Email_Check, 268, u"Find_Email_LMDEdit",
                 &P::Find_Email_LMDEdit, false},
                {u"Find_IDCard_Check", &P::Find_IDCard_Check, 73, u"Find_IDCard_TeSEdit",
                 &P::Find_IDCard_TeSEdit, false}};
  auto *frame = Named<QFrame>(u"Find_Combined_Frame"_s, page);
  frame->setFrameShape(QFrame::StyledPanel);
  auto *grid = new QGridLayout(frame);
  grid->setHorizontalSpacing(8);
  constexpr int kPerLine = 3;
  int i = 0;
  for (const auto &b : kBoxes) {
    auto *check = Named<QCheckBox>(Utf16(b.Check), frame);
    BindCheckBox(check, pages, b.Checked);
    FollowLanguageText(check, b.CaptionKey,
                       [check](const QString &text) { check->setText(CaptionOfLabelText(text)); });
    QWidget *box = nullptr;
    if (b.Combo) {
      auto *combo = Named<QComboBox>(Utf16(b.Box), frame);
      BindComboBox(combo, pages, b.Value, nullptr);
      combo->setMinimumContentsLength(8);
      box = combo;
    } else {
      QLineEdit *edit = NamedEdit(Utf16(b.Box), frame);
      BindLineEdit(edit, pages, b.Value);
      box = edit;
    }
    const int line = i / kPerLine;
    const int column = (i % kPerLine) * 2;
    grid->addWidget(check, line, column);
    grid->addWidget(box, line, column + 1);
    grid->setColumnStretch(column + 1, 1);
    ++i;
  }
  auto *keys = new QVBoxLayout;
  QPushButton *all = NamedButton(u"LMDButton28"_s, u"与查询"_s, frame);
  OnClick(all, pages, &P::LMDButton28Click);
  QPushButton *any = NamedButton(u"LMDButton38"_s, u"或查询"_s, frame);
  OnClick(any, pages, &P::LMDButton38Click);
  keys->addWidget(all);
  keys->addWidget(any);
  keys->addStretch(1);
  grid->addLayout(keys, 0, kPerLine * 2, 3, 1);
  return frame;
}

// The result grid. The query's current row is the contact the keys and menus
// act on, so the view's current row and the query's follow each other.
QTableView *ResultGrid(TDirectoryPages &pages, QWidget *page) {
  TContactGridModel &model = pages.MainInfo_DBAdvStringGrid;
  auto *grid = Named<QTableView>(u"MainInfo_DBAdvStringGrid"_s, page);
  grid->setModel(&model);
  grid->setSelectionBehavior(QAbstractItemView::SelectRows);
  grid->setSelectionMode(QAbstractItemView::SingleSelection);
  grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grid->setAlternatingRowColors(true);
  grid->setSortingEnabled(false); // a title click sorts in the store, see below
  grid->verticalHeader()->hide();
  QHeaderView *titles = grid->horizontalHeader();
  titles->setSectionsClickable(true);
  titles->setStretchLastSection(true);
  titles->setHighlightSections(false);

  // The settings keep six widths; the first was the row-marker column this grid
  // doesn't draw, the next five are name to telephone. The e-mail column takes
  // what is left.
  std::array<int, 6> &widths = SysConfig().ColWidths;
  for (int c = 0; c + 1 < int(widths.size()); ++c)
    if (widths[size_t(c) + 1] > 0)
      grid->setColumnWidth(c, widths[size_t(c) + 1]);
  QObject::connect(titles, &QHeaderView::sectionResized, grid, [](int c, int, int size) {
    if (c >= 0 && c + 1 < int(SysConfig().ColWidths.size()))
      SysConfig().ColWidths[size_t(c) + 1] = size;
  });

  // The grid's titles are the model's own, with the sort mark in front; a
  // language switch puts the new plain titles behind the marks they have.
  auto plain = std::make_shared<std::array<QString, TContactGridModel::kColumnCount>>();
  for (int c = 0; c < TContactGridModel::kColumnCount; ++c)
    (*plain)[size_t(c)] = TContactGridModel::PlainTitle(c);
  FollowLanguageText(grid, 353, [&model, plain](const QString &) {
    for (int c = 0; c < TContactGridModel::kColumnCount; ++c) {
      const QString shown = model.Titles[size_t(c)];
      const QString before = (*plain)[size_t(c)];
      (*plain)[size_t(c)] = TContactGridModel::PlainTitle(c);
      if (shown.endsWith(before))
        model.SetTitle(c, shown.left(shown.size() - before.size()) + (*plain)[size_t(c)]);
    }
  });

  QObject::connect(titles, &QHeaderView::sectionClicked, grid, [&pages](int column) {
    RunGuarded([&] { pages.MainInfo_DBAdvStringGridCanSort(column); });
  });
  QObject::connect(grid, &QTableView::doubleClicked, grid, [&pages](const QModelIndex &index) {
    RunGuarded([&] { pages.MainInfo_DBAdvStringGridDblClick(index.row()); });
  });
  QObject::connect(grid->selectionModel(), &QItemSelectionModel::currentRowChanged, grid,
                   [&model](const QModelIndex &current) {
                     if (current.isValid())
                       model.SetCurrentRow(current.row());
                   });
  const auto follow = [grid, &model](int row) {
    if (row < 0 || row >= model.rowCount())
      return;
    if (grid->currentIndex().row() != row)
      grid->setCurrentIndex(model.index(row, std::max(0, grid->currentIndex().column())));
    grid->scrollTo(model.index(row, 0));
  };
  QObject::connect(&model, &TContactGridModel::currentRowChanged, grid, follow);
  follow(model.CurrentRow());

  // The grid's menu: hand the name to a task, delete the contact.
  auto *menu = Named<QMenu>(u"MaininfoGrid_PopupMenu"_s, grid);
  QAction *toTask =
      AddMenuEntry(menu, u"N12"_s, u"设为事务关联对象"_s, [&pages] { pages.N12Click(); });
  menu->addSeparator();
  AddMenuEntry(menu, u"N3"_s, u"删除"_s, [&pages] { pages.N3Click(); });
  grid->setContextMenuPolicy(Qt::CustomContextMenu);
  QObject::connect(grid, &QWidget::customContextMenuRequested, menu,
                   [grid, menu, toTask, &pages, &model](const QPoint &at) {
                     // The menu acts on the row it was opened on.
                     const QModelIndex index = grid->indexAt(at);
                     if (index.isValid())
                       model.SetCurrentRow(index.row());
                     toTask->setEnabled(pages.N12_Enabled());
                     menu->popup(grid->viewport()->mapToGlobal(at));
                   });
  return grid;
}

// Under the grid: walk its rows, open the current contact on the card, delete it.
QHBoxLayout *GridKeys(TDirectoryPages &pages, QWidget *page) {
  const struct {
    const char16_t *Name;
    const char16_t *Text;
    PagesHandler Run;
  } kWalk[] = {{u"TeSpeedButton2", u"首 条", &P::TeSpeedButton2Click},
               {u"TeSpeedButton3", u"上一条", &P::TeSpeedButton3Click},
               {u"TeSpeedButton4", u"下一条", &P::TeSpeedButton4Click},
               {u"TeSpeedButton5", u"末 条", &P::TeSpeedButton5Click}};
  auto *row = new QHBoxLayout;
  for (const auto &k : kWalk) {
    QPushButton *key = NamedButton(Utf16(k.Name), Utf16(k.Text), page);
    OnClick(key, pages, k.Run);
    row->addWidget(key);
  }
  row->addStretch(1);
  // "编 辑" opens the current row as a double click on it does.
  QPushButton *edit = NamedButton(u"TeSpeedButton12"_s, u"编 辑"_s, page);
  QObject::connect(edit, &QPushButton::clicked, edit, [&pages] {
    RunGuarded([&] {
      pages.MainInfo_DBAdvStringGridDblClick(pages.MainInfo_DBAdvStringGrid.CurrentRow());
    });
  });
  row->addWidget(edit);
  QPushButton *remove = NamedButton(u"TeSpeedButton6"_s, u"删 除"_s, page);
  OnClick(remove, pages, &P::TeSpeedButton6Click);
  row->addWidget(remove);
  return row;
}

QWidget *BuildSearchPage(TDirectoryPages &pages, QWidget *parent) {
  auto *page = Named<QWidget>(u"Find_TeTabSheet"_s, parent);
  page->setWindowTitle(u"查询"_s);
  auto *layout = new QVBoxLayout(page);
  layout->addLayout(QuickSearches(pages, page));
  layout->addWidget(CombinedSearch(pages, page));
  layout->addWidget(ResultGrid(pages, page), 1);
  layout->addLayout(GridKeys(pages, page));
  return page;
}
} // namespace

QList<QWidget *> BuildDirectoryPages(TDirectoryPages &pages, QWidget *parent) {
  return {BuildCallCard(pages, parent), BuildContactCard(pages, parent),
          BuildSearchPage(pages, parent)};
}
