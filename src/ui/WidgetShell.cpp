#include "ui/WidgetShell.h"

#include "support/Log.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QMessageBox>
#include <QProcess>
#include <QSystemTrayIcon>
#include <QToolTip>
#include <QUrl>

#include <cstdio>

using namespace Qt::StringLiterals;

WidgetShell::WidgetShell(bool headless, QObject *parent) : QObject(parent), m_headless(headless) {
  if (!headless && QSystemTrayIcon::isSystemTrayAvailable()) {
    m_tray = new QSystemTrayIcon(QApplication::windowIcon(), this);
    m_tray->setObjectName(u"CoolTrayIcon1"_s);
    m_tray->setToolTip(QApplication::applicationName());
    connect(m_tray, &QSystemTrayIcon::messageClicked, this, &WidgetShell::balloonClicked);
    m_tray->show();
  }
}

WidgetShell::~WidgetShell() = default;

void WidgetShell::Balloon(const QString &title, const QString &text, int seconds,
                          BalloonIcon icon) {
  WriteLog(title + u": "_s + text);
  if (m_tray && m_tray->isVisible()) {
    const QSystemTrayIcon::MessageIcon kind = icon == BalloonIcon::Error ? QSystemTrayIcon::Critical
                                              : icon == BalloonIcon::Warning
                                                  ? QSystemTrayIcon::Warning
                                                  : QSystemTrayIcon::Information;
    m_tray->showMessage(title, text, kind, seconds * 1000);
    return;
  }
  if (InWindowNotice)
    InWindowNotice(title, text, seconds);
  if (m_headless)
    std::fprintf(stderr, "trunkdesk: %s: %s\n", qUtf8Printable(title), qUtf8Printable(text));
}

void WidgetShell::Message(MessageKind kind, const QString &text) {
  WriteLog(text);
  if (m_headless) {
    std::fprintf(stderr, "trunkdesk: %s\n", qUtf8Printable(text));
    return;
  }
  // Shown without a nested loop: the console keeps serving the exchange while
  // the operator reads.
  const QMessageBox::Icon icon = kind == MessageKind::Error     ? QMessageBox::Critical
                                 : kind == MessageKind::Warning ? QMessageBox::Warning
                                                                : QMessageBox::Information;
  auto *box =
      new QMessageBox(icon, QApplication::applicationName(), text, QMessageBox::Ok, m_window);
  box->setAttribute(Qt::WA_DeleteOnClose);
  box->open();
}

bool WidgetShell::Question(const QString &text) {
  if (m_headless)
    return false;
  return QMessageBox::question(m_window, QApplication::applicationName(), text) == QMessageBox::Yes;
}

QString WidgetShell::ChooseOpenFile(const QString &filter, const QString &startPath) {
  if (m_headless)
    return QString();
  // "description|pattern" as the language packs write it.
  const QString description = filter.section(u'|', 0, 0);
  const QString pattern = filter.section(u'|', 1, 1);
  const QString qtFilter = pattern.isEmpty() ? filter : description + u" ("_s + pattern + u')';
  return QFileDialog::getOpenFileName(m_window, QString(), startPath, qtFilter);
}

QString WidgetShell::ChooseSaveFile(const QString &filter, const QString &suggestedPath) {
  if (m_headless)
    return QString();
  return QFileDialog::getSaveFileName(m_window, QString(), suggestedPath, filter);
}

void WidgetShell::Open(const QString &target, const QString &parameters) {
  WriteLog(u"Open: "_s + target + u' ' + parameters);
  const QUrl url(target);
  if (!url.scheme().isEmpty() && url.scheme().size() > 1 && parameters.isEmpty()) {
    QDesktopServices::openUrl(url);
    return;
  }
  QProcess::startDetached(target, QProcess::splitCommand(parameters));
}

void WidgetShell::HintAt(const QString &title, const QString &text, int ms, int x, int y) {
  QToolTip::showText(QPoint(x, y),
                     u"<b>"_s + title.toHtmlEscaped() + u"</b><br>"_s + text.toHtmlEscaped(),
                     m_window, QRect(), ms);
}

void WidgetShell::RingStart() {
  // Headless there is nobody to hear it.
  if (!m_headless)
    m_ring.Start();
}

void WidgetShell::RingOnce() {
  if (!m_headless)
    m_ring.PlayOnce();
}

void WidgetShell::RingStop() {
  m_ring.Stop();
}
