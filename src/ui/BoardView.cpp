#include "ui/BoardView.h"

#include "console/Main_Form.h"
#include "devices/DeviceEvents.h"
#include "devices/PhoneBoard.h"
#include "support/Paths.h"
#include "ui/StatusColours.h"

#include <QContextMenuEvent>
#include <QFileInfo>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QToolTip>
#include <QWheelEvent>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
// Inside a panel: the icon at the top left, the number beside it, then the status
// and the name, each on a line of its own.
constexpr int kPad = 4;
constexpr int kIcon = 16;
constexpr int kModuleIcon = 14;
constexpr int kLineHeight = 15;
constexpr int kNumberTop = 3;
constexpr int kStatusTop = 21;
constexpr int kNameTop = 38;
constexpr int kDragThreshold = 5;
constexpr int kFrame = 3; // the focus frame stands this far outside the panel
constexpr int kEdge = 16; // a dragged panel this near the top or bottom scrolls the board
// Status changes wait this long for company: a busy exchange's stream costs one
// repaint a frame, however many datagrams it carried.
constexpr int kFrameMs = 16;

const QColor kDarkInk(24, 24, 28);
const QColor kLightInk(250, 250, 250);
const QColor kAlarm(210, 40, 40);

// Black on light panels, white on dark ones: the operator reads every status
// colour the legend can choose.
QColor InkFor(const QColor &fill) {
  const int luma = (299 * fill.red() + 587 * fill.green() + 114 * fill.blue()) / 1000;
  return luma >= 140 ? kDarkInk : kLightInk;
}

QString MenuText(const TMain_Form *main, const QString &control, const QString &fallback) {
  const QString text = main ? main->ControlText(control) : QString();
  return text.isEmpty() || text == u"(Null)"_s ? fallback : text;
}

void Badge(QPainter &p, const QRectF &box, const QColor &fill) {
  p.setPen(QPen(QColor(0, 0, 0, 110), 1));
  p.setBrush(fill);
  p.drawEllipse(box.adjusted(0.5, 0.5, -0.5, -0.5));
}

// A head and shoulders: the extension's user.
void Person(QPainter &p, const QRectF &box, const QColor &ink, bool filled) {
  const qreal w = box.width();
  const QPointF c = box.center();
  p.setPen(QPen(ink, 1.2));
  p.setBrush(filled ? QBrush(ink) : Qt::NoBrush);
  p.drawEllipse(QPointF(c.x(), box.top() + w * 0.36), w * 0.16, w * 0.16);
  QPainterPath body;
  body.moveTo(c.x() - w * 0.28, box.top() + w * 0.82);
  body.cubicTo(c.x() - w * 0.28, box.top() + w * 0.52, c.x() + w * 0.28, box.top() + w * 0.52,
               c.x() + w * 0.28, box.top() + w * 0.82);
  if (filled)
    body.closeSubpath();
  p.drawPath(body);
}

// The small red marker of do-not-disturb: a bar for everything, an arrow for
// incoming only (down) or outgoing only (up).
void NoDisturbMarker(QPainter &p, const QRectF &icon, int kind) {
  const QRectF m(icon.right() - 7.5, icon.bottom() - 7.5, 8.5, 8.5);
  Badge(p, m, kAlarm);
  p.setPen(Qt::NoPen);
  p.setBrush(kLightInk);
  const QPointF c = m.center();
  if (kind == 0) {
    p.drawRect(QRectF(c.x() - 2.5, c.y() - 0.8, 5, 1.6));
  } else {
    const qreal dir = kind == 1 ? 1 : -1; // 1: pointing down
    const QPointF tri[3] = {QPointF(c.x() - 2.5, c.y() - 1.4 * dir),
                            QPointF(c.x() + 2.5, c.y() - 1.4 * dir),
                            QPointF(c.x(), c.y() + 1.8 * dir)};
    p.drawPolygon(tri, 3);
  }
}

