#include "ui/FrontDeskWindows.h"

#include "guest/CheckIn_Form.h"
#include "guest/FrontDesk.h"
#include "guest/RoomHistory_Unit.h"
#include "support/Shell.h"
#include "ui/DataPageBar.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"
#include "ui/RoomDialogLayout.h"
#include "ui/ShowCentred.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

CheckInDialog::CheckInDialog(TForm_CheckIn &logic, QWidget *parent)
    : QDialog(parent), m_logic(logic) {
  setObjectName(u"TForm_CheckIn"_s);
  setWindowModality(Qt::ApplicationModal);

  m_name = NamedEdit(u"Edit_GuestName"_s, this);
  // The box takes what the store takes; the logic still says so for a paste.
  m_name->setMaxLength(TFrontDesk::kGuestNameMax);
  m_name->setMinimumWidth(240);
  m_class = NamedLabel(u"Label_OccupiedClass"_s, QString(), this);
  m_memo = NamedEdit(u"Edit_Memo"_s, this);
  m_wake = Named<QCheckBox>(u"CheckBox_WakeUp"_s, this);
  m_wake->setText(u"叫醒"_s);
  m_wakeTime = Named<QDateTimeEdit>(u"DateTimePicker_WakeUp"_s, this);
  m_wakeTime->setDisplayFormat(u"yyyy-MM-dd hh:mm"_s);
  m_wakeTime->setCalendarPopup(true);
  m_wakeMode = Named<QComboBox>(u"ComboBox_WakeUpMode"_s, this);
  m_wakeMode->addItems({u"Default普通"_s, u"Chinese中文"_s, u"English英文"_s});
  auto *wakeRow = new QHBoxLayout;
  wakeRow->addWidget(m_wake);
  wakeRow->addWidget(m_wakeTime, 1);
  wakeRow->addWidget(m_wakeMode);

  auto *form = new QFormLayout;
  form->addRow(NamedLabel(u"TeLabel_GuestName"_s, u"客人姓名:"_s, this), m_name);
  form->addRow(NamedLabel(u"TeLabel_Class"_s, u"服务级别:"_s, this), m_class);
  form->addRow(NamedLabel(u"TeLabel_Memo"_s, u"备注:"_s, this), m_memo);
  form->addRow(NamedLabel(u"TeLabel_WakeUp"_s, u"叫醒时间:"_s, this), wakeRow);

  m_apply = NamedButton(u"TeButton_CheckIn_Apply"_s, u"入住"_s, this);
  m_multi = NamedButton(u"TeButton_CheckIn_ApplyMulti"_s, u"选中房间入住"_s, this);
  auto *cancel = NamedButton(u"TeButton_CheckIn_Cancel"_s, u"取消"_s, this);
  m_apply->setDefault(true);
  m_apply->setAutoDefault(true);

  auto *outer = RoomDialogFrame(this);
  outer->addLayout(form);
  outer->addLayout(RoomDialogKeys(m_apply, m_multi, cancel));

  setTabOrder(m_name, m_memo);
  setTabOrder(m_memo, m_wake);
  setTabOrder(m_wake, m_wakeTime);
  setTabOrder(m_wakeTime, m_wakeMode);
  setTabOrder(m_wakeMode, m_apply);
  setTabOrder(m_apply, m_multi);
  setTabOrder(m_multi, cancel);

  BindLanguage(m_logic, this);

  connect(m_wake, &QCheckBox::toggled, this, [this](bool on) {
    m_wakeTime->setEnabled(on);
    m_wakeMode->setEnabled(on);
  });
  connect(m_apply, &QPushButton::clicked, this,
          [this] { Forward(&TForm_CheckIn::TeButton_CheckIn_ApplyClick); });
  connect(m_multi, &QPushButton::clicked, this,
          [this] { Forward(&TForm_CheckIn::TeButton_CheckIn_ApplyMultiClick); });
  connect(cancel, &QPushButton::clicked, this, &CheckInDialog::reject);
  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refresh();
    ShowCentred(this);
    m_name->setFocus();
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  Refresh();
}

