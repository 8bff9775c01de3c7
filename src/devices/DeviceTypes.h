#pragma once

#include <QString>
#include <QtGlobal>

// Colours as the layout file and the legend keep them: blue-green-red words, or a
// system colour (kSystemColour | index of the desktop's colour) that the screens
// resolve.
using TColor = quint32;
inline constexpr TColor kSystemColour = 0x80000000u;
inline constexpr TColor clHotLight = kSystemColour | 26;
inline constexpr TColor clBtnFace = kSystemColour | 15;
inline constexpr TColor clInfoBk = kSystemColour | 24;
// Status 17 of a trunk has a colour of its own that no setting changes.
inline constexpr TColor kStatus17Colour = 0xD9D9FF;

inline constexpr int kDeviceCount = 3072;
inline bool ValidDeviceId(int id) {
  return id >= 0 && id < kDeviceCount;
}

// Device type codes.
enum DeviceType : int {
  AnalogExtension = 1,
  DigitalExtension = 4,
  AnalogTrunk = 5,
  IvrPort = 6,
  PriTrunk = 9,
  GsmModuleTrunk = 12,
  Ss1Trunk = 14,
  OtherExtension = 21,
  SipTrunk = 22,
};

bool IsExtensionType(int devType);
// The caption of a type in the settings window's list; empty for 21, 22 and unknown codes.
QString DeviceTypeCaption(int devType);
// The panel's name line for a device's number: "[8001]", "Pri[1]", ...
QString NameLine(int devType, const QString &number);
// Whether a device of this type gets a panel: its TypeVisible flag, the flag of
// code 9 for SIP trunks, always for code 21.
bool DeviceTypeVisible(int devType);

// Status texts: extensions read the language's names, every other device the
// fixed exchange words. Outside the tables the text is empty.
QString ExtensionStatusText(int status);
QString DeviceStatusText(int status);

// The status colour table (11 entries, the legend edits them) and its defaults.
inline constexpr int kStatusColourCount = 11;
TColor DefaultStatusColour(int index);
// The legend panel that edits an entry; empty for entries without one.
QString LegendPanelName(int index);