void TrunkMark(QPainter &p, const QRectF &box, bool error) {
  Badge(p, box, error ? kAlarm : QColor(70, 105, 160));
  const QPointF c = box.center();
  p.setPen(QPen(kLightInk, 1.4, Qt::SolidLine, Qt::RoundCap));
  if (error) {
    p.drawLine(QPointF(c.x() - 3.5, c.y() - 3.5), QPointF(c.x() + 3.5, c.y() + 3.5));
    p.drawLine(QPointF(c.x() + 3.5, c.y() - 3.5), QPointF(c.x() - 3.5, c.y() + 3.5));
    return;
  }
  // A trunk carries calls both ways: an arrow out over an arrow in.
  p.drawLine(QPointF(c.x() - 4.5, c.y() - 2.2), QPointF(c.x() + 4.5, c.y() - 2.2));
  p.drawLine(QPointF(c.x() + 4.5, c.y() - 2.2), QPointF(c.x() + 2.5, c.y() - 4.2));
  p.drawLine(QPointF(c.x() - 4.5, c.y() + 2.2), QPointF(c.x() + 4.5, c.y() + 2.2));
  p.drawLine(QPointF(c.x() - 4.5, c.y() + 2.2), QPointF(c.x() - 2.5, c.y() + 4.2));
}

void SignalBars(QPainter &p, const QRectF &box, int level, const QColor &ink) {
  p.setPen(Qt::NoPen);
  QColor faint = ink;
  faint.setAlpha(70);
  for (int i = 0; i < 5; ++i) {
    const qreal h = 3 + i * 2.5;
    p.setBrush(i < level ? ink : faint);
    p.drawRect(QRectF(box.left() + 1 + i * 2.6, box.bottom() - h, 1.8, h));
  }
}

