#include "ui/LanguageBinding.h"

#include "support/FormLogic.h"
#include "support/LanguageTable.h"

#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QStackedWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeWidget>

namespace {
// The tab widget that holds `page` as one of its pages, if any: the page's
// parent is the tab widget's stack.
QTabWidget *OwningTabWidget(QWidget *page) {
  QWidget *stack = page->parentWidget();
  if (!stack || !qobject_cast<QStackedWidget *>(stack))
    return nullptr;
  auto *tabs = qobject_cast<QTabWidget *>(stack->parentWidget());
  return tabs && tabs->indexOf(page) >= 0 ? tabs : nullptr;
}

void SetCaption(QObject *target, const QString &text) {
  if (auto *action = qobject_cast<QAction *>(target)) {
    action->setText(text);
    return;
  }
  auto *widget = qobject_cast<QWidget *>(target);
  if (!widget)
    return;
  if (QTabWidget *tabs = OwningTabWidget(widget)) {
    tabs->setTabText(tabs->indexOf(widget), text);
  } else if (auto *menu = qobject_cast<QMenu *>(widget)) {
    menu->setTitle(text);
  } else if (widget->isWindow()) {
    widget->setWindowTitle(text);
  } else if (auto *button = qobject_cast<QAbstractButton *>(widget)) {
    button->setText(text);
  } else if (auto *label = qobject_cast<QLabel *>(widget)) {
    label->setText(text);
  } else if (auto *group = qobject_cast<QGroupBox *>(widget)) {
    group->setTitle(text);
  }
}

void SetColumnTitle(QObject *target, int index, const QString &text) {
  if (auto *tree = qobject_cast<QTreeWidget *>(target)) {
    if (index < tree->columnCount())
      tree->headerItem()->setText(index, text);
  } else if (auto *table = qobject_cast<QTableWidget *>(target)) {
    if (index < table->columnCount()) {
      if (QTableWidgetItem *item = table->horizontalHeaderItem(index))
        item->setText(text);
      else
        table->setHorizontalHeaderItem(index, new QTableWidgetItem(text));
    }
  } else if (auto *view = qobject_cast<QAbstractItemView *>(target)) {
    // A view over a logic model: the model keeps its titles, so a model that
    // can't store them (most of ours compute them) simply ignores this.
    if (QAbstractItemModel *model = view->model(); model && index < model->columnCount())
      model->setHeaderData(index, Qt::Horizontal, text, Qt::DisplayRole);
  }
}

void SetItem(QObject *target, int index, const QString &text) {
  if (auto *combo = qobject_cast<QComboBox *>(target)) {
    if (index < combo->count())
      combo->setItemText(index, text);
  } else if (auto *list = qobject_cast<QListWidget *>(target)) {
    if (QListWidgetItem *item = list->item(index))
      item->setText(text);
  } else if (auto *tabs = qobject_cast<QTabWidget *>(target)) {
    if (index < tabs->count())
      tabs->setTabText(index, text);
  } else if (auto *bar = qobject_cast<QTabBar *>(target)) {
    if (index < bar->count())
      bar->setTabText(index, text);
  }
}

QList<QObject *> Controls(QWidget *root, const QString &name) {
  QList<QObject *> found = root->findChildren<QObject *>(name);
  if (root->objectName() == name)
    found.prepend(root);
  return found;
}
} // namespace

void ApplyControlText(QObject *target, TextProperty property, int index, const QString &text) {
  switch (property) {
  case TextProperty::Caption:
    SetCaption(target, text);
    break;
  case TextProperty::Hint:
    if (auto *action = qobject_cast<QAction *>(target))
      action->setToolTip(text);
    else if (auto *widget = qobject_cast<QWidget *>(target))
      widget->setToolTip(text);
    break;
  case TextProperty::Title:
  case TextProperty::Header:
    SetColumnTitle(target, index, text);
    break;
  case TextProperty::Item:
    SetItem(target, index, text);
    break;
  case TextProperty::Filter:
    break;
  }
}

void BindLanguage(TFormLogic &logic, QWidget *root) {
  // What was applied before this window existed: the table says which controls
  // of this form take texts, the logic keeps the last text of each.
  const QLatin1StringView form(logic.FormName());
  for (const TLanguageRow &row : LanguageTable()) {
    if (form != QLatin1StringView(row.Form))
      continue;
    const QString control = QLatin1StringView(row.Control);
    const QString text = logic.ControlText(control, row.Property, row.Index);
    if (text.isEmpty())
      continue;
    for (QObject *target : Controls(root, control))
      ApplyControlText(target, row.Property, row.Index, text);
  }

  QObject::connect(
      &logic, &TFormLogic::controlTextChanged, root,
      [root](const QString &control, TextProperty property, int index, const QString &text) {
        for (QObject *target : Controls(root, control))
          ApplyControlText(target, property, index, text);
      });
}
