#pragma once

#include "support/FormLogic.h"

#include <QStringList>

class TBatchWalk;
class TCallControlDev;
class TExtsView;
class TNetModule;

// The service class dialog ("话机等级设置"): what a room may dial. Opened
// without blocking from the grid, modally from the board's phone icon.
class THint_Form : public TFormLogic {
  Q_OBJECT

public:
  THint_Form(TCallControlDev &table, TNetModule &net, TExtsView &exts, TBatchWalk &walk,
             QObject *parent = nullptr);

  QString Caption;
  int Target = -1;
  bool Modal = false;
  // "%d:%s": the class number from 1, a colon, the exchange's name.
  QStringList srvClass_TeComboBox_Items;
  int srvClass_TeComboBox_ItemIndex = -1;
  QString srvClass_TeComboBox_Text() const;
  QString TelNos_LMDLabel;
  bool srvClsApply_TeButton_Enabled = true;
  bool TeButton_srvClsApply_Multi_Enabled = true;
  // Set while the batch key applies: the exchange's acknowledgements walk the
  // checked rows on it.
  bool MultiApply = false;

  // tefxButton_Srvclass: opens on the grid's current row.
  void tefxButton_SrvclassClick();
  void OpenFor(int id, bool modal);
  void FormShow();
  void srvClsApply_TeButtonClick();
  void TeButton_srvClsApply_MultiClick();
  void TeButton2Click(); // "X"
  void SetServiceAllowed(bool allowed);

  // The item for a 0-based class: the first that begins with its number from
  // 1 and a colon, so class 9 finds "10:" and never "1:"; -1 for none.
  static int ItemOfClass(const QStringList &items, int srvClass);
  // The number before an item's first colon; -1 when there is no colon (or no
  // number before it), which goes to the exchange as class -2.
  static int ClassNumberOf(const QString &item);

private:
  TCallControlDev &m_table;
  TNetModule &m_net;
  TExtsView &m_exts;
  TBatchWalk &m_walk;
};
