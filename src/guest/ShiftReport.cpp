#include "guest/ShiftReport.h"

#include "devices/CallControlDev.h"
#include "directory/SysDM_Unit.h"
#include "directory/TaskModel.h"
#include "guest/ExtGridModel.h"
#include "guest/ExtsView.h"
#include "guest/MoringCall.h"
#include "guest/Nodisturb.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Settings.h"
#include "support/Shell.h"

#include <QDir>
#include <QHash>
#include <QSaveFile>
#include <QSqlError>
#include <QSqlQuery>
#include <QStandardPaths>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
QString Shown(TDateTime when) {
  return when.ToQDateTime().toString(u"yyyy-MM-dd hh:mm"_s);
}

QString ShownTime(TDateTime when) {
  return when.Time().toString(u"hh:mm"_s);
}

TDateTime Stored(const QVariant &value) {
  TDateTime t;
  if (!value.isNull())
    TryStrToDateTime(value.toString(), &t);
  return t;
}

// Room numbers are mostly numbers: 902 before 1001, and text after them.
bool RoomBefore(const QString &a, const QString &b) {
  bool aNumber = false;
  bool bNumber = false;
  const qlonglong x = a.toLongLong(&aNumber);
  const qlonglong y = b.toLongLong(&bNumber);
  if (aNumber && bNumber)
    return x < y;
  if (aNumber != bNumber)
    return aNumber;
  return a < b;
}

struct Room {
  const TPhoneTis *Device;
  const TExt_Record *Ext;
};

// Every room of the list, hidden by its filter or not, by room number.
std::vector<Room> RoomsOf(const TCallControlDev &table, const TExtGridModel &grid) {
  std::vector<Room> rooms;
  rooms.reserve(size_t(grid.SlotCount()));
  for (int slot = 0; slot < grid.SlotCount(); ++slot) {
    bool ok = false;
    const int id = grid.Cell(slot, TExtGridModel::ColID).toInt(&ok);
    const TPhoneTis *p = ok ? table.Device(id) : nullptr;
    if (p)
      rooms.push_back({p, &p->LastExt});
  }
  std::sort(rooms.begin(), rooms.end(), [](const Room &a, const Room &b) {
    if (a.Ext->RoomNo != b.Ext->RoomNo)
      return RoomBefore(a.Ext->RoomNo, b.Ext->RoomNo);
    return a.Device->TelNos < b.Device->TelNos;
  });
  return rooms;
}

void WakeUps(const std::vector<Room> &rooms, TDateTime now, TDateTime until,
             TShiftReportSection &s) {
  s.Title = u"未来12小时的叫醒"_s;
  s.Columns = {u"叫醒时间"_s, u"房间"_s, u"分机"_s, u"类别"_s, u"语音"_s};
  struct Due {
    TDateTime When;
    TShiftReportRow Row;
  };
  std::vector<Due> due;
  const auto inside = [&](TDateTime t) { return !t.IsZero() && !(t < now) && !(until < t); };
  for (const Room &r : rooms) {
    const TPhoneTis &p = *r.Device;
    TDateTime daily;
    if (r.Ext->MoringCall_isEveryDay) {
      daily = MoringCallNextEveryDay(now, r.Ext->MoringCall_EveryDay_Time);
      if (inside(daily))
        due.push_back({daily,
                       {{Shown(daily), r.Ext->RoomNo, p.TelNos,
                         u"每天 %1"_s.arg(ShownTime(r.Ext->MoringCall_EveryDay_Time)),
                         TExtsView::MoringModeText(r.Ext->MoringCall_Mode)}}});
    }
    // The exchange holds the daily one as a one-shot once the tick has sent
    // it: that is the same wake-up, listed once.
    const TDateTime once = p.MoringCallTime;
    const bool sameAsDaily = !daily.IsZero() && std::abs(once - daily) < 1.0 / 1440;
    if (inside(once) && !sameAsDaily)
      due.push_back({once,
                     {{Shown(once), r.Ext->RoomNo, p.TelNos, u"单次"_s,
                       TExtsView::MoringModeText(p.MoringCallMode)}}});
  }
  std::stable_sort(due.begin(), due.end(),
                   [](const Due &a, const Due &b) { return a.When < b.When; });
  for (Due &d : due)
    s.Rows.append(std::move(d.Row));
}

