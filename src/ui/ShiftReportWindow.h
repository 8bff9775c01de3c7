#pragma once

#include <QWidget>

#include <memory>

class QIODevice;
class QPrinter;
class QTextBrowser;
class TShiftReport_Form;

// Lays a report's HTML out on A4 pages as PDF onto the device, with Qt's own
// PDF writer. False with a reason when the device took nothing.
bool RenderShiftReportPdf(const QString &html, QIODevice &out, QString *error);

// The shift report window ("交班报告"): the sheet as built, with its save and
// print keys. It leaves the main window usable; Esc closes it.
class ShiftReportWindow : public QWidget {
  Q_OBJECT

public:
  ShiftReportWindow(TShiftReport_Form &logic, QWidget *parent);
  ~ShiftReportWindow() override;

protected:
  void closeEvent(QCloseEvent *event) override;

private:
  void Print();

  TShiftReport_Form &m_logic;
  QTextBrowser *m_text = nullptr;
  std::unique_ptr<QPrinter> m_printer;
};
