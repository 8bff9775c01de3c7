#pragma once

class QObject;
class QString;
class QWidget;
class TFormLogic;
enum class TextProperty;

// Keeps a window's controls showing the language texts its logic holds. The
// texts already applied are set at once; later ones (a language switch) follow
// live for as long as `root` lives. Controls are found by objectName below
// `root`, `root` itself included, so the names in the language table are the
// names the widgets carry.
//
// How a property lands depends on the kind of control:
//  - Caption: the window title of a top-level window, the tab text of a page of
//    a tab widget, the title of a group box or menu, the text of a button,
//    label, check box or action;
//  - Hint: the tool tip;
//  - Title and Header: the column (section) title of an item view or tree;
//  - Item: the item of a combo box, list, or tab bar;
//  - Filter: nothing; the logic reads it when it opens a file dialog.
void BindLanguage(TFormLogic &logic, QWidget *root);

// Sets one text on one object as BindLanguage would. Exposed for windows that
// build a control later than their binding (a menu filled on demand).
void ApplyControlText(QObject *target, TextProperty property, int index, const QString &text);