void NoDisturb(const std::vector<Room> &rooms, TShiftReportSection &s) {
  s.Title = u"免打扰的房间"_s;
  s.Columns = {u"房间"_s, u"分机"_s, u"现在"_s, u"定时"_s};
  const QStringList modes = TExtsView::NodisturbItems();
  for (const Room &r : rooms) {
    const TExt_Record &e = *r.Ext;
    const struct {
      bool Checked;
      TDateTime Start, End;
    } windows[] = {{e.NoDisturb_Time1_Checked, e.NoDisturb_Time1_Start, e.NoDisturb_Time1_End},
                   {e.NoDisturb_Time2_Checked, e.NoDisturb_Time2_Start, e.NoDisturb_Time2_End},
                   {e.NoDisturb_Time3_Checked, e.NoDisturb_Time3_Start, e.NoDisturb_Time3_End}};
    QStringList shown;
    bool neverInside = false;
    for (const auto &w : windows) {
      if (!w.Checked)
        continue;
      QString text = ShownTime(w.Start) + u"–"_s + ShownTime(w.End);
      // The tick never finds the time inside a window that crosses midnight,
      // so the room would not be quiet: the desk should know.
      if (w.End.TimePart() < w.Start.TimePart()) {
        text += u" (跨零点, 不生效)"_s;
        neverInside = true;
      }
      shown << text;
    }
    const int mode = r.Device->NoDisturbMode;
    if (mode == 0 && shown.isEmpty())
      continue;
    s.Rows.append({{e.RoomNo, r.Device->TelNos, modes.value(mode, QString::number(mode)),
                    shown.join(u"; "_s)},
                   neverInside});
  }
}

QString StoreProblem(const QSqlQuery &q) {
  return u"无法读取数据库: "_s + q.lastError().text().trimmed();
}

void FailedWakeUps(TDateTime since, TDateTime now, TShiftReportSection &s) {
  s.Title = u"上次交班以来叫醒失败"_s;
  s.Columns = {u"记录时间"_s, u"房间"_s, u"分机"_s, u"叫醒时间"_s};
  QSqlQuery q(StoreConnection());
  q.setForwardOnly(true);
  q.prepare(u"SELECT CreateTime, RoomNo, Ext, MoringCallTime FROM MoringCallLog "
            u"WHERE State = 2 AND CreateTime >= :since AND CreateTime <= :now "
            u"ORDER BY CreateTime, ID"_s);
  q.bindValue(u":since"_s, FormatFull(since));
  q.bindValue(u":now"_s, FormatFull(now));
  if (!q.exec()) {
    s.Note = StoreProblem(q);
    return;
  }
  while (q.next())
    s.Rows.append({{Shown(Stored(q.value(0))), q.value(1).toString(), q.value(2).toString(),
                    Shown(Stored(q.value(3)))},
                   true});
}

void OpenTasks(TDateTime now, TShiftReportSection &s) {
  s.Title = u"未完成的事务"_s;
  s.Columns = {u"期限"_s, u"事务"_s, u"联系人"_s, u""_s};
  QSqlQuery q(StoreConnection());
  q.setForwardOnly(true);
  if (!q.exec(u"SELECT LastDateTime, Title, contacters FROM Task_Table WHERE Status = %1 "
              u"ORDER BY LastDateTime, ID"_s.arg(kTaskUnfinished))) {
    s.Note = StoreProblem(q);
    return;
  }
  int undated = 0;
  while (q.next()) {
    const TDateTime deadline = Stored(q.value(0));
    if (deadline.IsZero()) {
      ++undated;
      continue;
    }
    const bool overdue = deadline < now;
    s.Rows.append({{Shown(deadline), q.value(1).toString(), q.value(2).toString(),
                    overdue ? u"已过期"_s : QString()},
                   overdue});
  }
  if (undated > 0)
    s.Note = u"另有%1项未定期限的事务。"_s.arg(undated);
}

