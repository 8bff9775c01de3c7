#include "ui/SettingsDialog.h"

#include "support/Shell.h"
#include "support/Sysset_Unit.h"
#include "ui/LanguageBinding.h"
#include "ui/Named.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {
// A page: its fields on top, its keys at the lower right.
QWidget *Page(const QString &name, QLayout *fields, std::initializer_list<QPushButton *> keys) {
  auto *page = new QWidget;
  page->setObjectName(name);
  auto *box = new QVBoxLayout(page);
  box->addLayout(fields);
  box->addStretch();
  auto *row = new QHBoxLayout;
  row->addStretch();
  for (QPushButton *key : keys)
    row->addWidget(key);
  box->addLayout(row);
  return page;
}

QFormLayout *Form() {
  auto *form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  form->setVerticalSpacing(10);
  return form;
}
} // namespace

template <typename Handler> void SettingsDialog::Run(Handler handler) {
  StoreEdits();
  RunGuarded(handler);
  Refresh();
}

SettingsDialog::SettingsDialog(Tsysset_Form &logic, QWidget *parent)
    : QDialog(parent), m_logic(logic) {
  setObjectName(u"Tsysset_Form"_s);
  setWindowTitle(u"系统设置"_s);
  setWindowModality(Qt::WindowModal);

  m_pages = new QTabWidget(this);
  m_pages->setObjectName(u"PageControl1"_s);
  // Every page title stays readable in either language; the window grows instead.
  m_pages->setUsesScrollButtons(false);

  // The exchange.
  m_hostIP = NamedEdit(u"HostIP_LMDEdit"_s, this);
  m_hostPort = NamedEdit(u"HostPort_LMDEdit"_s, this);
  m_hostPort->setReadOnly(true);
  m_outNo = NamedEdit(u"OutNo_LMDEdit"_s, this);
  m_ldNo = NamedEdit(u"LDNo_LMDEdit"_s, this);
  auto *exchange = Form();
  exchange->addRow(NamedLabel(u"StaticText1"_s, u"交换机IP地址:"_s, this), m_hostIP);
  exchange->addRow(NamedLabel(u"StaticText2"_s, u"端口:"_s, this), m_hostPort);
  exchange->addRow(NamedLabel(u"StaticText3"_s, u"外线号码:"_s, this), m_outNo);
  exchange->addRow(NamedLabel(u"StaticText4"_s, u"长途号码:"_s, this), m_ldNo);
  auto *apply1 = NamedButton(u"TeEffectButton1"_s, u"应 用"_s, this);
  auto *cancel1 = NamedButton(u"TeEffectButton2"_s, u"取 消"_s, this);

  // The store.
  m_dbFile = NamedEdit(u"DBFile_TeEdit"_s, this);
  auto *browse = NamedButton(u"TeSpeedButton1"_s, u"浏览..."_s, this);
  auto *dbRow = new QHBoxLayout;
  dbRow->addWidget(m_dbFile, 1);
  dbRow->addWidget(browse);
  auto *store = Form();
  // The file, or a database server several desks share.
  m_dbKind = new QComboBox(this);
  m_dbKind->setObjectName(u"DB_Kind_TeComboBox"_s);
  m_dbKind->addItems({u"本机数据库文件"_s, u"数据库服务器 (PostgreSQL，多个前台共用)"_s});
  store->addRow(NamedLabel(u"TeLabel_DBKind"_s, u"数据存放:"_s, this), m_dbKind);
  m_dbFileRow = new QWidget(this);
  auto *fileForm = Form();
  fileForm->setContentsMargins(0, 0, 0, 0);
  fileForm->addRow(NamedLabel(u"StaticText5"_s, u"数据库文件:"_s, this), dbRow);
  m_dbFileRow->setLayout(fileForm);
  store->addRow(m_dbFileRow);
  m_dbServerFields = new QWidget(this);
  m_dbServerFields->setObjectName(u"DB_ServerFields"_s);
  m_dbHost = NamedEdit(u"DB_Host_TeEdit"_s, this);
  m_dbPort = new QSpinBox(this);
  m_dbPort->setObjectName(u"DB_Port_TeSpinEdit"_s);
  m_dbPort->setRange(1, 65535);
  m_dbDatabase = NamedEdit(u"DB_Database_TeEdit"_s, this);
  m_dbUser = NamedEdit(u"DB_User_TeEdit"_s, this);
  m_dbPassword = NamedEdit(u"DB_Password_TeEdit"_s, this);
  m_dbPassword->setEchoMode(QLineEdit::PasswordEchoOnEdit);
  m_dbService = NamedEdit(u"DB_Service_TeEdit"_s, this);
  m_dbService->setPlaceholderText(u"可不填；填写后，上面空着的项取自 pg_service.conf"_s);
  m_dbTest = NamedButton(u"TeButton_DB_Test"_s, u"测试连接"_s, this);
  m_dbTestResult = NamedLabel(u"TeLabel_DBTestResult"_s, QString(), this);
  m_dbTestResult->setWordWrap(true);
  m_dbTestResult->setTextInteractionFlags(Qt::TextSelectableByMouse);
  auto *serverForm = Form();
  serverForm->setContentsMargins(0, 0, 0, 0);
  serverForm->addRow(NamedLabel(u"TeLabel_DBHost"_s, u"服务器地址:"_s, this), m_dbHost);
  serverForm->addRow(NamedLabel(u"TeLabel_DBPort"_s, u"端口:"_s, this), m_dbPort);
  serverForm->addRow(NamedLabel(u"TeLabel_DBDatabase"_s, u"数据库名:"_s, this), m_dbDatabase);
  serverForm->addRow(NamedLabel(u"TeLabel_DBUser"_s, u"用户名:"_s, this), m_dbUser);
  serverForm->addRow(NamedLabel(u"TeLabel_DBPassword"_s, u"密码:"_s, this), m_dbPassword);
  serverForm->addRow(NamedLabel(u"TeLabel_DBService"_s, u"服务名:"_s, this), m_dbService);
  serverForm->addRow(m_dbTest, m_dbTestResult);
  m_dbServerFields->setLayout(serverForm);
  store->addRow(m_dbServerFields);
  auto *dbNote = NamedLabel(u"TeLabel_DBNote"_s, u"注意：应用后保存，程序下次启动时生效。"_s, this);
  dbNote->setWordWrap(true);
  store->addRow(dbNote);
  connect(m_dbKind, &QComboBox::currentIndexChanged, this, [this](int kind) {
    m_dbFileRow->setVisible(kind == 0);
    m_dbServerFields->setVisible(kind == 1);
  });
  auto *apply2 = NamedButton(u"TeEffectButton3"_s, u"应 用"_s, this);
  auto *cancel2 = NamedButton(u"TeEffectButton4"_s, u"取 消"_s, this);

  // Incoming calls.
  m_ringFlag = new QComboBox(this);
  m_ringFlag->setObjectName(u"RingFlag_TeSComboBox"_s);
  m_ringFlag->addItems({u"开"_s, u"关"_s});
  auto *ring = Form();
  ring->addRow(NamedLabel(u"StaticText6"_s, u"来电振铃音开关:"_s, this), m_ringFlag);
  auto *apply3 = NamedButton(u"TeEffectButton5"_s, u"应 用"_s, this);
  auto *cancel3 = NamedButton(u"TeEffectButton6"_s, u"取 消"_s, this);

  // The port types the board shows.
  m_extsPanel = new QListWidget(this);
  m_extsPanel->setObjectName(u"TeListView_ExtsPanel"_s);
  for (const TExtsPanelItem &item : m_logic.TeListView_ExtsPanel) {
    auto *row = new QListWidgetItem(item.Caption, m_extsPanel);
    row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
    row->setData(Qt::UserRole, item.Type);
  }
  auto *panels = new QVBoxLayout;
  auto *panelsCaption = NamedLabel(
      u"TeLabel_ExtsPanel"_s, u"选择分机面板可视端口:(注意：重新\"刷新\"设置才会生效)"_s, this);
  panelsCaption->setWordWrap(true);
  panels->addWidget(panelsCaption);
  panels->addWidget(m_extsPanel);
  auto *apply4 = NamedButton(u"TeEffectButton7"_s, u"应 用"_s, this);

  // The external program.
  m_linkURL = NamedEdit(u"TeSEdit_LinkURL"_s, this);
  auto *link = Form();
  link->addRow(NamedLabel(u"TeLabel_LinkURL"_s, u"外部接口程序:"_s, this), m_linkURL);
  auto *apply5 = NamedButton(u"TeEffectButton8"_s, u"立即应用"_s, this);

  // The front desk: one form, so later keys of [FrontDesk] are one row each.
  m_vacantClass = new QComboBox(this);
  m_vacantClass->setObjectName(u"FrontDesk_VacantClass"_s);
  m_occupiedClass = new QComboBox(this);
  m_occupiedClass->setObjectName(u"FrontDesk_OccupiedClass"_s);
  auto *frontDesk = Form();
  frontDesk->addRow(NamedLabel(u"TeLabel_VacantClass"_s, u"空房服务级别:"_s, this),
                    m_vacantClass);
  frontDesk->addRow(NamedLabel(u"TeLabel_OccupiedClass"_s, u"入住服务级别:"_s, this),
                    m_occupiedClass);
  // The wake-up follow-up: the alarm and the do-not-disturb question, and the retries.
  m_wakeFollowUp = new QCheckBox(u"叫醒失败告警；叫醒与免打扰冲突时先询问"_s, this);
  m_wakeFollowUp->setObjectName(u"WakeFollowUp_TeCheckBox"_s);
  m_wakeRetry = new QCheckBox(u"叫醒无人接听时自动重试"_s, this);
  m_wakeRetry->setObjectName(u"WakeRetry_TeCheckBox"_s);
  m_wakeRetryMinutes = new QSpinBox(this);
  m_wakeRetryMinutes->setObjectName(u"WakeRetryMinutes_TeSpinEdit"_s);
  m_wakeRetryMinutes->setRange(1, 240);
  m_wakeRetryMinutes->setSuffix(u" 分钟"_s);
  m_wakeRetryMax = new QSpinBox(this);
  m_wakeRetryMax->setObjectName(u"WakeRetryMax_TeSpinEdit"_s);
  m_wakeRetryMax->setRange(1, 10);
  frontDesk->addRow(m_wakeFollowUp);
  frontDesk->addRow(m_wakeRetry);
  frontDesk->addRow(NamedLabel(u"TeLabel_WakeRetryMinutes"_s, u"重试间隔:"_s, this),
                    m_wakeRetryMinutes);
  frontDesk->addRow(NamedLabel(u"TeLabel_WakeRetryMax"_s, u"最多重试次数:"_s, this),
                    m_wakeRetryMax);
  // Retries only follow an alarm.
  connect(m_wakeFollowUp, &QCheckBox::toggled, m_wakeRetry, &QWidget::setEnabled);
  auto *applyFrontDesk = NamedButton(u"TeButton_FrontDesk_Apply"_s, u"应 用"_s, this);

  // The automation API.
  m_apiEnabled = new QCheckBox(u"启用自动化接口"_s, this);
  m_apiEnabled->setObjectName(u"Api_Enabled_TeCheckBox"_s);
  m_apiPort = new QSpinBox(this);
  m_apiPort->setObjectName(u"Api_Port_TeSpinEdit"_s);
  m_apiPort->setRange(1, 65535);
  m_apiListen = NamedEdit(u"Api_Listen_TeEdit"_s, this);
  m_apiToken = NamedEdit(u"Api_Token_TeEdit"_s, this);
  m_apiToken->setEchoMode(QLineEdit::PasswordEchoOnEdit);
  auto *api = Form();
  api->addRow(m_apiEnabled);
  api->addRow(NamedLabel(u"TeLabel_ApiListen"_s, u"监听地址:"_s, this), m_apiListen);
  api->addRow(NamedLabel(u"TeLabel_ApiPort"_s, u"端口:"_s, this), m_apiPort);
  api->addRow(NamedLabel(u"TeLabel_ApiToken"_s, u"令牌(至少16个字符):"_s, this), m_apiToken);
  auto *applyApi = NamedButton(u"TeButton_Api_Apply"_s, u"应 用"_s, this);

  m_pages->addTab(Page(u"TabSheet1"_s, exchange, {apply1, cancel1}), u"交换机参数"_s);
  m_pages->addTab(Page(u"TabSheet2"_s, store, {apply2, cancel2}), u"数据库设置"_s);
  m_pages->addTab(Page(u"TabSheet3"_s, ring, {apply3, cancel3}), u"来电设置"_s);
  m_pages->addTab(Page(u"TabSheet6"_s, panels, {apply4}), u"面板端口设置"_s);
  m_pages->addTab(Page(u"TabSheet7"_s, link, {apply5}), u"外部接口配置"_s);
  m_pages->addTab(Page(u"TabSheet_FrontDesk"_s, frontDesk, {applyFrontDesk}), u"前台"_s);
  m_pages->addTab(Page(u"TabSheet_Api"_s, api, {applyApi}), u"自动化接口"_s);

  auto *outer = new QVBoxLayout(this);
  outer->setContentsMargins(12, 12, 12, 12);
  outer->addWidget(m_pages);

  setTabOrder(m_hostIP, m_outNo);
  setTabOrder(m_outNo, m_ldNo);
  setTabOrder(m_ldNo, apply1);
  setTabOrder(apply1, cancel1);
  setTabOrder(m_dbFile, browse);
  setTabOrder(browse, apply2);
  setTabOrder(apply2, cancel2);
  setTabOrder(m_vacantClass, m_occupiedClass);
  setTabOrder(m_occupiedClass, applyFrontDesk);

  BindLanguage(m_logic, this);

  const auto onClick = [this](QPushButton *button, void (Tsysset_Form::*handler)()) {
    connect(button, &QPushButton::clicked, this,
            [this, handler] { Run([this, handler] { (m_logic.*handler)(); }); });
  };
  onClick(apply1, &Tsysset_Form::TeEffectButton1Click);
  onClick(cancel1, &Tsysset_Form::TeEffectButton2Click);
  onClick(browse, &Tsysset_Form::TeSpeedButton1Click);
  onClick(apply2, &Tsysset_Form::TeEffectButton3Click);
  onClick(m_dbTest, &Tsysset_Form::TeButton_DB_TestClick);
  // The answer arrives later; only the key and the label change then, so what
  // was typed meanwhile stays.
  connect(&m_logic, &Tsysset_Form::dbTestChanged, this, &SettingsDialog::ShowDbTest);
  onClick(cancel2, &Tsysset_Form::TeEffectButton4Click);
  onClick(apply3, &Tsysset_Form::TeEffectButton5Click);
  onClick(cancel3, &Tsysset_Form::TeEffectButton6Click);
  onClick(apply4, &Tsysset_Form::TeEffectButton7Click);
  onClick(apply5, &Tsysset_Form::TeEffectButton8Click);
  onClick(applyFrontDesk, &Tsysset_Form::TeButton_FrontDesk_ApplyClick);
  onClick(applyFrontDesk, &Tsysset_Form::WakeRetry_ApplyClick);
  onClick(applyApi, &Tsysset_Form::Api_ApplyClick);

  // Saving the settings reads the list's checks and the link text as they
  // stand, applied or not, so both go into the logic as soon as they change.
  connect(m_extsPanel, &QListWidget::itemChanged, this, [this] {
    if (!m_refreshing)
      StoreEdits();
  });
  connect(m_linkURL, &QLineEdit::textEdited, this, [this] { StoreEdits(); });
  // Enter applies the page in sight: its apply key is the dialog's default
  // while the page shows (the keys of hidden pages never are).
  const QList<QPushButton *> pageApply = {apply1, apply2, apply3, apply4, apply5, applyFrontDesk,
                                          applyApi};
  const auto makeDefault = [pageApply](int index) {
    if (index >= 0 && index < pageApply.size())
      pageApply.at(index)->setDefault(true);
  };
  makeDefault(m_pages->currentIndex());
  connect(m_pages, &QTabWidget::currentChanged, this, [this, makeDefault](int index) {
    makeDefault(index);
    if (index >= 0 && !m_refreshing)
      m_logic.ActivePage = Tsysset_Form::Page(index);
  });

  connect(&m_logic, &TFormLogic::shown, this, &SettingsDialog::OnShown);
  connect(&m_logic, &TFormLogic::closed, this, &QWidget::hide);

  Refresh();
  resize(sizeHint().expandedTo(QSize(480, 340)));
  if (m_logic.Visible())
    OnShown();
}

