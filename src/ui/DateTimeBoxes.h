#pragma once

#include "support/TDateTime.h"
#include "ui/Named.h"

#include <QDateEdit>
#include <QTimeEdit>

// The date and time boxes of the search pages, in the console's fixed formats,
// standing at a logic field's value.
inline QDateEdit *DateBox(const QString &name, QWidget *parent, TDateTime value = {}) {
  auto *box = Named<QDateEdit>(name, parent);
  box->setDisplayFormat(QString::fromUtf16(kShortDateFormat));
  box->setCalendarPopup(true);
  if (!value.IsZero())
    box->setDate(value.Date());
  return box;
}

inline QTimeEdit *TimeBox(const QString &name, QWidget *parent, TDateTime value = {}) {
  auto *box = Named<QTimeEdit>(name, parent);
  box->setDisplayFormat(QString::fromUtf16(kLongTimeFormat));
  box->setTime(value.Time());
  return box;
}
