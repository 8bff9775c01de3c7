#pragma once

class QWidget;
class TMain_Form;

// The page of the exchange's call records (TeTabSheet2) over its logic: the
// search boxes, the grid with a menu on each number, the page bar, and the
// export key. The page's window text is its tab text.
QWidget *BuildRecordsPage(TMain_Form &main, QWidget *parent);
