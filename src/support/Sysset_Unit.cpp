#include "support/Sysset_Unit.h"

#include "support/LanguagePack.h"
#include "support/Paths.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QFileInfo>
#include <QThread>

#include <memory>

#include <utility>

using namespace Qt::StringLiterals;

Tsysset_Form::Tsysset_Form(QObject *parent) : TFormLogic("Tsysset_Form", parent) {
  TeListView_ExtsPanel = {
      {u"模拟用户"_s, 1, true},    {u"数字用户"_s, 4, true},  {u"模拟中继"_s, 5, true},
      {u"数字中继PRI"_s, 9, true}, {u"无线中继"_s, 12, true}, {u"SS1"_s, 14, true},
      {u"IVR"_s, 6, true},
  };
  // Saving takes the list's checks and the link text as the window shows them.
  TSettingsBindings &b = SettingsBindings();
  b.ExtsPanelChecks = [this] {
    QList<std::pair<int, bool>> checks;
    for (const TExtsPanelItem &item : TeListView_ExtsPanel)
      checks.append({item.Type, item.Checked});
    return checks;
  };
  b.LinkUrlText = [this] { return TeSEdit_LinkURL; };
}

Tsysset_Form::~Tsysset_Form() {
  TSettingsBindings &b = SettingsBindings();
  b.ExtsPanelChecks = nullptr;
  b.LinkUrlText = nullptr;
}

void Tsysset_Form::FormCreate() {
  TSysConfig &c = SysConfig();
  LoadConfig(c);
  LoadStateCodes(AppFileOrShipped(u"ini/sys_RadioB.ini"_s));

  HostIP_LMDEdit = c.Host;
  HostPort_LMDEdit = c.Port;
  OutNo_LMDEdit = c.OutNo;
  LDNo_LMDEdit = c.LDNo;
  DBFile_TeEdit = c.DBFile;
  RingFlag_TeSComboBox = c.RingFlag == 0 ? 0 : 1;

  // At start the ring key takes str_525/str_526; the ring page's apply button
  // uses str_531/str_532. The two pairs are separate texts on purpose.
  if (c.RingFlag != 0)
    emit ringToneButtonChanged(kRingOffImage, LangText(526));
  else
    emit ringToneButtonChanged(kRingOnImage, LangText(525));

  if (c.Debug == 0)
    emit logPageVisibleChanged(false);

  for (TExtsPanelItem &item : TeListView_ExtsPanel)
    item.Checked = c.TypeVisible[item.Type];

  TeSEdit_LinkURL = c.LinkURL;
  FillFrontDeskPage();
  // --- front desk: wake-up follow-up ---
  WakeFollowUp_TeCheckBox = c.WakeFollowUp != 0;
  WakeRetry_TeCheckBox = c.WakeRetry != 0;
  WakeRetryMinutes_TeSpinEdit = c.WakeRetryMinutes;
  WakeRetryMax_TeSpinEdit = c.WakeRetryMax;
  Api_Enabled_TeCheckBox = c.ApiEnabled;
  Api_Port_TeSpinEdit = c.ApiPort;
  Api_Listen_TeEdit = c.ApiListen;
  Api_Token_TeEdit = c.ApiToken;
  FillDatabasePage();
  ActivePage = TabSheet1;
}

void Tsysset_Form::FormShow() {
  const TSysConfig &c = SysConfig();
  HostIP_LMDEdit = c.Host;
  HostPort_LMDEdit = c.Port;
  OutNo_LMDEdit = c.OutNo;
  LDNo_LMDEdit = c.LDNo;
  if (!m_hostToShow.isEmpty())
    HostIP_LMDEdit = std::exchange(m_hostToShow, QString());
  FillFrontDeskPage();
}

void Tsysset_Form::ShowExchangePage(const QString &host) {
  ActivePage = TabSheet1;
  m_hostToShow = host;
  Show();
}

