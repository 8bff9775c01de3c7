#include "ui/MoringCallDialog.h"

#include "devices/DeviceEvents.h"
#include "guest/MoringCall_Unit.h"
#include "support/Shell.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"
#include "ui/RoomDialogLayout.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QSpinBox>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

MoringCallDialog::MoringCallDialog(TMoringCall_Form &logic, TDeviceEvents &events, QWidget *parent)
    : QDialog(parent), m_logic(logic) {
  setObjectName(u"TMoringCall_Form"_s);
  setWindowModality(Qt::ApplicationModal);

  m_telNos = NamedLabel(u"TelNos_StaticText"_s, QString(), this);
  m_telNos->setTextInteractionFlags(Qt::TextSelectableByMouse);
  m_flag = Named<QComboBox>(u"MoCall_Flag_TeSComboBox"_s, this);
  m_date = Named<QDateEdit>(u"MoCallDate_TeDateTimePicker"_s, this);
  m_date->setCalendarPopup(true);
  m_date->setDisplayFormat(u"yyyy-MM-dd"_s);
  m_hour = Named<QSpinBox>(u"MoCall_Hour_TeSpinEdit"_s, this);
  m_hour->setRange(0, 23);
  m_minute = Named<QSpinBox>(u"MoCall_Minute_TeSpinEdit"_s, this);
  m_minute->setRange(0, 59);
  m_minute->setDisplayIntegerBase(10);
  auto *time = new QHBoxLayout;
  time->addWidget(m_hour);
  time->addWidget(new QLabel(u":"_s, this));
  time->addWidget(m_minute);
  time->addStretch(1);
  m_mode = Named<QComboBox>(u"TeSComboBox_MoringCallMode"_s, this);
  m_everyDay = Named<QCheckBox>(u"TeCheckBox_MoringCall_isEveryDay"_s, u"每天叫醒"_s, this);
  m_everyDayTime = Named<QTimeEdit>(u"TeDateTimePicker_MoringCall_EveryDayTime"_s, this);
  m_everyDayTime->setDisplayFormat(u"HH:mm"_s);

  auto *form = new QFormLayout;
  form->setVerticalSpacing(8);
  form->addRow(NamedLabel(u"TelNo_TeLabel"_s, u"分机号码:"_s, this), m_telNos);
  form->addRow(NamedLabel(u"MoCall_Flag_TeLabel"_s, u"叫醒开关:"_s, this), m_flag);
  form->addRow(NamedLabel(u"MoCallDate_TeLabel"_s, u"叫醒日期:"_s, this), m_date);
  form->addRow(NamedLabel(u"MoCallTime_TeLabel"_s, u"叫醒时间:"_s, this), time);
  form->addRow(NamedLabel(u"MoringCallMode_TeLabel"_s, u"叫醒模式:"_s, this), m_mode);
  form->addRow(m_everyDay, m_everyDayTime);

  m_apply = NamedButton(u"TeButton1"_s, u"确 定"_s, this);
  m_apply->setDefault(true); // Enter applies; Escape cancels
  m_multi = NamedButton(u"TeButton_MoringCallSet_Multi"_s, u"批量应用"_s, this);
  auto *cancel = NamedButton(u"TeButton2"_s, u"取 消"_s, this);
  auto *keys = RoomDialogKeys(m_apply, m_multi, cancel);

  auto *outer = RoomDialogFrame(this);
  outer->addLayout(form);
  outer->addSpacing(6);
  outer->addLayout(keys);

  BindLanguage(m_logic, this);

  connect(m_apply, &QPushButton::clicked, this, [this] {
    StoreEdits();
    RunGuarded([this] { m_logic.TeButton1Click(); });
  });
  connect(m_multi, &QPushButton::clicked, this, [this] {
    StoreEdits();
    RunGuarded([this] { m_logic.TeButton_MoringCallSet_MultiClick(); });
  });
  connect(cancel, &QPushButton::clicked, this, &MoringCallDialog::reject);
  connect(&m_logic, &TFormLogic::shown, this, &MoringCallDialog::OnShown);
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  // The logic takes the exchange's answer first (it was wired before this
  // window existed); the controls then show what it filled in.
  connect(&events, &TDeviceEvents::moringCallAnswered, this, [this] {
    if (isVisible())
      Refresh();
  });
  Refresh();
  if (m_logic.Visible())
    OnShown();
}

void MoringCallDialog::OnShown() {
  Refresh();
  adjustSize();
  // In the middle of the screen the window stands on.
  const QScreen *screen =
      parentWidget() ? parentWidget()->screen() : QGuiApplication::primaryScreen();
  if (screen)
    move(screen->availableGeometry().center() - rect().center());
  show();
  raise();
  activateWindow();
}

void MoringCallDialog::Refresh() {
  setWindowTitle(m_logic.Caption);
  m_telNos->setText(m_logic.TelNos_StaticText);
  m_flag->clear();
  m_flag->addItems(m_logic.MoCall_Flag_TeSComboBox_Items);
  m_flag->setCurrentIndex(m_logic.MoCall_Flag_TeSComboBox_ItemIndex);
  m_date->setDate(m_logic.MoCallDate_TeDateTimePicker.Date());
  m_hour->setValue(m_logic.MoCall_Hour_TeSpinEdit);
  m_minute->setValue(m_logic.MoCall_Minute_TeSpinEdit);
  m_mode->clear();
  m_mode->addItems(m_logic.TeSComboBox_MoringCallMode_Items);
  m_mode->setCurrentIndex(m_logic.TeSComboBox_MoringCallMode_ItemIndex);
  m_everyDay->setChecked(m_logic.TeCheckBox_MoringCall_isEveryDay);
  m_everyDayTime->setTime(m_logic.TeDateTimePicker_MoringCall_EveryDayTime.Time());
  m_apply->setEnabled(m_logic.TeButton1_Enabled);
  m_multi->setEnabled(m_logic.TeButton_MoringCallSet_Multi_Enabled);
}

void MoringCallDialog::StoreEdits() {
  m_logic.MoCall_Flag_TeSComboBox_ItemIndex = m_flag->currentIndex();
  m_logic.MoCallDate_TeDateTimePicker = TDateTime::FromDate(m_date->date());
  m_logic.MoCall_Hour_TeSpinEdit = m_hour->value();
  m_logic.MoCall_Minute_TeSpinEdit = m_minute->value();
  m_logic.TeSComboBox_MoringCallMode_ItemIndex = m_mode->currentIndex();
  m_logic.TeCheckBox_MoringCall_isEveryDay = m_everyDay->isChecked();
  m_logic.TeDateTimePicker_MoringCall_EveryDayTime = TDateTime::FromTime(m_everyDayTime->time());
}

void MoringCallDialog::reject() {
  RunGuarded([this] { m_logic.TeButton2Click(); });
  hide();
}
