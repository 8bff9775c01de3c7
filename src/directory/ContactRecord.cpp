#include "directory/ContactRecord.h"

#include <QStringList>

using namespace Qt::StringLiterals;

bool TLmdlistItemRam::IsEmpty() const {
  return Name.isEmpty() && Number.isEmpty() && Telephone.isEmpty() && Mobile.isEmpty() &&
         Company.isEmpty() && Time.isEmpty() && RowNo.isEmpty() && ContactID.isEmpty();
}

QString TLmdlistItemRam::Text() const {
  return QStringList{Name, Number, Telephone, Mobile, Company, Time, RowNo, ContactID}.join(u'|');
}

void TLmdlistItemRam::Fill(const TMaininfoRecord &contact, bool withId) {
  Name = contact.Name;
  Telephone = contact.Phone1;
  Mobile = contact.MobilePhone;
  Company = contact.Company;
  if (withId)
    ContactID = QString::number(contact.ID);
}

void TLmdlistItemRam::Empty() {
  Name.clear();
  Telephone.clear();
  Mobile.clear();
  Company.clear();
  ContactID.clear();
}

QString CallItemTime(TDateTime when) {
  const QDateTime dt = when.ToQDateTime();
  const QDate d = dt.date();
  const QTime t = dt.time();
  return u"%1-%2-%3 %4:%5:%6"_s.arg(d.year(), 4, 10, QLatin1Char('0'))
      .arg(d.month())
      .arg(d.day())
      .arg(t.hour(), 2, 10, QLatin1Char('0'))
      .arg(t.minute(), 2, 10, QLatin1Char('0'))
      .arg(t.second(), 2, 10, QLatin1Char('0'));
}

namespace {
bool CandidateMatches(const QString &tail, const QString &candidate) {
  const bool tailShort = tail.size() < 6;
  const bool candidateShort = candidate.size() < 6;
  return tailShort == candidateShort && candidate.contains(tail);
}
} // namespace

bool NumberMatchesContact(const QString &number, const TMaininfoRecord &contact) {
  const QString tail = number.right(7);
  return CandidateMatches(tail, contact.Phone1) || CandidateMatches(tail, contact.MobilePhone);
}