void Tsysset_Form::TeEffectButton1Click() {
  TSysConfig &c = SysConfig();
  c.Host = HostIP_LMDEdit;
  c.Port = HostPort_LMDEdit;
  c.OutNo = OutNo_LMDEdit;
  c.LDNo = LDNo_LMDEdit;
  Close();
}

void Tsysset_Form::TeEffectButton2Click() {
  Close();
}

void Tsysset_Form::TeSpeedButton1Click() {
  // The store is one SQLite file; the filter comes with the language texts.
  QString filter = ControlText(u"DBFile_OpenDialog"_s, TextProperty::Filter);
  if (filter.isEmpty())
    filter = u"数据库文件[*.db]|*.db"_s;
  const QString chosen = TheShell().ChooseOpenFile(filter, DBFile_TeEdit);
  if (!chosen.isEmpty())
    DBFile_TeEdit = chosen;
}

void Tsysset_Form::TeEffectButton3Click() {
  TSysConfig &c = SysConfig();
  if (DB_Kind_TeComboBox == 1) {
    const TStoreServer server = DB_ServerShown();
    if (server.Database.isEmpty() && server.Service.isEmpty()) {
      TheShell().Message(MessageKind::Warning, u"错误提示:请填写数据库名或服务名！"_s);
      return;
    }
    server.ToConfig(c);
    TheShell().Message(MessageKind::Information,
                       u"提示:数据库服务器设置成功，重新启动程序后生效。"_s);
    return;
  }
  const QFileInfo file(DBFile_TeEdit);
  if (!DBFile_TeEdit.isEmpty() && file.exists() && file.isFile()) {
    c.DBFile = DBFile_TeEdit;
    // Back to the file: the server's fields stay for a later change of mind.
    c.DBDriver.clear();
    TheShell().Message(MessageKind::Information, LangText(529));
  } else {
    TheShell().Message(MessageKind::Warning, LangText(530));
  }
}

void Tsysset_Form::TeEffectButton4Click() {
  Close();
}

void Tsysset_Form::TeEffectButton5Click() {
  TSysConfig &c = SysConfig();
  c.RingFlag = RingFlag_TeSComboBox;
  if (c.RingFlag == 0)
    emit ringToneButtonChanged(kRingOnImage, LangText(531));
  else
    emit ringToneButtonChanged(kRingOffImage, LangText(532));
}

void Tsysset_Form::TeEffectButton6Click() {
  Close();
}

void Tsysset_Form::TeEffectButton7Click() {
  TSysConfig &c = SysConfig();
  for (const TExtsPanelItem &item : TeListView_ExtsPanel)
    c.TypeVisible[item.Type] = item.Checked;
  Close();
}

void Tsysset_Form::TeEffectButton8Click() {
  SysConfig().LinkURL = TeSEdit_LinkURL;
}

namespace {
// The class number before an item's colon, less one; -1 for an item without.
int ClassOfItem(const QString &item) {
  bool ok = false;
  const int number = item.section(u':', 0, 0).toInt(&ok);
  return ok && item.contains(u':') ? number - 1 : -1;
}

int ItemOfClass(const QStringList &items, int srvClass) {
  if (srvClass < 0)
    return -1;
  for (int i = 0; i < items.size(); ++i) {
    if (ClassOfItem(items.at(i)) == srvClass)
      return i;
  }
  return -1;
}
} // namespace

void Tsysset_Form::FillFrontDeskPage() {
  const TSysConfig &c = SysConfig();
  FrontDesk_ClassItems = SrvClassNames ? SrvClassNames() : QStringList();
  // A class set earlier stays chosen while the exchange's list is unknown: the
  // page shows it by its number, and an apply keeps it.
  const auto add = [this](int srvClass) {
    if (srvClass >= 0 && ItemOfClass(FrontDesk_ClassItems, srvClass) < 0)
      FrontDesk_ClassItems.append(u"%1:"_s.arg(srvClass + 1));
  };
  add(c.VacantClass);
  add(c.OccupiedClass);
  FrontDesk_VacantClass_ItemIndex = ItemOfClass(FrontDesk_ClassItems, c.VacantClass);
  FrontDesk_OccupiedClass_ItemIndex = ItemOfClass(FrontDesk_ClassItems, c.OccupiedClass);
}

