#pragma once

#include <QString>
#include <QStringList>

// What the operator's own calls need of the phone book and the call log: the
// incoming list, the caller's lookup and its screen pop, and the logged calls.
// The main window's logic calls it; the directory answers it.
class TCallDirectory {
public:
  virtual ~TCallDirectory() = default;

  // Incomings_LMDListBox: a call that rings, and its removal once it stops.
  virtual void AddIncoming(const QString &number) = 0;
  virtual void RemoveIncoming(const QString &number) = 0;

  // Looks the number up and shows the contact on the call page; returns the
  // row's columns (0 the name, 4 the company) or nothing when none matches.
  virtual QStringList LookUp(const QString &number) = 0;
  // Whether a contact is shown on the call page now.
  virtual bool ContactSelected() const = 0;

  // The four ways of announcing a call besides the balloon: bring the window up
  // (and the caller's contact, for a ringing call), the pop-up window, and the
  // external program.
  virtual void RestoreAndShowContact(const QString &number, bool lookUp) = 0;
  virtual void ShowPopMsg(const QString &number) = 0;
  virtual void ExternalCall() = 0;

  // A finished call: a row of its kind (1 missed, 2 answered, 3 dialled) in the
  // call log and in the list of that kind. Returns the new row's columns (0 the
  // contact's name, 4 the company).
  virtual QStringList LogCall(int kind, const QString &number) = 0;
};
