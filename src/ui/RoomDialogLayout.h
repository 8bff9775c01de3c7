#pragma once

#include <QBoxLayout>
#include <QWidget>

// The frame the guest-room dialogs share: a margin round the body, and the
// keys at the bottom right (apply, batch apply, the way out) in that order.
inline QVBoxLayout *RoomDialogFrame(QWidget *dialog) {
  auto *outer = new QVBoxLayout(dialog);
  outer->setContentsMargins(14, 14, 14, 14);
  return outer;
}

inline QHBoxLayout *RoomDialogKeys(QWidget *apply, QWidget *multi, QWidget *out) {
  auto *keys = new QHBoxLayout;
  keys->addStretch(1);
  keys->addWidget(apply);
  keys->addWidget(multi);
  keys->addWidget(out);
  return keys;
}
