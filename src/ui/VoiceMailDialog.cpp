#include "ui/VoiceMailDialog.h"

#include "guest/VoiceMail_Set.h"
#include "support/Shell.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"
#include "ui/RoomDialogLayout.h"
#include "ui/ShowCentred.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

VoiceMailDialog::VoiceMailDialog(TForm_VoiceMail_Set &logic, QWidget *parent)
    : QDialog(parent), m_logic(logic) {
  setObjectName(u"TForm_VoiceMail_Set"_s);
  setWindowModality(Qt::ApplicationModal);

  m_state = NamedLabel(u"TeLabel_State"_s, QString(), this);
  auto *form = new QFormLayout;
  form->addRow(NamedLabel(u"TeLabel1"_s, u"留言状态:"_s, this), m_state);

  m_apply = NamedButton(u"TeButton_VoiceMail_Apply"_s, u"清除留言"_s, this);
  m_apply->setDefault(true); // Enter clears this room; Escape cancels
  m_multi = NamedButton(u"TeButton_VoiceMail_ApplyMulti"_s, u"批量清除"_s, this);
  auto *cancel = NamedButton(u"TeButton2"_s, u"取 消"_s, this);
  auto *keys = RoomDialogKeys(m_apply, m_multi, cancel);

  auto *outer = RoomDialogFrame(this);
  outer->addLayout(form);
  outer->addSpacing(6);
  outer->addLayout(keys);
  // Room for the caption with the room's number in it.
  setMinimumWidth(320);

  BindLanguage(m_logic, this);

  connect(m_apply, &QPushButton::clicked, this,
          [this] { RunGuarded([this] { m_logic.TeButton_VoiceMail_ApplyClick(); }); });
  connect(m_multi, &QPushButton::clicked, this,
          [this] { RunGuarded([this] { m_logic.TeButton_VoiceMail_ApplyMultiClick(); }); });
  connect(cancel, &QPushButton::clicked, this, &VoiceMailDialog::reject);
  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refresh();
    ShowCentred(this);
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  Refresh();
}

void VoiceMailDialog::Refresh() {
  setWindowTitle(m_logic.Caption);
  m_state->setText(m_logic.TeLabel_State);
  RefreshKeys();
}

void VoiceMailDialog::RefreshKeys() {
  m_apply->setEnabled(m_logic.TeButton_VoiceMail_Apply_Enabled);
  m_multi->setEnabled(m_logic.TeButton_VoiceMail_ApplyMulti_Enabled);
}

void VoiceMailDialog::reject() {
  RunGuarded([this] { m_logic.TeButton2Click(); });
  hide();
}
