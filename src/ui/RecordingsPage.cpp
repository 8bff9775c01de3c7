#include "ui/RecordingsPage.h"

#include "directory/RecordServerPage.h"
#include "support/Shell.h"
#include "ui/AudioPlayWindow.h"
#include "ui/DateTimeBoxes.h"
#include "ui/Named.h"

#include <QCheckBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPointer>
#include <QTableView>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The page's widgets and the logic's fields they stand for, both ways.
struct Controls {
  TRecordServerPage &Page;
  QLineEdit *Address, *Own, *Exact, *Like;
  QPushButton *Connect, *Search;
  QLabel *Message, *Status, *RetCode, *Result, *Count;
  QCheckBox *OwnOnly, *ExactOn, *LikeOn, *Start, *End;
  QDateEdit *StartDate, *EndDate;
  QTimeEdit *StartTime, *EndTime;

  void ToLogic() const {
    TRecordServerPage &p = Page;
    p.TeSEdit_RecordIP = Address->text();
    p.Edit_Caller = Own->text();
    p.CheckBox_Caller = OwnOnly->isChecked();
    p.CheckBox_ExactNo = ExactOn->isChecked();
    p.Edit_ExactNo = Exact->text();
    p.CheckBox_LikeNo = LikeOn->isChecked();
    p.Edit_LikeNo = Like->text();
    p.CheckBox_RecordStart = Start->isChecked();
    p.DateTimePicker_RecordStart_Date = TDateTime::FromDate(StartDate->date());
    p.DateTimePicker_RecordStart_Time = TDateTime::FromTime(StartTime->time());
    p.CheckBox_RecordEnd = End->isChecked();
    p.DateTimePicker_RecordEnd_Date = TDateTime::FromDate(EndDate->date());
    p.DateTimePicker_RecordEnd_Time = TDateTime::FromTime(EndTime->time());
  }
  void FromLogic() const {
    const TRecordServerPage &p = Page;
    if (Address->text() != p.TeSEdit_RecordIP)
      Address->setText(p.TeSEdit_RecordIP);
    if (Own->text() != p.Edit_Caller)
      Own->setText(p.Edit_Caller);
    Own->setEnabled(p.Edit_Caller_Enabled);
    Own->setToolTip(p.Edit_Caller_Hint);
    OwnOnly->setEnabled(p.CheckBox_Caller_Enabled);
    Connect->setText(p.TeButton_Connect2RecServer_Caption);
    Search->setEnabled(p.TeButton_RecordSearch_Enabled);
    Message->setText(p.StaticText_RecordMsg);
    Status->setText(p.LMDSimpleLabel_status);
    RetCode->setText(p.LMDSimpleLabel_RecordRetCode);
    // The label behind the results shows once a query was made.
    Result->setVisible(p.RecordResultTag != 0);
    Count->setVisible(p.RecordResultTag != 0);
    Count->setText(QString::number(p.DBGridEh_Record.RowCount()));
  }
};

QCheckBox *Check(const QString &name, const QString &text, bool on, QWidget *parent) {
  auto *box = Named<QCheckBox>(name, text, parent);
  box->setChecked(on);
  return box;
}
} // namespace