void MissedCalls(TDateTime from, TShiftReportSection &s) {
  s.Title = u"未回电的未接来电"_s;
  s.Columns = {u"最后来电"_s, u"号码"_s, u"次数"_s};
  QSqlQuery q(StoreConnection());
  q.setForwardOnly(true);
  q.prepare(u"SELECT TelNos, DateTime, State FROM conRecords WHERE DateTime >= :from "
            u"ORDER BY DateTime, ID"_s);
  q.bindValue(u":from"_s, FormatFull(from));
  if (!q.exec()) {
    s.Note = StoreProblem(q);
    return;
  }
  // A call answered from, or dialled to, the number after it was missed is
  // its call back; the house's outside-line prefix in front of a dialled
  // number is the same number.
  const QString prefix = SysConfig().OutNo.trimmed();
  struct Missed {
    int Count = 0;
    TDateTime Last;
  };
  QHash<QString, Missed> open;
  while (q.next()) {
    const QString number = q.value(0).toString().trimmed();
    const int state = q.value(2).toInt();
    if (state == 1) {
      if (number.isEmpty() || number == u"?"_s)
        continue; // no number to call back
      Missed &m = open[number];
      ++m.Count;
      m.Last = Stored(q.value(1));
    } else if (state == 2 || state == 3) {
      open.remove(number);
      if (state == 3 && !prefix.isEmpty() && number.startsWith(prefix))
        open.remove(number.mid(prefix.size()));
    }
  }
  std::vector<std::pair<QString, Missed>> rows(open.keyValueBegin(), open.keyValueEnd());
  std::sort(rows.begin(), rows.end(), [](const auto &a, const auto &b) {
    return b.second.Last < a.second.Last || (a.second.Last == b.second.Last && a.first < b.first);
  });
  for (const auto &[number, m] : rows)
    s.Rows.append({{Shown(m.Last), number, QString::number(m.Count)}});
}

QString Cell(const QString &tag, const QString &text) {
  return u"<%1>%2</%1>"_s.arg(tag, text.toHtmlEscaped());
}
} // namespace

TDateTime ShiftReportSince(TDateTime now, TDateTime lastReport) {
  if (lastReport.IsZero() || now < lastReport)
    return now - kShiftReportCallsBackDays;
  return lastReport;
}

TShiftReportContent BuildShiftReport(const TCallControlDev &table, const TExtGridModel &rooms,
                                     TDateTime now, TDateTime lastReport) {
  TShiftReportContent r;
  r.BuiltAt = now;
  r.Since = ShiftReportSince(now, lastReport);
  r.CallsFrom = std::min(r.Since, now - kShiftReportCallsBackDays);
  r.Until = now + kShiftReportAheadDays;
  // Records that wait for a busy store belong on the sheet too.
  if (Sys_DM().Connected())
    Sys_DM().PendingWrites().Flush();
  const std::vector<Room> listed = RoomsOf(table, rooms);
  WakeUps(listed, now, r.Until, r.Sections[TShiftReportContent::WakeUps]);
  FailedWakeUps(r.Since, now, r.Sections[TShiftReportContent::FailedWakeUps]);
  NoDisturb(listed, r.Sections[TShiftReportContent::NoDisturb]);
  OpenTasks(now, r.Sections[TShiftReportContent::OpenTasks]);
  MissedCalls(r.CallsFrom, r.Sections[TShiftReportContent::MissedCalls]);
  return r;
}

