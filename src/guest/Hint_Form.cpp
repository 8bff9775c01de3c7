#include "guest/Hint_Form.h"

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"
#include "guest/BatchWalk.h"
#include "guest/ExtsView.h"
#include "support/LanguagePack.h"
#include "support/Log.h"

using namespace Qt::StringLiterals;

THint_Form::THint_Form(TCallControlDev &table, TNetModule &net, TExtsView &exts, TBatchWalk &walk,
                       QObject *parent)
    : TFormLogic("THint_Form", parent), m_table(table), m_net(net), m_exts(exts), m_walk(walk) {
  Caption = u"话机等级设置"_s;
  srvClass_TeComboBox_Items = TExtsView::DefaultSrvClassItems();
}

QString THint_Form::srvClass_TeComboBox_Text() const {
  return srvClass_TeComboBox_Items.value(srvClass_TeComboBox_ItemIndex);
}

int THint_Form::ItemOfClass(const QStringList &items, int srvClass) {
  const QString prefix = u"%1:"_s.arg(srvClass + 1);
  for (int i = 0; i < items.size(); ++i) {
    if (items.at(i).startsWith(prefix))
      return i;
  }
  return -1;
}

int THint_Form::ClassNumberOf(const QString &item) {
  const qsizetype colon = item.indexOf(u':');
  if (colon < 0)
    return -1;
  bool ok = false;
  const int number = item.left(colon).trimmed().toInt(&ok);
  return ok ? number : -1;
}

void THint_Form::tefxButton_SrvclassClick() {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    OpenFor(id, false);
}

void THint_Form::OpenFor(int id, bool modal) {
  const TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Service class dialog not opened: no device %1"_s.arg(id));
    return;
  }
  Target = id;
  Modal = modal;
  // The exchange's names once it has sent them, the design items before.
  const QStringList names = m_exts.SrvClassItems ? m_exts.SrvClassItems() : QStringList();
  if (!names.isEmpty())
    srvClass_TeComboBox_Items = names;
  srvClass_TeComboBox_ItemIndex = ItemOfClass(srvClass_TeComboBox_Items, p->SrvClass);
  TelNos_LMDLabel = LangText(420) + p->TelNos;
  FormShow();
  Show();
}

void THint_Form::FormShow() {
  MultiApply = false;
}

void THint_Form::srvClsApply_TeButtonClick() {
  if (!srvClsApply_TeButton_Enabled)
    return;
  MultiApply = false;
  m_net.SrvDstID = Target;
  m_net.SrvClass = ClassNumberOf(srvClass_TeComboBox_Text()) - 1;
  m_net.Send(TNetModule::SetSrvClass);
  Close();
}

void THint_Form::TeButton_srvClsApply_MultiClick() {
  if (!TeButton_srvClsApply_Multi_Enabled)
    return;
  MultiApply = true;
  const int id = m_walk.FirstSelected();
  if (id < 0)
    return;
  m_net.SrvClass = ClassNumberOf(srvClass_TeComboBox_Text()) - 1;
  m_walk.SendFirst(u"service class"_s, id, [this](int first) {
    m_net.SrvDstID = first;
    m_net.Send(TNetModule::SetSrvClass);
  });
  Close();
}

void THint_Form::TeButton2Click() {
  Close();
}

void THint_Form::SetServiceAllowed(bool allowed) {
  srvClsApply_TeButton_Enabled = allowed;
  TeButton_srvClsApply_Multi_Enabled = allowed;
}
