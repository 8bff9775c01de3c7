#pragma once

class QWidget;
class TDirectoryPages;

// The two cards of the directory pages, built from one table of fields: the
// caller's card (Con_TeTabSheet), filled by the lookup of an incoming call, and
// the contact card (Mat_TeTabSheet), where contacts are typed, saved, copied
// and pasted.
QWidget *BuildCallCard(TDirectoryPages &pages, QWidget *parent);
QWidget *BuildContactCard(TDirectoryPages &pages, QWidget *parent);