void CheckInDialog::Refresh() {
  setWindowTitle(m_logic.Caption);
  m_name->setText(m_logic.Edit_GuestName);
  m_class->setText(m_logic.Label_OccupiedClass);
  m_memo->setText(m_logic.Edit_Memo);
  m_wake->setChecked(m_logic.CheckBox_WakeUp);
  m_wakeTime->setDateTime(m_logic.DateTimePicker_WakeUp.ToQDateTime());
  m_wakeMode->setCurrentIndex(m_logic.ComboBox_WakeUpMode_ItemIndex);
  m_wakeTime->setEnabled(m_logic.CheckBox_WakeUp);
  m_wakeMode->setEnabled(m_logic.CheckBox_WakeUp);
  RefreshKeys();
}

void CheckInDialog::RefreshKeys() {
  m_apply->setEnabled(m_logic.TeButton_CheckIn_Apply_Enabled);
  m_multi->setEnabled(m_logic.TeButton_CheckIn_Apply_Enabled);
}

void CheckInDialog::Forward(void (TForm_CheckIn::*click)()) {
  m_logic.Edit_GuestName = m_name->text();
  m_logic.Edit_Memo = m_memo->text();
  m_logic.CheckBox_WakeUp = m_wake->isChecked();
  m_logic.DateTimePicker_WakeUp = TDateTime::FromQDateTime(m_wakeTime->dateTime());
  m_logic.ComboBox_WakeUpMode_ItemIndex = qMax(0, m_wakeMode->currentIndex());
  RunGuarded([&] { (m_logic.*click)(); });
}

void CheckInDialog::reject() {
  RunGuarded([this] { m_logic.TeButton_CheckIn_CancelClick(); });
  hide();
}

RoomHistoryWindow::RoomHistoryWindow(TForm_RoomHistory &logic, QWidget *parent)
    : QWidget(parent, Qt::Window), m_logic(logic) {
  setObjectName(u"TForm_RoomHistory"_s);
  setWindowTitle(u"入住退房记录"_s);
  resize(760, 480);

  m_ext = NamedEdit(u"Edit_Ext"_s, this);
  auto *find = NamedButton(u"SpeedButton_Find"_s, u"查询"_s, this);
  auto *boxes = new QHBoxLayout;
  boxes->addWidget(NamedLabel(u"TeLabel_Ext"_s, u"分机号"_s, this));
  boxes->addWidget(m_ext);
  boxes->addWidget(find);
  boxes->addStretch(1);

  auto *layout = new QVBoxLayout(this);
  layout->addLayout(boxes);
  layout->addWidget(
      new TRecordGridView(u"Grid_RoomHistory"_s, logic.Grid_RoomHistory, u"无数据显示"_s, this), 1);
  layout->addWidget(new TDataPageBar(logic.Frame_DataPage, &logic, this));

  const auto search = [this] {
    m_logic.Edit_Ext = m_ext->text();
    RunGuarded([this] { m_logic.SpeedButton_FindClick(); });
  };
  connect(find, &QPushButton::clicked, this, search);
  connect(m_ext, &QLineEdit::returnPressed, this, search);
  connect(&logic, &TForm_RoomHistory::boxesChanged, this,
          [this] { m_ext->setText(m_logic.Edit_Ext); });
  connect(&logic, &TFormLogic::shown, this, [this] {
    m_ext->setText(m_logic.Edit_Ext);
    show();
    raise();
    activateWindow();
  });
  connect(&logic, &TFormLogic::closed, this, &QWidget::hide);
  BindLanguage(logic, this);
}

void RoomHistoryWindow::closeEvent(QCloseEvent *event) {
  m_logic.Close();
  event->accept();
}
