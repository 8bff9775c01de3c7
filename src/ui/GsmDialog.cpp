#include "ui/GsmDialog.h"

#include "devices/GSM_Unit.h"
#include "support/Shell.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStatusBar>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

template <typename Handler> void GsmDialog::Run(Handler handler) {
  StoreEdits();
  RunGuarded(handler);
  Refresh();
}

GsmDialog::GsmDialog(TGSM_Form &logic, QWidget *parent) : QDialog(parent), m_logic(logic) {
  setObjectName(u"TGSM_Form"_s);
  setWindowTitle(u"短信通"_s);

  m_dest = NamedEdit(u"SMSDest_TeSEdit"_s, this);
  m_callTelNo = NamedEdit(u"CallTelNo_TeSEdit"_s, this);
  m_company = NamedEdit(u"Company_TeSEdit"_s, this);
  m_body = new QPlainTextEdit(this);
  m_body->setObjectName(u"SMSBody_TeMemo"_s);
  m_body->setTabChangesFocus(true);

  auto *fields = new QFormLayout;
  fields->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  fields->addRow(NamedLabel(u"SMSDest_TeLabel"_s, u"接收号码:"_s, this), m_dest);
  fields->addRow(NamedLabel(u"CallTelNo_TeLabel"_s, u"回电号码:"_s, this), m_callTelNo);
  fields->addRow(NamedLabel(u"Company_TeLabel"_s, u"单    位:"_s, this), m_company);
  fields->addRow(NamedLabel(u"SMSBody_TeLabel"_s, u"短信内容:"_s, this), m_body);

  auto *send = new QPushButton(u"发 送"_s, this);
  send->setObjectName(u"TeButton1"_s);
  send->setAutoDefault(false);
  auto *cancel = new QPushButton(u"取 消"_s, this);
  cancel->setObjectName(u"TeButton2"_s);
  cancel->setAutoDefault(false);
  auto *keys = new QHBoxLayout;
  keys->addStretch();
  keys->addWidget(send);
  keys->addWidget(cancel);

  auto *status = new QStatusBar(this);
  status->setObjectName(u"Main_StatusBar"_s);
  status->setSizeGripEnabled(false);
  for (int i = 0; i < 2; ++i) {
    m_status[i] = new QLabel(status);
    m_status[i]->setObjectName(u"Main_StatusBar_Panel%1"_s.arg(i));
    status->addWidget(m_status[i], i);
  }

  auto *box = new QVBoxLayout(this);
  box->setContentsMargins(12, 12, 12, 0);
  box->addLayout(fields, 1);
  box->addLayout(keys);
  box->addWidget(status);

  setTabOrder(m_dest, m_callTelNo);
  setTabOrder(m_callTelNo, m_company);
  setTabOrder(m_company, m_body);
  setTabOrder(m_body, send);
  setTabOrder(send, cancel);

  BindLanguage(m_logic, this);

  connect(send, &QPushButton::clicked, this, [this] { Run([this] { m_logic.TeButton1Click(); }); });
  connect(cancel, &QPushButton::clicked, this,
          [this] { Run([this] { m_logic.TeButton2Click(); }); });
  connect(m_dest, &QLineEdit::textEdited, this, [this] {
    StoreEdits();
    m_logic.SMSDest_TeSEditChange();
    m_dest->setToolTip(m_logic.SMSDest_TeSEdit_Hint);
  });
  // The count covers the reply number and the company as well as the text. Only
  // the operator's typing counts: a fresh window stays unsendable until edited.
  connect(m_callTelNo, &QLineEdit::textEdited, this, &GsmDialog::InputChanged);
  connect(m_company, &QLineEdit::textEdited, this, &GsmDialog::InputChanged);
  connect(m_body, &QPlainTextEdit::textChanged, this, [this] {
    if (!m_refreshing)
      InputChanged();
  });

  // The logic fills the reply number and company as it shows; read them after.
  connect(&m_logic, &TFormLogic::shown, this, [this] {
    Refresh();
    show();
    raise();
    activateWindow();
  });
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);

  Refresh();
  resize(sizeHint().expandedTo(QSize(420, 360)));
  if (m_logic.Visible())
    show();
}

void GsmDialog::InputChanged() {
  StoreEdits();
  m_logic.SMSBody_TeMemoChange();
  m_status[1]->setText(m_logic.Main_StatusBar.value(1));
}

void GsmDialog::Refresh() {
  m_refreshing = true;
  m_dest->setText(m_logic.SMSDest_TeSEdit);
  m_dest->setToolTip(m_logic.SMSDest_TeSEdit_Hint);
  m_callTelNo->setText(m_logic.CallTelNo_TeSEdit);
  m_company->setText(m_logic.Company_TeSEdit);
  if (m_body->toPlainText() != m_logic.SMSBody_TeMemo)
    m_body->setPlainText(m_logic.SMSBody_TeMemo);
  for (int i = 0; i < 2; ++i)
    m_status[i]->setText(m_logic.Main_StatusBar.value(i));
  m_refreshing = false;
}

void GsmDialog::StoreEdits() {
  m_logic.SMSDest_TeSEdit = m_dest->text();
  m_logic.CallTelNo_TeSEdit = m_callTelNo->text();
  m_logic.Company_TeSEdit = m_company->text();
  m_logic.SMSBody_TeMemo = m_body->toPlainText();
}

void GsmDialog::reject() {
  Run([this] { m_logic.TeButton2Click(); });
}
