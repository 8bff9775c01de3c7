#include "guest/ExtsView.h"

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"
#include "directory/StoreError.h"
#include "directory/SysDM_Unit.h"
#include "support/Clock.h"
#include "support/LanguagePack.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QMetaMethod>

using namespace Qt::StringLiterals;

namespace {
// Title keys of the columns; 0: the column has no title.
constexpr int kTitleKeys[TExtGridModel::kColumnCount] = {0,   0,   698, 704, 699, 700,
                                                         701, 753, 702, 706, 707, 0};

const QString kTrue = u"TRUE"_s;
const QString kFalse = u"FALSE"_s;
} // namespace

TExtsView::TExtsView(TCallControlDev &table, TNetModule &net, QObject *parent)
    : QObject(parent), m_table(table), m_net(net) {
  AdvStringGrid_Exts.setObjectName(u"AdvStringGrid_Exts"_s);
  AdvStringGrid_Exts.RoomNoEdited = [this](int id, const QString &roomNo) {
    try {
      Exts_Write(id, [&](TADOQuery &q) { q.SetString(u"RoomNo"_s, roomNo); });
      if (TPhoneTis *p = m_table.Device(id))
        p->LastExt.RoomNo = roomNo;
      return true;
    } catch (const std::exception &error) {
      ApplicationHandleException(error);
      return false;
    }
  };
}

QStringList TExtsView::DefaultSrvClassItems() {
  return {u"1:无限制"_s, u"2:限声讯台"_s, u"3:国内长途"_s, u"4:市话"_s, u"5:内线"_s};
}

QStringList TExtsView::NodisturbItems() {
  static const QStringList items = {u"正常模式"_s, u"内外线免打扰"_s, u"内线免打扰"_s,
                                    u"外线免打扰"_s};
  return items;
}

QString TExtsView::GuestText(const TExt_Record &ext) {
  if (!ext.Occupied)
    return {};
  return ext.GuestName.isEmpty() ? u"入住"_s : u"入住:"_s + ext.GuestName;
}

void TExtsView::ShowGuestColumn(bool shown) {
  AdvStringGrid_Exts.setHeaderData(TExtGridModel::ColSpare, Qt::Horizontal, u"客人"_s);
  AdvStringGrid_Exts.SetColumnHidden(TExtGridModel::ColSpare, !shown);
}

QString TExtsView::MoringModeText(int mode) {
  if (mode == 2)
    return u"中文"_s;
  if (mode == 3)
    return u"英文"_s;
  return u"普通"_s; // 1, 0, and anything the exchange may invent
}

void TExtsView::ExtsView_Init() {
  TeSPageControl_ExtView_ActivePage = TeSTabsheet_Panel;
  Ext_SetColumnTitles();
  m_extsRecNo.clear();
  RunGuarded([this] {
    Sys_DM().OpenSQL(u"select * from Exts order by portID"_s, ADOQuery_Exts);
    // The room rows are found by port in one step, not by a walk per refresh.
    for (ADOQuery_Exts.First(); !ADOQuery_Exts.Eof(); ADOQuery_Exts.Next())
      m_extsRecNo.insert(ADOQuery_Exts.AsInteger(u"PortID"_s), ADOQuery_Exts.RecNo());
  });
  ShowGuestColumn(SysConfig().FrontDeskInUse());
  emit recordSearchRequested();
}

void TExtsView::Ext_SetColumnTitles() {
  for (int column = 0; column < TExtGridModel::kColumnCount; ++column) {
    if (kTitleKeys[column])
      AdvStringGrid_Exts.setHeaderData(column, Qt::Horizontal,
                                       LanguagePack().Str(kTitleKeys[column]));
  }
}

bool TExtsView::LocateExts(int id) {
  if (!ADOQuery_Exts.Active())
    return false;
  const int recNo = m_extsRecNo.value(id, 0);
  if (recNo <= 0)
    return false;
  ADOQuery_Exts.SetRecNo(recNo);
  return true;
}

void TExtsView::Exts_Write(int id, const std::function<void(TADOQuery &)> &setFields) {
  if (!LocateExts(id))
    throw EDatabaseError(u"No room row for port %1: the store is not open"_s.arg(id));
  ADOQuery_Exts.Edit();
  setFields(ADOQuery_Exts);
  try {
    ADOQuery_Exts.Post();
  } catch (...) {
    ADOQuery_Exts.Cancel();
    throw;
  }
}

