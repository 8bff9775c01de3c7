#include "console/DirectoryCalls.h"

#include "link/SysParam.h"
#include "directory/DirectoryPages.h"

using namespace Qt::StringLiterals;

void TDirectoryCalls::AddIncoming(const QString &number) {
  m_pages.InsertCallItem(u"Phone1"_s, number, -1, m_pages.Incomings_LMDListBox);
}

void TDirectoryCalls::RemoveIncoming(const QString &number) {
  m_pages.RemoveIncomingItem(number);
}

QStringList TDirectoryCalls::LookUp(const QString &number) {
  m_pages.ShowCallerInfo(u"Phone1"_s, number);
  // The row the call just got in the incoming list carries the contact's name
  // and company; the balloon and the pop-up read them from there.
  if (m_pages.Incomings_LMDListBox.Count() == 0)
    return {};
  const TLmdlistItemRam &row = m_pages.Incomings_LMDListBox.Item(0);
  return {row.Name, row.Number, row.Telephone, row.Mobile, row.Company};
}

bool TDirectoryCalls::ContactSelected() const {
  return m_pages.CurrentConID != -1;
}

void TDirectoryCalls::RestoreAndShowContact(const QString &number, bool) {
  m_pages.ShowIncomingDirect(number);
}

void TDirectoryCalls::ShowPopMsg(const QString &number) {
  m_pages.ShowPopMsg(number);
}

void TDirectoryCalls::ExternalCall() {
  // The external program gets the call as copied for it.
  m_pages.APICallNumber = LastSysParam().CallerNo;
  m_pages.TeSpeedButton_APIExcuteClick();
}

QStringList TDirectoryCalls::LogCall(int kind, const QString &number) {
  const qint32 id = m_pages.AddConRecord(number, kind);
  TCallListModel *list = m_pages.ListOfState(kind);
  if (!list)
    return {};
  m_pages.InsertCallItem(u"Phone1"_s, number, id, *list);
  const TLmdlistItemRam &row = list->Item(0);
  return {row.Name, row.Number, row.Telephone, row.Mobile, row.Company};
}
