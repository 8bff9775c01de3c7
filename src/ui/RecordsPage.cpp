#include "ui/RecordsPage.h"

#include "console/Main_Form.h"
#include "guest/PBXRecords.h"
#include "support/Shell.h"
#include "ui/DataPageBar.h"
#include "ui/DateTimeBoxes.h"
#include "ui/Named.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QMenu>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The search boxes and the logic's fields they stand for, both ways.
struct Boxes {
  TPBXRecords &Records;
  QCheckBox *TelNos, *Start, *End;
  QLineEdit *Number;
  QDateEdit *StartDate, *EndDate;
  QTimeEdit *StartTime, *EndTime;
  QComboBox *RecType;

  void ToLogic() const {
    TPBXRecords &r = Records;
    r.CheckBox_Telnos = TelNos->isChecked();
    r.Edit_PBXCon_TelNos = Number->text();
    r.CheckBox_Start = Start->isChecked();
    r.DateTimePicker_start_Date = TDateTime::FromDate(StartDate->date());
    r.DateTimePicker_start_Time = TDateTime::FromTime(StartTime->time());
    r.CheckBox_End = End->isChecked();
    r.DateTimePicker_End_Date = TDateTime::FromDate(EndDate->date());
    r.DateTimePicker_End_Time = TDateTime::FromTime(EndTime->time());
    r.TeSComboBox_RecType_ItemIndex = RecType->currentIndex();
  }
  void FromLogic() const {
    const TPBXRecords &r = Records;
    TelNos->setChecked(r.CheckBox_Telnos);
    Number->setText(r.Edit_PBXCon_TelNos);
    Start->setChecked(r.CheckBox_Start);
    StartDate->setDate(r.DateTimePicker_start_Date.Date());
    StartTime->setTime(r.DateTimePicker_start_Time.Time());
    End->setChecked(r.CheckBox_End);
    EndDate->setDate(r.DateTimePicker_End_Date.Date());
    EndTime->setTime(r.DateTimePicker_End_Time.Time());
    RecType->setCurrentIndex(r.TeSComboBox_RecType_ItemIndex);
  }
};

} // namespace

QWidget *BuildRecordsPage(TMain_Form &main, QWidget *parent) {
  TPBXRecords &records = main.PBXRecords();
  auto *page = new QWidget(parent);
  page->setObjectName(u"TeTabSheet2"_s);
  page->setWindowTitle(u"交换机呼叫记录"_s);
  auto *layout = new QVBoxLayout(page);
  layout->setContentsMargins(4, 4, 4, 4);

  auto *boxes = new Boxes{records,
                          Named<QCheckBox>(u"CheckBox_Telnos"_s, u"号码"_s, page),
                          Named<QCheckBox>(u"CheckBox_Start"_s, u"开始"_s, page),
                          Named<QCheckBox>(u"CheckBox_End"_s, u"结束"_s, page),
                          NamedEdit(u"Edit_PBXCon_TelNos"_s, page),
                          DateBox(u"DateTimePicker_start_Date"_s, page),
                          DateBox(u"DateTimePicker_End_Date"_s, page),
                          TimeBox(u"DateTimePicker_start_Time"_s, page),
                          TimeBox(u"DateTimePicker_End_Time"_s, page),
                          Named<QComboBox>(u"TeSComboBox_RecType"_s, page)};
  boxes->Number->setClearButtonEnabled(true);
  boxes->Number->setMinimumWidth(120);
  boxes->Number->setMaximumWidth(180);
  boxes->RecType->addItems(records.TeSComboBox_RecType_Items);
  boxes->FromLogic();
  // The boxes live as long as the page.
  QObject::connect(page, &QObject::destroyed, [boxes] { delete boxes; });
  QObject::connect(&records, &TPBXRecords::boxesChanged, page, [boxes] { boxes->FromLogic(); });

  auto *find = NamedButton(u"SpeedButton_Find"_s, u"查询"_s, page);
  auto *exportKey = NamedButton(u"SpeedButton_Export"_s, u"导出CSV"_s, page);
  exportKey->setToolTip(u"把本次查询的全部记录（所有页）写入CSV文件"_s);
  const auto search = [boxes, &records] {
    boxes->ToLogic();
    RunGuarded([&] { records.SpeedButton_FindClick(); });
  };
  QObject::connect(find, &QPushButton::clicked, page, search);
  QObject::connect(boxes->Number, &QLineEdit::returnPressed, page, search);
  QObject::connect(exportKey, &QPushButton::clicked, page,
                   [&records] { RunGuarded([&] { records.ExportClick(); }); });

  auto *row = new QHBoxLayout;
  row->addWidget(boxes->TelNos);
  row->addWidget(boxes->Number);
  row->addWidget(boxes->Start);
  row->addWidget(boxes->StartDate);
  row->addWidget(boxes->StartTime);
  row->addWidget(boxes->End);
  row->addWidget(boxes->EndDate);
  row->addWidget(boxes->EndTime);
  row->addWidget(NamedLabel(u"TeAdvancedLabel4"_s, u"通话类型:"_s, page));
  row->addWidget(boxes->RecType);
  row->addWidget(find);
  row->addStretch(1);
  layout->addLayout(row);

  auto *grid =
      new TRecordGridView(u"DBGridEh_PBXConRecords"_s, records.DBGridEh_PBXConRecords, {}, page);
  layout->addWidget(grid, 1);
  // Each number has its own menu: the related search by that number.
  const struct {
    const char16_t *Menu;
    const char16_t *Item;
    void (TPBXRecords::*Click)();
    int Column;
  } kMenus[] = {{u"PopupMenu_PBXRecord_Caller", u"N24", &TPBXRecords::N24Click, 0},
                {u"PopupMenu_PBXRecord_Called", u"MenuItem8", &TPBXRecords::MenuItem8Click, 1}};
  grid->setContextMenuPolicy(Qt::CustomContextMenu);
  for (const auto &m : kMenus) {
    auto *menu = Named<QMenu>(QString::fromUtf16(m.Menu), page);
    const auto click = m.Click;
    menu->addAction(u"关联记录查询"_s, page, [&records, click] {
          RunGuarded([&] { (records.*click)(); });
        })->setObjectName(QString::fromUtf16(m.Item));
  }
  QObject::connect(grid, &QWidget::customContextMenuRequested, page, [grid, page](QPoint at) {
    const QModelIndex index = grid->indexAt(at);
    if (!index.isValid() || index.column() > 1)
      return;
    grid->selectRow(index.row());
    const QString name = index.column() == 0 ? u"PopupMenu_PBXRecord_Caller"_s
                                             : u"PopupMenu_PBXRecord_Called"_s;
    if (auto *menu = page->findChild<QMenu *>(name))
      menu->popup(grid->viewport()->mapToGlobal(at));
  });

  auto *bottom = new QHBoxLayout;
  bottom->addWidget(new TDataPageBar(records.Frame_DataPage, &main, page), 1);
  bottom->addWidget(exportKey);
  layout->addLayout(bottom);
  return page;
}