void TExtsView::Exts_SharedChanged() {
  if (!ADOQuery_Exts.Active())
    return;
  ADOQuery_Exts.Refresh();
  m_extsRecNo.clear();
  for (ADOQuery_Exts.First(); !ADOQuery_Exts.Eof(); ADOQuery_Exts.Next())
    m_extsRecNo.insert(ADOQuery_Exts.AsInteger(u"PortID"_s), ADOQuery_Exts.RecNo());
  TExtGridModel &g = AdvStringGrid_Exts;
  for (auto it = m_extsRecNo.cbegin(); it != m_extsRecNo.cend(); ++it) {
    const int slot = g.SlotOfId(it.key());
    TPhoneTis *p = m_table.Device(it.key());
    if (slot < 0 || !p)
      continue;
    TExt_Record room = p->LastExt;
    ADOQuery_Exts.SetRecNo(it.value());
    ReadExts(room);
    g.SetCell(slot, TExtGridModel::ColRoomNo, room.RoomNo);
    g.SetCell(slot, TExtGridModel::ColMemo, room.Memo);
    g.SetCell(slot, TExtGridModel::ColSpare, GuestText(room));
    p->LastExt.RoomNo = room.RoomNo;
    p->LastExt.Memo = room.Memo;
    p->LastExt.GuestName = room.GuestName;
    p->LastExt.Occupied = room.Occupied;
  }
}

TExt_Record TExtsView::RecordOf(int id, bool withStatus) const {
  TExt_Record r;
  const TPhoneTis *p = m_table.Device(id);
  if (!p)
    return r;
  r.ID = p->ID;
  r.DevType = p->DevType;
  r.TelNos = p->TelNos;
  r.SrvClass = p->SrvClass;
  r.MoringCallTime = p->MoringCallTime;
  r.NoDisturbMode = p->NoDisturbMode;
  r.VoiceMail = p->VoiceMail;
  r.MoringCallAnswerFlag = p->MoringCallAnswerFlag;
  r.MoringCallDelayFlag = p->MoringCallDelayFlag;
  r.MoringCallMode = p->MoringCallMode;
  if (withStatus) {
    r.Status = p->Status;
    r.LiveUpdate = p->LiveUpdate;
  }
  return r;
}

void TExtsView::Ext_AddRow(int id) {
  if (!m_table.Device(id))
    return;
  TExtGridModel &g = AdvStringGrid_Exts;
  // A device listed again keeps its row; otherwise the first extension takes the
  // grid's empty row and every later one a new row at the end.
  int slot = g.SlotOfId(id);
  if (slot < 0)
    slot = (g.SlotCount() == 1 && g.Cell(0, TExtGridModel::ColID).isEmpty()) ? 0 : g.AddSlot();
  TExt_Record vExt = RecordOf(id, false);
  vExt.ID = id;
  Ext_RefreshRecord(vExt, slot);
}

void TExtsView::Ext_UpdateRow(int id) {
  const int slot = AdvStringGrid_Exts.SlotOfId(id);
  if (slot < 0)
    return;
  Ext_RefreshRecord(RecordOf(id, true), slot);
}

void TExtsView::ReadExts(TExt_Record &v) {
  TADOQuery &q = ADOQuery_Exts;
  v.RoomNo = q.AsString(u"RoomNo"_s);
  v.Memo = q.AsString(u"Memo"_s);
  v.NoDisturb_Time1_Checked = q.AsBoolean(u"NoDisturb_Time1_Checked"_s);
  v.NoDisturb_Time2_Checked = q.AsBoolean(u"NoDisturb_Time2_Checked"_s);
  v.NoDisturb_Time3_Checked = q.AsBoolean(u"NoDisturb_Time3_Checked"_s);
  v.NoDisturb_Time1_Start = q.AsDateTime(u"NoDisturb_Time1_Start"_s);
  v.NoDisturb_Time2_Start = q.AsDateTime(u"NoDisturb_Time2_Start"_s);
  v.NoDisturb_Time3_Start = q.AsDateTime(u"NoDisturb_Time3_Start"_s);
  v.NoDisturb_Time1_End = q.AsDateTime(u"NoDisturb_Time1_End"_s);
  v.NoDisturb_Time2_End = q.AsDateTime(u"NoDisturb_Time2_End"_s);
  v.NoDisturb_Time3_End = q.AsDateTime(u"NoDisturb_Time3_End"_s);
  v.MoringCall_isEveryDay = q.AsBoolean(u"MoringCall_isEveryDay"_s);
  v.MoringCall_EveryDay_Time = q.AsDateTime(u"MoringCall_EveryDay_Time"_s);
  v.MoringCall_Mode = q.AsInteger(u"MoringCall_Mode"_s);
  // A store whose upgrade failed lacks the front desk's columns: its rooms read
  // as vacant and nameless.
  if (q.HasField(u"GuestName"_s)) {
    v.GuestName = q.AsString(u"GuestName"_s);
    v.Occupied = q.AsBoolean(u"Occupied"_s);
  }
}

