#pragma once

#include "guest/RecordGrid.h"

#include <QString>

// The whole result of a search (every page, newest first) as a CSV file that a
// spreadsheet opens as it is: UTF-8 with a byte-order mark, a title row, the
// texts the view shows rather than the stored codes, CRLF line ends. The file is
// written beside its place and renamed into it at the end, so a failure (a
// folder that can't be written, a full disk, a store that fails mid-read) leaves
// whatever was there before and no half file.
struct TRecordExportResult {
  bool Ok = false;
  int Rows = 0;
  QString Error; // why not, when not Ok
};

// The rows come in `order`, as the view's pages show them.
TRecordExportResult ExportRecords(const QString &path, const QString &table,
                                  const QString &condition, const QList<TRecordColumn> &columns,
                                  const QString &order = QStringLiteral("id desc"));

class TFrame_DataPage;

// The export key of a record view: asks the operator where (a name made of
// `stem` and the time, in the documents folder, to start with), writes the last
// search of the page bar, and says how it went.
void RunRecordExport(const TFrame_DataPage &frame, const QList<TRecordColumn> &columns,
                     const QString &stem);

// One CSV cell: quoted when it holds a separator, quote or line end. A text
// that a spreadsheet would run as a formula (=, @, or a sign before something
// other than a number) is kept as text by a leading apostrophe: caller numbers
// come from outside.
QString CsvCell(const QString &text);