void SimCard(QPainter &p, const QRectF &box, bool present, const QColor &ink) {
  QPainterPath card;
  const QRectF r = box.adjusted(2.5, 0.5, -2.5, -0.5);
  card.moveTo(r.left(), r.top());
  card.lineTo(r.right() - 3, r.top());
  card.lineTo(r.right(), r.top() + 3);
  card.lineTo(r.right(), r.bottom());
  card.lineTo(r.left(), r.bottom());
  card.closeSubpath();
  p.setPen(QPen(ink, 1));
  QColor chip = ink;
  chip.setAlpha(60);
  p.setBrush(chip);
  p.drawPath(card);
  p.setBrush(ink);
  p.setPen(Qt::NoPen);
  p.drawRect(QRectF(r.left() + 2, r.center().y() - 1, r.width() - 4, 4));
  if (!present) {
    p.setPen(QPen(kAlarm, 1.6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(box.topLeft() + QPointF(1, 1), box.bottomRight() - QPointF(1, 1));
    p.drawLine(box.topRight() + QPointF(-1, 1), box.bottomLeft() + QPointF(1, -1));
  }
}

void NetType(QPainter &p, const QRectF &box, const QString &icon, const QColor &ink,
             const QFont &font) {
  static const struct {
    const char16_t *Icon;
    const char16_t *Letter;
  } kLetters[] = {{u"SpeedButton_NetType_GSM", u"G"},
                  {u"SpeedButton_NetType_CDMA", u"C"},
                  {u"SpeedButton_NetType_TDMA", u"T"},
                  {u"SpeedButton_NetType_WCDMA", u"W"}};
  QString letter = u"?"_s;
  for (const auto &l : kLetters) {
    if (icon == QStringView(l.Icon))
      letter = QString::fromUtf16(l.Letter);
  }
  p.setPen(QPen(ink, 1));
  p.setBrush(Qt::NoBrush);
  p.drawRoundedRect(box.adjusted(0.5, 0.5, -0.5, -0.5), 2, 2);
  p.setFont(font);
  p.drawText(box, Qt::AlignCenter, letter);
}

void Padlock(QPainter &p, const QRectF &box, bool locked, const QColor &ink) {
  const QColor colour = locked ? kAlarm : ink;
  const QRectF body(box.left() + 2, box.top() + 6.5, box.width() - 4, box.height() - 7);
  p.setPen(QPen(colour, 1.4));
  p.setBrush(Qt::NoBrush);
  // An open lock lifts its shackle off the body on one side.
  const QRectF shackle(box.left() + 4, box.top() + (locked ? 1 : -1), box.width() - 8, 10);
  p.drawArc(shackle, 0, 180 * 16);
  if (locked) {
    p.drawLine(QPointF(shackle.left(), shackle.center().y()), QPointF(shackle.left(), body.top()));
  }
  p.drawLine(QPointF(shackle.right(), shackle.center().y()), QPointF(shackle.right(), body.top()));
  p.setPen(Qt::NoPen);
  p.setBrush(colour);
  p.drawRoundedRect(body, 1.5, 1.5);
}
} // namespace

TBoardView::TBoardView(TCallControlDev &table, TPhoneBoard &board, TMain_Form *main,
                       QWidget *parent)
    : QAbstractScrollArea(parent), m_table(table), m_board(board), m_main(main) {
  setObjectName(u"TeScrollBox1"_s);
  // The columns follow the width, so there is never anything to the side; the
  // vertical bar always stands so that its coming and going can't change the
  // width and with it the columns.
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setFocusPolicy(Qt::StrongFocus);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  viewport()->setBackgroundRole(QPalette::Base);
  verticalScrollBar()->setSingleStep(10);
  UpdateFonts();

  const QString picture = AppFileOrShipped(u"image/lstrunk_error.bmp"_s);
  if (QFileInfo::exists(picture))
    m_trunkError.load(picture);

  connect(&m_board, &TPhoneBoard::boardChanged, this, &TBoardView::SyncFromTable);
  m_frame.setSingleShot(true);
  m_frame.setInterval(kFrameMs);
  connect(&m_frame, &QTimer::timeout, this, &TBoardView::FlushFrame);
  m_edgeScroll.setInterval(40);
  connect(&m_edgeScroll, &QTimer::timeout, this, [this] {
    if (m_dragging)
      m_board.Wheel(m_edgeDown);
    else
      m_edgeScroll.stop();
  });
  if (m_main)
    ConnectEvents(m_main->DeviceEvents());
}

void TBoardView::ConnectEvents(TDeviceEvents &events) {
  connect(&events, &TDeviceEvents::panelChanged, this, &TBoardView::UpdatePanel,
          Qt::UniqueConnection);
}

void TBoardView::UpdateFonts() {
  m_fonts.Line = font();
  m_fonts.Line.setPixelSize(11);
  m_fonts.Number = m_fonts.Line;
  m_fonts.Number.setWeight(QFont::DemiBold);
  m_fonts.Number.setPixelSize(12);
  m_fonts.NumberMetrics = QFontMetricsF(m_fonts.Number);
  m_fonts.LineMetrics = QFontMetricsF(m_fonts.Line);
  ++m_fonts.Generation;
}

int TBoardView::ContentHeight() const {
  const int last = m_table.Record(TCallControlDev::kTailIndex).Prev;
  if (last == TCallControlDev::kHeadIndex || last < 0)
    return 0;
  return m_table.Record(last).Top + m_table.PanelHeight + m_table.MarginTop;
}

void TBoardView::SyncFromTable() {
  QScrollBar *bar = verticalScrollBar();
  const int wanted = m_table.ScrollY; // a shrinking range moves the bar on its own
  const int page = viewport()->height();
  bar->setPageStep(qMax(10, page));
  bar->setRange(0, qMax(0, ContentHeight() - page));
  bar->setValue(wanted);
  // Past the end there is nothing to see: the table stops where the bar stops.
  m_table.ScrollY = bar->value();
  viewport()->update();
}

void TBoardView::scrollContentsBy(int, int) {
  // The operator moved the bar itself.
  const int value = verticalScrollBar()->value();
  if (value == m_table.ScrollY)
    return;
  m_table.ScrollY = value;
  viewport()->update();
}

void TBoardView::UpdatePanel(int id) {
  const TPhoneTis *p = m_table.Device(id);
  if (!p || !p->InList)
    return;
  const QRect inSight = viewport()->rect();
  QRect r = PanelRect(id).adjusted(-kFrame, -kFrame, kFrame, kFrame) & inSight;
  if (m_dragging && id == m_pressId)
    r |= DragRect() & inSight;
  if (r.isEmpty())
    return; // out of sight: it is drawn fresh when scrolled in
  m_pending += r;
  if (!m_frame.isActive())
    m_frame.start();
}

void TBoardView::FlushFrame() {
  viewport()->update(m_pending);
  m_pending = QRegion();
}

QRect TBoardView::PanelRect(int id) const {
  return QRect(m_table.ScreenLeft(id), m_table.ScreenTop(id), m_table.PanelWidth,
               m_table.PanelHeight);
}

QRect TBoardView::IconRect(int id) const {
  const QRect r = PanelRect(id);
  return QRect(r.left() + kPad, r.top() + kPad, kIcon, kIcon);
}

QRect TBoardView::DragRect() const {
  return QRect(m_dragPos - m_dragOffset, QSize(m_table.PanelWidth, m_table.PanelHeight))
      .adjusted(-2, -2, 4, 4);
}

int TBoardView::PanelAt(QPoint pos) const {
  // The list runs row by row, so the walk ends at the first row below the point.
  const int y = pos.y() + m_table.ScrollY;
  const int x = pos.x() + m_table.ScrollX;
  for (int i = m_table.Record(TCallControlDev::kHeadIndex).Next;
       i != TCallControlDev::kTailIndex && i >= 0; i = m_table.Record(i).Next) {
    const TPhoneTis &p = m_table.Record(i);
    if (p.Top > y)
      break;
    if (y < p.Top + m_table.PanelHeight && x >= p.Left && x < p.Left + m_table.PanelWidth)
      return i;
  }
  return -1;
}

void TBoardView::paintEvent(QPaintEvent *event) {
  QPainter painter(viewport());
  PaintBoard(painter, event->region());
}

void TBoardView::PaintBoard(QPainter &painter, const QRegion &exposed) {
  const QColor base = palette().color(QPalette::Base);
  for (const QRect &r : exposed)
    painter.fillRect(r, base);
  painter.setRenderHint(QPainter::Antialiasing);
  const QRect bounds = exposed.boundingRect();
  const int bottom = bounds.bottom() + m_table.ScrollY;
  const int top = bounds.top() + m_table.ScrollY - m_table.PanelHeight - kFrame;
  for (int i = m_table.Record(TCallControlDev::kHeadIndex).Next;
       i != TCallControlDev::kTailIndex && i >= 0; i = m_table.Record(i).Next) {
    const TPhoneTis &p = m_table.Record(i);
    if (p.Top > bottom + kFrame)
      break;
    if (p.Top < top)
      continue;
    const QRect r = PanelRect(i);
    // Only the current panel's frame reaches into the gaps; a changed panel's
    // area must not drag its neighbours into the repaint.
    if (!exposed.intersects(i == m_current ? r.adjusted(-kFrame, -kFrame, kFrame, kFrame) : r))
      continue;
    const bool lifted = m_dragging && i == m_pressId;
    PaintPanel(painter, i, r, lifted);
    if (i == m_current && !lifted) {
      painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
      painter.setBrush(Qt::NoBrush);
      painter.drawRoundedRect(QRectF(r).adjusted(-2, -2, 2, 2), 5, 5);
    }
  }
  if (m_dragging && m_table.Device(m_pressId)) {
    // The lifted panel follows the hand, a little raised above the board.
    const QRect r(m_dragPos - m_dragOffset, QSize(m_table.PanelWidth, m_table.PanelHeight));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 60));
    painter.drawRoundedRect(QRectF(r).translated(2, 3), 5, 5);
    PaintPanel(painter, m_pressId, r, false);
  }
}

