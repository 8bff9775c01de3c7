#pragma once

#include <QList>

class QWidget;
class TDirectoryPages;

// The main window's directory pages over their logic, in the order they stand
// among the working pages: the caller's card (Con_TeTabSheet), the contact card
// (Mat_TeTabSheet), and the contact search with its result grid
// (Find_TeTabSheet). Each page and control carries the name the language table
// addresses it by; the page's tab text is its window text.
QList<QWidget *> BuildDirectoryPages(TDirectoryPages &pages, QWidget *parent);
