#include "ui/FrontDeskKeys.h"

#include "ui/Named.h"

#include <QAction>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

const QList<TFrontDeskKeyEntry> &FrontDeskKeys() {
  // Keys a hand finds without looking, none a text box or grid needs for
  // itself (F2 edits a grid cell, so no room key uses it).
  static const QList<TFrontDeskKeyEntry> keys = {
      {FrontDeskKey::FindBox, QKeySequence(u"Ctrl+F"_s), u"Key_FindBox"_s, u"到分机查找框"_s},
      {FrontDeskKey::WakeUp, QKeySequence(u"Ctrl+W"_s), u"Key_WakeUp"_s, u"当前房间的叫醒"_s},
      {FrontDeskKey::NoDisturb, QKeySequence(u"Ctrl+D"_s), u"Key_NoDisturb"_s,
       u"当前房间的免打扰"_s},
      {FrontDeskKey::Memo, QKeySequence(u"Ctrl+M"_s), u"Key_Memo"_s, u"当前房间的备忘"_s},
      {FrontDeskKey::CheckIn, QKeySequence(u"Ctrl+I"_s), u"Key_CheckIn"_s,
       u"入住：当前房间或已勾选的房间"_s},
      {FrontDeskKey::CheckOut, QKeySequence(u"Ctrl+O"_s), u"Key_CheckOut"_s,
       u"退房：当前房间或已勾选的房间"_s},
      {FrontDeskKey::NextPage, QKeySequence(u"Ctrl+PgDown"_s), u"Key_NextPage"_s,
       u"记录：下一页"_s},
      {FrontDeskKey::PreviousPage, QKeySequence(u"Ctrl+PgUp"_s), u"Key_PreviousPage"_s,
       u"记录：上一页"_s},
      {FrontDeskKey::ShiftReport, QKeySequence(u"Ctrl+R"_s), u"Key_ShiftReport"_s, u"交班报告"_s},
      {FrontDeskKey::Refresh, QKeySequence(u"F5"_s), u"Key_Refresh"_s, u"刷新分机状态"_s},
      {FrontDeskKey::Help, QKeySequence(u"F1"_s), u"Key_Help"_s, u"快捷键一览"_s},
  };
  return keys;
}

const TFrontDeskKeyEntry &FrontDeskKeyOf(FrontDeskKey id) {
  for (const TFrontDeskKeyEntry &e : FrontDeskKeys())
    if (e.Id == id)
      return e;
  Q_UNREACHABLE();
}

QHash<FrontDeskKey, QAction *> InstallFrontDeskKeys(QWidget *window,
                                                    const FrontDeskHandlers &handlers) {
  QHash<FrontDeskKey, QAction *> made;
  for (const TFrontDeskKeyEntry &e : FrontDeskKeys()) {
    const auto handler = handlers.value(e.Id);
    if (!handler)
      continue;
    auto *action = new QAction(e.Description, window);
    action->setObjectName(e.Name);
    action->setShortcut(e.Keys);
    action->setShortcutContext(Qt::WindowShortcut);
    QObject::connect(action, &QAction::triggered, window, handler);
    window->addAction(action);
    made.insert(e.Id, action);
  }
  return made;
}

FrontDeskKeysWindow::FrontDeskKeysWindow(QWidget *parent) : QDialog(parent) {
  setObjectName(u"FrontDeskKeysWindow"_s);
  setWindowTitle(u"快捷键"_s);
  auto *table = Named<QTableWidget>(u"FrontDeskKeys_Table"_s, int(FrontDeskKeys().size()), 2, this);
  table->setHorizontalHeaderLabels({u"按键"_s, u"功能"_s});
  table->verticalHeader()->hide();
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table->setSelectionBehavior(QAbstractItemView::SelectRows);
  table->horizontalHeader()->setStretchLastSection(true);
  int row = 0;
  for (const TFrontDeskKeyEntry &e : FrontDeskKeys()) {
    table->setItem(row, 0, new QTableWidgetItem(e.Keys.toString(QKeySequence::NativeText)));
    table->setItem(row, 1, new QTableWidgetItem(e.Description));
    ++row;
  }
  table->resizeColumnToContents(0);
  auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  buttons->setObjectName(u"FrontDeskKeys_Buttons"_s);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  // Enter closes it as well as Esc: there is nothing else to confirm.
  buttons->button(QDialogButtonBox::Close)->setDefault(true);
  auto *layout = new QVBoxLayout(this);
  layout->addWidget(table);
  layout->addWidget(buttons);
  resize(420, 380);
}