void TBoardView::PaintPanel(QPainter &painter, int id, const QRect &rect, bool ghost) {
  const TPhonePanel &panel = m_table.Record(id).Panel;
  const QColor fill = ToQColor(panel.Colour, palette());
  const QColor ink = InkFor(fill);
  painter.save();
  if (ghost)
    painter.setOpacity(0.3);
  painter.setPen(QPen(fill.darker(150), 1));
  painter.setBrush(fill);
  painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);

  const int textLeft = rect.left() + kPad;
  const int textWidth = rect.width() - 2 * kPad;
  if (m_fitted.size() <= size_t(id))
    m_fitted.resize(size_t(id) + 1);
  FittedPanel &fitted = m_fitted[size_t(id)];
  const bool stale = fitted.Generation != m_fonts.Generation;
  fitted.Generation = m_fonts.Generation;
  painter.setPen(ink);
  if (panel.TelNosVisible) {
    const int shift = panel.PhoneButtonVisible ? kIcon + 3 : 0;
    const QRect line(textLeft + shift, rect.top() + kNumberTop, textWidth - shift, kLineHeight);
    PaintLine(painter, fitted.Number, panel.TelNosLabel, line, m_fonts.Number,
              m_fonts.NumberMetrics, stale);
  }
  const QRect status(textLeft, rect.top() + kStatusTop, textWidth, kLineHeight);
  PaintLine(painter, fitted.Status, panel.StatusLabel, status, m_fonts.Line, m_fonts.LineMetrics,
            stale);
  const QRect name(textLeft, rect.top() + kNameTop, textWidth, kLineHeight);
  PaintLine(painter, fitted.Name, panel.NameLabel, name, m_fonts.Line, m_fonts.LineMetrics,
            stale);

  if (panel.PhoneButtonVisible && !panel.PhoneButtonGlyph.isEmpty())
    PaintGlyph(painter, panel.PhoneButtonGlyph,
               QRect(rect.left() + kPad, rect.top() + kPad, kIcon, kIcon));
  if (panel.ModuleIconsVisible)
    PaintModuleIcons(painter, panel, rect, ink);
  painter.restore();
}