void TExtsView::Ext_RefreshRecord(TExt_Record vExt, int vRow) {
  TPhoneTis *p = m_table.Device(vExt.ID);
  TExtGridModel &g = AdvStringGrid_Exts;
  if (!p || vRow < 0 || vRow >= g.SlotCount()) {
    WriteLog(u"Ext_RefreshRecord: no row %1 or device %2"_s.arg(vRow).arg(vExt.ID));
    return;
  }
  const TExt_Record last = p->LastExt;
  if (LogEnabled())
    WriteLog(u"Ext_RefreshRecord:ID:%1 state:%2 MoringCalll_Mode:%3 vRow:%4 MoringTime:%5 "
             u"vExt.MoringCallAnswerFlag:%6 MoringCallDelayFlag:%7"_s.arg(vExt.ID)
                 .arg(vExt.Status)
                 .arg(vExt.MoringCallMode)
                 .arg(vRow)
                 .arg(DateTimeToStr(last.MoringCallTime))
                 .arg(vExt.MoringCallAnswerFlag)
                 .arg(vExt.MoringCallDelayFlag));
  // The check belongs to the operator: written once, never by a refresh.
  if (g.Check(vRow).isEmpty())
    g.SetCheck(vRow, kFalse);

  g.SetCell(vRow, TExtGridModel::ColID, QString::number(vExt.ID));
  g.SetCell(vRow, TExtGridModel::ColTelNos, vExt.TelNos);
  const QStringList classes = CurrentSrvClassItems();
  if (vExt.SrvClass >= 0 && vExt.SrvClass < classes.size()) {
    g.SetCell(vRow, TExtGridModel::ColSrvClass, classes.at(vExt.SrvClass));
  } else {
    g.SetCell(vRow, TExtGridModel::ColSrvClass, QString());
    WriteLog(u"Ext_RefreshRecord: service class %1 of ID %2 not in the list"_s.arg(vExt.SrvClass)
                 .arg(vExt.ID));
  }
  g.SetCell(vRow, TExtGridModel::ColMoringMode, MoringModeText(vExt.MoringCallMode));

  if (LocateExts(vExt.ID)) {
    ReadExts(vExt);
  } else {
    // Without the store the room part stays what the row showed.
    vExt.RoomNo = last.RoomNo;
    vExt.Memo = last.Memo;
    vExt.NoDisturb_Time1_Checked = last.NoDisturb_Time1_Checked;
    vExt.NoDisturb_Time2_Checked = last.NoDisturb_Time2_Checked;
    vExt.NoDisturb_Time3_Checked = last.NoDisturb_Time3_Checked;
    vExt.NoDisturb_Time1_Start = last.NoDisturb_Time1_Start;
    vExt.NoDisturb_Time2_Start = last.NoDisturb_Time2_Start;
    vExt.NoDisturb_Time3_Start = last.NoDisturb_Time3_Start;
    vExt.NoDisturb_Time1_End = last.NoDisturb_Time1_End;
    vExt.NoDisturb_Time2_End = last.NoDisturb_Time2_End;
    vExt.NoDisturb_Time3_End = last.NoDisturb_Time3_End;
    vExt.MoringCall_isEveryDay = last.MoringCall_isEveryDay;
    vExt.MoringCall_EveryDay_Time = last.MoringCall_EveryDay_Time;
    vExt.MoringCall_Mode = last.MoringCall_Mode;
    vExt.GuestName = last.GuestName;
    vExt.Occupied = last.Occupied;
  }

  QString wake = vExt.MoringCallTime.IsZero() ? u"关"_s : DateTimeToStr(vExt.MoringCallTime);
  if (vExt.MoringCall_isEveryDay)
    wake += u"(每天:%1)"_s.arg(vExt.MoringCall_EveryDay_Time.Time().toString(u"hh:mm"_s));
  g.SetCell(vRow, TExtGridModel::ColMoringTime, wake);
  g.SetCell(vRow, TExtGridModel::ColRoomNo, vExt.RoomNo);
  g.SetCell(vRow, TExtGridModel::ColMemo, vExt.Memo);
  g.SetCell(vRow, TExtGridModel::ColSpare, GuestText(vExt));

  const QStringList modes = NodisturbItems();
  QString nodisturb = vExt.NoDisturbMode >= 0 && vExt.NoDisturbMode < modes.size()
                          ? modes.at(vExt.NoDisturbMode)
                          : QString();
  if (vExt.NoDisturb_Time1_Checked || vExt.NoDisturb_Time2_Checked ||
      vExt.NoDisturb_Time3_Checked)
    nodisturb += u"(定时)"_s;
  g.SetCell(vRow, TExtGridModel::ColNodisturb, nodisturb);
  g.SetCell(vRow, TExtGridModel::ColVoiceMail, vExt.VoiceMail == 0 ? u"无"_s : u"有"_s);

  TColor colour = TExtGridModel::kWhite;
  if (vExt.MoringCallAnswerFlag == 1)
    colour = 0x80FF00;
  else if (vExt.MoringCallDelayFlag == 1)
    colour = 0x8457FB;
  g.SetColour(vRow, TExtGridModel::ColMoringTime, colour);

  if (vExt.LiveUpdate)
    LogMoringResults(vExt, last);
  p->LastExt = vExt;
}

