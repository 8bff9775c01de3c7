#pragma once

#include <QColor>
#include <QWidget>

#include <functional>

class TCallControlDev;
class TPhoneBoard;

// The legend over the board: one small panel per status colour, named as the
// language texts and the tests know them. A double click picks a new colour for
// that entry of the status colour table.
class TLegendBar : public QWidget {
  Q_OBJECT

public:
  TLegendBar(TCallControlDev &table, TPhoneBoard &board, QWidget *parent = nullptr);

  // Asks the operator for a colour; an invalid answer means cancelled. The colour
  // dialog by default; tests answer in its place.
  std::function<QColor(const QColor &initial, QWidget *parent)> ChooseColour;

  // Captions follow the language in force.
  void Retranslate();

  // Called by a legend panel's double click: ask, store, repaint.
  void EditColour(int tag);

  TCallControlDev &Table() const { return m_table; }

private:
  TCallControlDev &m_table;
  TPhoneBoard &m_board;
};