void TBoardView::PaintLine(QPainter &painter, FittedLine &line, const QString &source,
                           const QRect &box, const QFont &font, const QFontMetricsF &metrics,
                           bool stale) {
  if (stale || line.Width != box.width() || line.Source != source) {
    line.Source = source;
    line.Width = box.width();
    line.Text.setTextFormat(Qt::PlainText);
    line.Text.setText(metrics.elidedText(source, Qt::ElideRight, box.width()));
    line.Text.prepare(painter.transform(), font);
  }
  painter.setFont(font);
  // Centred on the line as a single line of text would be.
  const qreal top = box.top() + (box.height() - (metrics.ascent() + metrics.descent())) / 2;
  painter.drawStaticText(QPointF(box.left(), top), line.Text);
}

void TBoardView::PaintGlyph(QPainter &painter, const QString &glyph, const QRect &box) {
  const QRectF b(box);
  if (glyph == u"Template_TrunkSpeedButton"_s) {
    TrunkMark(painter, b, false);
    return;
  }
  if (glyph.startsWith(u"image/"_s)) {
    if (!m_trunkError.isNull())
      painter.drawPixmap(box, m_trunkError);
    else
      TrunkMark(painter, b, true);
    return;
  }
  const bool on = glyph.startsWith(u"LoginOn"_s);
  if (!on && !glyph.startsWith(u"LoginOff"_s))
    return; // a glyph this view doesn't know draws nothing rather than a wrong sign
  Badge(painter, b, on ? QColor(46, 150, 80) : QColor(225, 225, 225));
  Person(painter, b, on ? kLightInk : QColor(120, 120, 120), on);
  if (glyph.contains(u"Nodisturb_In"_s))
    NoDisturbMarker(painter, b, 1);
  else if (glyph.contains(u"Nodisturb_Out"_s))
    NoDisturbMarker(painter, b, 2);
  else if (glyph.contains(u"Nodisturb"_s))
    NoDisturbMarker(painter, b, 0);
}

void TBoardView::PaintModuleIcons(QPainter &painter, const TPhonePanel &panel, const QRect &rect,
                                  const QColor &ink) {
  const int step = kModuleIcon + 3;
  auto box = [&](int slot) {
    return QRectF(rect.left() + kPad + slot * step, rect.top() + kPad, kModuleIcon, kModuleIcon);
  };
  if (panel.SignalIcon.startsWith(u"SpeedButton_Signal"_s)) {
    const int level = qBound(0, panel.SignalIcon.mid(18).toInt(), 5);
    SignalBars(painter, box(0), level, ink);
  }
  if (!panel.SimIcon.isEmpty())
    SimCard(painter, box(1), panel.SimIcon == u"SpeedButton_SimCard"_s, ink);
  if (!panel.NetTypeIcon.isEmpty()) {
    QFont small = m_fonts.Number;
    small.setPixelSize(10);
    NetType(painter, box(2), panel.NetTypeIcon, ink, small);
  }
  if (!panel.PinLockIcon.isEmpty())
    Padlock(painter, box(3), panel.PinLockIcon == u"SpeedButton_Pin_Lock"_s, ink);
}

