#include "ui/DirectoryView.h"

#include "directory/DirectoryPages.h"

#include <QHeaderView>
#include <QTableView>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

QList<QWidget *> BuildDirectoryPages(TDirectoryPages &pages, QWidget *parent) {
  auto *search = new QWidget(parent);
  search->setObjectName(u"Find_TeTabSheet"_s);
  search->setWindowTitle(u"查询"_s);
  auto *layout = new QVBoxLayout(search);
  auto *grid = new QTableView(search);
  grid->setObjectName(u"MainInfo_DBAdvStringGrid"_s);
  grid->setModel(&pages.MainInfo_DBAdvStringGrid);
  grid->setSelectionBehavior(QAbstractItemView::SelectRows);
  grid->verticalHeader()->hide();
  grid->horizontalHeader()->setStretchLastSection(true);
  layout->addWidget(grid);
  return {search};
}
