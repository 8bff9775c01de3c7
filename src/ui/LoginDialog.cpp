#include "ui/LoginDialog.h"

#include "console/Login_Form.h"
#include "support/Shell.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

template <typename Handler> void LoginDialog::Run(Handler handler) {
  StoreEdits();
  RunGuarded(handler);
  Refresh();
}

LoginDialog::LoginDialog(TLogin_Form &logic, QWidget *parent) : QDialog(parent), m_logic(logic) {
  setObjectName(u"TLogin_Form"_s);
  setWindowTitle(u"用户登录"_s);
  setWindowModality(Qt::ApplicationModal);

  m_pages = new QTabWidget(this);
  m_pages->setObjectName(u"Login_TePageControl"_s);
  m_pages->setUsesScrollButtons(false);

  // Page 1: who logs in.
  auto *loginPage = new QWidget;
  loginPage->setObjectName(u"Login_TeTabSheet"_s);
  auto *loginForm = new QFormLayout(loginPage);
  loginForm->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  m_telNo = new QComboBox(loginPage);
  m_telNo->setObjectName(u"TelNo_TeComboBox"_s);
  m_telNo->setEditable(true);
  m_telNo->setInsertPolicy(QComboBox::NoInsert);
  m_telNo->setMinimumWidth(200);
  m_pwd = new QLineEdit(loginPage);
  m_pwd->setObjectName(u"Pwd_TeMaskEdit"_s);
  m_pwd->setEchoMode(QLineEdit::Password);
  m_pwd->setStyleSheet(u"lineedit-password-character: 42;"_s); // '*'
  m_recPwd = new QCheckBox(u"记住密码"_s, loginPage);
  m_recPwd->setObjectName(u"recPwd_TeCheckBox"_s);
  loginForm->addRow(NamedLabel(u"TelNo_TeLabel"_s, u"分机号码:"_s, loginPage), m_telNo);
  loginForm->addRow(NamedLabel(u"Pwd_TeLabel"_s, u"密    码:"_s, loginPage), m_pwd);
  loginForm->addRow(QString(), m_recPwd);

  // Page 2: where the exchange is.
  auto *netPage = new QWidget;
  netPage->setObjectName(u"TeTabSheet2"_s);
  auto *netForm = new QFormLayout(netPage);
  netForm->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  m_hostIP = new QLineEdit(netPage);
  m_hostIP->setObjectName(u"HostIP_TeMaskEdit"_s);
  m_hostPort = new QLineEdit(netPage);
  m_hostPort->setObjectName(u"HostPort_TeMaskEdit"_s);
  m_hostPort->setEnabled(false);
  auto *reset = NamedButton(u"TeButton1"_s, u"重置"_s, netPage);
  netForm->addRow(NamedLabel(u"HostIP_TeLabel"_s, u"交换机IP:"_s, netPage), m_hostIP);
  netForm->addRow(NamedLabel(u"HostPort_TeLabel"_s, u"端    口:"_s, netPage), m_hostPort);
  auto *resetRow = new QHBoxLayout;
  resetRow->addStretch();
  resetRow->addWidget(reset);
  netForm->addRow(resetRow);

  // Page 3: how the login goes.
  auto *infoPage = new QWidget;
  infoPage->setObjectName(u"info_TeTabSheet"_s);
  auto *infoBox = new QVBoxLayout(infoPage);
  m_info = new QLabel(infoPage);
  m_info->setObjectName(u"Logininfo_TeLabel"_s);
  m_info->setWordWrap(true);
  m_progress = new QProgressBar(infoPage);
  m_progress->setObjectName(u"Login_TeProgressBar"_s);
  m_progress->setRange(0, TLogin_Form::kProgressMax);
  m_progress->setTextVisible(false);
  infoBox->addStretch();
  infoBox->addWidget(m_info);
  infoBox->addWidget(m_progress);
  infoBox->addStretch();

  m_pages->addTab(loginPage, u"用户登录"_s);
  m_pages->addTab(netPage, u"网络设置"_s);
  m_pages->addTab(infoPage, u"状态显示"_s);

  m_login = NamedButton(u"Login_TeButton"_s, u"登 录"_s, this);
  m_leave = NamedButton(u"TeButton2"_s, u"退 出"_s, this);
  auto *keys = new QHBoxLayout;
  keys->addStretch();
  keys->addWidget(m_login);
  keys->addWidget(m_leave);

  auto *outer = new QVBoxLayout(this);
  outer->setContentsMargins(12, 12, 12, 12);
  outer->setSpacing(10);
  outer->addWidget(m_pages);
  outer->addLayout(keys);

  setTabOrder(m_telNo, m_pwd);
  setTabOrder(m_pwd, m_recPwd);
  setTabOrder(m_recPwd, m_login);
  setTabOrder(m_login, m_leave);
  setTabOrder(m_hostIP, reset);

  BindLanguage(m_logic, this);

  connect(m_login, &QPushButton::clicked, this,
          [this] { Run([this] { m_logic.Login_TeButtonClick(); }); });
  connect(m_leave, &QPushButton::clicked, this,
          [this] { Run([this] { m_logic.TeButton2Click(); }); });
  connect(reset, &QPushButton::clicked, this,
          [this] { Run([this] { m_logic.TeButton1Click(); }); });
  const auto enter = [this] { Run([this] { m_logic.EnterPressed(); }); };
  connect(m_telNo->lineEdit(), &QLineEdit::returnPressed, this, enter);
  connect(m_pwd, &QLineEdit::returnPressed, this, enter);
  connect(m_pages, &QTabWidget::currentChanged, this, [this](int index) {
    if (index >= 0)
      m_logic.ActivePage = TLogin_Form::Page(index);
  });

  // The progress bar steps only while a login click lets events through.
  connect(&m_logic.LoginInfo_Timer, &QTimer::timeout, this,
          [this] { m_progress->setValue(m_logic.Login_TeProgressBar); });
  connect(&m_logic, &TFormLogic::shown, this, &LoginDialog::OnShown);
  connect(&m_logic, &TFormLogic::closed, this, [this] {
    Refresh();
    hide();
  });

  resize(sizeHint().expandedTo(QSize(380, 0)));
  if (m_logic.Visible())
    OnShown();
}

