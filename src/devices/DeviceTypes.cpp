#include "devices/DeviceTypes.h"

#include "support/LanguagePack.h"
#include "support/Settings.h"

using namespace Qt::StringLiterals;

bool IsExtensionType(int devType) {
  return devType == AnalogExtension || devType == DigitalExtension || devType == OtherExtension;
}

QString DeviceTypeCaption(int devType) {
  switch (devType) {
  case AnalogExtension:
    return u"模拟用户"_s;
  case DigitalExtension:
    return u"数字用户"_s;
  case AnalogTrunk:
    return u"模拟中继"_s;
  case PriTrunk:
    return u"数字中继PRI"_s;
  case Ss1Trunk:
    return u"SS1"_s;
  case GsmModuleTrunk:
    return u"无线中继"_s;
  case IvrPort:
    return u"IVR"_s;
  default:
    return QString();
  }
}

QString NameLine(int devType, const QString &number) {
  switch (devType) {
  case AnalogExtension:
  case DigitalExtension:
  case OtherExtension:
    return u"["_s + number + u']';
  case AnalogTrunk:
    return LangFormat(390, {number});
  case PriTrunk:
    return u"Pri["_s + number + u']';
  case SipTrunk:
    return u"SIPT["_s + number + u']';
  case Ss1Trunk:
    return u"SS1["_s + number + u']';
  case GsmModuleTrunk:
    return u"RadioB["_s + number + u']';
  case IvrPort:
    return u"IVRA["_s + number + u']';
  default:
    return u"["_s + number + u']';
  }
}

bool DeviceTypeVisible(int devType) {
  if (devType == OtherExtension)
    return true;
  // SIP trunks have no item of their own in the list: they follow the PRI trunks.
  const int flag = devType == SipTrunk ? int(PriTrunk) : devType;
  if (flag < 0 || flag >= kTypeVisibleCount)
    return true;
  return SysConfig().TypeVisible[size_t(flag)];
}

QString ExtensionStatusText(int status) {
  if (status < 0 || status >= kExtStatusNameCount)
    return QString();
  return ExtStatusNames()[size_t(status)];
}

QString DeviceStatusText(int status) {
  static const char16_t *const kTexts[] = {
      u"Outservice", u"Idle",      u"CalledRing", u"BackRing", u"Dial",       u"InOncall",
      u"HurryUp",    u"Connected", u"CallInWait", u"SYNC",     u"READY",      u"Freeing",
      u"LineError",  u"InAllocat", u"OutAllocat", u"SendDial", u"DialPre",    u"DTMF_Rev",
      u"GSM_AT1",    u"GSM_AT2",   u"GSM_Start",  u"StandBy",  u"Out_Oncall", u"强置忙",
      u"网管",       u"联号"};
  if (status < 0 || status >= int(std::size(kTexts)))
    return QString();
  return QString::fromUtf16(kTexts[status]);
}

TColor DefaultStatusColour(int index) {
  static const TColor kColours[kStatusColourCount] = {clHotLight, clBtnFace, clInfoBk, clInfoBk,
                                                      0xFF0000,   0x008000,  0x0000FF, 0xFFFFFF,
                                                      0x000000,   0x0000FF,  0x0000FF};
  if (index < 0 || index >= kStatusColourCount)
    return clBtnFace;
  return kColours[index];
}

QString LegendPanelName(int index) {
  static const char16_t *const kPanels[] = {
      u"Outservice_Panel",   u"Idle_Panel",    u"CalledRing_Panel",
      u"BackcallRing_Panel", u"Dial_Panel",    u"Oncall_Panel",
      u"Hurryup_Panel",      u"connect_Panel", u"Other_Panel"};
  if (index < 0 || index >= int(std::size(kPanels)))
    return QString();
  return QString::fromUtf16(kPanels[index]);
}
