#include "guest/RecordExport.h"

#include "directory/JetSql.h"
#include "directory/SysDM_Unit.h"
#include "guest/DataPage.h"
#include "support/Clock.h"
#include "support/Log.h"
#include "support/Shell.h"
#include "support/TDateTime.h"

#include <QDir>
#include <QSaveFile>
#include <QStandardPaths>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

using namespace Qt::StringLiterals;

namespace {
bool LooksLikeFormula(const QString &text) {
  if (text.isEmpty())
    return false;
  const QChar c = text.front();
  if (c == u'=' || c == u'@')
    return true;
  if (c == u'+' || c == u'-') {
    for (qsizetype i = 1; i < text.size(); ++i) {
      if (!text[i].isDigit() && text[i] != u' ')
        return true;
    }
  }
  return false;
}

// A stored date as the grid shows it. The store keeps "yyyy-MM-dd hh:mm:ss",
// which is already the shown form but for a midnight time, so that text is
// taken as it is; parsing each of a hundred thousand dates would cost more than
// reading them.
QString ShownDate(const QString &stored) {
  static constexpr char16_t kShape[] = u"0000-00-00 00:00:00";
  bool stored19 = stored.size() == 19;
  for (qsizetype i = 0; stored19 && i < 19; ++i)
    stored19 = kShape[i] == u'0' ? stored[i].isDigit() : stored[i] == kShape[i];
  if (stored19)
    return stored.endsWith(u" 00:00:00"_s) ? stored.left(10) : stored;
  TDateTime t;
  if (!TryStrToDateTime(stored, &t))
    return stored;
  return t.IsZero() ? QString() : DateTimeToStr(t);
}

void AppendRow(QString &out, const QStringList &cells) {
  for (qsizetype i = 0; i < cells.size(); ++i) {
    if (i > 0)
      out += u',';
    out += CsvCell(cells[i]);
  }
  out += u"\r\n"_s;
}
} // namespace

QString CsvCell(const QString &text) {
  QString cell = LooksLikeFormula(text) ? u'\'' + text : text;
  if (cell.contains(u',') || cell.contains(u'"') || cell.contains(u'\n') ||
      cell.contains(u'\r')) {
    cell.replace(u'"', u"\"\""_s);
    cell = u'"' + cell + u'"';
  }
  return cell;
}

TRecordExportResult ExportRecords(const QString &path, const QString &table,
                                  const QString &condition, const QList<TRecordColumn> &columns,
                                  const QString &order) {
  TRecordExportResult result;
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) {
    result.Error = file.errorString();
    return result;
  }

  const QString sql =
      TranslateJet(u"SELECT * FROM %1 WHERE (%2) ORDER BY %3"_s.arg(table, condition, order),
                   Sys_DM().Target());
  if (HasSecondStatement(sql)) {
    file.cancelWriting();
    result.Error = u"Refused: more than one statement"_s;
    return result;
  }
  // Read forward once, straight into the file: all rows of a year need not sit
  // in memory as a page does.
  QSqlQuery q(StoreConnection());
  q.setForwardOnly(true);
  if (!q.exec(sql)) {
    file.cancelWriting();
    result.Error = q.lastError().text().trimmed();
    return result;
  }
  QList<int> fieldOf;
  const QSqlRecord record = q.record();
  for (const TRecordColumn &c : columns)
    fieldOf << record.indexOf(c.Field);

  QString chunk;
  QStringList cells;
  for (const TRecordColumn &c : columns)
    cells << c.Title;
  AppendRow(chunk, cells);
  file.write("\xEF\xBB\xBF");
  while (q.next()) {
    cells.clear();
    for (qsizetype i = 0; i < columns.size(); ++i) {
      const TRecordColumn &c = columns[i];
      const QVariant v = fieldOf[i] >= 0 ? q.value(fieldOf[i]) : QVariant();
      QString stored = v.isNull() ? QString() : v.toString();
      if (c.Date && !stored.isEmpty())
        stored = ShownDate(stored);
      cells << c.Text(stored);
    }
    AppendRow(chunk, cells);
    ++result.Rows;
    if (chunk.size() > 64 * 1024) {
      file.write(chunk.toUtf8());
      chunk.clear();
    }
  }
  if (q.lastError().isValid()) {
    file.cancelWriting();
    result.Error = q.lastError().text().trimmed();
    return result;
  }
  file.write(chunk.toUtf8());
  if (!file.commit()) {
    result.Error = file.errorString();
    return result;
  }
  result.Ok = true;
  return result;
}

void RunRecordExport(const TFrame_DataPage &frame, const QList<TRecordColumn> &columns,
                     const QString &stem) {
  if (frame.TableName.isEmpty())
    return; // no search yet, nothing to write
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  const QString suggested = QDir(folder).filePath(
      u"%1-%2.csv"_s.arg(stem, CurrentDateTime().toString(u"yyyyMMdd-HHmm"_s)));
  const QString path = TheShell().ChooseSaveFile(u"CSV (*.csv)"_s, suggested);
  if (path.isEmpty())
    return;
  const TRecordExportResult r =
      ExportRecords(path, frame.TableName, frame.Condition, columns, frame.PageOrder);
  const QString shown = QDir::toNativeSeparators(path);
  if (!r.Ok) {
    WriteLog(u"Export of %1 to %2 failed: %3"_s.arg(frame.TableName, path, r.Error));
    TheShell().Message(MessageKind::Error, u"错误提示:无法导出到 %1 (%2)"_s.arg(shown, r.Error));
    return;
  }
  WriteLog(u"Exported %1 rows of %2 to %3"_s.arg(r.Rows).arg(frame.TableName, path));
  TheShell().Message(MessageKind::Information,
                     u"提示:已导出%1条记录到 %2"_s.arg(r.Rows).arg(shown));
}