QString TShiftReportContent::Html() const {
  QString h;
  h.reserve(4096);
  h += u"<html><head><meta charset=\"utf-8\"><title>交班报告</title></head><body>"
       u"<h1>交班报告</h1>"_s;
  h += u"<p>%1 生成；叫醒失败自 %2 起，未接来电自 %3 起，叫醒至 %4。</p>"_s.arg(
      Shown(BuiltAt), Shown(Since), Shown(CallsFrom), Shown(Until));
  for (const TShiftReportSection &s : Sections) {
    h += u"<h2>%1 (%2)</h2>"_s.arg(s.Title.toHtmlEscaped()).arg(s.Rows.size());
    if (s.Rows.isEmpty()) {
      h += u"<p>无</p>"_s;
    } else {
      h += u"<table border=\"1\" cellspacing=\"0\" cellpadding=\"3\" width=\"100%\"><tr>"_s;
      for (const QString &c : s.Columns)
        h += Cell(u"th"_s, c);
      h += u"</tr>"_s;
      for (const TShiftReportRow &row : s.Rows) {
        h += row.Alert ? u"<tr bgcolor=\"#ffe1d2\">"_s : u"<tr>"_s;
        for (const QString &c : row.Cells)
          h += Cell(u"td"_s, c);
        h += u"</tr>"_s;
      }
      h += u"</table>"_s;
    }
    if (!s.Note.isEmpty())
      h += Cell(u"p"_s, s.Note);
  }
  h += u"</body></html>"_s;
  return h;
}

TShiftReport_Form::TShiftReport_Form(const TCallControlDev &table, const TExtGridModel &rooms,
                                     QObject *parent)
    : TFormLogic("TShiftReport_Form", parent), m_table(table), m_rooms(rooms) {}

void TShiftReport_Form::ShiftReportClick() {
  Report = BuildShiftReport(m_table, m_rooms, Now(), SysConfig().LastShiftReport);
  Html = Report.Html();
  emit reportChanged();
  Show();
}

bool TShiftReport_Form::SavePdfClick() {
  if (Html.isEmpty() || !RenderPdf)
    return false;
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  const QString suggested = QDir(folder).filePath(
      u"交班报告-%1.pdf"_s.arg(Report.BuiltAt.ToQDateTime().toString(u"yyyyMMdd-HHmm"_s)));
  const QString path = TheShell().ChooseSaveFile(u"PDF (*.pdf)"_s, suggested);
  if (path.isEmpty())
    return false;
  const QString shown = QDir::toNativeSeparators(path);
  // QSaveFile writes beside the file and renames it only when whole, so a
  // failure leaves neither half a PDF nor a spoilt earlier one.
  QSaveFile file(path);
  QString error;
  if (!file.open(QIODevice::WriteOnly)) {
    error = file.errorString();
  } else if (!RenderPdf(Html, file, &error)) {
    file.cancelWriting();
    if (error.isEmpty())
      error = u"PDF"_s;
  } else if (!file.commit()) {
    error = file.errorString();
  }
  if (!error.isEmpty()) {
    WriteLog(u"Shift report to %1 failed: %2"_s.arg(path, error));
    TheShell().Message(MessageKind::Error,
                       u"错误提示:交班报告无法保存到 %1 (%2)"_s.arg(shown, error));
    return false;
  }
  WriteLog(u"Shift report saved to "_s + path);
  HandedOver();
  TheShell().Message(MessageKind::Information, u"提示:交班报告已保存到 %1"_s.arg(shown));
  return true;
}

void TShiftReport_Form::Printed() {
  WriteLog(u"Shift report printed"_s);
  HandedOver();
}

void TShiftReport_Form::HandedOver() {
  if (!SaveLastShiftReport(Report.BuiltAt))
    TheShell().Message(
        MessageKind::Warning,
        u"交班时间无法写入 sys.ini: 重新启动后，下一份报告仍从 %1 起列出叫醒失败。"_s.arg(
            Shown(Report.Since)));
}