void LoginDialog::OnShown() {
  Refresh();
  show();
  raise();
  activateWindow();
  // The logic fills its boxes from the settings right after it shows; read
  // them once more when that is done.
  QTimer::singleShot(0, this, [this] {
    if (m_logic.Visible())
      Refresh();
  });
  m_pwd->setFocus();
  if (m_telNo->currentText().isEmpty())
    m_telNo->setFocus();
}

void LoginDialog::Refresh() {
  const QSignalBlocker blockPages(m_pages);
  m_telNo->clear();
  m_telNo->addItems(m_logic.TelNo_Items);
  m_telNo->setEditText(m_logic.TelNo_TeComboBox);
  m_pwd->setText(m_logic.Pwd_TeMaskEdit);
  m_recPwd->setChecked(m_logic.recPwd_TeCheckBox);
  m_hostIP->setText(m_logic.HostIP_TeMaskEdit);
  m_hostPort->setText(m_logic.HostPort_TeMaskEdit);
  m_info->setText(m_logic.Logininfo_TeLabel);
  m_progress->setValue(m_logic.Login_TeProgressBar);
  if (!m_logic.TeButton2_Caption.isEmpty())
    m_leave->setText(m_logic.TeButton2_Caption);
  m_pages->setCurrentIndex(int(m_logic.ActivePage));
}

void LoginDialog::StoreEdits() {
  m_logic.TelNo_TeComboBox = m_telNo->currentText();
  m_logic.Pwd_TeMaskEdit = m_pwd->text();
  m_logic.recPwd_TeCheckBox = m_recPwd->isChecked();
  m_logic.HostIP_TeMaskEdit = m_hostIP->text();
  m_logic.HostPort_TeMaskEdit = m_hostPort->text();
  m_logic.ActivePage = TLogin_Form::Page(m_pages->currentIndex());
}

void LoginDialog::reject() {
  // The close box and Escape leave the dialog as its leave key does; the logic
  // hides it, or ends the program at start.
  Run([this] { m_logic.TeButton2Click(); });
}
