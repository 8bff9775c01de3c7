#include "ui/NodisturbDialog.h"

#include "guest/Nodisturb_Form.h"
#include "support/Shell.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"
#include "ui/RoomDialogLayout.h"
#include "ui/ShowCentred.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QTimeEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// The logic's fields of window N, in the order the dialog lays them out.
struct WindowFields {
  bool TForm_Nodisturb::*Checked;
  TDateTime TForm_Nodisturb::*Start;
  TDateTime TForm_Nodisturb::*End;
};
constexpr std::array<WindowFields, 3> kWindows = {{
    {&TForm_Nodisturb::TeCheckBox_Time1, &TForm_Nodisturb::TeDateTimePicker_Time1_Start,
     &TForm_Nodisturb::TeDateTimePicker_Time1_End},
    {&TForm_Nodisturb::TeCheckBox_Time2, &TForm_Nodisturb::TeDateTimePicker_Time2_Start,
     &TForm_Nodisturb::TeDateTimePicker_Time2_End},
    {&TForm_Nodisturb::TeCheckBox_Time3, &TForm_Nodisturb::TeDateTimePicker_Time3_Start,
     &TForm_Nodisturb::TeDateTimePicker_Time3_End},
}};
} // namespace

NodisturbDialog::NodisturbDialog(TForm_Nodisturb &logic, QWidget *parent)
    : QDialog(parent), m_logic(logic) {
  setObjectName(u"TForm_Nodisturb"_s);
  setWindowModality(Qt::ApplicationModal);

  m_mode = Named<QComboBox>(u"TeComboBox_Nodisturb"_s, this);
  auto *mode = new QFormLayout;
  mode->addRow(NamedLabel(u"TeLabel_Nodisturb"_s, u"状态:"_s, this), m_mode);

  auto *group = Named<QGroupBox>(u"TeGroupBox_Nodisturb"_s, u"免打扰时间段"_s, this);
  auto *grid = new QGridLayout(group);
  grid->setHorizontalSpacing(8);
  grid->setColumnStretch(4, 1);
  for (int n = 0; n < 3; ++n) {
    const QString stem = u"Time%1"_s.arg(n + 1);
    Window &w = m_windows[size_t(n)];
    w.Checked = Named<QCheckBox>(u"TeCheckBox_"_s + stem, u"时间段%1"_s.arg(n + 1), group);
    w.Start = Named<QTimeEdit>(u"TeDateTimePicker_"_s + stem + u"_Start"_s, group);
    w.End = Named<QTimeEdit>(u"TeDateTimePicker_"_s + stem + u"_End"_s, group);
    for (QTimeEdit *edit : {w.Start, w.End})
      edit->setDisplayFormat(u"HH:mm"_s);
    grid->addWidget(w.Checked, n, 0);
    grid->addWidget(w.Start, n, 1);
    grid->addWidget(new QLabel(u"–"_s, group), n, 2);
    grid->addWidget(w.End, n, 3);
  }
  // Set before the binding, which puts the language's own text over it.
  auto *hint = NamedLabel(u"TeLabel_Hint"_s, m_logic.TeLabel_Hint, group);
  hint->setWordWrap(true);
  grid->addWidget(hint, 3, 0, 1, 5);

  m_apply = NamedButton(u"TeButton_Nodisturb_Apply"_s, u"应用..."_s, this);
  m_apply->setDefault(true); // Enter applies to this room; Escape cancels
  m_multi = NamedButton(u"TeButton_Nodisturb_ApplyMulti"_s, u"批量应用..."_s, this);
  auto *cancel = NamedButton(u"TeButton2"_s, u"取 消"_s, this);
  auto *keys = RoomDialogKeys(m_apply, m_multi, cancel);

  auto *outer = RoomDialogFrame(this);
  outer->addLayout(mode);
  outer->addWidget(group);
  outer->addSpacing(6);
  outer->addLayout(keys);
  // Wide enough that the hint wraps into a few lines, not a column.
  setMinimumWidth(420);

  BindLanguage(m_logic, this);

  connect(m_apply, &QPushButton::clicked, this, [this] {
    StoreEdits();
    RunGuarded([this] { m_logic.TeButton_Nodisturb_ApplyClick(); });
  });
  connect(m_multi, &QPushButton::clicked, this, [this] {
    StoreEdits();
    RunGuarded([this] { m_logic.TeButton_Nodisturb_ApplyMultiClick(); });
  });
  connect(cancel, &QPushButton::clicked, this, &NodisturbDialog::reject);
  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refresh();
    ShowCentred(this);
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  Refresh();
}

void NodisturbDialog::Refresh() {
  setWindowTitle(m_logic.Caption);
  m_mode->clear();
  m_mode->addItems(m_logic.TeComboBox_Nodisturb_Items);
  m_mode->setCurrentIndex(m_logic.TeComboBox_Nodisturb_ItemIndex);
  for (size_t n = 0; n < kWindows.size(); ++n) {
    const WindowFields &f = kWindows[n];
    m_windows[n].Checked->setChecked(m_logic.*f.Checked);
    m_windows[n].Start->setTime((m_logic.*f.Start).Time());
    m_windows[n].End->setTime((m_logic.*f.End).Time());
  }
  RefreshKeys();
}

void NodisturbDialog::RefreshKeys() {
  m_apply->setEnabled(m_logic.TeButton_Nodisturb_Apply_Enabled);
  m_multi->setEnabled(m_logic.TeButton_Nodisturb_ApplyMulti_Enabled);
}

void NodisturbDialog::StoreEdits() {
  m_logic.TeComboBox_Nodisturb_ItemIndex = m_mode->currentIndex();
  for (size_t n = 0; n < kWindows.size(); ++n) {
    const WindowFields &f = kWindows[n];
    m_logic.*f.Checked = m_windows[n].Checked->isChecked();
    m_logic.*f.Start = TDateTime::FromTime(m_windows[n].Start->time());
    m_logic.*f.End = TDateTime::FromTime(m_windows[n].End->time());
  }
}

void NodisturbDialog::reject() {
  RunGuarded([this] { m_logic.TeButton2Click(); });
  hide();
}