QWidget *BuildRecordingsPage(TRecordServerPage &logic, QWidget *parent) {
  auto *page = new QWidget(parent);
  page->setObjectName(u"TeTabSheet_Records"_s);
  page->setWindowTitle(u"录音记录"_s);
  const TRecordServerPage &p = logic;
  auto *c = new Controls{
      logic,
      NamedEdit(u"TeSEdit_RecordIP"_s, page),
      NamedEdit(u"Edit_Caller"_s, page),
      NamedEdit(u"Edit_ExactNo"_s, page),
      NamedEdit(u"Edit_LikeNo"_s, page),
      NamedButton(u"TeButton_Connect2RecServer"_s, {}, page),
      NamedButton(u"TeButton_RecordSearch"_s, u"查 询"_s, page),
      NamedLabel(u"StaticText_RecordMsg"_s, {}, page),
      NamedLabel(u"LMDSimpleLabel_status"_s, {}, page),
      NamedLabel(u"LMDSimpleLabel_RecordRetCode"_s, {}, page),
      NamedLabel(u"LMDSimpleLabel_RecordsResult"_s, u"查询结果"_s, page),
      NamedLabel(u"Label_RecordCount"_s, {}, page),
      Check(u"CheckBox_Caller"_s, u"只查本机"_s, p.CheckBox_Caller, page),
      Check(u"CheckBox_ExactNo"_s, {}, p.CheckBox_ExactNo, page),
      Check(u"CheckBox_LikeNo"_s, {}, p.CheckBox_LikeNo, page),
      Check(u"CheckBox_RecordStart"_s, {}, p.CheckBox_RecordStart, page),
      Check(u"CheckBox_RecordEnd"_s, {}, p.CheckBox_RecordEnd, page),
      DateBox(u"DateTimePicker_RecordStart_Date"_s, page, p.DateTimePicker_RecordStart_Date),
      DateBox(u"DateTimePicker_RecordEnd_Date"_s, page, p.DateTimePicker_RecordEnd_Date),
      TimeBox(u"DateTimePicker_RecordStart_Time"_s, page, p.DateTimePicker_RecordStart_Time),
      TimeBox(u"DateTimePicker_RecordEnd_Time"_s, page, p.DateTimePicker_RecordEnd_Time)};
  QObject::connect(page, &QObject::destroyed, [c] { delete c; });
  c->Address->setMaximumWidth(160);
  for (QLineEdit *box : {c->Own, c->Exact, c->Like}) {
    box->setMaximumWidth(150);
    box->setClearButtonEnabled(true);
  }
  c->FromLogic();
  QObject::connect(&logic, &TRecordServerPage::changed, page, [c] { c->FromLogic(); });

  QObject::connect(c->Connect, &QPushButton::clicked, page, [c, &logic] {
    c->ToLogic();
    RunGuarded([&] { logic.TeButton_Connect2RecServerClick(); });
  });
  const auto search = [c, &logic] {
    c->ToLogic();
    if (c->Search->isEnabled())
      RunGuarded([&] { logic.TeButton_RecordSearchClick(); });
  };
  QObject::connect(c->Search, &QPushButton::clicked, page, search);
  for (QLineEdit *box : {c->Exact, c->Like})
    QObject::connect(box, &QLineEdit::returnPressed, page, search);

  // Two rows of boxes, each behind its label: where the server is and what came
  // back, then what to search for.
  const auto label = [page](const char16_t *name, const char16_t *text) {
    return NamedLabel(QString::fromUtf16(name), QString::fromUtf16(text), page);
  };
  auto *server = new QHBoxLayout;
  server->addWidget(label(u"Label1", u"录音服务器:"));
  server->addWidget(c->Address);
  server->addWidget(c->Connect);
  server->addWidget(c->Message);
  server->addSpacing(12);
  server->addWidget(c->Status);
  server->addStretch(1);
  server->addWidget(label(u"Label7", u"返回码:"));
  server->addWidget(c->RetCode);
  auto *boxes = new QHBoxLayout;
  boxes->addWidget(label(u"Label2", u"本机分机:"));
  boxes->addWidget(c->Own);
  boxes->addWidget(c->OwnOnly);
  boxes->addSpacing(8);
  boxes->addWidget(c->Start);
  boxes->addWidget(label(u"Label3", u"起始时间:"));
  boxes->addWidget(c->StartDate);
  boxes->addWidget(c->StartTime);
  boxes->addWidget(c->End);
  boxes->addWidget(label(u"Label4", u"截止时间:"));
  boxes->addWidget(c->EndDate);
  boxes->addWidget(c->EndTime);
  boxes->addStretch(1);
  auto *numbers = new QHBoxLayout;
  numbers->addWidget(c->ExactOn);
  numbers->addWidget(label(u"Label5", u"精确号码:"));
  numbers->addWidget(c->Exact);
  numbers->addSpacing(8);
  numbers->addWidget(c->LikeOn);
  numbers->addWidget(label(u"Label6", u"模糊号码:"));
  numbers->addWidget(c->Like);
  numbers->addSpacing(8);
  numbers->addWidget(c->Search);
  numbers->addWidget(c->Result);
  numbers->addWidget(c->Count);
  numbers->addStretch(1);

  auto *grid = Named<QTableView>(u"DBGridEh_Record"_s, page);
  grid->setModel(&logic.DBGridEh_Record);
  grid->setSelectionBehavior(QAbstractItemView::SelectRows);
  grid->setSelectionMode(QAbstractItemView::SingleSelection);
  grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
  grid->setAlternatingRowColors(true);
  grid->setWordWrap(false);
  grid->verticalHeader()->hide();
  // Fixed rows and widths: thousands of rows lay out without measuring each.
  grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  grid->verticalHeader()->setDefaultSectionSize(grid->fontMetrics().height() + 6);
  grid->horizontalHeader()->setDefaultSectionSize(140);
  grid->horizontalHeader()->setStretchLastSection(true);
  grid->setToolTip(u"双击一行播放录音"_s);

  // One player window for the page, made on the first double-click.
  auto player = std::make_shared<QPointer<TAudioPlayWindow>>();
  QObject::connect(&logic, &TRecordServerPage::playRequested, page,
                   [page, player](const QUrl &source, const QString &caption) {
                     if (!*player)
                       *player = new TAudioPlayWindow(page);
                     TAudioPlayWindow *w = *player;
                     w->Play(source, caption);
                     w->show();
                     w->raise();
                     w->activateWindow();
                   });
  QObject::connect(grid, &QTableView::doubleClicked, page, [&logic](const QModelIndex &index) {
    RunGuarded([&] { logic.DBGridEh_RecordDblClick(index.row()); });
  });

  auto *layout = new QVBoxLayout(page);
  layout->setContentsMargins(4, 4, 4, 4);
  layout->addLayout(server);
  layout->addLayout(boxes);
  layout->addLayout(numbers);
  layout->addWidget(grid, 1);
  return page;
}
