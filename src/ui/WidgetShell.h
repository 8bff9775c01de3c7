#pragma once

#include "support/Shell.h"
#include "ui/RingPlayer.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>

class QSystemTrayIcon;

// The shell on a desktop: balloons from the tray icon (or, where the desktop has
// no tray, inside the main window for the same seconds), message boxes that
// don't stop the console, yes/no questions, the file dialog, the desktop's
// "open", hints at a point, and the ring.
//
// Headless (the offscreen platform) there is nobody to see a dialog: messages go
// to standard error as well, and questions are answered "no" without asking.
class WidgetShell final : public QObject, public Shell {
  Q_OBJECT

public:
  explicit WidgetShell(bool headless, QObject *parent = nullptr);
  ~WidgetShell() override;

  void SetMainWindow(QWidget *window) { m_window = window; }
  // Where a balloon goes when there is no tray.
  std::function<void(const QString &title, const QString &text, int seconds)> InWindowNotice;
  QSystemTrayIcon *Tray() const { return m_tray; }

  void Balloon(const QString &title, const QString &text, int seconds, BalloonIcon icon) override;
  void Message(MessageKind kind, const QString &text) override;
  bool Question(const QString &text) override;
  QString ChooseOpenFile(const QString &filter, const QString &startPath) override;
  QString ChooseSaveFile(const QString &filter, const QString &suggestedPath) override;
  void Open(const QString &target, const QString &parameters) override;
  void HintAt(const QString &title, const QString &text, int ms, int x, int y) override;
  void RingStart() override;
  void RingStop() override;
  void RingOnce() override;

signals:
  void balloonClicked();

private:
  bool m_headless;
  QPointer<QWidget> m_window;
  QSystemTrayIcon *m_tray = nullptr;
  RingPlayer m_ring;
};
