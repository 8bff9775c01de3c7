#pragma once

#include "directory/DirectoryPages.h"

#include <QString>
#include <QStringList>

#include <functional>

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QAction;
class QLineEdit;
class QMenu;
class QPlainTextEdit;
class QWidget;

// How the directory pages' widgets and the fields of TDirectoryPages stay in
// step. The operator's typing writes the field at once (and calls `edited`, e.g.
// to mark the contact card changed); when the logic raises cardsChanged, each
// widget shows its field again with its signals blocked, and only where the
// text differs, so the operator's caret stays where it is.
using PagesText = QString TDirectoryPages::*;
using PagesList = QStringList TDirectoryPages::*;
using PagesHandler = void (TDirectoryPages::*)();

// The pages' tables keep names and texts as UTF-16 literals.
inline QString Utf16(const char16_t *text) {
  return QString::fromUtf16(text);
}

void BindLineEdit(QLineEdit *edit, TDirectoryPages &pages, PagesText field,
                  std::function<void()> edited = {});
void BindMemo(QPlainTextEdit *memo, TDirectoryPages &pages, PagesText field,
              std::function<void()> edited = {});
// An editable combo box. With `items` its list follows the logic too; without,
// the box keeps the texts the operator entered as its own history.
void BindComboBox(QComboBox *box, TDirectoryPages &pages, PagesText field, PagesList items,
                  std::function<void()> edited = {});
void BindCheckBox(QCheckBox *box, TDirectoryPages &pages, bool TDirectoryPages::*field);
// A key whose caption the logic sets in its handlers, while a language switch
// sets the same key from the pack: the key takes the logic's caption when that
// changes, and otherwise keeps the text it shows.
void BindCaption(QAbstractButton *button, TDirectoryPages &pages, PagesText caption);
// Tracks the selected part of an edit, which some handlers act on instead of the
// whole text.
void TrackSelection(QLineEdit *edit, TDirectoryPages &pages, PagesText selection);

// A press runs the handler the way the console runs every handler: a database
// error reaches the application's handler instead of ending the program.
void OnClick(QAbstractButton *button, TDirectoryPages &pages, PagesHandler handler);

// An entry of one of the pages' menus, named as the language texts know it,
// running `run` (if given) as a handler runs.
QAction *AddMenuEntry(QMenu *menu, const QString &name, const QString &text,
                      std::function<void()> run);

// A key that acts on what another control holds (its selection, say) must not
// take the focus from it when clicked; it stays reachable by Tab.
void KeepFocusOnClick(QAbstractButton *button);

// Sets a text that no language row carries from a pack key, now and again at
// every language switch. `apply` gets the text of the key in force.
void FollowLanguageText(QWidget *owner, int key, std::function<void(const QString &)> apply);
// A pack text made fit for a box's caption: "地    址:" gives "地址", "ID card:"
// gives "ID card".
QString CaptionOfLabelText(const QString &text);
