#pragma once

#include "console/CallDirectory.h"

class TDirectoryPages;

// The call handling's view of the directory pages: the incoming list, the
// caller's lookup on the call page, the ways of announcing a call, and the call
// log with its lists.
class TDirectoryCalls final : public TCallDirectory {
public:
  explicit TDirectoryCalls(TDirectoryPages &pages) : m_pages(pages) {}

  void AddIncoming(const QString &number) override;
  void RemoveIncoming(const QString &number) override;
  QStringList LookUp(const QString &number) override;
  bool ContactSelected() const override;
  void RestoreAndShowContact(const QString &number, bool lookUp) override;
  void ShowPopMsg(const QString &number) override;
  void ExternalCall() override;
  QStringList LogCall(int kind, const QString &number) override;

private:
  TDirectoryPages &m_pages;
};
