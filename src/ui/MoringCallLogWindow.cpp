#include "ui/MoringCallLogWindow.h"

#include "guest/MoringCallLog_Unit.h"
#include "support/Shell.h"
#include "ui/DataPageBar.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

MoringCallLogWindow::MoringCallLogWindow(TForm_MoringCallLog &logic, QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint), m_logic(logic) {
  setObjectName(u"TForm_MoringCallLog"_s);
  setWindowTitle(u"叫醒记录"_s);
  resize(900, 520);

  const auto dateBox = [this](const QString &name) {
    auto *box = Named<QDateTimeEdit>(name, this);
    box->setDisplayFormat(u"yyyy-MM-dd hh:mm:ss"_s);
    box->setCalendarPopup(true);
    return box;
  };
  m_start = dateBox(u"cxDateEdit_Start"_s);
  m_end = dateBox(u"cxDateEdit_End"_s);
  m_ext = NamedEdit(u"cxTextEdit_Ext"_s, this);
  m_roomNo = NamedEdit(u"cxTextEdit_RoomNo"_s, this);
  m_ext->setMinimumWidth(80);
  m_roomNo->setMinimumWidth(80);
  m_state = Named<QComboBox>(u"cxComboBox_State"_s, this);
  m_state->addItems(logic.cxComboBox_State_Items);
  auto *find = NamedButton(u"SpeedButton_Find"_s, u"查询"_s, this);
  auto *exportKey = NamedButton(u"SpeedButton_Export"_s, u"导出CSV"_s, this);
  exportKey->setToolTip(u"把本次查询的全部记录（所有页）写入CSV文件"_s);

  auto *boxes = new QHBoxLayout;
  const auto add = [&](const QString &label, QWidget *box) {
    boxes->addWidget(new QLabel(label, this));
    boxes->addWidget(box);
  };
  add(u"开始"_s, m_start);
  add(u"结束"_s, m_end);
  add(u"分机号"_s, m_ext);
  add(u"房间号"_s, m_roomNo);
  add(u"结果"_s, m_state);
  boxes->addWidget(find);
  boxes->addStretch(1);
  boxes->addWidget(exportKey);

  auto *layout = new QVBoxLayout(this);
  layout->addLayout(boxes);
  layout->addWidget(new TRecordGridView(u"cxGrid_MoringCallLog"_s, logic.cxGrid_MoringCallLog,
                                        QString::fromUtf16(TForm_MoringCallLog::kEmptyText), this),
                    1);
  layout->addWidget(new TDataPageBar(logic.Frame_DataPage, &logic, this));

  const auto search = [this] {
    ToLogic();
    RunGuarded([this] { m_logic.SpeedButton_FindClick(); });
  };
  connect(find, &QPushButton::clicked, this, search);
  connect(m_ext, &QLineEdit::returnPressed, this, search);
  connect(m_roomNo, &QLineEdit::returnPressed, this, search);
  connect(exportKey, &QPushButton::clicked, this, [this] {
    ToLogic();
    RunGuarded([this] { m_logic.ExportClick(); });
  });
  connect(&logic, &TForm_MoringCallLog::boxesChanged, this, &MoringCallLogWindow::FromLogic);
  connect(&logic, &TFormLogic::shown, this, [this] {
    FromLogic();
    show();
    raise();
    activateWindow();
  });
  connect(&logic, &TFormLogic::closed, this, &QWidget::hide);
  FromLogic();
  BindLanguage(logic, this);
}

void MoringCallLogWindow::ToLogic() {
  m_logic.cxDateEdit_Start = TDateTime::FromQDateTime(m_start->dateTime());
  m_logic.cxDateEdit_End = TDateTime::FromQDateTime(m_end->dateTime());
  m_logic.cxTextEdit_Ext = m_ext->text();
  m_logic.cxTextEdit_RoomNo = m_roomNo->text();
  m_logic.cxComboBox_State_ItemIndex = m_state->currentIndex();
}

void MoringCallLogWindow::FromLogic() {
  m_start->setDateTime(m_logic.cxDateEdit_Start.ToQDateTime());
  m_end->setDateTime(m_logic.cxDateEdit_End.ToQDateTime());
  m_ext->setText(m_logic.cxTextEdit_Ext);
  m_roomNo->setText(m_logic.cxTextEdit_RoomNo);
  m_state->setCurrentIndex(m_logic.cxComboBox_State_ItemIndex);
}

void MoringCallLogWindow::closeEvent(QCloseEvent *event) {
  m_logic.Close();
  event->accept();
}
