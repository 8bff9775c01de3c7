#pragma once

#include "devices/CallControlDev.h"
#include "devices/NetModule.h"

#include <QObject>
#include <QString>

// The board of panels as logic: the refresh that enumerates the exchange, the
// saved layout (ini/PhonePanels.xml, GB2312), the legend colours, the wheel and
// the drop. The board view draws from the device table and forwards here.
class TPhoneBoard : public QObject {
  Q_OBJECT

public:
  TPhoneBoard(TCallControlDev &table, TNetModule &net, QObject *parent = nullptr);

  static QString LayoutFileName(); // ini/PhonePanels.xml below the program folder

  // "刷新状态": asks the exchange for its devices from ID 0 on.
  void RefreshPhones_tefxButtonClick();
  bool RefrshPhones_tefxButton_Enabled = true;

  // Writes the board's order and the legend colours, but only once a layout was
  // loaded in this run: before that the file on disk is the only layout there is.
  void savePhones_tefxButtonClick();
  // Reads the colours and the order of the panels; the places come from the
  // layout rules. Returns false when the file couldn't be read at all.
  bool LoadPhones_tefxButtonClick();

  // A legend panel was double-clicked and a colour chosen: its table entry.
  void LegendColourChosen(int tag, TColor colour);
  // The legend's colour attributes in the file, with the table entry each sets.
  struct TLegendColour {
    const char16_t *Attribute;
    int Tag;
  };
  static const TLegendColour kLegendColours[9];

  // The wheel over the board: 10 a step.
  void Wheel(bool down);
  void Resize(int width);
  // A drop: the target is a panel, or a label on a panel (its device), or
  // nothing at all (-1).
  void Drop(int sourceId, int targetId);

signals:
  void filterCancelRequested(); // tefxButton_Ext_CancelFilter
  void gridClearRequested();    // the extension grid back to its empty row
  void boardChanged();

private:
  TCallControlDev &m_table;
  TNetModule &m_net;
};
