#pragma once

#include "devices/CallControlDev.h"

#include <QAbstractScrollArea>
#include <QFont>
#include <QFontMetricsF>
#include <QPixmap>
#include <QRegion>
#include <QStaticText>
#include <QTimer>

#include <vector>

class QPainter;
class TDeviceEvents;
class TMain_Form;
class TPhoneBoard;

// The board of panels: one painted view over the device table. Only the panels
// inside the viewport are drawn, so a board of 3072 devices scrolls as lightly as
// one of ten. Every decision (order, places, scrolling, the drop, the menu's
// contents) stays with the table, the board logic and the main form; this view
// draws them and forwards the operator's hand.
class TBoardView : public QAbstractScrollArea {
  Q_OBJECT

public:
  // `main` may be null (a board on its own): then there is no menu and no click.
  TBoardView(TCallControlDev &table, TPhoneBoard &board, TMain_Form *main,
             QWidget *parent = nullptr);

  // The device whose panel covers a point of the viewport, or -1.
  int PanelAt(QPoint viewportPos) const;
  // Where a device's panel stands in the viewport, scrolled.
  QRect PanelRect(int id) const;
  int CurrentPanel() const { return m_current; }

  // Listens to the live status: a changed panel in sight repaints with the next
  // frame, together with every other panel changed meanwhile.
  void ConnectEvents(TDeviceEvents &events);

  // Draws the visible board into any paint device of the viewport's size; only
  // the panels touching `exposed` are drawn.
  void PaintBoard(QPainter &painter, const QRegion &exposed);

public slots:
  // The table's scroll position or order changed behind the view's back (the
  // find box scrolls it): the scroll bar follows and the board repaints.
  void SyncFromTable();
  void UpdatePanel(int id);

signals:
  // The panel menu's wake-up item; the wake-up dialog opens for this device.
  void wakeUpRequested(int id);

protected:
  void paintEvent(QPaintEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;
  void wheelEvent(QWheelEvent *event) override;
  void mousePressEvent(QMouseEvent *event) override;
  void mouseMoveEvent(QMouseEvent *event) override;
  void mouseReleaseEvent(QMouseEvent *event) override;
  void contextMenuEvent(QContextMenuEvent *event) override;
  void keyPressEvent(QKeyEvent *event) override;
  void changeEvent(QEvent *event) override;
  bool viewportEvent(QEvent *event) override;
  void scrollContentsBy(int dx, int dy) override;

private:
  struct Fonts {
    QFont Number;
    QFont Line;
    QFontMetricsF NumberMetrics{QFont()};
    QFontMetricsF LineMetrics{QFont()};
    int Generation = 0; // counts font changes: every fitted text older is stale
  };
  // A line of a panel fitted to its width (elided) and laid out once: a status
  // stream repaints the same panels many times over with the same words.
  struct FittedLine {
    QString Source;
    qreal Width = -1;
    QStaticText Text;
  };
  struct FittedPanel {
    int Generation = -1;
    FittedLine Number;
    FittedLine Status;
    FittedLine Name;
  };

  void PaintPanel(QPainter &painter, int id, const QRect &rect, bool ghost);
  void PaintLine(QPainter &painter, FittedLine &line, const QString &source, const QRect &box,
                 const QFont &font, const QFontMetricsF &metrics, bool stale);
  void FlushFrame();
  void PaintGlyph(QPainter &painter, const QString &glyph, const QRect &box);
  void PaintModuleIcons(QPainter &painter, const TPhonePanel &panel, const QRect &rect,
                        const QColor &ink);
  QRect IconRect(int id) const;
  QRect DragRect() const;
  void SetCurrent(int id);
  void ShowMenu(int id, QPoint globalPos);
  void UpdateFonts();
  void CancelDrag();
  int ContentHeight() const;

  TCallControlDev &m_table;
  TPhoneBoard &m_board;
  TMain_Form *m_main;

  Fonts m_fonts;
  std::vector<FittedPanel> m_fitted; // by device index, grown as panels are painted
  // Panels changed since the last frame, in viewport coordinates; the frame timer
  // hands them to the paint system at once.
  QRegion m_pending;
  QTimer m_frame;
  QPixmap m_trunkError; // the shipped picture of a failed trunk, when there is one
  int m_current = -1;
  int m_pressId = -1;
  bool m_pressOnIcon = false;
  QPoint m_pressPos;
  bool m_dragging = false;
  QPoint m_dragPos;
  QPoint m_dragOffset;
  int m_wheelRest = 0; // a wheel turns in steps of a notch; smooth wheels add up to one
  // A panel held at the top or bottom edge scrolls the board, a wheel step a tick,
  // so it can travel to any row.
  QTimer m_edgeScroll;
  bool m_edgeDown = false;
};