void TBoardView::resizeEvent(QResizeEvent *event) {
  QAbstractScrollArea::resizeEvent(event);
  if (m_main)
    m_main->BoardGeometry.BoardHeight = viewport()->height();
  m_board.Resize(viewport()->width());
}

void TBoardView::wheelEvent(QWheelEvent *event) {
  m_wheelRest += event->angleDelta().y();
  while (qAbs(m_wheelRest) >= QWheelEvent::DefaultDeltasPerStep) {
    const bool down = m_wheelRest < 0;
    m_wheelRest += down ? QWheelEvent::DefaultDeltasPerStep : -QWheelEvent::DefaultDeltasPerStep;
    m_board.Wheel(down);
  }
  event->accept();
}

void TBoardView::SetCurrent(int id) {
  if (id == m_current)
    return;
  const int old = m_current;
  m_current = id;
  UpdatePanel(old);
  UpdatePanel(id);
}

void TBoardView::mousePressEvent(QMouseEvent *event) {
  const QPoint pos = event->position().toPoint();
  const int id = PanelAt(pos);
  if (id >= 0)
    SetCurrent(id);
  if (m_main) {
    const QPoint global = event->globalPosition().toPoint();
    m_main->BoardGeometry.MouseX = global.x();
    m_main->BoardGeometry.MouseY = global.y();
  }
  if (event->button() != Qt::LeftButton || id < 0) {
    event->ignore();
    return;
  }
  m_pressId = id;
  m_pressPos = pos;
  const TPhonePanel &panel = m_table.Record(id).Panel;
  m_pressOnIcon = panel.PhoneButtonVisible && IconRect(id).contains(pos);
  m_dragOffset = pos - PanelRect(id).topLeft();
  event->accept();
}

void TBoardView::mouseMoveEvent(QMouseEvent *event) {
  if (m_pressId < 0 || !(event->buttons() & Qt::LeftButton))
    return;
  const QPoint pos = event->position().toPoint();
  if (!m_dragging) {
    const QPoint d = pos - m_pressPos;
    if (qMax(qAbs(d.x()), qAbs(d.y())) <= kDragThreshold)
      return;
    m_dragging = true;
    m_dragPos = pos;
    UpdatePanel(m_pressId);
  }
  viewport()->update(DragRect());
  m_dragPos = pos;
  viewport()->update(DragRect());
  const bool nearTop = pos.y() < kEdge;
  const bool nearBottom = pos.y() > viewport()->height() - kEdge;
  m_edgeDown = nearBottom;
  if (nearTop || nearBottom)
    m_edgeScroll.start();
  else
    m_edgeScroll.stop();
}

void TBoardView::mouseReleaseEvent(QMouseEvent *event) {
  if (event->button() != Qt::LeftButton || m_pressId < 0)
    return;
  const QPoint pos = event->position().toPoint();
  const int source = m_pressId;
  if (m_dragging) {
    CancelDrag();
    // Over a panel, its text included, the panel is the target; over the bare
    // board nothing moves.
    const int target = PanelAt(pos);
    if (target >= 0)
      m_board.Drop(source, target);
  } else {
    const bool onIcon = m_pressOnIcon && IconRect(source).contains(pos);
    m_pressId = -1;
    if (onIcon && m_main)
      m_main->Template_PhoneSpeedButtonClick(source);
  }
}

void TBoardView::CancelDrag() {
  m_edgeScroll.stop();
  if (m_dragging) {
    viewport()->update(DragRect());
    m_dragging = false;
    UpdatePanel(m_pressId);
  }
  m_pressId = -1;
  m_pressOnIcon = false;
}

