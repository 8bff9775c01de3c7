#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QString>

#include <utility>

// A widget made and named at once: the control's name is its objectName, which
// the language texts and the tests find it by.
template <typename W, typename... Args> W *Named(const QString &name, Args &&...args) {
  auto *widget = new W(std::forward<Args>(args)...);
  widget->setObjectName(name);
  return widget;
}

inline QLabel *NamedLabel(const QString &name, const QString &text, QWidget *parent) {
  return Named<QLabel>(name, text, parent);
}

inline QLineEdit *NamedEdit(const QString &name, QWidget *parent) {
  return Named<QLineEdit>(name, parent);
}

// No key of ours is a dialog's default: Enter belongs to the box it is typed in
// (the login boxes log in themselves), and a default key would act a second time.
inline QPushButton *NamedButton(const QString &name, const QString &text, QWidget *parent) {
  QPushButton *button = Named<QPushButton>(name, text, parent);
  button->setAutoDefault(false);
  return button;
}