void SettingsDialog::OnShown() {
  m_logic.FormShow();
  Refresh();
  show();
  raise();
  activateWindow();
}

void SettingsDialog::Refresh() {
  m_refreshing = true;
  m_hostIP->setText(m_logic.HostIP_LMDEdit);
  m_hostPort->setText(m_logic.HostPort_LMDEdit);
  m_outNo->setText(m_logic.OutNo_LMDEdit);
  m_ldNo->setText(m_logic.LDNo_LMDEdit);
  m_dbFile->setText(m_logic.DBFile_TeEdit);
  m_dbKind->setCurrentIndex(m_logic.DB_Kind_TeComboBox);
  m_dbFileRow->setVisible(m_logic.DB_Kind_TeComboBox == 0);
  m_dbServerFields->setVisible(m_logic.DB_Kind_TeComboBox == 1);
  m_dbHost->setText(m_logic.DB_Host_TeEdit);
  m_dbPort->setValue(m_logic.DB_Port_TeSpinEdit);
  m_dbDatabase->setText(m_logic.DB_Database_TeEdit);
  m_dbUser->setText(m_logic.DB_User_TeEdit);
  m_dbPassword->setText(m_logic.DB_Password_TeEdit);
  m_dbService->setText(m_logic.DB_Service_TeEdit);
  ShowDbTest();
  m_ringFlag->setCurrentIndex(m_logic.RingFlag_TeSComboBox);
  for (int i = 0; i < m_extsPanel->count() && i < m_logic.TeListView_ExtsPanel.size(); ++i)
    m_extsPanel->item(i)->setCheckState(m_logic.TeListView_ExtsPanel[i].Checked ? Qt::Checked
                                                                                : Qt::Unchecked);
  m_linkURL->setText(m_logic.TeSEdit_LinkURL);
  // "(未设置)" first: index 0 of a list is the logic's -1.
  for (QComboBox *box : {m_vacantClass, m_occupiedClass}) {
    box->clear();
    box->addItem(u"(未设置)"_s);
    box->addItems(m_logic.FrontDesk_ClassItems);
  }
  m_vacantClass->setCurrentIndex(m_logic.FrontDesk_VacantClass_ItemIndex + 1);
  m_occupiedClass->setCurrentIndex(m_logic.FrontDesk_OccupiedClass_ItemIndex + 1);
  m_wakeFollowUp->setChecked(m_logic.WakeFollowUp_TeCheckBox);
  m_wakeRetry->setEnabled(m_logic.WakeFollowUp_TeCheckBox);
  m_wakeRetry->setChecked(m_logic.WakeRetry_TeCheckBox);
  m_wakeRetryMinutes->setValue(m_logic.WakeRetryMinutes_TeSpinEdit);
  m_wakeRetryMax->setValue(m_logic.WakeRetryMax_TeSpinEdit);
  m_apiEnabled->setChecked(m_logic.Api_Enabled_TeCheckBox);
  m_apiPort->setValue(m_logic.Api_Port_TeSpinEdit);
  m_apiListen->setText(m_logic.Api_Listen_TeEdit);
  m_apiToken->setText(m_logic.Api_Token_TeEdit);
  m_pages->setCurrentIndex(int(m_logic.ActivePage));
  m_refreshing = false;
}

