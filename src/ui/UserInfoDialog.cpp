#include "ui/UserInfoDialog.h"

#include "console/UserInfo_Form.h"
#include "ui/LanguageBinding.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

UserInfoDialog::UserInfoDialog(TUserInfo_Form &logic, QWidget *parent)
    : QDialog(parent), m_logic(logic) {
  setObjectName(u"TUserInfo_Form"_s);
  setWindowTitle(u"用户信息"_s);

  m_memo1 = new QPlainTextEdit(this);
  m_memo1->setObjectName(u"Memo1"_s);
  m_memo1->setReadOnly(true);
  m_memo1->setMaximumHeight(m_memo1->fontMetrics().lineSpacing() * 7);
  m_memo2Title = new QLabel(this);
  m_memo2Title->setObjectName(u"Memo2_Title"_s);
  m_memo2 = new QPlainTextEdit(this);
  m_memo2->setObjectName(u"Memo2"_s);
  m_memo2->setReadOnly(true);
  // Feature codes line up in columns as the exchange sends them.
  m_memo2->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));

  auto *closeKey = new QPushButton(u"关 闭"_s, this);
  closeKey->setObjectName(u"Close_TeButton"_s);
  closeKey->setDefault(true);
  connect(closeKey, &QPushButton::clicked, this, &UserInfoDialog::reject);
  auto *keys = new QHBoxLayout;
  keys->addStretch();
  keys->addWidget(closeKey);

  auto *box = new QVBoxLayout(this);
  box->setContentsMargins(12, 12, 12, 12);
  box->addWidget(m_memo1);
  box->addWidget(m_memo2Title);
  box->addWidget(m_memo2, 1);
  box->addLayout(keys);

  BindLanguage(m_logic, this);

  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refresh();
    show();
    raise();
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);

  Refresh();
  resize(440, 420);
  if (m_logic.Visible())
    show();
}

void UserInfoDialog::Refresh() {
  m_memo1->setPlainText(m_logic.Memo1.join(u'\n'));
  m_memo2Title->setText(m_logic.Memo2_Title);
  m_memo2->setPlainText(m_logic.Memo2);
}

void UserInfoDialog::reject() {
  m_logic.Close();
}
