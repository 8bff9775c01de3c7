#include "guest/DataPage.h"

#include "directory/SysDM_Unit.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"

using namespace Qt::StringLiterals;

namespace {
QString ResultText(int records, int pages) {
  QString text = LangFormat(727, {records, pages});
  if (text.isEmpty())
    text = u"共有记录%1条，共%2页"_s.arg(records).arg(pages);
  return text;
}
} // namespace

QString EscapeColons(const QString &text) {
  QString t = text;
  return t.replace(u':', u"::"_s);
}

void TFrame_DataPage::Search(const QString &table, const QString &condition) {
  TableName = table;
  Condition = condition;
  try {
    RecordCount = Sys_DM().GetRecordCount(TableName, Condition);
  } catch (const std::exception &error) {
    ShowEmpty();
    ApplicationHandleException(error);
    return;
  }
  const int pages = PageCountFor(RecordCount);
  Label_searchResult = ResultText(RecordCount, pages);
  ComboBox_PageIndex_Items.clear();
  for (int page = 1; page <= pages; ++page)
    ComboBox_PageIndex_Items << QString::number(page);
  SelectPage(0);
}

void TFrame_DataPage::ComboBox_PageIndexChange() {
  if (ComboBox_PageIndex_ItemIndex < 0 || TableName.isEmpty())
    return;
  const QString sql = TSys_DM::BuildPageSQL(kPageSize, ComboBox_PageIndex_ItemIndex + 1,
                                            TableName, Condition, PageOrder);
  try {
    if (OpenPage)
      OpenPage(sql);
  } catch (const std::exception &error) {
    ShowEmpty();
    ApplicationHandleException(error);
    return;
  }
  emit changed();
}

void TFrame_DataPage::SelectPage(int itemIndex) {
  if (itemIndex < 0 || itemIndex >= PageCount())
    return;
  ComboBox_PageIndex_ItemIndex = itemIndex;
  ComboBox_PageIndexChange();
}

void TFrame_DataPage::Label4Click() {
  SelectPage(0);
}

void TFrame_DataPage::Label5Click() {
  if (ComboBox_PageIndex_ItemIndex > 0)
    SelectPage(ComboBox_PageIndex_ItemIndex - 1);
}

void TFrame_DataPage::Label6Click() {
  if (ComboBox_PageIndex_ItemIndex < PageCount() - 1)
    SelectPage(ComboBox_PageIndex_ItemIndex + 1);
}

void TFrame_DataPage::Label7Click() {
  SelectPage(PageCount() - 1);
}

// What the operator sees after a failed statement: no rows, and a bar that
// counts none, so nothing shown contradicts the bar.
void TFrame_DataPage::ShowEmpty() {
  RecordCount = 0;
  Label_searchResult = ResultText(0, 1);
  ComboBox_PageIndex_Items = QStringList{u"1"_s};
  ComboBox_PageIndex_ItemIndex = 0;
  if (ClearPage)
    ClearPage();
  emit changed();
}
