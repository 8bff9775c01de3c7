#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

// The page bar under both record views: the count of the last search, the list
// of its pages and the four keys that move in that list. It keeps the table and
// condition of the last search, so paging reads what was searched, not what the
// boxes say now.
class TFrame_DataPage : public QObject {
  Q_OBJECT

public:
  using QObject::QObject;

  // Rows on a page, whatever the hidden page-size list would say.
  static constexpr int kPageSize = 50;
  // Whole pages plus one: 50 rows give two pages, the second empty, and no row
  // gives one. Other consoles reading the same records count this way too.
  static int PageCountFor(int records) { return records / kPageSize + 1; }

  QString TableName;
  QString Condition;
  // The order of the rows on the pages and in an export, newest first; set by
  // the view that owns the bar.
  QString PageOrder = QStringLiteral("id desc");
  int RecordCount = 0;
  QString Label_searchResult = QStringLiteral("共有记录9条");
  QStringList ComboBox_PageIndex_Items;
  int ComboBox_PageIndex_ItemIndex = -1;

  // Opens one page statement in the view's query and shows its rows; set by the
  // view that owns the bar. Clear empties what the view shows.
  std::function<void(const QString &sql)> OpenPage;
  std::function<void()> ClearPage;

  // Counts, fills the page list and opens page 1. A store that fails leaves an
  // empty page with a bar that says so, and the error reaches the operator.
  void Search(const QString &table, const QString &condition);
  // The page list's select handler: opens the page of the selected item.
  void ComboBox_PageIndexChange();
  void SelectPage(int itemIndex); // as if the operator picked that item
  void Label4Click();             // first page
  void Label5Click();             // previous page, none before the first
  void Label6Click();             // next page, none after the last
  void Label7Click();             // last page

  int PageCount() const { return int(ComboBox_PageIndex_Items.size()); }

signals:
  void changed();

private:
  void ShowEmpty();
};

// Doubles every colon of a time text, the form the date literals of the
// conditions carry; the store reads a doubled colon as one.
QString EscapeColons(const QString &text);