void TExtsView::LogMoringResults(const TExt_Record &vExt, const TExt_Record &last) {
  // A log row that can't be written is reported; the row's state still moves
  // on, so the same result isn't logged again on the next event.
  const auto append = [&](TDateTime moringCallTime, int state) {
    TMoringCallLog row;
    row.RoomNo = vExt.RoomNo;
    row.Ext = vExt.TelNos;
    row.CreateTime = Now();
    row.MoringCallTime = moringCallTime;
    row.State = state;
    if (MoringResultSeen)
      RunGuarded([&] { row.Attempt = MoringResultSeen(vExt, moringCallTime, state); });
    RunGuarded([&] { Sys_DM().AddMoringCallLog(row); });
    emit moringResultLogged(vExt.ID, vExt.TelNos, vExt.RoomNo, moringCallTime, state);
  };
  if (vExt.MoringCallAnswerFlag == 1 && !last.MoringCallTime.IsZero())
    append(vExt.MoringCallTime, 1);
  // Back to idle from ringing with a wake-up set: the room was not woken.
  if (vExt.Status == 1 && last.Status == 3 && !last.MoringCallTime.IsZero())
    append(last.MoringCallTime, 2);
}

int TExtsView::Ext_CurrentID() const {
  const int slot = AdvStringGrid_Exts.CurrentSlot();
  bool ok = false;
  const int id = AdvStringGrid_Exts.Cell(slot, TExtGridModel::ColID).toInt(&ok);
  if (!ok) {
    WriteLog(u"Ext_CurrentID: the current row holds no extension"_s);
    return -1;
  }
  return id;
}

int TExtsView::Ext_NextSelected(int fromRow) {
  TExtGridModel &g = AdvStringGrid_Exts;
  for (int row = qMax(fromRow, 1) - 1; row < g.ShownCount(); ++row) {
    const int slot = g.SlotAt(row);
    if (g.Check(slot) != kTrue)
      continue;
    bool ok = false;
    const int id = g.Cell(slot, TExtGridModel::ColID).toInt(&ok);
    if (!ok)
      continue; // the grid's empty row, checked before any extension came
    g.SetCurrentSlot(slot);
    return id;
  }
  return -1;
}

QList<int> TExtsView::Ext_SelectedIDs() const {
  const TExtGridModel &g = AdvStringGrid_Exts;
  QList<int> ids;
  for (int row = 0; row < g.ShownCount(); ++row) {
    const int slot = g.SlotAt(row);
    bool ok = false;
    const int id = g.Cell(slot, TExtGridModel::ColID).toInt(&ok);
    if (ok && g.Check(slot) == kTrue)
      ids << id;
  }
  return ids;
}

bool TExtsView::Ext_LocateRow(const QString &telNos) {
  TExtGridModel &g = AdvStringGrid_Exts;
  for (int row = 0; row < g.ShownCount(); ++row) {
    const int slot = g.SlotAt(row);
    if (g.Cell(slot, TExtGridModel::ColTelNos) == telNos) {
      g.SetCurrentSlot(slot);
      return true;
    }
  }
  return false;
}

