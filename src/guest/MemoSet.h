#pragma once

#include "support/FormLogic.h"

class TCallControlDev;
class TExtsView;

// The memo dialog ("备注修改"): the front desk's own note on a room, kept in
// Exts only; the exchange never hears of it.
class TForm_MemoSet : public TFormLogic {
  Q_OBJECT

public:
  TForm_MemoSet(TCallControlDev &table, TExtsView &exts, QObject *parent = nullptr);

  QString Caption;
  int Target = -1;
  // The lines as the box shows them.
  QString Memo_Memo;
  // What the box hands on: every line with its line end, so a one-line memo
  // ends in one too; an empty box is empty.
  QString Memo_Memo_Text() const;
  // The stored form of the lines: each with its line end.
  static QString MemoText(const QString &lines);
  bool TeButton_MemoSet_Apply_Enabled = true;
  bool TeButton_MemoSet_ApplyMulti_Enabled = true;
  bool MultiApply = false;

  // tefxButton_MemoSet: opens on the grid's current row.
  void tefxButton_MemoSetClick();
  void OpenFor(int id);
  void TeButton_MemoSet_ApplyClick();
  // Every checked row shown gets the memo; no packet goes.
  void TeButton_MemoSet_ApplyMultiClick();
  // Shows only the rows whose memo is this text; "取消过滤" shows all again.
  void TeButton3Click();
  void TeButton2Click(); // cancel
  void SetServiceAllowed(bool allowed);

  // The room's memo in Exts and on its grid row; a store error rises as
  // EDatabaseError. The apply keys and the automation API write through it.
  void WriteMemo(int id, const QString &text);

  TCallControlDev &m_table;
  TExtsView &m_exts;
};
