#pragma once

#include <QKeySequence>
#include <QShortcut>
#include <QWidget>

#include <functional>

// Esc puts a window of its own away, as it does a dialog. A window over a
// logic passes the logic's close, so the logic knows it is gone.
inline void EscapeCloses(QWidget *window, std::function<void()> close = {}) {
  auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), window);
  escape->setContext(Qt::WindowShortcut);
  if (close)
    QObject::connect(escape, &QShortcut::activated, window, std::move(close));
  else
    QObject::connect(escape, &QShortcut::activated, window, &QWidget::close);
}
