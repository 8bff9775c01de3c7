#include "ui/MemoSetDialog.h"

#include "guest/MemoSet.h"
#include "support/Shell.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"
#include "ui/RoomDialogLayout.h"
#include "ui/ShowCentred.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

MemoSetDialog::MemoSetDialog(TForm_MemoSet &logic, QWidget *parent)
    : QDialog(parent), m_logic(logic) {
  setObjectName(u"TForm_MemoSet"_s);
  setWindowModality(Qt::ApplicationModal);

  m_memo = Named<QPlainTextEdit>(u"Memo_Memo"_s, this);
  // Tab leaves the box for the keys; a memo has no use for tab characters.
  m_memo->setTabChangesFocus(true);
  m_memo->setMinimumSize(360, 120);

  m_apply = NamedButton(u"TeButton_MemoSet_Apply"_s, u"确定"_s, this);
  m_multi = NamedButton(u"TeButton_MemoSet_ApplyMulti"_s, u"批量修改"_s, this);
  auto *filter = NamedButton(u"TeButton3"_s, u"过滤"_s, this);
  auto *cancel = NamedButton(u"TeButton2"_s, u"取消"_s, this);
  // Enter belongs to the memo's lines, so no key is the default; Escape cancels.
  auto *keys = RoomDialogKeys(m_apply, m_multi, cancel);
  keys->insertWidget(0, filter);
  keys->insertSpacing(1, 24); // the filter acts on the list, not on the room

  auto *outer = RoomDialogFrame(this);
  outer->addWidget(NamedLabel(u"TeLabel1"_s, u"备注:"_s, this));
  outer->addWidget(m_memo, 1);
  outer->addLayout(keys);

  BindLanguage(m_logic, this);

  connect(m_apply, &QPushButton::clicked, this,
          [this] { Forward(&TForm_MemoSet::TeButton_MemoSet_ApplyClick); });
  connect(m_multi, &QPushButton::clicked, this,
          [this] { Forward(&TForm_MemoSet::TeButton_MemoSet_ApplyMultiClick); });
  connect(filter, &QPushButton::clicked, this, [this] { Forward(&TForm_MemoSet::TeButton3Click); });
  connect(cancel, &QPushButton::clicked, this, &MemoSetDialog::reject);
  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refresh();
    ShowCentred(this);
    m_memo->setFocus();
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);
  Refresh();
}

void MemoSetDialog::Refresh() {
  setWindowTitle(m_logic.Caption);
  // The store keeps CR LF line ends; the box shows plain lines.
  QString text = m_logic.Memo_Memo;
  text.replace(u"\r\n"_s, u"\n"_s).replace(u'\r', u'\n');
  m_memo->setPlainText(text);
  RefreshKeys();
}

void MemoSetDialog::RefreshKeys() {
  m_apply->setEnabled(m_logic.TeButton_MemoSet_Apply_Enabled);
  m_multi->setEnabled(m_logic.TeButton_MemoSet_ApplyMulti_Enabled);
}

void MemoSetDialog::Forward(void (TForm_MemoSet::*click)()) {
  m_logic.Memo_Memo = m_memo->toPlainText();
  RunGuarded([&] { (m_logic.*click)(); });
}

void MemoSetDialog::reject() {
  RunGuarded([this] { m_logic.TeButton2Click(); });
  hide();
}