void Tsysset_Form::TeButton_FrontDesk_ApplyClick() {
  const auto classAt = [this](int index) {
    return index >= 0 && index < FrontDesk_ClassItems.size()
               ? ClassOfItem(FrontDesk_ClassItems.at(index))
               : -1;
  };
  TSysConfig &c = SysConfig();
  c.VacantClass = classAt(FrontDesk_VacantClass_ItemIndex);
  c.OccupiedClass = classAt(FrontDesk_OccupiedClass_ItemIndex);
  emit frontDeskChanged();
}

// --- front desk: wake-up follow-up ---
void Tsysset_Form::WakeRetry_ApplyClick() {
  TSysConfig &c = SysConfig();
  c.WakeFollowUp = WakeFollowUp_TeCheckBox ? 1 : 0;
  c.WakeRetry = WakeRetry_TeCheckBox ? 1 : 0;
  c.WakeRetryMinutes = WakeRetryMinutes_TeSpinEdit = qBound(1, WakeRetryMinutes_TeSpinEdit, 240);
  c.WakeRetryMax = WakeRetryMax_TeSpinEdit = qBound(1, WakeRetryMax_TeSpinEdit, 10);
}

// --- the [Api] page ---
void Tsysset_Form::Api_ApplyClick() {
  const QString token = Api_Token_TeEdit.trimmed();
  const QString refusal = ApiTokenRefusal(token);
  if (Api_Enabled_TeCheckBox && !refusal.isEmpty()) {
    TheShell().Message(MessageKind::Warning, refusal);
    return;
  }
  TSysConfig &c = SysConfig();
  c.ApiEnabled = Api_Enabled_TeCheckBox;
  c.ApiPort = Api_Port_TeSpinEdit = qBound(1, Api_Port_TeSpinEdit, 65535);
  c.ApiListen = Api_Listen_TeEdit.trimmed().isEmpty() ? u"127.0.0.1"_s : Api_Listen_TeEdit.trimmed();
  Api_Listen_TeEdit = c.ApiListen;
  c.ApiToken = Api_Token_TeEdit = token;
  emit apiChanged();
}

// --- page 2: the database server ---
void Tsysset_Form::FillDatabasePage() {
  const TSysConfig &c = SysConfig();
  DB_Kind_TeComboBox = c.SharedStoreInUse() ? 1 : 0;
  DB_Host_TeEdit = c.DBHost;
  DB_Port_TeSpinEdit = c.DBPort;
  DB_Database_TeEdit = c.DBDatabase;
  DB_User_TeEdit = c.DBUser;
  DB_Password_TeEdit = c.DBPassword;
  DB_Service_TeEdit = c.DBService;
}

TStoreServer Tsysset_Form::DB_ServerShown() const {
  return {DB_Host_TeEdit.trimmed(),        qBound(1, DB_Port_TeSpinEdit, 65535),
          DB_Database_TeEdit.trimmed(),    DB_User_TeEdit.trimmed(),
          DB_Password_TeEdit,              DB_Service_TeEdit.trimmed()};
}

void Tsysset_Form::TeButton_DB_TestClick() {
  if (DB_Testing || !ProbeStoreServer)
    return;
  const TStoreServer server = DB_ServerShown();
  DB_Testing = true;
  DB_TestResult_Label = u"正在连接 %1 ……"_s.arg(server.Describe());
  emit dbTestChanged();
  // The answer comes back through the thread's end, which Qt delivers on this
  // object's thread and drops if the window's logic is gone by then.
  auto answer = std::make_shared<TServerProbe>();
  QThread *worker = QThread::create(
      [probe = ProbeStoreServer, server, answer] { *answer = probe(server); });
  connect(worker, &QThread::finished, this, [this, answer] {
    DB_Testing = false;
    DB_TestResult_Label = answer->Words;
    emit dbTestChanged();
  });
  connect(worker, &QThread::finished, worker, &QObject::deleteLater);
  worker->start();
}
