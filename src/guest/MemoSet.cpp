#include "guest/MemoSet.h"

#include "devices/CallControlDev.h"
#include "guest/ExtsView.h"
#include "support/Log.h"
#include "support/Shell.h"

#include <QCoreApplication>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

TForm_MemoSet::TForm_MemoSet(TCallControlDev &table, TExtsView &exts, QObject *parent)
    : TFormLogic("TForm_MemoSet", parent), m_table(table), m_exts(exts) {
  Caption = u"备注修改"_s;
}

QString TForm_MemoSet::Memo_Memo_Text() const {
  return MemoText(Memo_Memo);
}

QString TForm_MemoSet::MemoText(const QString &lines) {
  if (lines.isEmpty())
    return {};
  static const QRegularExpression lineEnd(u"\r\n|\n|\r"_s);
  return lines.split(lineEnd).join(u"\r\n"_s) + u"\r\n"_s;
}

void TForm_MemoSet::tefxButton_MemoSetClick() {
  const int id = m_exts.Ext_CurrentID();
  if (id >= 0)
    OpenFor(id);
}

void TForm_MemoSet::OpenFor(int id) {
  const TPhoneTis *p = m_table.Device(id);
  if (!p) {
    WriteLog(u"Memo dialog not opened: no device %1"_s.arg(id));
    return;
  }
  Target = id;
  Caption = u"%1-备注修改"_s.arg(p->TelNos);
  QString memo = m_exts.LocateExts(id) ? m_exts.ADOQuery_Exts.AsString(u"Memo"_s) : QString();
  // The box shows lines; the last line end is the box's own.
  if (memo.endsWith(u"\r\n"_s))
    memo.chop(2);
  else if (memo.endsWith(u'\n') || memo.endsWith(u'\r'))
    memo.chop(1);
  Memo_Memo = memo;
  Show();
}

void TForm_MemoSet::WriteMemo(int id, const QString &text) {
  m_exts.Exts_Write(id, [&](TADOQuery &q) { q.SetString(u"Memo"_s, text); });
  if (TPhoneTis *p = m_table.Device(id))
    p->LiveUpdate = false;
  m_exts.Ext_UpdateRow(id);
}

void TForm_MemoSet::TeButton_MemoSet_ApplyClick() {
  if (!TeButton_MemoSet_Apply_Enabled)
    return;
  MultiApply = false;
  bool done = false;
  RunGuarded([&] {
    WriteMemo(Target, Memo_Memo_Text());
    done = true;
  });
  if (done)
    Close();
}

void TForm_MemoSet::TeButton_MemoSet_ApplyMultiClick() {
  if (!TeButton_MemoSet_ApplyMulti_Enabled)
    return;
  MultiApply = true;
  if (m_exts.Ext_NextSelected(1) < 0) {
    TheShell().Message(MessageKind::Warning, u"警告提示:请先选择!"_s);
    return;
  }
  // The rooms are taken before the loop lets events in, which may sort or
  // filter the grid under it.
  TExtGridModel &g = m_exts.AdvStringGrid_Exts;
  QList<int> ids;
  for (int row = 0; row < g.ShownCount(); ++row) {
    const int slot = g.SlotAt(row);
    bool ok = false;
    const int id = g.Cell(slot, TExtGridModel::ColID).toInt(&ok);
    if (ok && g.Check(slot) == u"TRUE"_s)
      ids.append(id);
  }
  bool done = true;
  for (int id : ids) {
    const int slot = g.SlotOfId(id);
    if (slot >= 0)
      g.SetCurrentSlot(slot);
    RunGuarded([&] {
      try {
        WriteMemo(id, Memo_Memo_Text());
      } catch (...) {
        done = false;
        throw;
      }
    });
    if (!done)
      break; // the store refused: the rest would fail the same way
    QCoreApplication::processEvents();
  }
  if (done)
    Close();
}

void TForm_MemoSet::TeButton3Click() {
  TExtGridModel &g = m_exts.AdvStringGrid_Exts;
  g.ClearFilter();
  g.SetFilter(TExtGridModel::ColMemo, Memo_Memo_Text());
  Close();
}

void TForm_MemoSet::TeButton2Click() {
  Close();
}

void TForm_MemoSet::SetServiceAllowed(bool allowed) {
  TeButton_MemoSet_Apply_Enabled = allowed;
  TeButton_MemoSet_ApplyMulti_Enabled = allowed;
}