int TExtsView::Ext_LocatePanel(const QString &telNos) {
  if (!LocatePanel) {
    WriteLog(u"Ext_LocatePanel: no board to look on for %1"_s.arg(telNos));
    return -1;
  }
  return LocatePanel(telNos);
}

void TExtsView::tefxButton_ExtFindClick() {
  const QString text = TeSComboBox_Ext_Text.trimmed();
  if (text.isEmpty())
    return;
  if (TeSPageControl_ExtView_ActivePage != TeSTabsheet_Listview)
    Ext_LocatePanel(text);
  else
    Ext_LocateRow(text);
  TeSComboBox_Ext_Items.removeAll(text);
  TeSComboBox_Ext_Items.prepend(text);
}

void TExtsView::tefxButton_Ext_CancelFilterClick() {
  AdvStringGrid_Exts.ClearFilter();
}

bool TExtsView::AdvStringGrid_ExtsCellValidate(int row, int column, const QString &text) {
  return AdvStringGrid_Exts.setData(AdvStringGrid_Exts.index(row, column), text, Qt::EditRole);
}

void TExtsView::AdvStringGrid_ExtsDblClickCell(int row, int column) {
  if (AdvStringGrid_Exts.SlotAt(row) < 0)
    return;
  AdvStringGrid_Exts.SetCurrentRow(row);
  const auto request = [this, column](auto signal, const char16_t *what) {
    const int id = Ext_CurrentID();
    if (id < 0)
      return;
    if (!isSignalConnected(QMetaMethod::fromSignal(signal)))
      WriteLog(u"The %1 dialog is not there yet (ID %2, column %3)"_s.arg(
                   QString::fromUtf16(what))
                   .arg(id)
                   .arg(column));
    emit(this->*signal)(id);
  };
  switch (column) {
  case TExtGridModel::ColSrvClass:
    request(&TExtsView::srvClassRequested, u"service class");
    break;
  case TExtGridModel::ColMoringTime:
  case TExtGridModel::ColMoringMode:
    request(&TExtsView::moringCallRequested, u"wake-up");
    break;
  case TExtGridModel::ColNodisturb:
    request(&TExtsView::nodisturbRequested, u"do-not-disturb");
    break;
  case TExtGridModel::ColVoiceMail:
    request(&TExtsView::voiceMailRequested, u"voice mail");
    break;
  case TExtGridModel::ColMemo:
    request(&TExtsView::memoRequested, u"memo");
    break;
  default:
    break;
  }
}

void TExtsView::SetChecks(const std::function<QString(const QString &)> &next) {
  TExtGridModel &g = AdvStringGrid_Exts;
  for (int row = 0; row < g.ShownCount(); ++row) {
    const int slot = g.SlotAt(row);
    g.SetCheck(slot, next(g.Check(slot)));
  }
}

void TExtsView::N27Click() {
  SetChecks([](const QString &) { return kTrue; });
}
void TExtsView::N28Click() {
  SetChecks([](const QString &state) { return state == kTrue ? kFalse : kTrue; });
}
void TExtsView::N29Click() {
  SetChecks([](const QString &) { return kFalse; });
}

void TExtsView::N25Click() {
  if (Ext_CurrentID() < 0)
    return;
  emit moringCallLogRequested(
      AdvStringGrid_Exts.Cell(AdvStringGrid_Exts.CurrentSlot(), TExtGridModel::ColTelNos));
}

QStringList TExtsView::CurrentSrvClassItems() const {
  QStringList classes = SrvClassItems ? SrvClassItems() : QStringList();
  return classes.isEmpty() ? DefaultSrvClassItems() : classes;
}

void TExtsView::Ext_RefreshSrvClassColumn() {
  const QStringList classes = CurrentSrvClassItems();
  TExtGridModel &g = AdvStringGrid_Exts;
  for (int slot = 0; slot < g.SlotCount(); ++slot) {
    bool ok = false;
    const TPhoneTis *p = m_table.Device(g.Cell(slot, TExtGridModel::ColID).toInt(&ok));
    if (ok && p && p->SrvClass >= 0 && p->SrvClass < classes.size())
      g.SetCell(slot, TExtGridModel::ColSrvClass, classes.at(p->SrvClass));
  }
}
