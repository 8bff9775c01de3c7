#pragma once

#include "support/TDateTime.h"

#include <QString>

// A contact of the book as the forms read and write it.
struct TMaininfoRecord {
  qint32 ID = -1;
  QString Name;
  QString BranchTel;
  QString Phone1;
  QString MobilePhone;
  QString Address;
  QString Company;
  QString E_Mail;
  QString Web;
  QString QQ;
  QString MSN;
  QString Duty;
  TDateTime Birthday;
  QString Fax;
  QString Postalcode;
  QString IDCard;
  QString Memo;
  QString GroupType;
  QString GrpName;
};

// One row of a call list: the caller as the book knew them when the row was
// built or last rewritten, the time of the call, the call log's row number and
// the contact's ID. A row built for a call holds a contact ID or "-1" in
// ContactID; only a contact that was changed or deleted away leaves it empty,
// and such a row is what a newly added contact may claim.
struct TLmdlistItemRam {
  QString Name;
  QString Number; // the called or calling number
  QString Telephone;
  QString Mobile;
  QString Company;
  QString Time;
  QString RowNo;     // ID in conRecords, -1 for a row with nothing stored
  QString ContactID; // ID in MainInfo, -1 when no contact matched

  bool IsEmpty() const;
  // "name|number|telephone|mobile|company|time|row|contact", the form the list
  // box shows and copies.
  QString Text() const;
  // Sets name, telephone, mobile, company (and, when wanted, the contact ID)
  // from a contact.
  void Fill(const TMaininfoRecord &contact, bool withId);
  // Forgets the contact: keeps the number, time and row number.
  void Empty();
};

// The time of a call as the lists write it: "2024-3-5 09:07:02", month and day
// without leading zeros.
QString CallItemTime(TDateTime when);

// Whether a logged number belongs to a contact. Only the last seven digits of the
// number count, and a short internal number (below six) is never taken for a
// long outside one or the other way round, so "1234" does not claim a row of
// "02150001234" although the text is contained in it.
bool NumberMatchesContact(const QString &number, const TMaininfoRecord &contact);
