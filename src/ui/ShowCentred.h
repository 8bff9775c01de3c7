#pragma once

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

// Lays a window out for what it shows now and brings it up in the middle of
// the screen its parent stands on, without a nested event loop.
inline void ShowCentred(QWidget *window) {
  window->adjustSize();
  const QWidget *parent = window->parentWidget();
  if (const QScreen *screen = parent ? parent->screen() : QGuiApplication::primaryScreen())
    window->move(screen->availableGeometry().center() - window->rect().center());
  window->show();
  window->raise();
  window->activateWindow();
}
