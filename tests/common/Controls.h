#pragma once

#include <QString>
#include <QWidget>

// A control of a window by its name; a missing one ends the test at once with
// its name, instead of a null pointer a few lines later.
template <typename T> T *Control(QWidget *in, const QString &name) {
  T *control = in->findChild<T *>(name);
  if (!control)
    qFatal("no control %s", qPrintable(name));
  return control;
}
