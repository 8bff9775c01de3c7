#pragma once

#include <QDialog>
#include <QHash>
#include <QKeySequence>
#include <QList>
#include <QString>

#include <functional>

class QAction;

// The front desk's shortcuts, all in one table: the keys are installed from it
// and the help window lists it, so the two can't disagree.
enum class FrontDeskKey {
  FindBox,
  WakeUp,
  NoDisturb,
  Memo,
  CheckIn,
  CheckOut,
  NextPage,
  PreviousPage,
  ShiftReport,
  Refresh,
  Help,
};

struct TFrontDeskKeyEntry {
  FrontDeskKey Id;
  QKeySequence Keys;
  QString Name; // the action's objectName
  QString Description;
};

const QList<TFrontDeskKeyEntry> &FrontDeskKeys();
const TFrontDeskKeyEntry &FrontDeskKeyOf(FrontDeskKey id);

using FrontDeskHandlers = QHash<FrontDeskKey, std::function<void()>>;

// One action a handler, on the window, with its key from the table; entries
// without a handler here (an action another part of the window installs
// itself) are only listed. Returns the actions made, for menus and toolbars.
QHash<FrontDeskKey, QAction *> InstallFrontDeskKeys(QWidget *window,
                                                    const FrontDeskHandlers &handlers);

// "快捷键": the table as the operator reads it, closed by Esc or Enter.
class FrontDeskKeysWindow : public QDialog {
  Q_OBJECT

public:
  explicit FrontDeskKeysWindow(QWidget *parent);
};
