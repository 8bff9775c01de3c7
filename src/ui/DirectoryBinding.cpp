#include "ui/DirectoryBinding.h"

#include "support/FormLogic.h"
#include "support/LanguagePack.h"
#include "support/Shell.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QSignalBlocker>

#include <memory>

using namespace Qt::StringLiterals;

namespace {
void Notify(const std::function<void()> &edited) {
  if (edited)
    RunGuarded(edited);
}

QStringList ItemsOf(const QComboBox *box) {
  QStringList items;
  for (int i = 0; i < box->count(); ++i)
    items.append(box->itemText(i));
  return items;
}
} // namespace

void BindLineEdit(QLineEdit *edit, TDirectoryPages &pages, PagesText field,
                  std::function<void()> edited) {
  edit->setText(pages.*field);
  QObject::connect(edit, &QLineEdit::textEdited, edit,
                   [&pages, field, edited](const QString &text) {
                     pages.*field = text;
                     Notify(edited);
                   });
  QObject::connect(&pages, &TDirectoryPages::cardsChanged, edit, [edit, &pages, field] {
    if (edit->text() != pages.*field) {
      const QSignalBlocker block(edit);
      edit->setText(pages.*field);
    }
  });
}

void BindMemo(QPlainTextEdit *memo, TDirectoryPages &pages, PagesText field,
              std::function<void()> edited) {
  memo->setPlainText(pages.*field);
  QObject::connect(memo, &QPlainTextEdit::textChanged, memo, [memo, &pages, field, edited] {
    pages.*field = memo->toPlainText();
    Notify(edited);
  });
  QObject::connect(&pages, &TDirectoryPages::cardsChanged, memo, [memo, &pages, field] {
    if (memo->toPlainText() != pages.*field) {
      const QSignalBlocker block(memo);
      memo->setPlainText(pages.*field);
    }
  });
}

void BindComboBox(QComboBox *box, TDirectoryPages &pages, PagesText field, PagesList items,
                  std::function<void()> edited) {
  box->setEditable(true);
  const auto show = [box, &pages, field, items] {
    const QSignalBlocker block(box);
    if (items && ItemsOf(box) != pages.*items) {
      box->clear();
      box->addItems(pages.*items);
      box->setEditText(pages.*field);
    }
    if (box->currentText() != pages.*field)
      box->setEditText(pages.*field);
  };
  show();
  // A pick from the list sets the edit text too, so this one signal covers both.
  QObject::connect(box, &QComboBox::editTextChanged, box,
                   [&pages, field, edited](const QString &text) {
                     pages.*field = text;
                     Notify(edited);
                   });
  QObject::connect(&pages, &TDirectoryPages::cardsChanged, box, show);
}

void BindCheckBox(QCheckBox *box, TDirectoryPages &pages, bool TDirectoryPages::*field) {
  box->setChecked(pages.*field);
  QObject::connect(box, &QCheckBox::toggled, box,
                   [&pages, field](bool checked) { pages.*field = checked; });
}

void BindCaption(QAbstractButton *button, TDirectoryPages &pages, PagesText caption) {
  button->setText(pages.*caption);
  auto shown = std::make_shared<QString>(pages.*caption);
  QObject::connect(&pages, &TDirectoryPages::cardsChanged, button,
                   [button, &pages, caption, shown] {
                     if (pages.*caption != *shown) {
                       *shown = pages.*caption;
                       button->setText(*shown);
                     }
                   });
}

void TrackSelection(QLineEdit *edit, TDirectoryPages &pages, PagesText selection) {
  QObject::connect(edit, &QLineEdit::selectionChanged, edit,
                   [edit, &pages, selection] { pages.*selection = edit->selectedText(); });
}

void OnClick(QAbstractButton *button, TDirectoryPages &pages, PagesHandler handler) {
  QObject::connect(button, &QAbstractButton::clicked, button,
                   [&pages, handler] { RunGuarded([&] { (pages.*handler)(); }); });
}

QAction *AddMenuEntry(QMenu *menu, const QString &name, const QString &text,
                      std::function<void()> run) {
  QAction *entry = menu->addAction(text);
  entry->setObjectName(name);
  if (run)
    QObject::connect(entry, &QAction::triggered, menu, [run] { RunGuarded(run); });
  return entry;
}

void KeepFocusOnClick(QAbstractButton *button) {
  button->setFocusPolicy(Qt::TabFocus);
}

void FollowLanguageText(QWidget *owner, int key, std::function<void(const QString &)> apply) {
  auto shown = std::make_shared<QString>(LangText(key));
  apply(*shown);
  // A language switch sets the main window's texts one by one; the new pack is
  // loaded by the first of them, so that is when this text changes too.
  for (TFormLogic *form : LiveForms(QLatin1StringView("TMain_Form"))) {
    QObject::connect(form, &TFormLogic::controlTextChanged, owner, [key, apply, shown] {
      const QString text = LangText(key);
      if (text != *shown) {
        *shown = text;
        apply(text);
      }
    });
  }
}

QString CaptionOfLabelText(const QString &text) {
  QString caption = text.trimmed();
  while (caption.endsWith(u':') || caption.endsWith(u'：'))
    caption.chop(1);
  // The Chinese labels spread short words with runs of blanks to line them up.
  static const QRegularExpression padding(u"\\s{2,}"_s);
  caption.remove(padding);
  return caption.trimmed();
}
