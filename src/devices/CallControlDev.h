#pragma once

#include "devices/DeviceTypes.h"
#include "devices/ExtRecord.h"
#include "support/TDateTime.h"

#include <QString>
#include <QStringList>

#include <array>
#include <vector>

// A device's panel on the board, as data: what the board view draws and where.
struct TPhonePanel {
  TColor Colour = clBtnFace;
  QString TelNosLabel;
  QString StatusLabel;
  QString NameLabel;
  bool TelNosVisible = true;
  bool PhoneButtonVisible = true;
  QString PhoneButtonGlyph; // login and do-not-disturb state, or trunk state
  // GSM module icons.
  QString SignalIcon;
  QString SimIcon;
  QString NetTypeIcon;
  QString PinLockIcon;
  bool ModuleIconsVisible = false;
  QString Hint;
};

// One device of the exchange, indexed by its own device ID.
struct TPhoneTis {
  int ID = 0;
  int DevType = 0;
  QString TelNos;
  int Status = 0;
  int SrvClass = -1;
  bool InList = false;
  TDateTime MoringCallTime;
  int NoDisturbMode = 0;
  int VoiceMail = 0;
  int MoringCallAnswerFlag = 0;
  int MoringCallDelayFlag = 0;
  int MoringCallMode = 0;
  int Next = -1;
  int Prev = -1;
  int Left = 0;
  int Top = 0;
  bool HasPanel = false; // the panel exists while the record is linked
  TPhonePanel Panel;
  QString ModuleType;
  bool LiveUpdate = false;
  TExt_Record LastExt; // the guest-room row as last shown
};

// The console's live picture of the exchange: 3072 device records and two
// sentinels in one fixed block, with an ordered list through it that decides
// which devices have a panel on the board and in which order. Indices, not
// pointers: a lookup by ID is one array access.
class TCallControlDev {
public:
  static constexpr int kHeadIndex = 3072;
  static constexpr int kTailIndex = 3073;

  TCallControlDev();

  // Geometry of a panel and of the board.
  int PanelHeight = 57;
  int PanelWidth = 81;
  int PanelBorder = 2;
  int GapX = 10;
  int GapY = 10;
  int MarginLeft = 5;
  int MarginTop = 5;
  int Columns = 6;
  // The board's width and scroll position, as the board view reports them.
  int ParentWidth = 0;
  int ScrollX = 0;
  int ScrollY = 0;
  bool LayoutLoaded = false;

  // The IDs the last enumeration reported (the hidden PortsID_ComboBox).
  QStringList PortsID_ComboBox;

  void CallControlDev_Init();

  // Every access by a device ID goes through here: an ID outside the table
  // answers nullptr, never another record.
  TPhoneTis *Device(int id);
  const TPhoneTis *Device(int id) const;
  TPhoneTis &Record(int index) { return m_phones[size_t(index)]; }
  const TPhoneTis &Record(int index) const { return m_phones[size_t(index)]; }

  bool InsertBefore(int index, int reference);
  bool InsertAfter(int index, int reference);
  // Links the device before the tail, makes its panel and places it.
  void AddPanel(int index);
  // Drag and drop: a forward drag lands behind the target, a backward one in front.
  void MovePanel(int source, int target);
  void Unlink(int index);
  void RemovePanel(int index);
  void RemoveAllPanels();
  // Removes every panel whose device the last enumeration didn't report.
  void PrunePanels();
  void Relayout();

  // The panels in board order, for the view and for saving the layout.
  std::vector<int> Ordered() const;
  int PanelCount() const;
  // Where a panel stands on screen, scrolled.
  int ScreenLeft(int index) const { return Record(index).Left - ScrollX; }
  int ScreenTop(int index) const { return Record(index).Top - ScrollY; }

  // The status colour table; the legend edits it.
  std::array<TColor, kStatusColourCount> Colours;

private:
  void Place(int index);
  bool Linked(int index) const;

  std::vector<TPhoneTis> m_phones;
};
