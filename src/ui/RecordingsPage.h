#pragma once

class QWidget;
class TRecordServerPage;

// The recordings page (TeTabSheet_Records) over its logic: the server's address
// and connect key, the search boxes, the grid of recordings, and the player
// window a double-click opens. The page's window text is its tab text.
QWidget *BuildRecordingsPage(TRecordServerPage &page, QWidget *parent);
