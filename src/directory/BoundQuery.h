#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

// A read whose values are bound, never formatted into its text: for statements
// put together from fixed pieces while the values come from outside the
// console (the automation API). The text is plain SQL that the file and the
// database server read alike (LIMIT/OFFSET, no Jet words). Appends still
// waiting are written first, so the read sees them. A failure raises
// EDatabaseError.
struct TBoundRows {
  QList<QVariantList> Rows; // values by the statement's column order
};
TBoundRows SelectBound(const QString &sql, const QVariantMap &values);
