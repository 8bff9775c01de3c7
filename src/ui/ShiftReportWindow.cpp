#include "ui/ShiftReportWindow.h"

#include "guest/ShiftReport.h"
#include "support/Shell.h"
#include "ui/EscapeCloses.h"
#include "ui/Named.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPageSize>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QShortcut>
#include <QTextBrowser>
#include <QTextDocument>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

bool RenderShiftReportPdf(const QString &html, QIODevice &out, QString *error) {
  QPdfWriter pdf(&out);
  pdf.setPageSize(QPageSize(QPageSize::A4));
  pdf.setResolution(300);
  pdf.setTitle(u"交班报告"_s);
  pdf.setCreator(u"Trunkdesk"_s);
  QTextDocument document;
  document.setHtml(html);
  document.print(&pdf);
  if (out.size() == 0 && error) {
    *error = out.errorString().isEmpty() ? u"nothing written"_s : out.errorString();
    return false;
  }
  return true;
}

ShiftReportWindow::ShiftReportWindow(TShiftReport_Form &logic, QWidget *parent)
    : QWidget(parent, Qt::Window), m_logic(logic) {
  setObjectName(u"TShiftReport_Form"_s);
  setWindowTitle(u"交班报告"_s);
  resize(820, 680);
  m_text = Named<QTextBrowser>(u"ShiftReport_Text"_s, this);
  m_text->setOpenLinks(false);
  auto *save = NamedButton(u"ShiftReport_SavePdf"_s, u"保存PDF"_s, this);
  auto *print = NamedButton(u"ShiftReport_Print"_s, u"打印"_s, this);
  auto *close = NamedButton(u"ShiftReport_Close"_s, u"关闭"_s, this);
  auto *keys = new QHBoxLayout;
  keys->addStretch(1);
  keys->addWidget(save);
  keys->addWidget(print);
  keys->addWidget(close);
  auto *layout = new QVBoxLayout(this);
  layout->addWidget(m_text, 1);
  layout->addLayout(keys);
  setTabOrder(m_text, save);
  setTabOrder(save, print);
  setTabOrder(print, close);

  m_logic.RenderPdf = &RenderShiftReportPdf;
  connect(save, &QPushButton::clicked, this,
          [this] { RunGuarded([this] { m_logic.SavePdfClick(); }); });
  connect(print, &QPushButton::clicked, this, &ShiftReportWindow::Print);
  connect(close, &QPushButton::clicked, this, &QWidget::close);
  EscapeCloses(this);

  connect(&logic, &TShiftReport_Form::reportChanged, this,
          [this] { m_text->setHtml(m_logic.Html); });
  connect(&logic, &TFormLogic::shown, this, [this, save] {
    show();
    raise();
    activateWindow();
    save->setFocus();
  });
  connect(&logic, &TFormLogic::closed, this, &QWidget::hide);
}

ShiftReportWindow::~ShiftReportWindow() {
  m_logic.RenderPdf = nullptr;
}

void ShiftReportWindow::Print() {
  if (m_logic.Html.isEmpty())
    return;
  if (!m_printer)
    m_printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
  // Window-modal, not a loop of its own: the console keeps serving calls.
  auto *dialog = new QPrintDialog(m_printer.get(), this);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QDialog::accepted, this, [this] {
    QTextDocument document;
    document.setHtml(m_logic.Html);
    document.print(m_printer.get());
    RunGuarded([this] { m_logic.Printed(); });
  });
  dialog->open();
}

void ShiftReportWindow::closeEvent(QCloseEvent *event) {
  m_logic.Close();
  event->accept();
}