void TBoardView::contextMenuEvent(QContextMenuEvent *event) {
  int id = -1;
  QPoint global = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard) {
    id = m_table.Device(m_current) && m_table.Record(m_current).InList ? m_current : -1;
    if (id >= 0)
      global = viewport()->mapToGlobal(PanelRect(id).center());
  } else {
    id = PanelAt(event->pos());
  }
  if (id < 0)
    return;
  SetCurrent(id);
  ShowMenu(id, global);
}

void TBoardView::ShowMenu(int id, QPoint globalPos) {
  if (!m_main)
    return;
  CancelDrag();
  m_main->PhonePanel_PopupMenuPopup(id);
  const TMain_Form::TPanelMenu &state = m_main->PhonePanel_PopupMenu;
  QMenu menu(this);
  menu.setObjectName(u"PhonePanel_PopupMenu"_s);
  TMain_Form *main = m_main;
  auto add = [&](const QString &name, const QString &caption, bool visible, auto handler) {
    QAction *action = menu.addAction(caption);
    action->setObjectName(name);
    action->setVisible(visible);
    connect(action, &QAction::triggered, this, handler);
  };
  add(u"test1"_s, state.test1_Caption, state.test1_Visible, [main] { main->test1Click(); });
  add(u"N15"_s, MenuText(main, u"N15"_s, u"转移"_s), state.N15_Visible,
      [main] { main->N15Click(); });
  add(u"N2"_s, MenuText(main, u"N2"_s, u"叫醒设置..."_s), state.N2_Visible,
      [this, id] { emit wakeUpRequested(id); });
  add(u"PopMenu_ResetTrunk"_s, MenuText(main, u"PopMenu_ResetTrunk"_s, u"复位中继"_s),
      state.PopMenu_ResetTrunk_Visible, [main] { main->PopMenu_ResetTrunkClick(); });
  menu.exec(globalPos);
}

void TBoardView::keyPressEvent(QKeyEvent *event) {
  if (event->key() == Qt::Key_Escape && m_dragging) {
    CancelDrag();
    return;
  }
  // The arrows walk the current panel through the board; Space is its icon.
  const std::vector<int> order = m_table.Ordered();
  const auto at = std::find(order.begin(), order.end(), m_current);
  int index = at == order.end() ? -1 : int(at - order.begin());
  const int columns = qMax(1, m_table.Columns);
  switch (event->key()) {
  case Qt::Key_Left:
    index = qMax(0, index - 1);
    break;
  case Qt::Key_Right:
    index = index + 1;
    break;
  case Qt::Key_Up:
    index = index < 0 ? 0 : qMax(0, index - columns);
    break;
  case Qt::Key_Down:
    index = index < 0 ? 0 : index + columns;
    break;
  case Qt::Key_Space:
    if (m_main && index >= 0)
      m_main->Template_PhoneSpeedButtonClick(m_current);
    return;
  default:
    QAbstractScrollArea::keyPressEvent(event);
    return;
  }
  if (order.empty())
    return;
  index = qMin(index, int(order.size()) - 1);
  SetCurrent(order[size_t(index)]);
  // Keep the current panel in sight.
  const QRect r = PanelRect(m_current);
  if (r.top() < 0)
    m_table.ScrollY = qMax(0, m_table.ScrollY + r.top() - m_table.MarginTop);
  else if (r.bottom() > viewport()->height())
    m_table.ScrollY += r.bottom() - viewport()->height() + m_table.MarginTop;
  SyncFromTable();
}

void TBoardView::changeEvent(QEvent *event) {
  if (event->type() == QEvent::FontChange)
    UpdateFonts();
  QAbstractScrollArea::changeEvent(event);
}

bool TBoardView::viewportEvent(QEvent *event) {
  if (event->type() == QEvent::ToolTip) {
    auto *help = static_cast<QHelpEvent *>(event);
    const int id = PanelAt(help->pos());
    const QString hint = id >= 0 ? m_table.Record(id).Panel.Hint : QString();
    if (hint.isEmpty())
      QToolTip::hideText();
    else
      QToolTip::showText(help->globalPos(), hint, viewport(), PanelRect(id));
    return true;
  }
  return QAbstractScrollArea::viewportEvent(event);
}