void SettingsDialog::StoreEdits() {
  m_logic.HostIP_LMDEdit = m_hostIP->text();
  m_logic.HostPort_LMDEdit = m_hostPort->text();
  m_logic.OutNo_LMDEdit = m_outNo->text();
  m_logic.LDNo_LMDEdit = m_ldNo->text();
  m_logic.DBFile_TeEdit = m_dbFile->text();
  m_logic.DB_Kind_TeComboBox = qMax(0, m_dbKind->currentIndex());
  m_logic.DB_Host_TeEdit = m_dbHost->text();
  m_logic.DB_Port_TeSpinEdit = m_dbPort->value();
  m_logic.DB_Database_TeEdit = m_dbDatabase->text();
  m_logic.DB_User_TeEdit = m_dbUser->text();
  m_logic.DB_Password_TeEdit = m_dbPassword->text();
  m_logic.DB_Service_TeEdit = m_dbService->text();
  m_logic.RingFlag_TeSComboBox = qMax(0, m_ringFlag->currentIndex());
  for (int i = 0; i < m_extsPanel->count() && i < m_logic.TeListView_ExtsPanel.size(); ++i)
    m_logic.TeListView_ExtsPanel[i].Checked = m_extsPanel->item(i)->checkState() == Qt::Checked;
  m_logic.TeSEdit_LinkURL = m_linkURL->text();
  m_logic.FrontDesk_VacantClass_ItemIndex = m_vacantClass->currentIndex() - 1;
  m_logic.FrontDesk_OccupiedClass_ItemIndex = m_occupiedClass->currentIndex() - 1;
  m_logic.WakeFollowUp_TeCheckBox = m_wakeFollowUp->isChecked();
  m_logic.WakeRetry_TeCheckBox = m_wakeRetry->isChecked();
  m_logic.WakeRetryMinutes_TeSpinEdit = m_wakeRetryMinutes->value();
  m_logic.WakeRetryMax_TeSpinEdit = m_wakeRetryMax->value();
  m_logic.Api_Enabled_TeCheckBox = m_apiEnabled->isChecked();
  m_logic.Api_Port_TeSpinEdit = m_apiPort->value();
  m_logic.Api_Listen_TeEdit = m_apiListen->text();
  m_logic.Api_Token_TeEdit = m_apiToken->text();
  m_logic.ActivePage = Tsysset_Form::Page(m_pages->currentIndex());
}

void SettingsDialog::ShowDbTest() {
  m_dbTest->setEnabled(!m_logic.DB_Testing && bool(m_logic.ProbeStoreServer));
  m_dbTestResult->setText(m_logic.DB_TestResult_Label);
}

void SettingsDialog::reject() {
  Run([this] { m_logic.TeEffectButton2Click(); });
}
