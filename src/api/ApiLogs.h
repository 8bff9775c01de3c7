#pragma once

#include <QJsonObject>
#include <QString>

class QUrlQuery;

// The record reads of the automation API, from the store with every value
// bound: the exchange's call records and the wake-up log, newest first, one
// page of kApiPageSize. A query value that doesn't parse gives the message
// of a 400 in *error and an empty object.
inline constexpr int kApiPageSize = 50;

// ?from=&to=&number=&page= : times as yyyy-MM-dd[Thh:mm[:ss]] (a date alone
// as "to" reaches to the end of that day); number in part, against either
// the caller or the called number.
QJsonObject CallsPage(const QUrlQuery &query, QString *error);
// ?from=&to=&room=&state= : the wake-up time in the range; room by room
// number or extension exactly; state "answered" or "failed".
QJsonObject WakeUpsPage(const QUrlQuery &query, QString *error);
