#pragma once

#include "support/FormLogic.h"
#include "support/TDateTime.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <functional>

class QIODevice;
class TCallControlDev;
class TExtGridModel;

// One line of a report section; an alert line (an overdue task, a room whose
// window can never take effect) is marked so the screens and the printout
// make it stand out.
struct TShiftReportRow {
  QStringList Cells;
  bool Alert = false;
};

struct TShiftReportSection {
  QString Title;
  QStringList Columns;
  QList<TShiftReportRow> Rows;
  QString Note; // a line under the table: what was left out, or why it is empty
};

// The handover sheet of a front-desk shift, as data. The screens show its HTML
// and print or save the same text, so what is printed is what was read.
struct TShiftReportContent {
  enum Section { WakeUps, FailedWakeUps, NoDisturb, OpenTasks, MissedCalls, kSectionCount };

  TDateTime BuiltAt;
  TDateTime Since;     // failed wake-ups from here on
  TDateTime CallsFrom; // missed calls from here on
  TDateTime Until;     // wake-ups up to here
  std::array<TShiftReportSection, kSectionCount> Sections;

  QString Html() const;
};

// How far the sheet looks ahead for wake-ups, and back for missed calls when
// the last handover is more recent than that.
inline constexpr double kShiftReportAheadDays = 0.5;
inline constexpr double kShiftReportCallsBackDays = 1.0;

// Where the failed wake-ups start: the last handover, or a day back when there
// was none or its time lies ahead of the clock (a clock put back).
TDateTime ShiftReportSince(TDateTime now, TDateTime lastReport);

// Builds the sheet at `now` from the rooms of the extension list (every room,
// whatever its filter shows), the live device table, and the store: the
// wake-up log, the task list and the console's call log. A store that can't
// be read leaves its sections empty with a note saying so.
TShiftReportContent BuildShiftReport(const TCallControlDev &table, const TExtGridModel &rooms,
                                     TDateTime now, TDateTime lastReport);

// The shift report window ("交班报告"): the sheet of the last build, and its
// save and print keys. A save or a print is the handover: the next sheet's
// failed wake-ups start from this one's time, kept in the settings.
class TShiftReport_Form : public TFormLogic {
  Q_OBJECT

public:
  TShiftReport_Form(const TCallControlDev &table, const TExtGridModel &rooms,
                    QObject *parent = nullptr);

  TShiftReportContent Report;
  QString Html;

  // The key: the sheet afresh at the present time, and the window.
  void ShiftReportClick();
  // "保存PDF": asks for a file and writes the sheet through RenderPdf to a
  // temporary file beside it, which takes the file's name only when whole.
  // A folder that can't be written is said so; nothing is left behind.
  bool SavePdfClick();
  // The screens printed the sheet.
  void Printed();

  // Lays the HTML out as PDF pages onto the device; set by the screens, which
  // own the painting. False with a reason when it could not.
  std::function<bool(const QString &html, QIODevice &out, QString *error)> RenderPdf;

signals:
  void reportChanged();

private:
  void HandedOver();

  const TCallControlDev &m_table;
  const TExtGridModel &m_rooms;
};
